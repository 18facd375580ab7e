#include "multibyte/characters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string>

#include "locales.h"
#include "multibyte/single_bytes.h"

namespace {

using platform::CodePage;

// In quadratic time these would take hours.
TEST(MultibyteTest, TextsOfLeadBytesAlone) {
    const CodePage& page = *platform::find_code_page(932);
    for (const std::string unit : {"\x81", "\x81\x40"}) {
        std::string text;
        while (text.size() < 1 << 20) {
            text += unit;
        }
        const char* first = text.c_str();
        const char* last = first + text.size();
        bool all[256];
        std::fill(std::begin(all), std::end(all), true);
        EXPECT_EQ(platform::trailing_run(page, first, last, all), first);
        EXPECT_EQ(platform::_mbschr(page, first, last, 0x81), nullptr);
        // Shorter, since a sanitizer looks at all of the text before each step back.
        EXPECT_EQ(platform::_mbsrchr(page, last - 0x4000, last, 0x81), nullptr);
        EXPECT_EQ(platform::_mbschr(page, first, last, 0x40), nullptr);
        EXPECT_EQ(platform::_mbsrchr(page, last - 0x4000, last, 0x40), nullptr);
        EXPECT_EQ(platform::_mbspbrk(page, first, last, "@\x81"), nullptr);
        const std::string inside = text.substr(text.size() / 2 + 1);
        EXPECT_EQ(platform::_mbsstr(page, first, last, inside.data(), inside.size()),
                  unit.size() == 1 ? first : nullptr);
    }
}

TEST(MultibyteTest, ErrnoStays) {
    const LocaleScope locale("ja_JP.EUC-JP");
    errno = 0;
    EXPECT_EQ(platform::_mbclen(*platform::process_code_page(), "\xA4z"), 1U);
    EXPECT_EQ(errno, 0);
}

TEST(MultibyteTest, Values) {
    EXPECT_TRUE(platform::_ismbcspace('\v'));
    EXPECT_FALSE(platform::_ismbcspace(0x100 + ' '));
    EXPECT_TRUE(platform::_ismbcdigit('0'));
    EXPECT_TRUE(platform::_ismbcdigit('9'));
    EXPECT_FALSE(platform::_ismbcdigit('0' - 1) || platform::_ismbcdigit('9' + 1));
    EXPECT_EQ(platform::_mbsnbcmp("I64d", "I64", 3), 0);
    EXPECT_NE(platform::_mbsnbcmp("I6", "I64", 3), 0);
}

TEST(SingleBytesTest, ClassesOfTheLocale) {
    using platform::ByteClass;
    struct {
        bool (*isIn)(char) noexcept;
        int (*expected)(int);
        ByteClass (*members)() noexcept;
    } const classes[] = {
        {platform::isspace, std::isspace, ByteClass::Space},
        {platform::ispunct, std::ispunct, ByteClass::Punctuation},
        {platform::iscntrl, std::iscntrl, ByteClass::Control},
        {platform::isdigit, std::isdigit, ByteClass::Digit},
        {platform::isalnum, std::isalnum, ByteClass::AlNum},
        {platform::isalpha, std::isalpha, ByteClass::Alpha},
        {platform::isupper, std::isupper, ByteClass::Upper},
        {platform::islower, std::islower, ByteClass::Lower},
    };
    for (const char* name : {"C", "en_US.UTF-8", "de_DE.ISO-8859-1", "tr_TR.ISO-8859-9"}) {
        const LocaleScope locale(name);
        std::string all;
        for (int value = 0; value < 256; ++value) {
            all += static_cast<char>(value);
            EXPECT_EQ(platform::toupper(all.back()), static_cast<char>(std::toupper(value)));
            EXPECT_EQ(platform::tolower(all.back()), static_cast<char>(std::tolower(value)));
        }
        for (const auto& one : classes) {
            const ByteClass members = one.members();
            const auto expected = [&](char ch) {
                return one.expected(static_cast<unsigned char>(ch)) != 0;
            };
            std::string in;
            std::string out;
            for (const char ch : all) {
                EXPECT_EQ(one.isIn(ch), expected(ch)) << name << ' ' << int{ch};
                (expected(ch) ? in : out) += ch;
            }
            for (std::size_t skip = 0; skip < 20; ++skip) {
                std::string text = all.substr(skip);
                std::string left = text;
                std::erase_if(left, expected);
                char* end = platform::remove_class(members, text.data(), text.data() + text.size());
                EXPECT_EQ(std::string(text.data(), end), left);
                std::string run = (in + in + in + in).substr(0, skip);
                EXPECT_TRUE(platform::all_in_class(members, run.data(), run.data() + run.size()));
                run.insert(skip / 2, 1, out[0]);
                EXPECT_FALSE(platform::all_in_class(members, run.data(), run.data() + run.size()));
            }
        }
    }
}

}  // namespace
