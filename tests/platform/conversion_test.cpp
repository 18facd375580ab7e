#include "pages/conversion.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "locales.h"
#include "oracle.h"
#include "pages/code_pages.h"
#include "printing.h"
#include "texts.h"

namespace {
int openError = 0;
}

/// Stands in front of the C library's, so that a test can be without converters.
extern "C" iconv_t iconv_open(const char* to, const char* from) {
    if (openError != 0) {
        errno = openError;
        return reinterpret_cast<iconv_t>(-1);
    }
    static const auto real =
        reinterpret_cast<decltype(&iconv_open)>(dlsym(RTLD_NEXT, "iconv_open"));
    return real(to, from);
}

namespace platform {
namespace {

using oracle::Iconv;
using std::u16string;
using namespace std::string_literals;

/// From a block and into a block of exactly the size.
template <class To, class From, class Convert>
std::basic_string<To> Converted(Convert convert, unsigned int page,
                                std::basic_string_view<From> text) {
    const auto source = std::make_unique<From[]>(text.size());
    std::copy(text.begin(), text.end(), source.get());
    const int length = static_cast<int>(text.size());
    const int size = convert(page, source.get(), length, nullptr, 0);
    const auto result = std::make_unique<To[]>(static_cast<std::size_t>(size));
    if (size > 0) {
        EXPECT_EQ(convert(page, source.get(), length, result.get(), size), size);
    }
    return {result.get(), static_cast<std::size_t>(size)};
}

u16string Decode(unsigned int page, std::string_view bytes) {
    return Converted<char16_t>(MultiByteToWideChar, page, bytes);
}

std::string Encode(unsigned int page, std::u16string_view text) {
    return Converted<char>(WideCharToMultiByte, page, text);
}

std::string Bytes(std::initializer_list<int> values) {
    std::string text;
    for (int value : values) {
        text += static_cast<char>(value);
    }
    return text;
}

// The tests of the first use of a page come first: the others use all of them.

// Without memory nothing is unknown. Without a converter a number is, and the process's own page is
// ASCII. Neither lasts, and what is there does not need a converter.
TEST(FirstUse, WithoutConverters) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    char16_t units[4] = {};
    char bytes[8] = {};
    const Decoding decoding(939, "A", 1);
    const Encoding encoding(939, u"A", 1);
    EXPECT_EQ(Decode(1253, "\xE1"), u"\x03B1");
    openError = ENOMEM;
    for (unsigned int page : {0u, 1250u, 949u, 874u, 937u}) {
        EXPECT_THROW(Decode(page, "a"), std::bad_alloc) << page;
        EXPECT_THROW(Encode(page, u"a"), std::bad_alloc) << page;
    }
    EXPECT_THROW(decoding.Write(units), std::bad_alloc);
    EXPECT_THROW(encoding.Write(bytes), std::bad_alloc);
    EXPECT_THROW(Encode(1253, u"\x03B1"), std::bad_alloc);
    EXPECT_THROW(printing::call("%S", u"a"), std::bad_alloc);
    openError = EINVAL;
    for (unsigned int page : {1250u, 949u, 932u}) {
        EXPECT_EQ(Decode(page, "a"), u"") << page;
        EXPECT_EQ(Encode(page, u"a"), "") << page;
    }
    EXPECT_EQ(Decode(0, "a\x83\x4A"), u"a\xFFFDJ");
    EXPECT_EQ(Encode(0, u"a\x30AB\xD83D\xDE00"), "a??");
    EXPECT_EQ(printing::call("%S%C", u"a\x30AB", u'\x30AB').text, "a??");
    EXPECT_EQ(printing::call(u"%S%C", "a\xB6", '\xB6').text, u"a\xFFFD\xFFFD");
    EXPECT_EQ(Decode(1253, "\xE1"), u"\x03B1");
    EXPECT_EQ(Decode(65001, "\xCE\xB1"), u"\x03B1");
    EXPECT_EQ(Encode(28591, u"\xE4"), "\xE4");
    EXPECT_EQ(Decode(28591, "\xE4"), u"\xE4");
    openError = 0;
    EXPECT_EQ(Encode(1253, u"\x03B1"), "\xE1");
    EXPECT_EQ(Decode(949, "\xB0\xA1"), u"\xAC00");
    EXPECT_EQ(Encode(937, u"a"), "\x81");
    EXPECT_EQ(Encode(0, u"\x30AB"), "\x83\x4A");
}

// Every byte that an edge of a range lies at.
const std::string kEdges =
    Bytes({0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF,
           0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF});

testing::AssertionResult IsUtf8(const std::string& bytes) {
    return Decode(65001, bytes) == oracle::decode_utf8(bytes)
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << testing::PrintToString(bytes);
}
testing::AssertionResult IsUtf8(const u16string& text) {
    return Encode(65001, text) == oracle::encode_utf8(text)
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << testing::PrintToString(text);
}

TEST(Utf8, EveryShortSequenceOfEdges) {
    for (const std::string& bytes : all_texts(kEdges, 3)) {
        for (const std::string lead : {"", "\xF0", "\xF1", "\xF4", "\xE1"}) {
            ASSERT_TRUE(IsUtf8(lead + bytes));
        }
    }
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        ASSERT_TRUE(IsUtf8(u16string(1, static_cast<char16_t>(unit))));
    }
    const u16string units(u"\0\x7F\x80\x7FF\x800\xD7FF\xD800\xDBFF\xDC00\xDFFF\xE000\xFFFF", 12);
    for (const u16string& pair : all_texts(units, 2)) {
        for (std::size_t front = 0; front < 18; ++front) {
            ASSERT_TRUE(IsUtf8(u16string(front, u'\x3042') + pair + u16string(20, u'x')));
        }
    }
}

