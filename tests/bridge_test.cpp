// The way between the classes, and re-encoding in place.

#include "locales.h"
#include "twins.h"

TEST(Bridge, KeepsLengthsAndNuls) {
    const Kelm text("a\0\xC3\xA9", 4);
    const Open<WString> wide(text);
    EXPECT_TRUE(wide.GetLength() == 3 && wide.GetAllocLength() == 3 && wide[2] == 0xE9);
    EXPECT_EQ(wide.Refs(), 1);
    EXPECT_EQ(whole(wide.ToKelm()), whole(text));
    EXPECT_EQ(wide.ToKelm().GetAllocLength(), 4);
    EXPECT_EQ(WString::FromCodePage(text.constBuffer(), 65001).GetLength(), 1);
    EXPECT_EQ(whole(wide.ToKelm(1252)), std::string("a\0\xE9", 3));
    EXPECT_STREQ(WString(u"\u30AB\u30AB").ToKelm(932), "\x83\x4A\x83\x4A");
    EXPECT_EQ(WString::FromCodePage(Kelm("\x83\x4A\x83\x4A"), 932).GetAllocLength(), 2);
    EXPECT_STREQ(WString(u"a\u30AB\xD83D\xDE00\xD800").ToKelm(1252), "a???");
    EXPECT_STREQ(WString(u"\xD800").ToKelm(65001), "\xEF\xBF\xBD");
}

TEST(Bridge, NothingGivesNothing) {
    const char16_t* nil = WString();
    const char* null = nullptr;
    EXPECT_EQ(WString(Kelm()).constBuffer(), nil);
    EXPECT_EQ(WString(null).constBuffer(), nil);
    EXPECT_EQ(WString::FromCodePage("", 0).constBuffer(), nil);
    EXPECT_EQ(WString::FromCodePage("text", 12345).constBuffer(), nil);
    EXPECT_EQ(WString().ToKelm().constBuffer(), Kelm().constBuffer());
    EXPECT_EQ(WString(u"text").ToKelm(12345).constBuffer(), Kelm().constBuffer());
    Open<WString> text(u"hello");
    text = Kelm();
    EXPECT_TRUE(text.IsEmpty() && text.GetAllocLength() == 5);
    text = Kelm("new");
    EXPECT_TRUE(text == u"new" && text.Refs() == 1);
}

TEST(Recoding, InPlace) {
    Open<Kelm> text("h\xC3\xA9llo");
    const Kelm sharer(text);
    EXPECT_TRUE(text.ToCharacterSet(1252));
    EXPECT_TRUE(text == "h\xE9llo" && sharer == "h\xC3\xA9llo" && text.GetAllocLength() == 5);
    text.GetBuffer(20);
    const char* place = text.LockBuffer();
    EXPECT_TRUE(text.FromCharacterSet(1252));
    EXPECT_TRUE(text == sharer && text.constBuffer() == place && text.Refs() == -1);
    EXPECT_FALSE(text.ToCharacterSet(12345));
    EXPECT_TRUE(text.ToCharacterSet(0) && text == sharer);
    Kelm nul("a\0b", 3);
    EXPECT_TRUE(nul.ToCharacterSet(932));
    EXPECT_EQ(nul.GetLength(), 1);
    Kelm empty;
    EXPECT_TRUE(!empty.ToCharacterSet(0) && !empty.FromCharacterSet(932));
    Kelm sign("\xE2\x82\xAC");
    EXPECT_TRUE(sign.ToCharacterSet(28591) && sign == "?");
}

TEST(Recoding, FollowsTheLocale) {
    const WString text(u"\u30AB\u00E9");
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    EXPECT_STREQ(text.ToKelm(), "\x83\x4A?");
    EXPECT_TRUE(WString("\x83\x4A") == u"\u30AB");
    Kelm narrow("\x83\x4A");
    EXPECT_TRUE(narrow.ToCharacterSet(65001) && narrow == "\xE3\x82\xAB");
}
