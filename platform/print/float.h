#pragma once

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
    static constexpr int kFront = 8;  // for zeros in front of the digits

    void SetFixed(double magnitude, int precision) noexcept;
    int SetDigits(double magnitude, long long count) noexcept;
    void SetScientific(int tens, char letter) noexcept;
    void SetGeneral(int tens, int precision, char letter) noexcept;
    void DropZeros() noexcept;

    std::string_view digits_;
    char exponent_[5];
    char buffer_[kMaxWhole + 1 + kMaxDigits + kFront];
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
