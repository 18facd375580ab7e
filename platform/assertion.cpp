#include "assertion.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace platform {

void _wassert(const char* expression, const char* file, int line) noexcept {
    const char* slash = std::strrchr(file, '/');
    std::fprintf(stderr, "Assertion failed: %s, file %s, line %d\n", expression,
                 slash != nullptr ? slash + 1 : file, line);
    std::abort();
}

}  // namespace platform
