#include "wide/wide.h"

#include <gtest/gtest.h>
#include <wctype.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "locales.h"
#include "oracle.h"
#include "texts.h"

namespace {

const char* const kLocales[] = {"C", "en_US.UTF-8", "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS",
                                "tr_TR.UTF-8"};

// Every unit but NUL: in order, and so that those which share the low byte follow each other. Then
// ASCII of several lengths, with and without long runs of letters.
std::vector<std::u16string> Samples() {
    std::u16string inOrder;
    std::u16string byLowByte;
    std::u16string words;
    std::u16string ascii;
    for (unsigned unit = 1; unit < 0x10000; ++unit) {
        inOrder += static_cast<char16_t>(unit);
        byLowByte += static_cast<char16_t>((unit & 0xFF) << 8 | unit >> 8);
        words += static_cast<char16_t>(unit % 31 == 0 ? unit % 127 + 1 : u'a' + unit % 26);
        ascii += static_cast<char16_t>(1 + unit * 5 % 127);
    }
    return {inOrder + u'\0' + words.substr(0, 99),
            byLowByte,
            words,
            ascii,
            ascii.substr(0, 200),
            ascii.substr(0, 31),
            std::u16string(100, u'\0')};
}

TEST(WideText, IsFoldedAndTestedAsTheLocaleHasEachUnit) {
    const std::vector<std::u16string> samples = Samples();
    const struct {
        char16_t (*one)(char16_t);
        void (*all)(char16_t*);
        oracle::Letters fold;
    } folds[] = {{platform::towupper, platform::_wcsupr, oracle::kUpper},
                 {platform::towlower, platform::_wcslwr, oracle::kLower}};
    const struct {
        char16_t* (*remove)(char16_t*, char16_t*);
        bool (*test)(char16_t);
        int (*members)(wint_t);
    } classes[] = {{platform::remove_space, platform::iswspace, ::iswspace},
                   {platform::remove_punctuation, platform::iswpunct, ::iswpunct},
                   {platform::remove_control, platform::iswcntrl, ::iswcntrl},
                   {nullptr, platform::iswdigit, ::iswdigit}};
    for (const char* const locale : kLocales) {
        const LocaleScope scope(locale);
        for (unsigned unit = 0; unit < 0x10000; ++unit) {
            const auto ch = static_cast<char16_t>(unit);
            for (const auto& fold : folds) {
                ASSERT_EQ(fold.one(ch), oracle::fold_one(std::u16string{ch}, fold.fold)[0])
                    << locale << unit;
            }
            for (const auto& one : classes) {
                ASSERT_EQ(one.test(ch), one.members(ch) != 0) << locale << unit;
            }
        }
        for (const std::u16string& sample : samples) {
            for (const auto& fold : folds) {
                std::u16string text = sample;
                fold.all(text.data());
                const std::u16string front = sample.c_str();
                ASSERT_EQ(text, oracle::folded(front, fold.fold) + sample.substr(front.size()))
                    << locale;
            }
            for (const auto& one : classes) {
                std::u16string text = sample, expected = sample;
                if (one.remove != nullptr) {
                    const auto* end = one.remove(text.data(), text.data() + text.size());
                    text.resize(static_cast<std::size_t>(end - text.data()));
                    std::erase_if(expected, one.members);
                }
                ASSERT_EQ(text, expected) << locale;
            }
        }
    }
}

// Nearly every place of the text fits for a long way, and the last one to the end.
TEST(WideText, IsSearchedWithoutCaseInLinearTime) {
    for (const std::u16string unit : {u"a", u"ab", u"\u0434", u"aab"}) {
        std::u16string run;
        while (run.size() < 20000) {
            run += unit;
        }
        std::u16string text;
        for (int i = 0; i < 30; ++i) {
            text += run;
        }
        const std::u16string pattern = run + u'x' + run;
        const std::u16string upper = oracle::folded(pattern, oracle::kUpper);
        const std::u16string whole = text + pattern;
        const char16_t* const place = whole.data() + text.size();
        const char16_t* const end = whole.data() + whole.size();
        EXPECT_EQ(platform::find_folded(whole.data(), end, upper.data(), upper.size()), place);
        EXPECT_EQ(platform::find_folded(whole.data(), end - 1, upper.data(), upper.size()),
                  nullptr);
    }
}

}  // namespace
