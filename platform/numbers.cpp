#include "numbers.h"

#include <ctype.h>
#include <langinfo.h>
#include <string.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace platform {
namespace {

constexpr unsigned kNoDigit = ~0U;

bool is_space(char unit) {
    return isspace(static_cast<unsigned char>(unit)) != 0;
}

bool is_space(char16_t unit) {
    return iswspace(unit) != 0;
}

// The digit's value; 10 or more where there is none.
template <class Unit>
unsigned decimal_digit(Unit unit) {
    return static_cast<unsigned>(unit) - '0';
}

template <class Unit, unsigned kRadix>
unsigned digit_of(Unit unit) {
    const unsigned decimal = decimal_digit(unit);
    if (kRadix == 10 || decimal < 10) {
        return decimal;
    }
    const unsigned letter = (static_cast<unsigned>(unit) | 0x20U) - 'a';
    return letter < kRadix - 10 ? letter + 10 : kNoDigit;
}

// Goes over white space and a sign; whether the sign was a minus.
template <class Unit>
bool read_sign(const Unit*& text) {
    if (decimal_digit(*text) >= 10) {
        while (*text != 0 && is_space(*text)) {
            ++text;
        }
    }
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') {
        ++text;
    }
    return isNegative;
}

template <class Result, unsigned kRadix, class Unit>
Result read_integer(const Unit* text) {
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<Result>::max());
    const bool isNegative = read_sign(text);
    if (kRadix == 16 && text[0] == '0' && (text[1] | 0x20) == 'x') {
        text += 2;
    }
    std::uint64_t value = 0;
    for (unsigned digit; (digit = digit_of<Unit, kRadix>(*text)) < kRadix; ++text) {
        // The digit takes the value out of range, the limit of a negative one included.
        if (value > kMax / kRadix) {
            value = kMax + 1;
            break;
        }
        value = value * kRadix + digit;
    }
    value = std::min(value, kMax + isNegative);
    return static_cast<Result>(isNegative ? 0 - value : value);
}

// Bytes or units of the locale's decimal point at the text, 0 if there is none.
std::size_t point_length(const char* text) {
    const char* const point = nl_langinfo(RADIXCHAR);
    std::size_t length = 0;
    while (point[length] != 0 && point[length] == text[length]) {
        ++length;
    }
    return point[length] == 0 ? length : 0;
}

std::size_t point_length(const char16_t* text) {
    return wide_decimal_point() == *text ? 1 : 0;
}

// Which units the text of a number may hold besides a decimal point.
constexpr auto kIsNumberPart = [] {
    std::array<bool, 128> isPart{};
    for (const char part : std::string_view("0123456789eE+-")) {
        isPart[static_cast<unsigned char>(part)] = true;
    }
    return isPart;
}();

template <class Unit>
bool is_number_part(Unit unit) {
    const auto value = static_cast<std::make_unsigned_t<Unit>>(unit);
    return value < kIsNumberPart.size() && kIsNumberPart[value];
}

// The number at the text in the form that `from_chars` takes, or its beginning where it is
// uncommonly long.
class ShortNumber {
public:
    explicit ShortNumber(const char* text) {
        const char* const point = nl_langinfo(RADIXCHAR);
        if (point[0] == '.' && point[1] == 0) {
            first_ = text;
            count_ = strnlen(text, kRoom);
        } else {
            Copy(text);
        }
    }
    explicit ShortNumber(const char16_t* text) { Copy(text); }
    ShortNumber(const ShortNumber&) = delete;
    ShortNumber& operator=(const ShortNumber&) = delete;

    // It starts with a digit, or with the point and a digit: no second sign and no word.
    bool IsNumber() const {
        const std::size_t digit = count_ > 0 && *first_ == '.';
        return digit < count_ && decimal_digit(first_[digit]) < 10;
    }

    // False where the value is out of range, or the number may go on.
    bool Read(double& value) const {
        const std::from_chars_result result = std::from_chars(first_, first_ + count_, value);
        // At the end may stand an exponent that lacks its digits: its letter and its sign.
        const bool isWhole = count_ < kRoom || result.ptr < first_ + kRoom - 2;
        return result.ec != std::errc::result_out_of_range && isWhole;
    }

private:
    static constexpr std::size_t kRoom = 64;

    template <class Unit>
    void Copy(const Unit* text) {
        while (count_ < kRoom) {
            if (is_number_part(*text)) {
                copy_[count_++] = static_cast<char>(*text++);
            } else if (const std::size_t point = *text != 0 ? point_length(text) : 0) {
                copy_[count_++] = '.';
                text += point;
            } else {
                break;
            }
        }
        first_ = copy_;
    }

    const char* first_;
    std::size_t count_ = 0;
    char copy_[kRoom];
};

