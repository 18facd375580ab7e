#include "print_integer.h"

#include <array>
#include <bit>
#include <cstdint>

#include "print.h"

namespace platform {

namespace {

constexpr std::array<char, 200> kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

int count_digits(unsigned long long value) {
    value |= 1;  // 0 has one digit too, and no other number gets one more
    const auto guess =
        static_cast<std::size_t>(tens_of_bits(static_cast<int>(std::bit_width(value))));
    return static_cast<int>(guess) + (value >= kPowersOfTen[guess] ? 1 : 0);
}

template <class Unit>
Unit* put_decimal(Unit* end, unsigned long long value) {
    while (value >= 100) {
        const std::size_t pair = 2 * static_cast<std::size_t>(value % 100);
        value /= 100;
        *--end = static_cast<Unit>(kPairs[pair + 1]);
        *--end = static_cast<Unit>(kPairs[pair]);
    }
    if (value >= 10) {
        const std::size_t pair = 2 * static_cast<std::size_t>(value);
        *--end = static_cast<Unit>(kPairs[pair + 1]);
        *--end = static_cast<Unit>(kPairs[pair]);
    } else {
        *--end = static_cast<Unit>('0' + value);
    }
    return end;
}

char* put_octal(char* end, unsigned long long value) {
    do {
        *--end = static_cast<char>('0' + (value & 7));
        value >>= 3;
    } while (value != 0);
    return end;
}

char* put_hexadecimal(char* end, unsigned long long value, bool isUpper) {
    const char* digits = isUpper ? "0123456789ABCDEF" : "0123456789abcdef";
    do {
        *--end = digits[value & 15];
        value >>= 4;
    } while (value != 0);
    return end;
}

/// A 0 printed with the precision 0 has none.
bool has_digits(const Conversion& conversion) {
    return conversion.integer != 0 || !conversion.Has(kPrecision) || conversion.precision != 0;
}

template <class Unit>
int print_unsigned(Unit* destination, unsigned long long value) {
    const int count = count_digits(value);
    put_decimal(destination + count, value);
    return count;
}

template <class Unit>
int print_signed(Unit* destination, long long value) {
    if (value >= 0) {
        return print_unsigned(destination, static_cast<unsigned long long>(value));
    }
    *destination = Unit{'-'};
    return 1 + print_unsigned(destination + 1, 0 - static_cast<unsigned long long>(value));
}

}  // namespace

IntegerText::IntegerText(const Conversion& conversion) noexcept : digits(buffer_ + kRoom) {
    if (conversion.kind == Kind::Pointer) {
        SetPointer(conversion);
        return;
    }
    switch (conversion.letter) {
        case 'o':
            SetOctal(conversion, static_cast<unsigned long long>(conversion.integer));
            break;
        case 'x':
        case 'X':
            SetHexadecimal(conversion, static_cast<unsigned long long>(conversion.integer));
            break;
        default:
            SetDecimal(conversion);
            break;
    }
}

void IntegerText::SetDecimal(const Conversion& conversion) noexcept {
    const bool isNegative = conversion.IsSigned() && conversion.integer < 0;
    unsigned long long value = static_cast<unsigned long long>(conversion.integer);
    if (conversion.IsSigned()) {
        prefix.PutSign(conversion, isNegative);
    }
    if (isNegative) {
        value = 0 - value;
    }
    if (has_digits(conversion)) {
        digits = put_decimal(buffer_ + kRoom, value);
    }
}

void IntegerText::SetHexadecimal(const Conversion& conversion, unsigned long long value) noexcept {
    if (has_digits(conversion)) {
        digits = put_hexadecimal(buffer_ + kRoom, value, conversion.letter == 'X');
    }
    if (conversion.Has(kAlternate) && value != 0) {
        prefix.Put('0');
        prefix.Put(conversion.letter);
    }
}

void IntegerText::SetOctal(const Conversion& conversion, unsigned long long value) noexcept {
    char* first = buffer_ + kRoom;
    if (has_digits(conversion)) {
        first = put_octal(first, value);
    }
    // `#` makes the first digit a 0, unless the precision does that.
    const bool isAlternate = conversion.Has(kAlternate);
    const bool hasZero = first != buffer_ + kRoom && *first == '0';
    if (isAlternate && !hasZero && buffer_ + kRoom - first >= conversion.precision) {
        *--first = '0';
    }
    digits = first;
}

void IntegerText::SetPointer(const Conversion& conversion) noexcept {
    prefix.PutSign(conversion, false);
    prefix.Put('0');
    prefix.Put('x');
    digits = put_hexadecimal(buffer_ + kRoom, reinterpret_cast<std::uintptr_t>(conversion.pointer),
                             false);
}

int print_integer(char* destination, long long value) noexcept {
    return print_signed(destination, value);
}

int print_integer(char* destination, unsigned long long value) noexcept {
    return print_unsigned(destination, value);
}

int print_integer(char16_t* destination, long long value) noexcept {
    return print_signed(destination, value);
}

int print_integer(char16_t* destination, unsigned long long value) noexcept {
    return print_unsigned(destination, value);
}

}  // namespace platform
