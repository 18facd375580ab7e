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

}  // namespace

FloatText::FloatText(double magnitude, char letter, int precision, bool keepsZeros) noexcept {
    if (!std::isfinite(magnitude)) {
        const char* words = std::isnan(magnitude) ? "nanNAN" : "infINF";
        whole = {words + (letter == 'G' ? 3 : 0), 3};
        return;
    }
    if (letter == 'f') {
        SetFixed(magnitude, precision);
    } else if (letter == 'e') {
        SetScientific(SetDigits(magnitude, precision + 1LL), 'e');
    } else {
        const int count = std::max(precision, 1);
        const int tens = SetDigits(magnitude, count);
        if (!keepsZeros) {
            DropZeros();
        }
        SetGeneral(tens, count, letter == 'G' ? 'E' : 'e');
    }
    hasPoint = keepsZeros || zeros != 0 || !fraction.empty();
}

void FloatText::SetFixed(double magnitude, int precision) noexcept {
    const int digits = std::min(precision, kMaxDigits);
    const char* end =
        std::to_chars(buffer_, std::end(buffer_), magnitude, std::chars_format::fixed, digits).ptr;
    const char* point = digits == 0 ? end : end - digits - 1;
    whole = {buffer_, static_cast<std::size_t>(point - buffer_)};
    fraction = {end - digits, static_cast<std::size_t>(digits)};
    zeros = static_cast<std::size_t>(precision - digits);
}

/// Sets the first digits; the result is the power of ten that the first of them counts.
int FloatText::SetDigits(double magnitude, long long count) noexcept {
    const int digits = static_cast<int>(std::min<long long>(count, kMaxDigits));
    zeros = static_cast<std::size_t>(count - digits);
    char* const first = buffer_ + kFront;
    const char* end = std::to_chars(first, std::end(buffer_), magnitude,
                                    std::chars_format::scientific, digits - 1)
                          .ptr;
    // The first digit takes the place of the point, if there is one.
    const int point = digits == 1 ? 0 : 1;
    first[point] = first[0];
    digits_ = {first + point, static_cast<std::size_t>(digits)};
    const char* sign = digits_.data() + digits + 1;
    int tens = 0;
    std::from_chars(sign + 1, end, tens);
    return *sign == '-' ? -tens : tens;
}

void FloatText::DropZeros() noexcept {
    const std::size_t last = digits_.find_last_not_of('0');
    digits_ = digits_.substr(0, last == std::string_view::npos ? 1 : last + 1);
    zeros = 0;
}

void FloatText::SetScientific(int tens, char letter) noexcept {
    whole = digits_.substr(0, 1);
    fraction = digits_.substr(1);
    const auto size = static_cast<unsigned>(std::abs(tens));
    char* p = exponent_;
    *p++ = letter;
    *p++ = tens < 0 ? '-' : '+';
    if (size >= 100) {
        *p++ = static_cast<char>('0' + size / 100);
    }
    *p++ = static_cast<char>('0' + size / 10 % 10);
    *p++ = static_cast<char>('0' + size % 10);
    exponent = {exponent_, static_cast<std::size_t>(p - exponent_)};
}

void FloatText::SetGeneral(int tens, int precision, char letter) noexcept {
    if (tens < -4 || tens >= precision) {
        SetScientific(tens, letter);
        return;
    }
    if (tens < 0) {
        const auto count = static_cast<std::size_t>(-tens - 1);
        char* const first = buffer_ + (digits_.data() - buffer_) - count;
        std::fill_n(first, count, '0');
        whole = "0";
        fraction = {first, count + digits_.size()};
        return;
    }
    // Zeros dropped in front of the point are still there.
    const auto count = static_cast<std::size_t>(tens) + 1;
    whole = {digits_.data(), count};
    fraction = digits_.substr(std::min(count, digits_.size()));
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
    constexpr int kRoom = 128;
    DecimalPoint<Unit> point;
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
