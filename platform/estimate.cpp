#include <algorithm>
#include <climits>
#include <cmath>

#include "format_syntax.h"
#include "print.h"
#include "wide_text.h"

namespace platform {

namespace {

// The longest decimal point of a locale that the print uses, and the most bytes of a 16-bit unit.
constexpr long long kMaxPoint = MB_LEN_MAX;
constexpr long long kMaxEncoded = 4;

constexpr long long kNullTextLength = 6;
constexpr long long kIntegerAllowance = 32;
constexpr long long kMostDigits = 22;  // 64 bits in octal

// Does not read past a precision: nothing behind it is printed.
std::size_t measure(const char* text, int precision) {
    return precision != 0 ? ::strnlen(text, static_cast<std::size_t>(precision))
                          : std::strlen(text);
}

std::size_t measure(const char16_t* text, int precision) {
    if (precision == 0) {
        return wcslen(text);
    }
    std::size_t length = 0;
    while (length < static_cast<std::size_t>(precision) && text[length] != u'\0') {
        ++length;
    }
    return length;
}

/// Sums up the allowance, which follows fixed rules, and next to it what the print can write at
/// the most, so that a caller knows when it can rely on the allowance.
template <class Unit>
class Estimator {
public:
    void Literal(const Unit*, std::size_t count) {
        constexpr long long kAllowance = kIsWide ? 2 : 1;
        allowance_ += static_cast<long long>(count) * kAllowance;
        most_ += static_cast<long long>(count);
    }

    void PlainInteger(int) {
        allowance_ += kIntegerAllowance;
        most_ += kMostDigits;
    }

    void PlainText(const Unit* text) {
        const long long length =
            text != nullptr ? static_cast<long long>(measure(text, 0)) : kNullTextLength;
        allowance_ += std::max<long long>(length, 1);
        most_ += length;
    }

    void Convert(const Conversion& conversion) {
        allowance_ += 2 * conversion.alternates;
        switch (conversion.kind) {
            case Kind::Character:
                AddText(conversion, 2, conversion.isWide && !kIsWide ? kMaxEncoded : 1);
                return;
            case Kind::Text:
                AddTextArgument(conversion);
                return;
            case Kind::Integer:
            case Kind::Pointer:
                AddInteger(conversion);
                return;
            case Kind::Floating:
                AddFloating(conversion);
                return;
            case Kind::Nothing:
            case Kind::None:
                return;
        }
    }

    Estimate Result() const {
        return {static_cast<int>(std::min<long long>(allowance_, INT_MAX)), most_ <= allowance_};
    }

private:
    static constexpr bool kIsWide = std::is_same<Unit, char16_t>::value;

    void Add(const Conversion& conversion, long long allowance, long long most) {
        allowance_ += allowance;
        most_ += std::max<long long>(most, conversion.width);
    }

    void AddText(const Conversion& conversion, long long base, long long most) {
        if (conversion.precision != 0) {
            base = std::min<long long>(base, conversion.precision);
        }
        Add(conversion, std::max<long long>(base, conversion.width), most);
    }

    void AddTextArgument(const Conversion& conversion) {
        long long length = kNullTextLength;
        if (conversion.pointer != nullptr) {
            length = static_cast<long long>(
                conversion.isWide ? measure(conversion.WideText(), conversion.precision)
                                  : measure(conversion.NarrowText(), conversion.precision));
        }
        long long most = conversion.isWide && !kIsWide ? length * kMaxEncoded : length;
        if (conversion.Has(kPrecision)) {
            most = std::min<long long>(most, conversion.precision);
        }
        AddText(conversion, std::max<long long>(length, 1), most);
    }

    void AddInteger(const Conversion& conversion) {
        constexpr long long kPrefix = 3;  // the sign and 0x of a pointer
        const long long sum = static_cast<long long>(conversion.width) + conversion.precision;
        Add(conversion, std::max<long long>(kIntegerAllowance, sum),
            std::max<long long>(kMostDigits, conversion.precision) + kPrefix);
    }

    void AddFloating(const Conversion& conversion) {
        const long long precision = conversion.precision;
        const long long printed =
            conversion.Has(kPrecision) ? std::max<long long>(precision, 1) : 6;
        if (conversion.letter == 'f') {
            const long long whole = std::abs(conversion.real) < 1e280 ? 280 : 309;
            Add(conversion, precision + 312, 1 + whole + kMaxPoint + printed);
            return;
        }
        // sign, digit, four zeros or an exponent of five
        Add(conversion, std::max<long long>(128, conversion.width + precision),
            7 + kMaxPoint + printed);
    }

    long long allowance_ = 0;
    long long most_ = 0;
};

template <class Unit>
Estimate estimate_format(const Unit* format, va_list arguments) {
    ProcessPage page;
    Estimator<Unit> estimator;
    walk_format(format, arguments, page, estimator);
    return estimator.Result();
}

}  // namespace

Estimate estimate(const char* format, va_list arguments) {
    return estimate_format(format, arguments);
}

Estimate estimate(const char16_t* format, va_list arguments) {
    return estimate_format(format, arguments);
}

}  // namespace platform
