#include "system_errors.h"

#include <cerrno>
#include <cstring>

namespace platform {

std::uint32_t GetLastError() noexcept {
    return static_cast<std::uint32_t>(errno);
}

int FormatMessageA(std::uint32_t code, char* buffer, int size) noexcept {
    // strerror would make a text up for an unknown code, and take it from the locale.
    const char* text = ::strerrordesc_np(static_cast<int>(code));
    if (text == nullptr) {
        return 0;
    }
    const std::size_t length = std::strlen(text);
    if (size <= 0 || length >= static_cast<std::size_t>(size)) {
        return 0;
    }
    std::memcpy(buffer, text, length + 1);
    return static_cast<int>(length);
}

}  // namespace platform
