#include "multibyte/case.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <cwctype>
#include <string>

#include "locales.h"
#include "multibyte/multibyte.h"
#include "oracle.h"

namespace {

using platform::CodePage;

const CodePage& page() {
    return *platform::process_code_page();
}

std::string upper(const std::string& text) {
    return oracle::folded(oracle::until_nul(text), oracle::kUpper);
}

std::string lower(const std::string& text) {
    return oracle::folded(oracle::until_nul(text), oracle::kLower);
}

std::string changed(void (*change)(const CodePage&, char*) noexcept, std::string text) {
    change(page(), text.data());
    return text;
}

TEST(MultibyteCase, FoldsEveryCharacterOfTheLocale) {
    for (const char* name : {"en_US.UTF-8", "tr_TR.UTF-8", "ja_JP.SHIFT_JIS", "zh_CN.GB18030"}) {
        const LocaleScope locale(name);
        std::string all;
        for (wchar_t value = 1; value < 0x1F000; ++value) {
            char bytes[16];
            std::mbstate_t state{};
            const std::size_t length = std::wcrtomb(bytes, value, &state);
            all.append(bytes, length <= sizeof bytes ? length : 0);
        }
        EXPECT_TRUE(changed(platform::_mbsupr, all) == upper(all)) << name;
        EXPECT_TRUE(changed(platform::_mbslwr, all) == lower(all)) << name;
    }
}

TEST(MultibyteCase, CollationIsTheLocales) {
    struct {
        const char* locale;
        const char *left, *right;
        int exact, ignoringCase;
    } const cases[] = {
        {"C", "a", "B", 1, -1},
        {"de_DE.UTF-8", "Zebra", "\xC3\x84pfel", 1, 1},
        {"de_DE.UTF-8", "\xC3\xA4pfel", "\xC3\x84PFEL", -1, 0},
        {"de_DE.ISO-8859-1", "\xE4pfel", "\xC4PFEL", -1, 0},
    };
    for (const auto& c : cases) {
        const LocaleScope locale(c.locale);
        for (const std::size_t tail : {0U, 300U, 3000U}) {
            const std::string left = c.left + std::string(tail, 'x');
            const std::string right = c.right + std::string(tail, 'x');
            EXPECT_EQ(oracle::sign(platform::_mbscoll(page(), left.c_str(), right.c_str())),
                      c.exact);
            EXPECT_EQ(oracle::sign(platform::_mbsicoll(page(), left.c_str(), right.c_str())),
                      c.ignoringCase)
                << c.locale << ' ' << c.left << ' ' << tail;
        }
    }
}

// By comparing at every place this would go on for minutes.
TEST(MultibyteCase, SearchIsLinearInTextMadeToMislead) {
    constexpr std::size_t kLength = 2000000;
    std::string text(kLength, 'a');
    std::string wanted(kLength / 8, 'A');
    wanted[wanted.size() / 2] = 'B';
    for (const char* name : {"C", "tr_TR.ISO-8859-9"}) {
        const LocaleScope locale(name);
        const char* last = text.data() + text.size();
        EXPECT_EQ(platform::find_folded(page(), text.data(), last, wanted.data(), wanted.size()),
                  nullptr);
        const std::size_t place = kLength / 2 + 1;
        text[place + wanted.size() / 2] = 'b';
        EXPECT_EQ(platform::find_folded(page(), text.data(), last, wanted.data(), wanted.size()),
                  text.data() + place);
        text[place + wanted.size() / 2] = 'a';
    }
}

}  // namespace
