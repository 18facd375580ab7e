#include "system_errors.h"

#include <cerrno>
#include <cstring>

namespace platform {

std::uint32_t GetLastError() noexcept {
    return static_cast<std::uint32_t>(errno);
}

int FormatMessageA(std::uint32_t code, char* buffer, int size) noexcept {
    // strerror_r makes a text up for a code that it does not know, in words of the locale.
    if (::strerrordesc_np(static_cast<int>(code)) == nullptr) {
        return 0;
    }
    char unused[1];
    const char* text = ::strerror_r(static_cast<int>(code), unused, sizeof unused);
    const std::size_t length = std::strlen(text);
    if (size <= 0 || length >= static_cast<std::size_t>(size)) {
        return 0;
    }
    std::memcpy(buffer, text, length + 1);
    return static_cast<int>(length);
}

}  // namespace platform
