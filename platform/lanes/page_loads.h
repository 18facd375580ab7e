#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/vectors.h"

/// Vectors of terminated 16-bit text, whose end is not known yet: loads that may look past the
/// terminator, or in front of the text, but never at a page in which the text has no unit.
namespace platform {

/// Larger pages are multiples of it.
inline constexpr std::uintptr_t kSmallestPage = 4096;

inline std::uintptr_t address_of(const char16_t* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

/// From `p` to the end of its page.
inline std::uintptr_t bytes_in_page(const char16_t* p) {
    return kSmallestPage - address_of(p) % kSmallestPage;
}

/// Whether a vector at `p` is all in one page.
template <std::size_t kBytes = kNarrowBytes>
inline bool is_in_one_page(const char16_t* p) {
    return bytes_in_page(p) >= kBytes;
}

/// The sanitizers know the bounds of objects and not those of pages, so they are kept out; what
/// lies outside the text must not decide anything.
template <std::size_t kBytes = kNarrowBytes>
__attribute__((no_sanitize("address", "thread"))) inline typename Lanes<char16_t, kBytes>::Vector
load_in_page(const char16_t* p) {
    using Loaded __attribute__((vector_size(kBytes), may_alias, aligned(2))) = std::uint16_t;
    return *reinterpret_cast<const Loaded*>(p);
}

template <class Units>
inline Units zero_lanes(Units units) {
    return reinterpret_cast<Units>(units == 0);
}

/// The units that are equal, with 0 in the place of those that are not.
template <std::size_t kBytes = kNarrowBytes>
inline auto load_common(const char16_t* left, const char16_t* right) {
    const auto units = load_in_page<kBytes>(left);
    return reinterpret_cast<typename Lanes<char16_t, kBytes>::Vector>(units ==
                                                                      load_in_page<kBytes>(right)) &
           units;
}

/// Index of the first unit in a vector that differs or ends both texts, or all units of the vector.
inline std::ptrdiff_t end_in_vector(const char16_t* left, const char16_t* right) {
    const std::uint64_t ends = hit_bits(zero_lanes(load_common(left, right)));
    return ends != 0 ? first_hit<char16_t>(ends) : Lanes<char16_t>::kCount;
}

}  // namespace platform
