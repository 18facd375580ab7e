#pragma once

#include <cstddef>

#include "lanes/byte_ranges.h"

/// Scanners over plain runs of storage units, for `char` and `char16_t`. They know neither
/// characters nor terminators: NUL is a unit like any other, and nothing outside [first, last)
/// is read.
namespace platform {

/// First unit equal to `unit`, or `last`.
template <class Unit>
const Unit* find_unit(const Unit* first, const Unit* last, Unit unit) noexcept;

/// Last unit equal to `unit`, or null.
template <class Unit>
const Unit* find_last_unit(const Unit* first, const Unit* last, Unit unit) noexcept;

template <class Unit>
std::size_t count_unit(const Unit* first, const Unit* last, Unit unit) noexcept;

/// First byte that is one of the `count` bytes at `set`, at most `kFewBytes`, or that is none of
/// them, as `wanted` says;
/// `last` if there is none.
const char* find_any_of(const char* first, const char* last, const char* set, std::size_t count,
                        bool wanted) noexcept;

/// The same for any number of bytes: `members` is a table of 256.
const char* find_member(const char* first, const char* last, const bool* members,
                        bool wanted) noexcept;

/// First occurrence of the `count` units at `text`, or null. An empty text is found at `first`.
template <class Unit>
const Unit* find_text(const Unit* first, const Unit* last, const Unit* text,
                      std::size_t count) noexcept;

/// Occurrences that do not overlap, from left to right; 0 for an empty text.
template <class Unit>
std::size_t count_text(const Unit* first, const Unit* last, const Unit* text,
                       std::size_t count) noexcept;

/// Puts `to` in the place of every unit equal to `from`; the result is their number.
template <class Unit>
std::size_t replace_unit(Unit* first, Unit* last, Unit from, Unit to) noexcept;

/// Drops every unit equal to `unit` and closes the gaps; the result is the new end.
template <class Unit>
Unit* remove_unit(Unit* first, Unit* last, Unit unit) noexcept;

}  // namespace platform
