#pragma once

#include <cstddef>

/// Scanners for the members of a set of bytes. NUL is a byte like any other, and nothing outside
/// [first, last) is read.
namespace platform {

/// First byte that is one of the `count` bytes at `set`, at most `kFewBytes`, or that is none of
/// them, as `wanted` says; `last` if there is none.
const char* find_any_of(const char* first, const char* last, const char* set, std::size_t count,
                        bool wanted) noexcept;

/// The same for any number of bytes: `members` is a table of 256.
const char* find_member(const char* first, const char* last, const bool* members,
                        bool wanted) noexcept;

}  // namespace platform
