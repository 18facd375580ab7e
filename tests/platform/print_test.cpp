#include "print/print.h"

#include <gtest/gtest.h>
#include <libintl.h>

#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "locales.h"
#include "oracle.h"
#include "pages/conversion.h"
#include "printing.h"
#include "system_errors.h"

namespace {

using namespace std::string_literals;

using printing::call;
using printing::widen;

TEST(Print, FloatingPointWithEveryDigit) {
    for (const double value : {5e-324, DBL_MAX, 0.1, 1e23, 0.0, 123.456}) {
        for (const char* format :
             {"%.1080f", "%.5000f", "%#.2000g", "%.2000g", "%.1100e", "%#.1075G", "%02000.800f"}) {
            const std::string wanted = oracle::printed(format, value);
            ASSERT_EQ(call(format, value).text, wanted) << format;
            ASSERT_EQ(call(widen(format).c_str(), value).text, widen(wanted)) << format;
        }
    }
    // The C library loses these zeros where rounding gives a digit more.
    EXPECT_EQ(call("%#g|%#.2g|%#.3G", 999999.5, 99.95, 0.00009999).text,
              "1.00000e+06|1.0e+02|0.000100");
}

TEST(Print, Texts) {
    const LocaleScope locale("en_US.UTF-8");
    const char* const none = nullptr;
    EXPECT_EQ(call("%s|%8S|%-8s|%.3s|%.0ls", none, none, none, none, none).text,
              "(null)|  (null)|(null)  |(nu|");
    EXPECT_EQ(call(u"%s|%8S|%.3hs", none, none, none).text, u"(null)|  (null)|(nu");
    const char16_t* const wide = u"aä\u20AC\U0001F600z";
    const char* const narrow = "a\u00E4\u20AC\U0001F600z";
    const struct {
        const char* format;
        const char* narrow;
        const char16_t* wide;
    } cases[] = {
        {"%S", narrow, wide},
        {"%.1S", "a", u"a"},
        {"%.2S", "a", u"aä"},
        {"%.3S", "aä", u"aä\u20AC"},
        {"%.4S", "aä", u"aä\u20AC"},
        {"%.5S", "aä", u"aä\u20AC\U0001F600"},
        {"%.9S", "aä\u20AC", u"aä\u20AC\U0001F600z"},
        {"%.10S", "aä\u20AC\U0001F600", u"aä\u20AC\U0001F600z"},
        {"%5.3S|", "  aä|", u"  aä\u20AC|"},
        {"%-5.3S|", "aä  |", u"aä\u20AC  |"},
        {"%13S|", "  aä\u20AC\U0001F600z|", u"       aä\u20AC\U0001F600z|"},
        {"%.0S|", "|", u"|"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(call(row.format, wide).text, row.narrow) << row.format;
        EXPECT_EQ(call(widen(row.format).c_str(), narrow).text, row.wide) << row.format;
    }
    EXPECT_EQ(call("%ls|%lS", wide, wide).text, narrow + "|"s + narrow);
    EXPECT_EQ(call(u"%hs|%hS", narrow, narrow).text, wide + u"|"s + wide);
    EXPECT_EQ(call("%C|%4lc|%-4C|", u'ä', u'ä', u'ä').text, "ä|  ä|ä  |");
    EXPECT_EQ(call(u"%C|%4hc|%hC", 'a', 'b', 0xE4).text, u"a|   b|\uFFFD");
    EXPECT_EQ(call("ä%dä%%ä%d", 1, 2).text, "ä1ä%ä2");
    EXPECT_EQ(call(u"%.0000000003d", 7).text, u"007");
    // A trail byte that is a percent sign starts no conversion.
    const LocaleScope japanese("ja_JP.SHIFT_JIS");
    EXPECT_EQ(call("\203\145%d\201%d%d", 1, 2).text, "\203\1451\201%d2");
    EXPECT_EQ(call("%C", u'\u30C6').text, "\203\145");
}

TEST(Print, DecimalPointOfSeveralBytes) {
    const LocaleScope locale("ps_AF.UTF-8");
    EXPECT_EQ(call("%.2f|%07.1f", 1.5, -2.5).text, "1\u066B50|-002\u066B5");
    EXPECT_EQ(call(u"%.2f|%07.1f", 1.5, -2.5).text, u"1\u066B50|-0002\u066B5");
    char general[128];
    EXPECT_EQ(std::string(general, static_cast<std::size_t>(platform::print_general(general, 0.5))),
              "0\u066B5");
    const LocaleScope german("de_DE.ISO-8859-1");
    std::setlocale(LC_NUMERIC, "ps_AF.UTF-8");
    EXPECT_EQ(call(u"%.1f", 1.5).text, u"1\u066B5");
    EXPECT_EQ(call("%.1f", 1.5).text, "1\xD9\xAB" + "5"s);
}

TEST(Print, ArgumentsInTheOrderOfTheFormat) {
    int untouched = 7;
    EXPECT_EQ(call("%*d|%-*.*f|%n%I64d|%**d|%*5d|%#x%%%p%c", 4, 1, 8, 2, 1.25, &untouched,
                   1LL << 33, 9, 3, 5, 0, 6, 255, nullptr, 0)
                  .text,
              "   1|1.25    |8589934592|  5|    6|0xff%(nil)\0"s);
    EXPECT_EQ(
        call(u"%*d|%-*.*f|%n%I64d%c%p", 4, 1, 8, 2, 1.25, &untouched, 1LL << 33, 0, nullptr).text,
        u"   1|1.25    |8589934592\0(nil)"s);
    EXPECT_EQ(untouched, 7);
    EXPECT_EQ(call("%p|%+20p|%-9p|", &untouched, &untouched, u"").text,
              oracle::printed("%p|%+20p|%-9p|", static_cast<void*>(&untouched),
                              static_cast<void*>(&untouched), static_cast<const void*>(u"")));
}

int print_into(char* room, int capacity, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = platform::vsprintf(room, capacity, format, arguments);
    va_end(arguments);
    return length;
}

TEST(Print, LeavesErrnoAStaticEmptyTextAndWhatIsBehindAlone) {
    const LocaleScope locale("ja_JP.EUC-JP");
    errno = 77;
    call("\xFF\x8E%S", u"\uFFFF\u30C6");
    EXPECT_EQ(errno, 77);
    errno = 0;
    static const char empty[] = "";  // read-only memory
    EXPECT_EQ(print_into(const_cast<char*>(empty), 0, "%s", ""), 0);
    char room[] = "0123456789#";
    print_into(room, 9, "%2147483647d%2147483647d|", 1, 2);
    EXPECT_EQ(std::string(room, 11), "         \0#"s);
}

/// What a printer of one number leaves in a block of `nRoom` units.
template <class Unit, std::size_t nRoom, class Value>
std::basic_string<Unit> printed(int (*print)(Unit*, Value), Value value) {
    Unit room[nRoom];
    return {room, static_cast<std::size_t>(print(room, value))};
}

template <class Value>
void expect_integer(Value value) {
    const std::string wanted = std::to_string(value);
    EXPECT_EQ((printed<char, 20, Value>(platform::print_integer, value)), wanted);
    EXPECT_EQ((printed<char16_t, 20, Value>(platform::print_integer, value)), widen(wanted));
}

TEST(Print, IntegersAndGeneralByThemselves) {
    expect_integer(LLONG_MIN);
    unsigned long long power = 1;
    for (int digits = 1; digits <= 20; ++digits, power *= 10) {
        for (const unsigned long long value : {power, power - 1, power + 1}) {
            expect_integer(value);
            expect_integer(-static_cast<long long>(value / 2));
        }
    }
    for (const double value : {0.0, 1.0 / 3, -1e300, 123456.0, -HUGE_VAL, std::nan("")}) {
        const std::string wanted = oracle::printed("%g", value);
        EXPECT_EQ((printed<char, 128, double>(platform::print_general, value)), wanted);
        EXPECT_EQ((printed<char16_t, 128, double>(platform::print_general, value)), widen(wanted));
    }
}

const char* const kLocales[] = {"en_US.UTF-8",  "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS",
                                "ja_JP.EUC-JP", "ko_KR.EUC-KR",     "zh_CN.GB18030",
                                "zh_TW.EUC-TW"};

/// The text by the conversion of the whole.
template <class To, class From>
std::basic_string<To> converted(int (*convert)(unsigned, const From*, int, To*, int),
                                const std::basic_string<From>& text) {
    std::basic_string<To> result(4 * text.size(), To{});
    result.resize(
        static_cast<std::size_t>(convert(0, text.data(), static_cast<int>(text.size()),
                                         result.data(), static_cast<int>(result.size()))));
    return result;
}

// The print converts piece by piece; nobody may see where the pieces end.
TEST(PrintText, ConvertsAsTheWholeIsConverted) {
    const std::string pieces[] = {"a",        "\xC9\xA1",         "\xB0\xA1", "\xE3\x81\x82",
                                  "\xF0\x9F", "\xF0\x9F\x98\x80", "\x81\x30", "\x81\x30\x81\x30",
                                  "\x8E\xA2", "\x8E\xA2\xA1\xA1", "\xFF"};
    const auto encoded = [](const std::u16string& text) {
        return converted<char>(platform::WideCharToMultiByte, text);
    };
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (unsigned seed = 0; seed < 400; ++seed) {
            std::string text;
            for (unsigned next = seed; text.size() < 700; next = next * 1103515245 + 12345) {
                text += pieces[seed % 3 == 0 ? 2 : next / 65536 % std::size(pieces)];
                text += seed < 10 && text.size() < 10 ? "\xC9" : "";
            }
            const auto expected = converted<char16_t>(platform::MultiByteToWideChar, text);
            ASSERT_EQ(
                call(u"%800S", text.c_str()).text,
                std::u16string(800 - std::min<std::size_t>(expected.size(), 800), u' ') + expected)
                << name << seed;
            ASSERT_EQ(call("%S", expected.c_str()).text, encoded(expected)) << name << seed;
            const std::u16string torn = expected.substr(0, seed) + u'\xD83D';
            ASSERT_EQ(call("%S", torn.c_str()).text, encoded(torn)) << name << seed;
            const bool isSplit = seed > 0 && (expected[seed - 1] & 0xFC00) == 0xD800;
            ASSERT_EQ(call(u"%.*S", seed, text.c_str()).text,
                      expected.substr(0, seed - (isSplit ? 1 : 0)))
                << name << seed;
        }
    }
}

TEST(PrintText, NeedsNoTerminatorBehindAPrecision) {
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (std::size_t size = 1; size < 600; size += size < 8 ? 1 : 83) {
            const std::unique_ptr<char16_t[]> wide(new char16_t[size]);
            std::fill_n(wide.get(), size, u'\u00E9');
            EXPECT_LE(call("%.*S", size, wide.get()).text.size(), size) << name;
            const std::unique_ptr<char[]> narrow(new char[size]);
            std::fill_n(narrow.get(), size, 'e');
            EXPECT_EQ(call(u"%.*S", size, narrow.get()).text.size(), size) << name;
        }
    }
    const LocaleScope locale("zh_CN.GB18030");
    const std::unique_ptr<char[]> four(new char[4]{'\x81', '\x30', '\x81', '\x30'});
    EXPECT_EQ(call(u"%.1S", four.get()).text, u"\u0080");
}

