#pragma once

#include <cstddef>

#include "print/digits.h"
#include "print/syntax.h"

namespace platform {

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