/// Characters of the width, mixed with those of other widths the more the smaller `purity` is.
u16string RandomText(std::mt19937& random, int width, unsigned int purity, std::size_t length) {
    static constexpr char32_t kFirst[] = {0, 0x20, 0x80, 0x800, 0x10000};
    static constexpr char32_t kLast[] = {0, 0x7E, 0x7FF, 0xD7FF, 0x10FFFF};
    u16string text;
    while (text.size() < length) {
        const auto w = random() % purity == 0 ? 1 + random() % 4 : static_cast<unsigned>(width);
        oracle::append_code(
            text, kFirst[w] + static_cast<char32_t>(random() % (kLast[w] - kFirst[w] + 1)));
    }
    return text;
}

// Blocks of every make-up at every offset and length, pure, mixed and damaged; and texts longer
// than what is checked in one go, with faults in front of, at and behind the joints.
TEST(Utf8, BlocksAgreeWithSingleSteps) {
    std::mt19937 random(20);
    for (int width = 1; width <= 4; ++width) {
        for (unsigned int purity : {2u, 20u, 1000000u}) {
            for (std::size_t length = 0; length <= 70; ++length) {
                const u16string text = RandomText(random, width, purity, length + 16);
                const std::string bytes = oracle::encode_utf8(text);
                for (std::size_t offset = 0; offset < 16; ++offset) {
                    ASSERT_TRUE(IsUtf8(text.substr(offset, length)));
                    std::string piece = bytes.substr(offset, length);
                    ASSERT_TRUE(IsUtf8(piece));
                    piece[random() % (length + 1)] = kEdges[random() % kEdges.size()];
                    ASSERT_TRUE(IsUtf8(piece.substr(0, length)));
                }
            }
        }
        const std::string good = oracle::encode_utf8(RandomText(random, width, 50, 5000));
        for (std::size_t at = 1000; at < 1050; ++at) {
            std::string bad = good;
            bad.replace(at, 1 + random() % 6, random() % 8, kEdges[random() % kEdges.size()]);
            ASSERT_TRUE(IsUtf8(bad)) << width << ' ' << at;
        }
        EXPECT_TRUE(IsUtf8(good));
    }
    EXPECT_TRUE(IsUtf8(std::string(3000, '\x80')));
    EXPECT_TRUE(IsUtf8('x' + std::string(3000, '\xE3')));
}

// As in 932, which plain EUC-JP cannot give back.
TEST(Pages, EucJpHasTheVendorsCharacters) {
    const u16string text = u"－∥①Ⅰ㈱～";
    EXPECT_EQ(Decode(932, Encode(932, text)), text);
    EXPECT_EQ(Decode(51932, "\xA1\xDD\xA1\xC2\xAD\xA1\xAD\xB5\xAD\xEA\xA1\xC1"), text);
    EXPECT_EQ(Decode(51932, Encode(51932, text)), text);
}

// Runs of every make-up and length: what a page decodes, it encodes back.
TEST(Pages, LongTexts) {
    std::mt19937 random(22);
    for (unsigned int number : {437u, 932u, 936u, 949u, 950u, 1252u, 1258u, 1361u, 20127u, 28591u,
                                500u, 939u, 51932u, 51949u, 54936u}) {
        for (int round = 0; round < 200; ++round) {
            const auto purity = 1 + random() % 40;
            u16string text;
            for (std::size_t length = random() % 90; text.size() < length;) {
                const bool isOther = random() % purity == 0;
                const std::string one = Encode(
                    number, u16string(1, static_cast<char16_t>(isOther ? 0x80 + random() % 0xFF00
                                                                       : 'a' + random() % 26)));
                text += Decode(number, one);
            }
            ASSERT_EQ(Decode(number, Encode(number, text)), text) << number;
        }
    }
}