using Estimates = std::vector<std::pair<const char*, int>>;

/// The same arguments for formats of both widths.
template <class... Values>
void expect_estimates(const Estimates& rows, Values... values) {
    for (const auto& [format, estimate] : rows) {
        EXPECT_EQ(call(format, values...).estimate, estimate) << format;
        EXPECT_EQ(call(widen(format).c_str(), values...).estimate, estimate) << format;
    }
}

TEST(Estimate, OfEachConversion) {
    expect_estimates(
        {{"", 0},       {"%d", 32},    {"%i", 32},   {"%o", 32},   {"%u", 32},      {"%x", 32},
         {"%X", 32},    {"%I32d", 32}, {"%hd", 32},  {"%ld", 32},  {"%-5d", 32},    {"%+ 05d", 32},
         {"%.20d", 32}, {"%5d", 32},   {"%.0d", 32}, {"%40d", 40}, {"%30.20d", 50}, {"%#x", 34},
         {"%##x", 36},  {"%.40d", 40}, {"%c", 2},    {"%5hc", 5},  {"%.1c", 1}},
        5);
    expect_estimates({{"%I64d", 32}}, 5LL);
    expect_estimates({{"%p", 32}, {"%n", 0}, {"%s", 6}, {"%.3s", 3}}, nullptr);
    expect_estimates({{"%*d", 40}, {"%*d%n", 40}}, 40, 5, nullptr);
    expect_estimates({{"%*d", 32}, {"%*35d", 35}, {"%.*I64d", 32}}, 0, 5LL);
    expect_estimates({{"%**d%d", 72}}, 7, 40, 5, 6);
    expect_estimates({{"%e", 128},
                      {"%g", 128},
                      {"%G", 128},
                      {"%.17g", 128},
                      {"%20.10e", 128},
                      {"%.0e", 128},
                      {"%+g", 128},
                      {"%f", 312},
                      {"%.2f", 314},
                      {"%20f", 312},
                      {"%#f", 314},
                      {"%400f", 312},
                      {"%200e", 200},
                      {"%100.100g", 200},
                      {"%.150e", 150}},
                     -DBL_MAX);
    expect_estimates({{"%.*f", 315}}, 3, 1.5);
    for (const auto& [format, estimate] : Estimates{{"%s", 3},
                                                    {"%.2s", 2},
                                                    {"%5s", 5},
                                                    {"%5.2s", 5},
                                                    {"%2.5s", 3},
                                                    {"%.0s", 3},
                                                    {"%Fs", 3},
                                                    {"%Ns", 3},
                                                    {"%Ls", 3},
                                                    {"%I32s", 3},
                                                    {"%.s", 3},
                                                    {"%#s", 5}}) {
        EXPECT_EQ(call(format, "abc").estimate, estimate) << format;
        EXPECT_EQ(call(widen(format).c_str(), u"abc").estimate, estimate) << format;
    }
    EXPECT_EQ(call("%s%S|%ls|%hs|%hS", "", u"ab", u"abc", "abcd", "abcde").estimate, 18);
    EXPECT_EQ(call(u"%s%S|%ls|%hs|%hS", u"", "ab", u"abc", "abcd", "abcde").estimate, 21);
    EXPECT_EQ(call("100%%").estimate, 4);
    EXPECT_EQ(call(u"100%%").estimate, 8);
    EXPECT_EQ(call(u"%-8s=%04X%%", u"ab", 5).estimate, 44);
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    EXPECT_EQ(call("\x83\x65").estimate, 2);
    EXPECT_EQ(call("\x81%d").estimate, 3);
}

