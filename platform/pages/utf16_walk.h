#pragma once

#include <cstddef>

/// Surrogates in 16-bit text, and what stands in the place of what cannot be decoded.
namespace platform {

inline constexpr char16_t kReplacement = 0xFFFD;

inline bool is_surrogate(char32_t unit) noexcept {
    return (unit & 0xFFFFF800) == 0xD800;
}
template <class Vector>
auto are_surrogates(Vector units) noexcept {
    return (units & 0xF800) == 0xD800;
}
// These take a unit, or a vector of them for each lane.

template <class Units>
auto is_high_surrogate(Units unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
template <class Units>
auto is_low_surrogate(Units unit) noexcept {
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
}  // namespace platform
