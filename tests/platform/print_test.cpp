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
#include <string>
#include <utility>
#include <vector>

#include "locales.h"
#include "oracle.h"
#include "printing.h"
#include "system_errors.h"

namespace {

using namespace std::string_literals;

using printing::call;
using printing::call_bounded;
using printing::widen;

/// Both widths against the C library.
template <class Value>
void compare(const std::string& format, const std::string& cFormat, Value value) {
    const std::string wanted = oracle::printed(cFormat.c_str(), value);
    const auto narrow = call(format.c_str(), value);
    const auto wide = call(widen(format).c_str(), value);
    ASSERT_EQ(narrow.text, wanted) << format;
    ASSERT_EQ(wide.text, widen(wanted)) << format;
}

TEST(Print, FloatingPointWithEveryDigit) {
    for (const double value : {5e-324, DBL_MAX, 0.1, 1e23, 0.0, 123.456}) {
        for (const char* format :
             {"%.1080f", "%.5000f", "%#.2000g", "%.2000g", "%.1100e", "%#.1075G", "%02000.800f"}) {
            compare(format, format, value);
        }
    }
    // The C library loses these zeros where rounding gives a digit more.
    EXPECT_EQ(call("%#g|%#.2g|%#.3G", 999999.5, 99.95, 0.00009999).text,
              "1.00000e+06|1.0e+02|0.000100");
    for (int precision = 0; precision < 40; ++precision) {
        for (const double value : {9.5, 99.95, 0.00099999999999999, 999999999999999.9}) {
            const std::string digits = "." + std::to_string(precision);
            compare("%" + digits + "g", "%" + digits + "g", value);
            compare("%" + digits + "f", "%" + digits + "f", value);
        }
    }
}

TEST(Print, TextsAndCharactersOfTheOwnWidth) {
    for (const char* option : {"", "3", "8", "-8", ".2", "8.2", "-8.2", ".0", ".", ".9", "+ #8"}) {
        for (const char* prefix : {"", "F", "L", "N", "I32"}) {
            const std::string middle = std::string("%") + option;
            const std::string cFormat = "<" + middle + "s|" + middle + "c>";
            const std::string format = "<" + middle + prefix + "s|" + middle + prefix + "c>";
            for (const char* text : {"", "abc", "12345678"}) {
                const std::string wanted = oracle::printed(cFormat.c_str(), text, '%');
                EXPECT_EQ(call(format.c_str(), text, '%').text, wanted) << format;
                EXPECT_EQ(call(widen(format).c_str(), widen(text).c_str(), u'%').text,
                          widen(wanted))
                    << format;
            }
        }
    }
    const char* const none = nullptr;
    EXPECT_EQ(call("%s|%8S|%-8s|%.3s|%.0ls", none, none, none, none, none).text,
              "(null)|  (null)|(null)  |(nu|");
    EXPECT_EQ(call(u"%s|%8S|%.3hs", none, none, none).text, u"(null)|  (null)|(nu");
}

TEST(Print, TextsOfTheOtherWidth) {
    const LocaleScope locale("en_US.UTF-8");
    const char16_t* const wide = u"aä\u20AC\U0001F600z";
    const char* const narrow = "a\u00E4\u20AC\U0001F600z";
    EXPECT_EQ(call("%S|%ls|%lS", wide, wide, wide).text,
              std::string(narrow) + "|" + narrow + "|" + narrow);
    EXPECT_EQ(call(u"%S|%hs|%hS", narrow, narrow, narrow).text,
              std::u16string(wide) + u"|" + wide + u"|" + wide);
    const struct {
        const char* format;
        const char* narrow;
        const char16_t* wide;
    } cases[] = {
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
    EXPECT_EQ(call("%C|%4lc|%-4C|", u'ä', u'ä', u'ä').text, "ä|  ä|ä  |");
    EXPECT_EQ(call(u"%C|%4hc|%hC", 'a', 'b', 0xE4).text, u"a|   b|\uFFFD");
}

TEST(Print, DoubleByteCodePage) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    // A trail byte that is a percent sign starts no conversion.
    EXPECT_EQ(call("\203\145%d\201%d%d", 1, 2).text, "\203\1451\201%d2");
    EXPECT_EQ(call("%.3S|%.4S|%C", u"\u30C6\u30B9", u"\u30C6\u30B9", u'\u30C6').text,
              "\203\145|\203\145\203\130|\203\145");
    EXPECT_EQ(call(u"%S|%.1S", "\203\145\203\130", "\203\145\203\130").text,
              u"\u30C6\u30B9|\u30C6");
}

TEST(Print, DecimalPointOfSeveralBytes) {
    const LocaleScope locale("ps_AF.UTF-8");
    EXPECT_EQ(call("%.2f|%07.1f", 1.5, -2.5).text, "1\u066B50|-002\u066B5");
    EXPECT_EQ(call(u"%.2f|%07.1f", 1.5, -2.5).text, u"1\u066B50|-0002\u066B5");
    char general[128];
    EXPECT_EQ(std::string(general, static_cast<std::size_t>(platform::print_general(general, 0.5))),
              "0\u066B5");
}

template <class Unit, class... Values>
std::basic_string<Unit> expect_bounded(const std::basic_string<Unit>& format, Values... values) {
    const auto whole = call(format.c_str(), values...);
    for (int capacity = 0; capacity <= whole.length; ++capacity) {
        const auto room = call_bounded(capacity, format.c_str(), values...);
        const Unit behind[] = {0, '#', '#'};
        EXPECT_EQ(room.substr(static_cast<std::size_t>(capacity)),
                  std::basic_string<Unit>(behind, 3));
        EXPECT_TRUE(capacity < whole.length || room.compare(0, room.size() - 3, whole.text) == 0);
    }
    return whole.text;
}

TEST(Print, NeverPassesItsRoom) {
    const LocaleScope locale("en_US.UTF-8");
    const std::string format = "ab%c%5d|%-4s|%08.3f|%S%#x%%%p";
    EXPECT_EQ(expect_bounded(format, 0, 42, "xy", -1.5, u"\u20ACz", 255, nullptr),
              "ab\0   42|xy  |-001.500|\u20ACz0xff%(nil)"s);
    EXPECT_EQ(expect_bounded(widen(format), 0, 42, u"xy", -1.5, "\u20ACz", 255, nullptr),
              u"ab\0   42|xy  |-001.500|\u20ACz0xff%(nil)"s);
    EXPECT_EQ(call_bounded(9, "%2147483647d%2147483647d|", 1, 2), std::string(9, ' ') + "\0##"s);
}

TEST(Print, ArgumentsInTheOrderOfTheFormat) {
    int untouched = 7;
    EXPECT_EQ(
        call("%*d|%-*.*f|%n%I64d|%**d|%*5d", 4, 1, 8, 2, 1.25, &untouched, 1LL << 33, 9, 3, 5, 0, 6)
            .text,
        "   1|1.25    |8589934592|  5|    6");
    EXPECT_EQ(untouched, 7);
    EXPECT_EQ(call(u"%*d|%-*.*f|%n%I64d", 4, 1, 8, 2, 1.25, &untouched, 1LL << 33).text,
              u"   1|1.25    |8589934592");
}

TEST(Print, LeavesErrnoAndAStaticEmptyTextAlone) {
    const LocaleScope locale("ja_JP.EUC-JP");
    errno = 77;
    call("\xFF\x8E%S", u"\uFFFF\u30C6");
    EXPECT_EQ(errno, 77);
    errno = 0;
    static const char empty[] = "";  // read-only memory
    const auto print = [](char* destination, ...) {
        va_list arguments;
        va_start(arguments, destination);
        const int length = platform::vsprintf(destination, 0, "%s", arguments);
        va_end(arguments);
        return length;
    };
    EXPECT_EQ(print(const_cast<char*>(empty), ""), 0);
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
    for (const long long value : {0LL, 9LL, -10LL, 12345LL, LLONG_MAX, LLONG_MIN}) {
        expect_integer(value);
    }
    unsigned long long power = 1;
    for (int digits = 1; digits <= 20; ++digits, power *= 10) {
        for (const unsigned long long value : {power, power - 1, power + 1}) {
            expect_integer(value);
        }
    }
    for (const double value : {0.0, 1.0 / 3, -1e300, 123456.0, -HUGE_VAL, std::nan("")}) {
        const std::string wanted = oracle::printed("%g", value);
        EXPECT_EQ((printed<char, 128, double>(platform::print_general, value)), wanted);
        EXPECT_EQ((printed<char16_t, 128, double>(platform::print_general, value)), widen(wanted));
    }
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