// A number of any length, as its significant digits and a power of ten. Digits that are too many to
// matter are dropped: no double and no midpoint between two has more than 768, so behind that many
// it only counts whether anything but 0 follows, and a 1 says so.
class LongNumber {
public:
    void Add(unsigned digit, bool isFraction) {
        if (count_ == 0 && digit == 0) {
            power_ -= isFraction;
        } else if (count_ < kKept) {
            digits_[count_++] = static_cast<char>('0' + digit);
            power_ -= isFraction;
        } else {
            hasRest_ |= digit != 0;
            power_ += !isFraction;
        }
    }

    void Scale(std::int64_t power) { power_ += power; }

    double Value() {
        if (count_ == 0) {
            return 0;
        }
        if (hasRest_) {
            digits_[count_++] = '1';
            --power_;
        }
        const std::int64_t power = std::clamp(power_, -kEnough, kEnough);
        char* end = digits_ + count_;
        *end++ = 'e';
        end = std::to_chars(end, std::end(digits_), power).ptr;
        // Stays as it is where the number is out of range.
        double value = power > -static_cast<std::int64_t>(count_) ? HUGE_VAL : 0;
        std::from_chars(digits_, end, value);
        return value;
    }

private:
    static constexpr std::size_t kKept = 800;
    // Beyond any double, whatever the digits are.
    static constexpr std::int64_t kEnough = 9999;

    std::size_t count_ = 0;
    std::int64_t power_ = 0;
    bool hasRest_ = false;
    char digits_[kKept + sizeof "1e-9999"];
};

template <class Unit>
void read_digits(const Unit*& text, LongNumber& number, bool isFraction) {
    for (unsigned digit; (digit = decimal_digit(*text)) < 10; ++text) {
        number.Add(digit, isFraction);
    }
}

// The power at the text; 0 where it lacks the letter or a digit.
template <class Unit>
std::int64_t read_power(const Unit* text) {
    if ((*text | 0x20) != 'e') {
        return 0;
    }
    ++text;
    const bool isNegative = *text == '-';
    if (isNegative || *text == '+') {
        ++text;
    }
    // Outweighs any number of digits in memory.
    constexpr std::int64_t kEnough = 1'000'000'000'000'000;
    std::int64_t power = 0;
    for (unsigned digit; (digit = decimal_digit(*text)) < 10; ++text) {
        power = power < kEnough ? power * 10 + digit : power;
    }
    return isNegative ? -power : power;
}

// There is a number at the text, without a sign.
template <class Unit>
double read_long(const Unit* text) {
    LongNumber number;
    read_digits(text, number, false);
    if (const std::size_t point = *text != 0 ? point_length(text) : 0) {
        text += point;
        read_digits(text, number, true);
    }
    number.Scale(read_power(text));
    return number.Value();
}

template <class Unit>
double read_double(const Unit* text) {
    const bool isNegative = read_sign(text);
    const ShortNumber number(text);
    double value = 0;
    if (!number.IsNumber()) {
        return 0;
    }
    if (!number.Read(value)) {
        value = read_long(text);
    }
    return isNegative ? -value : value;
}

}  // namespace

std::int32_t atoi(const char* text) noexcept {
    return read_integer<std::int32_t, 10>(text);
}

std::int32_t atol(const char* text) noexcept {
    return read_integer<std::int32_t, 10>(text);
}

std::int64_t _atoi64(const char* text) noexcept {
    return read_integer<std::int64_t, 10>(text);
}

std::int32_t _wtoi(const char16_t* text) noexcept {
    return read_integer<std::int32_t, 10>(text);
}

std::int32_t _wtol(const char16_t* text) noexcept {
    return read_integer<std::int32_t, 10>(text);
}

std::int64_t _wtoi64(const char16_t* text) noexcept {
    return read_integer<std::int64_t, 10>(text);
}

std::int32_t strtol(const char* text) noexcept {
    return read_integer<std::int32_t, 16>(text);
}

std::int64_t _strtoi64(const char* text) noexcept {
    return read_integer<std::int64_t, 16>(text);
}

std::int32_t wcstol(const char16_t* text) noexcept {
    return read_integer<std::int32_t, 16>(text);
}

std::int64_t _wcstoi64(const char16_t* text) noexcept {
    return read_integer<std::int64_t, 16>(text);
}

double atof(const char* text) noexcept {
    return read_double(text);
}

double _wtof(const char16_t* text) noexcept {
    return read_double(text);
}

char16_t wide_decimal_point() noexcept {
    // This item is no pointer but in its first bytes the character itself. Its codeset need not be
    // the text's, so the narrow one cannot be converted.
    const char* const item = nl_langinfo(_NL_NUMERIC_DECIMAL_POINT_WC);
    std::uint32_t point;
    memcpy(&point, &item, sizeof point);
    return point != 0 && point <= 0xFFFF ? static_cast<char16_t>(point) : u'.';
}

}  // namespace platform
