// Numbered pages and the page of the locale, by way of the classes.

#include <type_traits>

#include "locales.h"
#include "twins.h"

static_assert(!std::is_constructible_v<Kelm, WString> && !std::is_assignable_v<Kelm, WString>);

TEST(Bridge, ByThePageThatIsAskedFor) {
    EXPECT_EQ(whole(WString(u"a\u30AB\xD83D\xDE00\xD800").ToKelm(1252)), "a???");
    EXPECT_EQ(whole(WString(u"\u30AB\u30AB").ToKelm(932)), "\x83\x4A\x83\x4A");
    const WString wide = WString::FromCodePage(Kelm("\x83\x4A\x83\x4A"), 932);
    EXPECT_EQ(whole(wide), u"\u30AB\u30AB");
    EXPECT_EQ(wide.GetAllocLength(), 2);
    Open<Kelm> text("h\xC3\xA9llo");
    text.GetBuffer(20);
    const char* place = text.LockBuffer();
    EXPECT_TRUE(text.ToCharacterSet(1252));
    EXPECT_EQ(whole(text), "h\xE9llo");
    EXPECT_TRUE(text.FromCharacterSet(1252));
    EXPECT_EQ(whole(text), "h\xC3\xA9llo");
    EXPECT_EQ(text.constBuffer(), place);
    EXPECT_EQ(text.Refs(), -1);
}

TEST(Bridge, FollowsTheLocale) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    EXPECT_EQ(whole(WString(u"\u30AB\u00E9").ToKelm()), "\x83\x4A?");
    EXPECT_EQ(whole(WString("\x83\x4A")), u"\u30AB");
    Kelm narrow("\x83\x4A");
    EXPECT_TRUE(narrow.ToCharacterSet(65001));
    EXPECT_EQ(whole(narrow), "\xE3\x82\xAB");
}
