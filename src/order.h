#pragma once

#include <cstring>
#include <type_traits>

#include "blocks.h"
#include "wide/wide.h"

/// Order and equality of texts, for both classes.
namespace order {

/// Short texts that are sorted differ early, mostly: how many of their units are looked at before
/// anything is called. Of a longer one the C library's loop costs less. The rows `sort_short` and
/// `compare` of 1,000 chose both.
inline constexpr int kHead = 8;
inline constexpr int kShort = 64;

/// Units below this mean themselves in every code page, as long as no other stands in front.
template <class Unit>
inline constexpr unsigned kPlain = sizeof(Unit) == 1 ? 0x80 : 0x10000;

/// The order of a value's text and a terminated one. `whole` compares them from the start; it is
/// asked where the first units do not decide.
template <class Unit, class Whole>
int compare(const Unit* left, int leftLength, const Unit* right, Whole whole) {
    if (left == right) {
        return 0;
    }
    unsigned seen = 0;
    for (int i = 0; i < kHead && leftLength <= kShort; ++i) {
        const unsigned a = static_cast<std::make_unsigned_t<Unit>>(left[i]);
        const unsigned b = static_cast<std::make_unsigned_t<Unit>>(right[i]);
        seen |= a | b;
        if (a != b && seen < kPlain<Unit>) {
            return static_cast<int>(a) - static_cast<int>(b);
        }
        if (a != b || a == 0) {
            return a == b ? 0 : whole();
        }
    }
    return whole();
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
