#pragma once

#include <cstddef>
#include <cstdint>

#include "vectors.h"

/// Vectors of terminated 16-bit text, whose end is not known yet: loads that may look past the
/// terminator, or in front of the text, but never at a page in which the text has no unit.
namespace platform {

inline constexpr std::uintptr_t kVectorBytes = sizeof(Lanes<char16_t>::Vector);

/// Larger pages are multiples of it.
inline constexpr std::uintptr_t kSmallestPage = 4096;

inline std::uintptr_t address_of(const char16_t* p) {
    return reinterpret_cast<std::uintptr_t>(p);
}

inline bool is_in_one_page(const char16_t* p, std::uintptr_t bytes) {
    return address_of(p) % kSmallestPage <= kSmallestPage - bytes;
}

/// The sanitizers know the bounds of objects and not those of pages, so they are kept out; what
/// lies outside the text must not decide anything.
__attribute__((no_sanitize("address", "thread"))) inline Lanes<char16_t>::Vector load_in_page(
    const char16_t* p) {
    using Loaded __attribute__((vector_size(16), may_alias, aligned(2))) = std::uint16_t;
    return *reinterpret_cast<const Loaded*>(p);
}

}  // namespace platform
