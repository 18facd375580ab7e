#include "numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "locales.h"

namespace {

std::u16string Widen(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

template <class Visit>
void ForAllTexts(const std::vector<std::string>& pieces, int longest, Visit visit,
                 const std::string& text = "") {
    visit(text);
    if (longest == 0) {
        return;
    }
    for (const std::string& piece : pieces) {
        ForAllTexts(pieces, longest - 1, visit, text + piece);
    }
}

std::int32_t Clamped(std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

void ExpectIntegers(const std::string& text) {
    const std::int64_t decimal = std::strtoll(text.c_str(), nullptr, 10);
    const std::int64_t hexadecimal = std::strtoll(text.c_str(), nullptr, 16);
    const std::u16string wide = Widen(text);
    errno = 77;
    ASSERT_EQ(platform::_atoi64(text.c_str()), decimal) << text;
    ASSERT_EQ(platform::_wtoi64(wide.c_str()), decimal) << text;
    ASSERT_EQ(platform::_strtoi64(text.c_str()), hexadecimal) << text;
    ASSERT_EQ(platform::_wcstoi64(wide.c_str()), hexadecimal) << text;
    ASSERT_EQ(platform::atoi(text.c_str()), Clamped(decimal)) << text;
    ASSERT_EQ(platform::atol(text.c_str()), Clamped(decimal)) << text;
    ASSERT_EQ(platform::_wtoi(wide.c_str()), Clamped(decimal)) << text;
    ASSERT_EQ(platform::_wtol(wide.c_str()), Clamped(decimal)) << text;
    ASSERT_EQ(platform::strtol(text.c_str()), Clamped(hexadecimal)) << text;
    ASSERT_EQ(platform::wcstol(wide.c_str()), Clamped(hexadecimal)) << text;
    ASSERT_EQ(errno, 77) << text;
}

TEST(Integers, AgreeWithTheCLibraryOnAllShortTexts) {
    ForAllTexts({" ", "+", "-", "0", "x", "1", "f", "F", "9"}, 5, ExpectIntegers);
}

TEST(Integers, TakeTheNearerLimit) {
    for (const std::string limit :
         {"2147483647", "2147483648", "2147483649", "4294967296", "9223372036854775806",
          "9223372036854775807", "9223372036854775808", "9223372036854775809", "7fffffff",
          "80000000", "7fffffffffffffff", "8000000000000000", "8000000000000001",
          "ffffffffffffffff", "18446744073709551616", "99999999999999999999999999"}) {
        for (const char* sign : {"", "-", "+"}) {
            for (const char* zeros : {"", "0", "0000000000000000000000000"}) {
                for (const char* behind : {"", "0", "f", "z", ".5"}) {
                    ExpectIntegers(sign + (zeros + limit) + behind);
                }
            }
        }
    }
}

TEST(Integers, KnowTheDigitsOfAsciiOnly) {
    EXPECT_EQ(platform::_wtoi(u"1\uFF11\u0132"), 1);
    EXPECT_EQ(platform::wcstol(u"1\u0141\u0130\u0178"), 1);
    EXPECT_EQ(platform::atoi("1\xB2"), 1);
}

TEST(Numbers, SkipTheWhiteSpaceOfTheLocale) {
    for (const char* locale : {"C", "de_DE.ISO-8859-1", "en_US.UTF-8", "ja_JP.SHIFT_JIS"}) {
        const LocaleScope scope(locale);
        for (int byte = 1; byte < 256; ++byte) {
            if (byte >= '0' && byte <= '9') {
                continue;
            }
            const char text[] = {static_cast<char>(byte), '-', '7', 0};
            const int expected = std::isspace(byte) != 0 ? -7 : 0;
            ASSERT_EQ(platform::atoi(text), expected) << locale << ' ' << byte;
            ASSERT_EQ(platform::atof(text), expected) << locale << ' ' << byte;
        }
        for (unsigned unit = 1; unit < 0x10000; ++unit) {
            const char16_t text[] = {static_cast<char16_t>(unit), u'-', u'7', 0};
            const bool isSpace = std::iswspace(static_cast<wint_t>(unit)) != 0;
            ASSERT_EQ(platform::_wtoi(text) == -7, isSpace) << locale << ' ' << unit;
            ASSERT_EQ(platform::_wtof(text) == -7, isSpace) << locale << ' ' << unit;
        }
    }
}

void ExpectSameDouble(double actual, double expected, const std::string& text) {
    ASSERT_EQ(std::bit_cast<std::uint64_t>(actual), std::bit_cast<std::uint64_t>(expected))
        << text.substr(0, 1000) << " gave " << actual << " for " << expected;
}

void ExpectDouble(const std::string& text) {
    const double expected = std::strtod(text.c_str(), nullptr);
    errno = 77;
    ExpectSameDouble(platform::atof(text.c_str()), expected, text);
    ExpectSameDouble(platform::_wtof(Widen(text).c_str()), expected, text);
    ASSERT_EQ(errno, 77) << text;
}

TEST(Doubles, AgreeWithTheCLibraryOnAllShortTexts) {
    for (const char* locale : {"C", "de_DE.UTF-8"}) {
        const LocaleScope scope(locale);
        ForAllTexts({" ", "+", "-", "0", "5", "e", ".", ","}, 5, ExpectDouble);
    }
}

TEST(Doubles, KnowADecimalPointOfSeveralBytes) {
    const LocaleScope scope("ps_AF.UTF-8");
    ForAllTexts({"-", "0", "5", "e", ".", "\u066B", "\xD9"}, 5, [](const std::string& text) {
        ExpectSameDouble(platform::atof(text.c_str()), std::strtod(text.c_str(), nullptr), text);
    });
    EXPECT_EQ(platform::_wtof(u"-1\u066B25e1"), -12.5);
    EXPECT_EQ(platform::_wtof(u"\u066B5\u066B5"), 0.5);
    EXPECT_EQ(platform::_wtof(u"1.25"), 1);
}

TEST(Doubles, KnowNeitherHexadecimalNorWords) {
    for (const char* text : {"0x1F", "inf", "-Infinity", "nan", "nan(1)", "e5", ".e5", "--5"}) {
        EXPECT_EQ(platform::atof(text), 0) << text;
        EXPECT_EQ(platform::_wtof(Widen(text).c_str()), 0) << text;
    }
}

TEST(Doubles, AreReadAtAnyLengthAndSize) {
    const std::string zeros(700000, '0');
    for (const char* text :
         {"1e400", "-1e400", "1e-400", "-1e-400", "1e99999999999999999999999",
          "1e-99999999999999999999999", "0e99999999999999999999", "1.7976931348623158e308",
          "1.7976931348623159e308", "4.9e-324", "2.4e-324", "2.5e-324"}) {
        ExpectDouble(text);
    }
    for (const std::string& text :
         {"0." + zeros + "1e700001", "1" + zeros + "e-700000", "1" + zeros, "0." + zeros + "1",
          zeros + "12.5", zeros + "." + zeros}) {
        ExpectDouble(text);
    }
    for (std::size_t length = 55; length < 70; ++length) {
        for (const char* behind : {"", "e1", "e+1", "e", "e+", "e-x", ".5", ".", ".e1", "x"}) {
            ExpectDouble(std::string(length, '1') + behind);
            ExpectDouble('-' + std::string(length, '0') + behind);
        }
    }
}

std::string Printed(int digits, long double value) {
    char text[2000];
    std::snprintf(text, sizeof text, "%.*Le", digits, value);
    return text;
}

// A text exactly between two doubles, and the nearest texts on either side of it.
TEST(Doubles, AreRoundedByEveryDigit) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 2000; ++i) {
        // Every tenth lies below the normal numbers.
        const std::uint64_t bits = (random() >> 1) >> (i % 10 == 0 ? 11 : 0);
        const double value = std::bit_cast<double>(bits);
        if (!std::isfinite(value) || !std::isfinite(std::nextafter(value, HUGE_VAL))) {
            continue;
        }
        const long double next = std::nextafter(value, HUGE_VAL);
        std::string text = Printed(1100, (value + next) / 2);
        const std::size_t power = text.find('e');
        ExpectDouble(text);
        const std::size_t lastDigit = text.find_last_not_of('0', power - 1);
        text[power - 1] = '1';
        ExpectDouble(text);
        --text[lastDigit];
        std::fill(text.begin() + static_cast<std::ptrdiff_t>(lastDigit) + 1,
                  text.begin() + static_cast<std::ptrdiff_t>(power), '9');
        ExpectDouble(text);
        for (const int digits : {2, 15, 16, 18, 40}) {
            ExpectDouble(Printed(digits, value));
        }
    }
}

}  // namespace
