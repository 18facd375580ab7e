#include "numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cwctype>
#include <random>
#include <string>

#include "locales.h"
#include "oracle.h"
#include "texts.h"

namespace {

using namespace std::string_literals;

void ExpectIntegers(const std::string& text) {
    const long long decimal = std::strtoll(text.c_str(), nullptr, 10);
    const long long hexadecimal = std::strtoll(text.c_str(), nullptr, 16);
    const std::u16string wide(text.begin(), text.end());
    errno = 77;
    ASSERT_EQ(platform::_atoi64(text.c_str()), decimal) << text;
    ASSERT_EQ(platform::_wtoi64(wide.c_str()), decimal) << text;
    ASSERT_EQ(platform::_strtoi64(text.c_str()), hexadecimal) << text;
    ASSERT_EQ(platform::_wcstoi64(wide.c_str()), hexadecimal) << text;
    ASSERT_EQ(platform::atoi(text.c_str()), oracle::clamped(decimal)) << text;
    ASSERT_EQ(platform::atol(text.c_str()), oracle::clamped(decimal)) << text;
    ASSERT_EQ(platform::_wtoi(wide.c_str()), oracle::clamped(decimal)) << text;
    ASSERT_EQ(platform::_wtol(wide.c_str()), oracle::clamped(decimal)) << text;
    ASSERT_EQ(platform::strtol(text.c_str()), oracle::clamped(hexadecimal)) << text;
    ASSERT_EQ(platform::wcstol(wide.c_str()), oracle::clamped(hexadecimal)) << text;
    ASSERT_EQ(errno, 77) << text;
}

void ExpectSameDouble(double actual, const std::string& text) {
    ASSERT_EQ(std::bit_cast<std::uint64_t>(actual),
              std::bit_cast<std::uint64_t>(oracle::real(text)))
        << text.substr(0, 1000) << " gave " << actual;
}

void ExpectDouble(const std::string& text) {
    errno = 77;
    const double narrow = platform::atof(text.c_str());
    const double wide = platform::_wtof(std::u16string(text.begin(), text.end()).c_str());
    ASSERT_EQ(errno, 77) << text;
    ExpectSameDouble(narrow, text);
    ExpectSameDouble(wide, text);
}

TEST(Numbers, AgreeWithTheCLibraryOnAllShortTexts) {
    for (const std::string& text : all_texts<char>(" +-0x1fF9", 5)) {
        ExpectIntegers(text);
    }
    for (const char* locale : {"C", "de_DE.UTF-8"}) {
        const LocaleScope scope(locale);
        for (const std::string& text : all_texts<char>(" +-05e.,x", 5)) {
            ExpectDouble(text);
        }
    }
    // Its decimal point has several bytes.
    const LocaleScope scope("ps_AF.UTF-8");
    for (const std::string& text : all_texts<char>("-05e.\xD9\xAB", 5)) {
        ExpectSameDouble(platform::atof(text.c_str()), text);
    }
    EXPECT_EQ(platform::_wtof(u"-1\u066B25e1"), -12.5);
    EXPECT_EQ(platform::_wtof(u"\u066B5\u066B5"), 0.5);
    EXPECT_EQ(platform::_wtof(u"1.25"), 1);
}

TEST(Numbers, TakeTheNearerLimit) {
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

TEST(Numbers, KnowTheSpacesOfTheLocaleAndTheDigitsOfAscii) {
    for (const char* locale : {"C", "de_DE.ISO-8859-1", "en_US.UTF-8", "ja_JP.SHIFT_JIS"}) {
        const LocaleScope scope(locale);
        for (int value = 1; value < 0x10000; value += value + 1 == '0' ? 11 : 1) {  // no digits
            const char16_t wide[] = {static_cast<char16_t>(value), u'-', u'7', 0};
            const int inWide = std::iswspace(static_cast<wint_t>(value)) != 0 ? -7 : 0;
            ASSERT_EQ(platform::_wtoi(wide), inWide) << locale << ' ' << value;
            ASSERT_EQ(platform::_wtof(wide), inWide) << locale << ' ' << value;
            if (value < 256) {
                const char narrow[] = {static_cast<char>(value), '-', '7', 0};
                const int inNarrow = std::isspace(value) != 0 ? -7 : 0;
                ASSERT_EQ(platform::atoi(narrow), inNarrow) << locale << ' ' << value;
                ASSERT_EQ(platform::atof(narrow), inNarrow) << locale << ' ' << value;
            }
        }
    }
    EXPECT_EQ(platform::_wtoi(u"1\uFF11\u0132"), 1);
    EXPECT_EQ(platform::wcstol(u"1\u0141\u0130\u0178"), 1);
    EXPECT_EQ(platform::atoi("1\xB2"), 1);
}

TEST(Doubles, AreReadAtAnyLengthAndSize) {
    const std::string zeros(700000, '0');
    for (const std::string& text : {"1e400"s,
                                    "-1e400"s,
                                    "1e-400"s,
                                    "-1e-400"s,
                                    "1e99999999999999999999999"s,
                                    "1e-99999999999999999999999"s,
                                    "0e99999999999999999999"s,
                                    "1.7976931348623158e308"s,
                                    "1.7976931348623159e308"s,
                                    "4.9e-324"s,
                                    "2.4e-324"s,
                                    "2.5e-324"s,
                                    "inf"s,
                                    "-Infinity"s,
                                    "nan(1)"s,
                                    "0." + zeros + "1e700001",
                                    "1" + zeros + "e-700000",
                                    "1" + zeros,
                                    "0." + zeros + "1",
                                    zeros + "12.5",
                                    zeros + "." + zeros}) {
        ExpectDouble(text);
    }
    for (std::size_t length = 55; length < 70; ++length) {
        for (const char* behind : {"", "e1", "e+1", "e", "e+", "e-x", ".5", ".", ".e1", "x"}) {
            ExpectDouble(std::string(length, '1') + behind);
            ExpectDouble('-' + std::string(length, '0') + behind);
        }
    }
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
        std::string text = oracle::printed("%.1100Le", (value + next) / 2);
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
            ExpectDouble(oracle::printed("%.*e", digits, value));
        }
    }
}

}  // namespace
