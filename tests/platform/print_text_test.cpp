#include <algorithm>
#include <memory>

#include "locales.h"
#include "pages/conversion.h"
#include "printing.h"

namespace {

using printing::call;

const char* const kLocales[] = {"en_US.UTF-8",  "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS",
                                "ja_JP.EUC-JP", "ko_KR.EUC-KR",     "zh_CN.GB18030",
                                "zh_TW.EUC-TW"};

std::u16string decoded(const std::string& text) {
    std::u16string units(text.size(), u'\0');
    const int length = static_cast<int>(text.size());
    units.resize(static_cast<std::size_t>(
        platform::MultiByteToWideChar(0, text.data(), length, units.data(), length)));
    return units;
}

std::string encoded(const std::u16string& text) {
    std::string bytes(4 * text.size(), '\0');
    bytes.resize(static_cast<std::size_t>(
        platform::WideCharToMultiByte(0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                      static_cast<int>(bytes.size()))));
    return bytes;
}

// The print converts piece by piece; nobody may see where the pieces end.
TEST(PrintText, ConvertsAsTheWholeIsConverted) {
    const std::string pieces[] = {"a",        "\xC9\xA1",         "\xB0\xA1", "\xE3\x81\x82",
                                  "\xF0\x9F", "\xF0\x9F\x98\x80", "\x81\x30", "\x81\x30\x81\x30",
                                  "\x8E\xA2", "\x8E\xA2\xA1\xA1", "\xFF"};
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (unsigned seed = 0; seed < 400; ++seed) {
            std::string text;
            for (unsigned next = seed; text.size() < 700; next = next * 1103515245 + 12345) {
                text += pieces[seed % 3 == 0 ? 2 : next / 65536 % std::size(pieces)];
                text += seed < 10 && text.size() < 10 ? "\xC9" : "";
            }
            const std::u16string expected = decoded(text);
            ASSERT_EQ(
                call(u"%800S", text.c_str()).text,
                std::u16string(800 - std::min<std::size_t>(expected.size(), 800), u' ') + expected)
                << name << seed;
            ASSERT_EQ(call("%S", expected.c_str()).text, encoded(expected)) << name << seed;
            const std::u16string torn = expected.substr(0, seed) + u'\xD83D';
            ASSERT_EQ(call("%S", torn.c_str()).text, encoded(torn)) << name << seed;
            const int precision = static_cast<int>(seed);
            const bool isSplit = precision > 0 && (expected[seed - 1] & 0xFC00) == 0xD800;
            ASSERT_EQ(call(u"%.*S", precision, text.c_str()).text,
                      expected.substr(0, seed - (isSplit ? 1 : 0)))
                << name << seed;
        }
    }
}

TEST(PrintText, NeedsNoTerminatorBehindAPrecision) {
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (int size = 1; size < 600; size += size < 8 ? 1 : 83) {
            const auto count = static_cast<std::size_t>(size);
            const std::unique_ptr<char16_t[]> wide(new char16_t[count]);
            std::fill_n(wide.get(), count, u'\u00E9');
            EXPECT_LE(call("%.*S", size, wide.get()).length, size) << name;
            const std::unique_ptr<char[]> narrow(new char[count]);
            std::fill_n(narrow.get(), count, 'e');
            EXPECT_EQ(call(u"%.*S", size, narrow.get()).length, size) << name;
        }
    }
    const LocaleScope locale("zh_CN.GB18030");
    const std::unique_ptr<char[]> four(new char[4]{'\x81', '\x30', '\x81', '\x30'});
    EXPECT_EQ(call(u"%.1S", four.get()).text, u"\u0080");
}

TEST(PrintText, HasTheDecimalPointOfItsOwnWidth) {
    const LocaleScope locale("de_DE.ISO-8859-1");
    std::setlocale(LC_NUMERIC, "ps_AF.UTF-8");
    EXPECT_EQ(call(u"%.1f", 1.5).text, u"1\u066B5");
    EXPECT_EQ(call("%.1f", 1.5).text,
              "1\xD9\xAB"
              "5");
}

}  // namespace
