#pragma once

#include <cstddef>

/// How bytes group into characters in UTF-8.
namespace platform {

inline bool is_utf8_continuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Whether a well-formed sequence of more than one byte can start with `lead` and go on with
/// `second`: rules out overlong forms, surrogates and values above U+10FFFF.
inline bool is_utf8_start(unsigned char lead, unsigned char second) noexcept {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0 && second <= 0xBF;
        case 0xED:
            return second >= 0x80 && second <= 0x9F;
        case 0xF0:
            return second >= 0x90 && second <= 0xBF;
        case 0xF4:
            return second >= 0x80 && second <= 0x8F;
        default:
            return lead >= 0xC2 && lead <= 0xF3 && second >= 0x80 && second <= 0xBF;
    }
}

/// Bytes of the well-formed sequence at `p`; 1 where none starts. Stops reading at the first byte
/// that does not continue the sequence, so never behind a NUL.
inline std::size_t utf8_length(const char* p) noexcept {
    const auto lead = static_cast<unsigned char>(p[0]);
    if (lead >= 0xC2 && lead < 0xE0) {
        return is_utf8_continuation(p[1]) ? 2 : 1;
    }
    if (lead < 0xC2 || !is_utf8_start(lead, static_cast<unsigned char>(p[1]))) {
        return 1;
    }
    const std::size_t length = lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 2; i < length; ++i) {
        if (!is_utf8_continuation(p[i])) {
            return 1;
        }
    }
    return length;
}

}  // namespace platform
