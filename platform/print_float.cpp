#include "print_float.h"

#include <langinfo.h>

#include <charconv>
#include <cmath>

#include "conversion.h"
#include "print.h"

namespace platform {

namespace {

std::string_view locale_point() {
    const char* text = ::nl_langinfo(RADIXCHAR);
    const std::size_t length = ::strnlen(text, MB_LEN_MAX + 1);
    return length != 0 && length <= MB_LEN_MAX ? std::string_view(text, length) : ".";
}

}  // namespace

FloatText::FloatText(double magnitude, char letter, int precision, bool keepsZeros) noexcept {
    if (!std::isfinite(magnitude)) {
        const char* word = std::isnan(magnitude) ? "nanNAN" : "infINF";
        whole = {word + (letter == 'G' ? 3 : 0), 3};
        return;
    }
    if (letter == 'e') {
        SetScientific(magnitude, precision);
    } else if (letter == 'f') {
        SetFixed(magnitude, precision);
    } else if (keepsZeros) {
        SetGeneralWithZeros(magnitude, std::max(precision, 1));
    } else {
        SetGeneral(magnitude, std::max(precision, 1));
    }
    hasPoint = hasPoint || keepsZeros;
    if (letter == 'G' && !exponent.empty()) {
        buffer_[exponent.data() - buffer_] = 'E';
    }
}

void FloatText::SetScientific(double magnitude, int precision) noexcept {
    const int digits = std::min(precision, kMaxPrecision);
    zeros = static_cast<std::size_t>(precision - digits);
    Split(
        std::to_chars(buffer_, std::end(buffer_), magnitude, std::chars_format::scientific, digits)
            .ptr);
}

void FloatText::SetFixed(double magnitude, int precision) noexcept {
    const int digits = std::min(precision, kMaxPrecision);
    zeros = static_cast<std::size_t>(precision - digits);
    Split(
        std::to_chars(buffer_, std::end(buffer_), magnitude, std::chars_format::fixed, digits).ptr);
}

void FloatText::SetGeneral(double magnitude, int precision) noexcept {
    const int digits = std::min(precision, kMaxPrecision);
    Split(std::to_chars(buffer_, std::end(buffer_), magnitude, std::chars_format::general, digits)
              .ptr);
}

// The style is chosen by the exponent after rounding, which only the scientific text tells.
void FloatText::SetGeneralWithZeros(double magnitude, int precision) noexcept {
    SetScientific(magnitude, precision - 1);
    int tens = 0;
    std::from_chars(exponent.data() + 2, exponent.data() + exponent.size(), tens);
    if (exponent[1] == '-') {
        tens = -tens;
    }
    if (tens >= -4 && tens < precision) {
        SetFixed(magnitude, precision - 1 - tens);
    }
}

void FloatText::Split(const char* end) noexcept {
    const auto span = [](const char* first, const char* last) {
        return std::string_view(first, static_cast<std::size_t>(last - first));
    };
    const char* p = buffer_;
    while (p != end && is_format_digit(*p)) {
        ++p;
    }
    whole = span(buffer_, p);
    hasPoint = p != end && *p == '.';
    if (hasPoint) {
        ++p;
    }
    const char* first = p;
    while (p != end && is_format_digit(*p)) {
        ++p;
    }
    fraction = span(first, p);
    exponent = span(p, end);
}

template <>
void DecimalPoint<char>::LookUp() {
    const std::string_view text = locale_point();
    std::copy(text.begin(), text.end(), units_);
    length_ = text.size();
}

template <>
void DecimalPoint<char16_t>::LookUp() {
    const std::string_view text = locale_point();
    units_[0] = static_cast<char16_t>(text[0]);
    length_ = 1;
    if (text.size() == 1 && static_cast<unsigned char>(text[0]) < 0x80) {
        return;
    }
    const int count = MultiByteToWideChar(page_.Get().number, text.data(),
                                          static_cast<int>(text.size()), units_, MB_LEN_MAX);
    if (count > 0) {
        length_ = static_cast<std::size_t>(count);
    } else {
        units_[0] = u'.';
    }
}

namespace {

template <class Unit>
int print_general_into(Unit* destination, double value) {
    constexpr int kRoom = 128;
    ProcessPage page;
    DecimalPoint<Unit> point(page);
    Sink<Unit> sink(destination, kRoom);
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
