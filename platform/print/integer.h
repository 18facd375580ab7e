#pragma once

#include <array>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "print/syntax.h"

namespace platform {

inline constexpr std::array<unsigned long long, 20> kPowersOfTen = [] {
    std::array<unsigned long long, 20> powers{};
    unsigned long long power = 1;
    for (unsigned long long& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

inline constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

inline std::size_t count_decimal(unsigned long long value) {
    value |= 1;  // 0 has one digit too, and no other number gets one more
    // 1233 / 4096 is the logarithm of 2 to the base 10, near enough for 64 bits.
    const auto guess = static_cast<std::size_t>(std::bit_width(value)) * 1233 >> 12;
    return guess + (value >= kPowersOfTen[guess] ? 1 : 0);
}

template <class Unit>
void put_pair(Unit* destination, std::size_t pair) {
    const char* digits = kDigitPairs.data() + 2 * pair;
    if constexpr (std::is_same<Unit, char>::value) {
        std::memcpy(destination, digits, 2);
    } else {
        destination[0] = static_cast<Unit>(digits[0]);
        destination[1] = static_cast<Unit>(digits[1]);
    }
}

/// Writes the number in decimal, its last digit in front of `end`.
template <class Unit>
void put_decimal(Unit* end, unsigned long long value) {
    while (value > UINT_MAX) {
        end -= 2;
        put_pair(end, static_cast<std::size_t>(value % 100));
        value /= 100;
    }
    auto rest = static_cast<unsigned>(value);
    while (rest >= 100) {
        end -= 2;
        put_pair(end, rest % 100);
        rest /= 100;
    }
    if (rest >= 10) {
        put_pair(end - 2, rest);
    } else {
        end[-1] = static_cast<Unit>('0' + rest);
    }
}

/// Writes `count` digits of `bits` bits each, the last in front of `end`.
template <class Unit>
void put_digits(Unit* end, unsigned long long value, std::size_t count, int bits,
                const char* digits) {
    const unsigned long long mask = (1ULL << bits) - 1;
    for (; count != 0; --count) {
        *--end = static_cast<Unit>(digits[value & mask]);
        value >>= bits;
    }
}

/// What stands in front of a number's digits: a sign and "0x".
struct NumberPrefix {
    void Put(char character) { text[length++] = character; }

    void PutSign(const Conversion& conversion, bool isNegative) {
        if (isNegative) {
            Put('-');
        } else if (conversion.Has(kPlus)) {
            Put('+');
        } else if (conversion.Has(kBlank)) {
            Put(' ');
        }
    }

    char text[3];
    std::size_t length = 0;
};

/// An integer, or a pointer that is not null, without what a width and a precision add in front of
/// its digits.
class IntegerText {
public:
    static constexpr std::size_t kMostDigits = 23;

    explicit IntegerText(const Conversion& conversion) noexcept;

    std::size_t Count() const { return count_; }

    /// Writes the digits, the last in front of `end`.
    template <class Unit>
    void Write(Unit* end) const {
        if (bits_ != 0) {
            put_digits(end, value_, count_, bits_, digits_);
        } else if (count_ != 0) {
            put_decimal(end, value_);
        }
    }

    NumberPrefix prefix;

private:
    void SetDecimal(const Conversion& conversion) noexcept;
    void SetHexadecimal(const Conversion& conversion) noexcept;
    void SetOctal(const Conversion& conversion) noexcept;

    unsigned long long value_;
    std::size_t count_ = 0;
    int bits_ = 0;  // of a digit; 0 in decimal
    const char* digits_ = "0123456789abcdef";
};

}  // namespace platform
