#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "blocks.h"
#include "wide/wide.h"

/// Order and equality of texts, for both classes.
namespace order {

/// The order of two values. Texts that are sorted differ early, mostly, and nothing is called where
/// they do in their first unit, or in a first word of ASCII: in every code page that means itself,
/// as long as nothing else stands in front. `whole` compares from the start; it is asked where the
/// word does not decide. The row `sort_short` chose this.
template <class Unit, class Whole>
int compare(const Unit* left, int leftLength, const Unit* right, int rightLength, Whole whole) {
    constexpr int kBits = 8 * sizeof(Unit);
    constexpr std::uint64_t kOnes = ~std::uint64_t{0} / ((std::uint64_t{1} << kBits) - 1);
    constexpr std::uint64_t kTops = kOnes << (kBits - 1);
    if (left == right) {
        return 0;
    }
    using Scalar = std::make_unsigned_t<Unit>;
    const unsigned first = static_cast<Scalar>(*left);
    const unsigned second = static_cast<Scalar>(*right);
    if (first != second && (first | second) < (sizeof(Unit) == 1 ? 0x80 : 0x10000)) {
        return static_cast<int>(first) - static_cast<int>(second);
    }
    // What stands first is lowest in the word.
    if (std::endian::native != std::endian::little ||
        std::min(leftLength, rightLength) < 64 / kBits) {
        return whole();
    }
    std::uint64_t a, b;
    std::memcpy(&a, left, sizeof a);
    std::memcpy(&b, right, sizeof b);
    const std::uint64_t differences = a ^ b;
    if (differences == 0) {
        return whole();
    }
    // The first unit that differs, and ones for the bits in front of it.
    const int place = std::countr_zero(differences) & (64 - kBits);
    const std::uint64_t front = (std::uint64_t{1} << place) - 1;
    const std::uint64_t ends = ((a & front) - (kOnes & front)) & ~a & kTops & front;
    const std::uint64_t foreign = sizeof(Unit) == 1 ? (a | b) & kTops & (front << kBits | 0xFF) : 0;
    if ((ends | foreign) != 0) {
        return whole();
    }
    return static_cast<int>(static_cast<Scalar>(a >> place)) -
           static_cast<int>(static_cast<Scalar>(b >> place));
}

inline bool equal_texts(const char* left, const char* right) noexcept {
    return *left == *right && std::strcmp(left, right) == 0;
}

inline bool equal_texts(const char16_t* left, const char16_t* right) noexcept {
    return *left == *right && platform::wcscmp(left, right) == 0;
}

/// Whether a value's text equals a terminated one, or null, which it never does. Both end at their
/// first NUL, so in every code page they are equal when their units are.
template <class Unit>
bool equal(const Unit* left, const Unit* right) noexcept {
    return left == right || (right != nullptr && equal_texts(left, right));
}

/// The same for two values. Texts without NUL, which is nearly all, are equal at one look.
template <class Unit>
bool equal(const Unit* left, int leftLength, const Unit* right, int rightLength) noexcept {
    if (left == right) {
        return true;
    }
    if (leftLength == rightLength &&
        std::memcmp(left, right, blocks::bytes_of<Unit>(leftLength)) == 0) {
        return true;
    }
    return equal_texts(left, right);
}

}  // namespace order
