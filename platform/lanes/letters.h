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

template <class Unit>
inline typename Lanes<Unit>::Vector letter_lanes(typename Lanes<Unit>::Vector units, Unit first) {
    using Vector = typename Lanes<Unit>::Vector;
    return reinterpret_cast<Vector>(units - splat_lanes(first) <
                                    splat_lanes(static_cast<Unit>(kLetters)));
}

/// The letters that begin with `first` in their other case, everything else as it is.
template <class Unit>
inline typename Lanes<Unit>::Vector turn_letters(typename Lanes<Unit>::Vector units, Unit first) {
    return units ^ (letter_lanes<Unit>(units, first) & splat_lanes(static_cast<Unit>(kCaseBit)));
}

}  // namespace platform
