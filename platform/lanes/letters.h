#pragma once

#include "lanes/vectors.h"

/// The letters of ASCII in their two cases. Whether a locale folds by them is asked elsewhere.
namespace platform {

/// In which the two cases of a letter differ; lower case has it.
inline constexpr unsigned char kCaseBit = 0x20;

inline constexpr unsigned char kLetters = 26;

/// Whether `unit` is one of the letters that begin with `first`, which is `a` or `A`.
template <class Unit>
constexpr bool is_letter(Unit unit, Unit first) {
    return static_cast<typename Lanes<Unit>::Scalar>(unit - first) < kLetters;
}

/// Lanes of ones where such letters are among the units.
template <class Unit, class Vector>
inline Vector letter_lanes(Vector units, Unit first) {
    return reinterpret_cast<Vector>(units - splat_lanes<sizeof units>(first) <
                                    splat_lanes<sizeof units>(static_cast<Unit>(kLetters)));
}

/// The letters that begin with `first` in their other case, everything else as it is.
template <class Unit, class Vector>
inline Vector turn_letters(Vector units, Unit first) {
    return units ^
           (letter_lanes(units, first) & splat_lanes<sizeof units>(static_cast<Unit>(kCaseBit)));
}

}  // namespace platform
