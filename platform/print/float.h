#pragma once

#include <charconv>
#include <climits>
#include <cstddef>
#include <string_view>

#include "print/sink.h"
#include "print/syntax.h"

namespace platform {

/// The text of a double without its sign, in the pieces between which the print puts the locale's
/// decimal point and zeros without end.
class FloatText {
public:
    /// `letter` is one of e, f, g, G. `keepsZeros` is the flag `#`.
    FloatText(double magnitude, char letter, int precision, bool keepsZeros) noexcept;
    FloatText(const FloatText&) = delete;
    FloatText& operator=(const FloatText&) = delete;

    std::string_view whole;
    bool hasPoint = false;
    std::string_view fraction;
    std::size_t zeros = 0;  ///< behind the fraction
    std::string_view exponent;

private:
    // No double has a digit other than 0 behind this one, whether counted from the point or from
    // the first digit.
    static constexpr int kMaxDigits = 1074;
    static constexpr int kMaxWhole = 309;

    void Set(double magnitude, std::chars_format format, long long precision) noexcept;
    void SetGeneral(double magnitude, long long precision) noexcept;

    char buffer_[kMaxWhole + 1 + kMaxDigits];
};

/// The decimal point of the thread's locale, looked up when the first number needs it.
template <class Unit>
class DecimalPoint {
public:
    void Put(Sink<Unit>& sink) {
        Load();
        sink.Put(units_, length_);
    }
    std::size_t Length() {
        Load();
        return length_;
    }

private:
    void Load() {
        if (length_ == 0) {
            LookUp();
        }
    }
    void LookUp();

    std::size_t length_ = 0;
    Unit units_[MB_LEN_MAX];
};

template <class Unit>
void put_float(Sink<Unit>& sink, DecimalPoint<Unit>& point, const FloatText& text) {
    sink.PutAscii(text.whole.data(), text.whole.size());
    if (text.hasPoint) {
        point.Put(sink);
    }
    sink.PutAscii(text.fraction.data(), text.fraction.size());
    sink.Fill('0', text.zeros);
    sink.PutAscii(text.exponent.data(), text.exponent.size());
}

}  // namespace platform