TEST(Pages, OneQuestionMarkForACodePoint) {
    const u16string text =
        u"a\xD83D\xDE00"
        u"b\xDE00\xD83D"
        u"c\x4E00\xFFFF\xD83D";
    for (unsigned int page : {20127u, 28591u, 1252u, 1255u, 1361u, 51949u}) {
        const std::string han = Encode(page, u"\x4E00");
        std::string expected = "a?b??c" + han + "??";
        EXPECT_EQ(Encode(page, text), expected) << page;
        const u16string padding(33, u'x');
        expected.insert(0, 33, 'x').append(33, 'x');
        EXPECT_EQ(Encode(page, padding + text + padding), expected);
    }
    EXPECT_EQ(Encode(500, u"a\xD83D\xDE00"), "\x81\x6F");
}

// The converter of 1255 puts letter and point together; the page has no such character.
TEST(Pages, BytesAreNotComposed) {
    EXPECT_EQ(Decode(1255, "\xE0\xC7"), u"\x05D0\x05B7");
    EXPECT_EQ(Encode(1255, u"\xFB2E"), "\xE0\xC7");
}

TEST(Pages, ShiftsBetweenStates) {
    u16string text;
    for (int i = 0; i < 500; ++i) {
        text += i % 7 == 0 ? u"ab\x3042"s : u"\x4E00\x4E8C"s;
    }
    const std::string bytes = Encode(939, text);
    Iconv iconv("IBM939", oracle::kUtf16);
    std::string start;
    ASSERT_EQ(iconv.Convert({reinterpret_cast<const char*>(text.data()), 20}, start), 0);
    EXPECT_EQ(bytes.substr(0, start.size() - 1), start.substr(0, start.size() - 1));
    EXPECT_EQ(bytes.back(), '\x0F');
    EXPECT_EQ(Decode(939, bytes), text);
    EXPECT_EQ(Decode(939, "\xC1\x0E"), u"A");
    EXPECT_EQ(Decode(939, "\xC1\x0E\x45"), u"A\xFFFD");
    EXPECT_EQ(Encode(939, u"A\xD83D\xDE00\xDB40\xDC41"), "\xC1\x6F\x6F");
}

TEST(Contract, ZeroMeansTheProcess) {
    const std::pair<const char*, std::string> cases[] = {
        {"C", "\xC3\xA4\xE3\x81\x82"},     {"de_DE.ISO-8859-1", "\xE4"},
        {"ja_JP.SHIFT_JIS", "\x82\xA0"},   {"ja_JP.EUC-JP", "\xA4\xA2\x8F\xB0\xA1\xA1\xC1"},
        {"ka_GE.GEORGIAN-PS", "\xC0\xC1"}, {"zh_TW.EUC-TW", "\x8E\xA2\xA1\xA1\xC4\xE3x"},
    };
    for (const auto& [name, bytes] : cases) {
        const LocaleScope locale(name);
        std::string wanted;
        ASSERT_EQ(Iconv(oracle::kUtf16, process_code_page()->converter).Convert(bytes, wanted), 0);
        EXPECT_EQ(Decode(0, bytes), oracle::units(wanted)) << name;
        EXPECT_EQ(Encode(0, oracle::units(wanted)), bytes) << name;
    }
}

TEST(Contract, FailuresWriteNothing) {
    errno = 4711;
    char16_t units[8] = {7, 7, 7, 7, 7, 7, 7, 7};
    char bytes[8] = {7, 7, 7, 7, 7, 7, 7, 7};
    for (unsigned int page : {65001u, 932u, 1252u, 20127u, 28591u, 939u, 54936u}) {
        for (int length : {0, -1, INT_MIN}) {
            EXPECT_EQ(MultiByteToWideChar(page, "abc", length, units, 8), 0);
            EXPECT_EQ(WideCharToMultiByte(page, u"abc", length, bytes, 8), 0);
        }
        for (int room : {2, 1, -1}) {
            EXPECT_EQ(MultiByteToWideChar(page, "abc", 3, units, room), 0);
            EXPECT_EQ(WideCharToMultiByte(page, u"abc", 3, bytes, room), 0);
        }
    }
    for (unsigned int page : {1u, 1200u, 65000u, 99999u}) {
        EXPECT_EQ(MultiByteToWideChar(page, "abc", 3, units, 8), 0);
        EXPECT_EQ(WideCharToMultiByte(page, u"abc", 3, bytes, 8), 0);
        EXPECT_EQ(Decoding(page, "abc", 3).Write(units), 0);
        EXPECT_EQ(Encoding(page, u"abc", 3).Write(bytes), 0);
    }
    for (unsigned int page : {869u, 939u, 65001u, 77777u}) {
        Encode(page, u"\x4E00?");
        Decode(page, "\xFF\xFE");
    }
    EXPECT_EQ(errno, 4711);
    EXPECT_EQ(std::count(units, units + 8, 7), 8);
    EXPECT_EQ(std::count(bytes, bytes + 8, 7), 8);
}

}  // namespace
}  // namespace platform
