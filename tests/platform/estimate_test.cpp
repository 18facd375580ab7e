#include <gtest/gtest.h>

#include <cfloat>
#include <climits>

#include "locales.h"
#include "printing.h"

namespace {

using printing::call;
using printing::widen;

/// The same format and arguments in both widths.
template <class... Values>
void expect_estimate(const char* format, int narrow, int wide, Values... values) {
    const auto inNarrow = call(format, values...).estimate;
    const auto inWide = call(widen(format).c_str(), values...).estimate;
    EXPECT_EQ(inNarrow, narrow) << format;
    EXPECT_EQ(inWide, wide) << format;
}

TEST(Estimate, Literals) {
    expect_estimate("", 0, 0);
    expect_estimate("abc", 3, 6);
    expect_estimate("%%", 1, 2);
    expect_estimate("100%%", 4, 8);
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    EXPECT_EQ(call("\x83\x65").estimate, 2);
    EXPECT_EQ(call("\x81%d").estimate, 3);
    EXPECT_EQ(call("%-8s=%04X%%", "ab", 5).estimate, 42);
    EXPECT_EQ(call(u"%-8s=%04X%%", u"ab", 5).estimate, 44);
    EXPECT_EQ(call(" <Error Code=%d (0x%0x)>, ", 5, 5).estimate, 85);
}

TEST(Estimate, CharactersAndTexts) {
    const struct {
        const char* format;
        const char16_t* text;
        int length;
    } cases[] = {
        {"%s", u"abc", 3},    {"%s", u"", 1},       {"%s", nullptr, 6},   {"%.2s", u"abc", 2},
        {"%5s", u"abc", 5},   {"%5.2s", u"abc", 5}, {"%2.5s", u"abc", 3}, {"%.0s", u"abc", 3},
        {"%.3s", nullptr, 3}, {"%Fs", u"abc", 3},   {"%Ns", u"abc", 3},   {"%Ls", u"abc", 3},
        {"%I32s", u"abc", 3}, {"%.s", u"abc", 3},   {"%#s", u"abc", 5},
    };
    for (const auto& row : cases) {
        const std::string narrow =
            row.text == nullptr ? std::string()
                                : std::string(row.text, row.text + std::u16string(row.text).size());
        const char* text = row.text == nullptr ? nullptr : narrow.c_str();
        const auto inNarrow = call(row.format, text).estimate;
        const auto inWide = call(widen(row.format).c_str(), row.text).estimate;
        EXPECT_EQ(inNarrow, row.length) << row.format;
        EXPECT_EQ(inWide, row.length) << row.format;
    }
    EXPECT_EQ(call("%S|%ls|%hs|%hS", u"ab", u"abc", "abcd", "abcde").estimate, 17);
    EXPECT_EQ(call(u"%S|%ls|%hs|%hS", "ab", u"abc", "abcd", "abcde").estimate, 20);
    expect_estimate("%c", 2, 2, 'x');
    expect_estimate("%5hc", 5, 5, 'x');
    expect_estimate("%.1c", 1, 1, 'x');
}

TEST(Estimate, Integers) {
    for (const char* format : {"%d", "%i", "%o", "%u", "%x", "%X", "%I32d", "%hd", "%ld", "%-5d",
                               "%+ 05d", "%.20d", "%5d", "%.0d"}) {
        expect_estimate(format, 32, 32, 5);
    }
    expect_estimate("%40d", 40, 40, 5);
    expect_estimate("%30.20d", 50, 50, 5);
    expect_estimate("%#x", 34, 34, 5);
    expect_estimate("%##x", 36, 36, 5);
    expect_estimate("%I64d", 32, 32, 5LL);
    expect_estimate("%.40d", 40, 40, -5);
    expect_estimate("%p", 32, 32, nullptr);
    expect_estimate("%n", 0, 0, nullptr);
    expect_estimate("%*d", 40, 40, 40, 5);
    expect_estimate("%*d", 32, 32, 0, 5);
    expect_estimate("%**d%d", 72, 72, 7, 40, 5, 6);
    expect_estimate("%*35d", 35, 35, 0, 5);
    expect_estimate("%.*I64d", 32, 32, 3, 5LL);
}

TEST(Estimate, FloatingPoint) {
    for (const char* format : {"%e", "%g", "%G", "%.17g", "%20.10e", "%.0e", "%+g"}) {
        expect_estimate(format, 128, 128, -DBL_MAX);
    }
    expect_estimate("%f", 312, 312, 1.5);
    expect_estimate("%f", 312, 312, -DBL_MAX);
    expect_estimate("%.2f", 314, 314, 1.5);
    expect_estimate("%20f", 312, 312, 1.5);
    expect_estimate("%#f", 314, 314, 1.5);
    expect_estimate("%400f", 312, 312, 1.5);
    expect_estimate("%.*f", 315, 315, 3, 1.5);
    expect_estimate("%200e", 200, 200, 1.5);
    expect_estimate("%100.100g", 200, 200, 1.5);
    expect_estimate("%.150e", 150, 150, -1e300);
}

TEST(Estimate, SumsBeyondTheIntegers) {
    const auto estimate = [](const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        const int result = platform::estimate(format, arguments);
        va_end(arguments);
        return result;
    };
    EXPECT_EQ(estimate("%2147483647.2147483647d", 1), INT_MAX);
    EXPECT_EQ(estimate("%99999999999d%d", 1, 2), INT_MAX);
    EXPECT_EQ(estimate("%*d%*d", INT_MAX, 1, INT_MAX, 2), INT_MAX);
}

TEST(EstimateDeathTest, WhatTheLanguageDoesNotAccept) {
    for (const char* format :
         {"%E", "%a",   "%5%", "%I64s", "%I64c", "%lld", "%z",   "%",   "%5",        "%-",   "%.2",
          "%l", "%I64", "%I",  "%I6",   "%I3d",  "%w",   "%hhd", "% %", "%\xC3\xA4", "%.*5d"}) {
        EXPECT_DEATH(call(format, 1, 1), "\"?FALSE,") << format;
        EXPECT_DEATH(call(widen(format).c_str(), 1, 1), "FALSE,") << format;
    }
    EXPECT_DEATH(call("%*5d", 3, 1), "FALSE,");
    EXPECT_DEATH(call("%*d", -1, 1), "nWidth >= 0,");
    EXPECT_DEATH(call(u"%*d", INT_MIN, 1), "nWidth >= 0,");
    EXPECT_DEATH(call("%.*d", -1, 1), "nPrecision >= 0,");
    EXPECT_DEATH(call(u"%.-3d", 1), "nPrecision >= 0,");
    EXPECT_DEATH(call(u"%\u0164d", 1), "FALSE,");
}

}  // namespace