int estimate(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int result = platform::estimate(format, arguments);
    va_end(arguments);
    return result;
}

TEST(Estimate, SumsBeyondTheIntegers) {
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

TEST(SystemErrors, TextsAndTheLastCode) {
    char buffer[64] = "#";
    const std::string text = ::strerrordesc_np(EACCES);
    const int length = static_cast<int>(text.size());
    EXPECT_EQ(platform::FormatMessageA(EACCES, buffer, length), 0);
    EXPECT_STREQ(buffer, "#");
    for (const std::uint32_t unknown : {100000u, 0x80000005u, 41u}) {
        EXPECT_EQ(platform::FormatMessageA(unknown, buffer, 64), 0);
    }
    EXPECT_EQ(platform::FormatMessageA(EACCES, buffer, -1), 0);
    EXPECT_STREQ(buffer, "#");
    EXPECT_EQ(platform::FormatMessageA(EACCES, buffer, length + 1), length);
    EXPECT_EQ(buffer, text);
    errno = ENOENT;
    EXPECT_EQ(platform::GetLastError(), static_cast<std::uint32_t>(ENOENT));
}

/// A catalogue of the C library's messages with one message.
std::string Catalogue(const std::string& message, const std::string& translation) {
    const std::string header = "Content-Type: text/plain; charset=UTF-8\n";
    const std::string texts[] = {"", message, header, translation};
    std::vector<std::uint32_t> numbers = {0x950412DE, 0, 2, 28, 44, 0, 0};
    std::string pool;
    for (const std::string& text : texts) {
        numbers.push_back(static_cast<std::uint32_t>(text.size()));
        numbers.push_back(static_cast<std::uint32_t>(60 + pool.size()));
        pool += text + '\0';
    }
    return std::string(reinterpret_cast<const char*>(numbers.data()), 60) + pool;
}

TEST(SystemErrors, SpeakTheLanguageAndCodesetOfTheLocale) {
    const std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / "kelm-messages";
    std::filesystem::create_directories(folder / "de" / "LC_MESSAGES");
    std::ofstream(folder / "de" / "LC_MESSAGES" / "libc.mo")
        << Catalogue(::strerrordesc_np(EIO), "Lesefehler, \xC3\xBC");
    unsetenv("LANGUAGE");
    bindtextdomain("libc", folder.c_str());
    char buffer[64];
    for (const auto& [name, text] : {std::pair("de_DE.UTF-8", "Lesefehler, \xC3\xBC"),
                                     std::pair("de_DE.ISO-8859-1", "Lesefehler, \xFC"),
                                     std::pair("C", ::strerrordesc_np(EIO))}) {
        const LocaleScope locale(name);
        EXPECT_EQ(platform::FormatMessageA(EIO, buffer, 64), static_cast<int>(std::strlen(text)));
        EXPECT_STREQ(buffer, text);
        EXPECT_EQ(platform::FormatMessageA(41, buffer, 64), 0);
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
