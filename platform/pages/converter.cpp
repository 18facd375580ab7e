#include "pages/converter.h"

#include <cstdlib>

namespace platform {
namespace {

/// Whether there is memory for any converter, none of which takes as much.
bool is_memory_left() {
    void* volatile probe = std::malloc(std::size_t{1} << 20);
    std::free(probe);
    return probe != nullptr;
}

}  // namespace

Converter::Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (!IsOpen() && errno == EINVAL) {
        // No such converter, or no memory to load it from its file: the C library does not tell
        // these apart. The second attempt fares better if memory was short for a moment.
        handle_ = iconv_open(to, from);
    }
    if (!IsOpen() && (errno != EINVAL || !is_memory_left())) {
        throw std::bad_alloc();
    }
}

}  // namespace platform
