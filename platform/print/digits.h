#pragma once

#include <array>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// Digits of unsigned numbers.
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

}  // namespace platform
