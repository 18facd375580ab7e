#pragma once

#include <cstddef>
#include <cstring>

#include "wide/wide.h"

/// Lengths of terminated text in both widths.
namespace platform {

inline std::size_t length_of(const char* text) noexcept {
    return std::strlen(text);
}

inline std::size_t length_of(const char16_t* text) noexcept {
    return wcslen(text);
}

/// At most `limit`; nothing behind that is read.
inline std::size_t bounded_length(const char* text, std::size_t limit) noexcept {
    return ::strnlen(text, limit);
}

inline std::size_t bounded_length(const char16_t* text, std::size_t limit) noexcept {
    std::size_t length = 0;
    while (length < limit && text[length] != u'\0') {
        ++length;
    }
    return length;
}

}  // namespace platform
