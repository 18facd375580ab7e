#include "print/integer.h"

#include <bit>
#include <cstdint>

#include "print/print.h"

namespace platform {

namespace {

std::size_t count_of_bits(unsigned long long value, unsigned bits) {
    return (static_cast<unsigned>(std::bit_width(value | 1)) + bits - 1) / bits;
}

template <class Unit>
int print_unsigned(Unit* destination, unsigned long long value) {
    const std::size_t count = count_decimal(value);
    put_decimal(destination + count, value);
    return static_cast<int>(count);
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

IntegerText::IntegerText(const Conversion& conversion) noexcept {
    if (conversion.kind == Kind::Pointer) {
        value_ = reinterpret_cast<std::uintptr_t>(conversion.pointer);
        prefix.PutSign(conversion, false);
        SetHexadecimal(conversion);
        return;
    }
    value_ = static_cast<unsigned long long>(conversion.integer);
    if (conversion.IsDecimal()) {
        SetDecimal(conversion);
    } else if (conversion.letter == 'o') {
        SetOctal(conversion);
    } else {
        SetHexadecimal(conversion);
    }
    // A 0 printed with the precision 0 has no digit, but for the one that `#` makes.
    if (value_ == 0 && conversion.Has(kPrecision) && conversion.precision == 0) {
        count_ = bits_ == 3 && conversion.Has(kAlternate) ? 1 : 0;
    }
}

void IntegerText::SetDecimal(const Conversion& conversion) noexcept {
    if (conversion.IsSigned()) {
        const bool isNegative = conversion.integer < 0;
        prefix.PutSign(conversion, isNegative);
        value_ = isNegative ? 0 - value_ : value_;
    }
    count_ = count_decimal(value_);
}

void IntegerText::SetHexadecimal(const Conversion& conversion) noexcept {
    const bool isPointer = conversion.kind == Kind::Pointer;
    bits_ = 4;
    count_ = count_of_bits(value_, 4);
    if (conversion.letter == 'X') {
        digits_ = "0123456789ABCDEF";
    }
    if (isPointer || (conversion.Has(kAlternate) && value_ != 0)) {
        prefix.Put('0');
        prefix.Put(conversion.letter == 'X' ? 'X' : 'x');
    }
}

void IntegerText::SetOctal(const Conversion& conversion) noexcept {
    bits_ = 3;
    count_ = count_of_bits(value_, 3);
    // `#` makes the first digit a 0, unless the precision does that.
    const bool isEnough = conversion.precision > static_cast<int>(count_);
    if (conversion.Has(kAlternate) && value_ != 0 && !isEnough) {
        ++count_;
    }
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
