#pragma once

#include <array>
#include <cstddef>

#include "format_syntax.h"

namespace platform {

constexpr std::array<unsigned long long, 20> kPowersOfTen = [] {
    std::array<unsigned long long, 20> powers{};
    unsigned long long power = 1;
    for (unsigned long long& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

/// The whole part of the logarithm to the base 10 of 2 ** bits, for |bits| up to 1100.
constexpr int tens_of_bits(int bits) {
    return static_cast<int>((bits * 315653LL) >> 20);
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

/// The digits of an integer or of a pointer that is not null, without what a width and a precision
/// add in front of them.
class IntegerText {
public:
    explicit IntegerText(const Conversion& conversion) noexcept;
    IntegerText(const IntegerText&) = delete;
    IntegerText& operator=(const IntegerText&) = delete;

    NumberPrefix prefix;
    const char* digits;

    std::size_t Count() const { return static_cast<std::size_t>(buffer_ + kRoom - digits); }

private:
    void SetPointer(const Conversion& conversion) noexcept;
    void SetDecimal(const Conversion& conversion) noexcept;
    void SetHexadecimal(const Conversion& conversion, unsigned long long value) noexcept;
    void SetOctal(const Conversion& conversion, unsigned long long value) noexcept;

    static constexpr int kRoom = 24;
    char buffer_[kRoom];
};

}  // namespace platform
