#pragma once

#include <cstddef>

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

/// Puts `to` in the place of every unit equal to `from`; the result is their number.
template <class Unit>
std::size_t replace_unit(Unit* first, Unit* last, Unit from, Unit to) noexcept;

/// Drops every unit equal to `unit` and closes the gaps; the result is the new end.
template <class Unit>
Unit* remove_unit(Unit* first, Unit* last, Unit unit) noexcept;

}  // namespace platform
