#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <type_traits>

#include "print/print.h"
#include "print/syntax.h"

namespace platform {

/// Sums up the allowance of a format, which follows fixed rules and is no bound.
template <class Unit>
class Estimator {
public:
    void Literal(const Unit*, std::size_t count) {
        constexpr long long kPerUnit = kIsWide ? 2 : 1;
        allowance_ += static_cast<long long>(count) * kPerUnit;
    }

    void PlainInteger(int) { allowance_ += kIntegerRoom; }

    void PlainText(const Unit* text) {
        AddPlainText(text != nullptr ? length_of(text) : kNullText.size());
    }

    /// Adds a plain text that is measured already.
    void AddPlainText(std::size_t length) {
        allowance_ += static_cast<long long>(std::max<std::size_t>(length, 1));
    }

    void Convert(const Conversion& conversion) {
        allowance_ += 2 * conversion.alternates;
        switch (conversion.kind) {
            case Kind::Character:
                AddText(conversion, 2);
                return;
            case Kind::Text:
                AddText(conversion, LengthOfText(conversion));
                return;
            case Kind::Integer:
            case Kind::Pointer:
                allowance_ += std::max<long long>(kIntegerRoom, WidthAndPrecision(conversion));
                return;
            case Kind::Floating:
                allowance_ +=
                    conversion.letter == 'f'
                        ? conversion.precision + kFixed
                        : std::max<long long>(kGeneralRoom, WidthAndPrecision(conversion));
                return;
            case Kind::Nothing:
            case Kind::None:
                return;
        }
    }

    int Result() const { return static_cast<int>(std::min<long long>(allowance_, INT_MAX)); }

private:
    static constexpr bool kIsWide = std::is_same<Unit, char16_t>::value;
    static constexpr long long kFixed = 312;

    static long long WidthAndPrecision(const Conversion& conversion) {
        return static_cast<long long>(conversion.width) + conversion.precision;
    }

    /// Does not read past a precision: nothing behind it is printed.
    template <class Any>
    static std::size_t Measure(const Any* text, int precision) {
        return precision == 0 ? length_of(text)
                              : bounded_length(text, static_cast<std::size_t>(precision));
    }

    static long long LengthOfText(const Conversion& conversion) {
        std::size_t length = kNullText.size();
        if (conversion.pointer != nullptr) {
            length = conversion.isWide ? Measure(conversion.WideText(), conversion.precision)
                                       : Measure(conversion.NarrowText(), conversion.precision);
        }
        return static_cast<long long>(std::max<std::size_t>(length, 1));
    }

    void AddText(const Conversion& conversion, long long length) {
        if (conversion.precision != 0) {
            length = std::min<long long>(length, conversion.precision);
        }
        allowance_ += std::max<long long>(length, conversion.width);
    }

    long long allowance_ = 0;
};

}  // namespace platform
