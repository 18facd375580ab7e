#include "multibyte/multibyte.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cwchar>
#include <functional>
#include <string>

#include "locales.h"
#include "multibyte/case.h"
#include "multibyte/characters.h"
#include "multibyte/single_bytes.h"
#include "oracle.h"

namespace {

using platform::ByteClass;
using platform::CodePage;

const CodePage& page() {
    return *platform::process_code_page();
}

// In quadratic time these would take hours.
TEST(Multibyte, TextsOfLeadBytesAlone) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    for (const std::string unit : {"\x81", "\x81\x40"}) {
        std::string text;
        while (text.size() < 1 << 20) {
            text += unit;
        }
        const char* first = text.c_str();
        const char* last = first + text.size();
        bool all[256];
        std::fill(std::begin(all), std::end(all), true);
        EXPECT_EQ(platform::trailing_run(page(), first, last, all), first);
        for (const unsigned char byte : {std::uint8_t{0x81}, std::uint8_t{0x40}}) {
            EXPECT_EQ(platform::_mbschr(page(), first, last, byte), nullptr);
            // Shorter, since a sanitizer looks at all of the text before each step back.
            EXPECT_EQ(platform::_mbsrchr(page(), last - 0x4000, last, byte), nullptr);
        }
        EXPECT_EQ(platform::_mbspbrk(page(), first, last, "@\x81"), nullptr);
        const std::string inside = text.substr(text.size() / 2 + 1);
        EXPECT_EQ(platform::_mbsstr(page(), first, last, inside.data(), inside.size()),
                  unit.size() == 1 ? first : nullptr);
    }
    const LocaleScope other("ja_JP.EUC-JP");
    errno = 0;
    EXPECT_EQ(platform::_mbclen(page(), "\xA4z"), 1U);
    EXPECT_EQ(errno, 0);
}

// By comparing at every place this would go on for minutes.
TEST(Multibyte, FoldedSearchIsLinearInTextMadeToMislead) {
    std::string text(2000000, 'a');
    std::string wanted(text.size() / 8, 'A');
    wanted[wanted.size() / 2] = 'B';
    const char* const place = text.data() + text.size() / 2 + 1;
    for (const char* name : {"C", "tr_TR.ISO-8859-9"}) {
        const LocaleScope locale(name);
        for (const char letter : {'a', 'b'}) {
            text[text.size() / 2 + 1 + wanted.size() / 2] = letter;
            EXPECT_EQ(platform::find_folded(page(), text.data(), text.data() + text.size(),
                                            wanted.data(), wanted.size()),
                      letter == 'b' ? place : nullptr);
        }
    }
}

TEST(Multibyte, FoldsEveryCharacterOfTheLocale) {
    for (const char* name : {"en_US.UTF-8", "tr_TR.UTF-8", "ja_JP.SHIFT_JIS", "zh_CN.GB18030"}) {
        const LocaleScope locale(name);
        std::string all;
        for (wchar_t value = 1; value < 0x1F000; ++value) {
            char bytes[16];
            std::mbstate_t state{};
            const std::size_t length = std::wcrtomb(bytes, value, &state);
            all.append(bytes, length <= sizeof bytes ? length : 0);
        }
        std::string upper = all, lower = all;
        platform::_mbsupr(page(), upper.data());
        platform::_mbslwr(page(), lower.data());
        EXPECT_TRUE(upper == oracle::folded(all, oracle::kUpper)) << name;
        EXPECT_TRUE(lower == oracle::folded(all, oracle::kLower)) << name;
    }
}

TEST(Multibyte, OrdersBehindPairsOfCase) {
    const LocaleScope locale("en_US.UTF-8");
    for (const std::size_t length : {0U, 1U, 300U}) {
        const std::string upper = std::string(length, 'X') + "\u00C9t\u0414\u0416A";
        const std::string lower = std::string(length, 'x') + "\u00E9T\u0434\u0436a";
        EXPECT_EQ(platform::_mbsicmp(page(), upper.c_str(), lower.c_str()), 0) << length;
        EXPECT_LT(platform::_mbsicmp(page(), (upper + "a").c_str(), (lower + "B").c_str()), 0);
        EXPECT_GT(platform::_mbsicmp(page(), (upper + "\u00C9").c_str(), lower.c_str()), 0);
    }
}

TEST(SingleBytes, ClassesOfTheLocale) {
    for (unsigned value = 0; value < 0x200; ++value) {
        EXPECT_EQ(platform::_ismbcspace(value),
                  value < 0x80 && std::isspace(static_cast<int>(value)) != 0)
            << value;
    }
    const struct {
        int (*expected)(int);
        ByteClass (*members)() noexcept;
    } classes[] = {
        {std::isspace, ByteClass::Space},   {std::ispunct, ByteClass::Punctuation},
        {std::iscntrl, ByteClass::Control}, {std::isdigit, ByteClass::Digit},
        {std::isalnum, ByteClass::AlNum},   {std::isalpha, ByteClass::Alpha},
        {std::isupper, ByteClass::Upper},   {std::islower, ByteClass::Lower},
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
            const auto is_in = [&](char ch) {
                return one.expected(static_cast<unsigned char>(ch)) != 0;
            };
            for (const char ch : all) {
                EXPECT_EQ(members.Has(ch), is_in(ch)) << name << ' ' << int{ch};
            }
            std::string in = all + all + all, out = all;
            std::erase_if(in, std::not_fn(is_in));
            std::erase_if(out, is_in);
            for (std::size_t skip = 0; skip < 20; ++skip) {
                std::string text = all.substr(skip), left = text;
                std::erase_if(left, is_in);
                char* end = platform::remove_class(members, text.data(), text.data() + text.size());
                EXPECT_EQ(std::string(text.data(), end), left);
                std::string run = in.substr(0, skip);
                EXPECT_TRUE(platform::all_in_class(members, run.data(), run.data() + run.size()));
                run.insert(skip / 2, 1, out[0]);
                EXPECT_FALSE(platform::all_in_class(members, run.data(), run.data() + run.size()));
            }
        }
    }
}

}  // namespace
