#pragma once

#include <cstddef>

/// Surrogates in 16-bit text.
namespace platform {

inline bool is_surrogate(char32_t unit) noexcept {
    return (unit & 0xFFFFF800) == 0xD800;
}
inline bool is_high_surrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
inline bool is_low_surrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

/// The code point at `p`, which is below `last`; an unpaired surrogate is its own.
inline char32_t utf16_code(const char16_t* p, const char16_t* last) noexcept {
    if (!is_high_surrogate(p[0]) || last - p < 2 || !is_low_surrogate(p[1])) {
        return p[0];
    }
    return 0x10000 + ((p[0] & 0x3FFu) << 10 | (p[1] & 0x3FFu));
}

/// Units of a code point.
inline std::size_t utf16_units(char32_t code) noexcept {
    return code < 0x10000 ? 1 : 2;
}

/// Writes a code point; the result is the end of what was written.
inline char16_t* put_utf16(char32_t code, char16_t* out) noexcept {
    if (code < 0x10000) {
        *out = static_cast<char16_t>(code);
        return out + 1;
    }
    out[0] = static_cast<char16_t>(0xD7C0 + (code >> 10));
    out[1] = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    return out + 2;
}

/// How many surrogate pairs the text holds.
std::size_t count_surrogate_pairs(const char16_t* source, std::size_t length) noexcept;

}  // namespace platform
