#include "print/float.h"

#include <langinfo.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "numbers.h"
#include "print/print.h"

namespace platform {

namespace {

std::string_view locale_point() {
    const char* text = ::nl_langinfo(RADIXCHAR);
    const std::size_t length = ::strnlen(text, MB_LEN_MAX + 1);
    return length != 0 && length <= MB_LEN_MAX ? std::string_view(text, length) : ".";
}

// Where an exponent begins, of two or three digits, or the end.
std::size_t exponent_in(std::string_view text) {
    for (const std::size_t size : {4U, 5U}) {
        if (text.size() > size && text[text.size() - size] == 'e') {
            return text.size() - size;
        }
    }
    return text.size();
}

}  // namespace

FloatText::FloatText(double magnitude, char letter, int precision, bool keepsZeros) noexcept {
    if (!std::isfinite(magnitude)) {
        const char* words = std::isnan(magnitude) ? "nanNAN" : "infINF";
        whole = {words + (letter == 'G' ? 3 : 0), 3};
        return;
    }
    if (letter == 'f') {
        Set(magnitude, std::chars_format::fixed, precision);
    } else if (letter == 'e') {
        Set(magnitude, std::chars_format::scientific, precision);
    } else if (keepsZeros) {
        SetGeneral(magnitude, std::max(precision, 1));
    } else {
        Set(magnitude, std::chars_format::general, precision);
        zeros = 0;
    }
    if (letter == 'G' && !exponent.empty()) {
        buffer_[exponent.data() - buffer_] = 'E';
    }
    hasPoint = keepsZeros || zeros != 0 || !fraction.empty();
}

/// The digits that can be other than 0, in slices of what the standard library prints.
void FloatText::Set(double magnitude, std::chars_format format, long long precision) noexcept {
    const int digits = static_cast<int>(std::min<long long>(precision, kMaxDigits));
    const char* end = std::to_chars(buffer_, std::end(buffer_), magnitude, format, digits).ptr;
    const std::string_view text(buffer_, static_cast<std::size_t>(end - buffer_));
    const std::size_t front = format == std::chars_format::fixed ? text.size() : exponent_in(text);
    const std::size_t point = std::min(text.find('.'), front);
    whole = text.substr(0, point);
    fraction = text.substr(std::min(point + 1, front), front - std::min(point + 1, front));
    exponent = text.substr(front);
    zeros = static_cast<std::size_t>(precision - digits);
}

/// With all zeros, of which the standard library has no form: the power of ten of the first digit
/// says which of the other two it is.
void FloatText::SetGeneral(double magnitude, long long precision) noexcept {
    Set(magnitude, std::chars_format::scientific, precision - 1);
    int tens = 0;
    std::from_chars(exponent.data() + 2, exponent.data() + exponent.size(), tens);
    tens = exponent[1] == '-' ? -tens : tens;
    if (tens >= -4 && tens < precision) {
        Set(magnitude, std::chars_format::fixed, precision - 1 - tens);
    }
}

template <>
void DecimalPoint<char>::LookUp() {
    const std::string_view text = locale_point();
    std::copy(text.begin(), text.end(), units_);
    length_ = text.size();
}

template <>
void DecimalPoint<char16_t>::LookUp() {
    units_[0] = wide_decimal_point();
    length_ = 1;
}

namespace {

template <class Unit>
int print_general_into(Unit* destination, double value) {
    DecimalPoint<Unit> point;
    Sink<Unit> sink(destination, kGeneralRoom);
    if (std::signbit(value)) {
        sink.Put(Unit{'-'});
    }
    put_float(sink, point, FloatText(std::abs(value), 'g', 6, false));
    return static_cast<int>(sink.Next() - destination);
}

}  // namespace

int print_general(char* destination, double value) noexcept {
    return print_general_into(destination, value);
}

int print_general(char16_t* destination, double value) noexcept {
    return print_general_into(destination, value);
}

}  // namespace platform
