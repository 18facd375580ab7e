// Replacing and removing without case: what would never end, and what has to be linear.

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

#include "locales.h"
#include "oracle.h"
#include "twins.h"

TEST(BlindReplacing, EndlessStepsBecomeOnePass) {
    const int nLength = 1 << 20;
    struct Case {
        const char* text;
        const char* find;
        const char* put;
    };
    for (const Case& row : {Case{"&", "&", "&amp;"}, Case{"xxxxxxxx&", "&", "&amp;"},
                            Case{"a", "A", "A"}, Case{"aA", "a", "aa"}}) {
        Kelm text;
        text.Repeat(row.text, nLength / static_cast<int>(std::strlen(row.text)));
        std::string expected = oracle::folded(whole(text), oracle::kLower);
        const int nHits = oracle::replace_all(
            expected, oracle::folded(std::string(row.find), oracle::kLower), std::string(row.put));
        ASSERT_EQ(text.NCReplace(row.find, row.put), nHits) << row.text;
        ASSERT_TRUE(whole(text) == expected) << row.text;
        ASSERT_EQ(text.GetAllocLength(), text.GetLength()) << row.text;
    }
    // The third step alone would be too much.
    Kelm two("aA");
    EXPECT_EQ(two.NCReplace("a", Kelm::FromRepeat('A', 2000)), 2);
    EXPECT_TRUE(two == Kelm::FromRepeat('A', 4000));
    // The first step would, with hits of which each is a thousand times as long.
    Kelm thousand = Kelm::FromRepeat('a', 1000);
    EXPECT_EQ(thousand.NCReplace("a", Kelm::FromRepeat('A', 10000)), 1000);
    EXPECT_TRUE(thousand == Kelm::FromRepeat('A', 10000000));
    Open<Kelm> locked = from<Kelm>("a&b&c\0&", 20);
    const char* place = locked.LockBuffer();
    EXPECT_EQ(locked.NCReplace("&", "&&"), 2);
    EXPECT_STREQ(locked, "a&&b&&c");
    EXPECT_EQ(locked.constBuffer(), place);
    EXPECT_EQ(locked.Refs(), -1);
}

TEST(BlindRemoval, LongTextsInLinearTime) {
    const int nLength = 500000;
    Kelm joining = Kelm::FromRepeat('a', nLength) + Kelm::FromRepeat('B', nLength);
    EXPECT_EQ(joining.NCRemove("ab"), nLength);
    EXPECT_TRUE(joining.IsEmpty());
    WString wide = WString::FromRepeat(u'a', nLength) + WString::FromRepeat(u'B', nLength);
    EXPECT_EQ(wide.NCRemove(u"ab"), nLength);
    struct Case {
        const char* locale;
        const char* repeated;  // in front of the same text the other way round
        const char* behind;
        const char* find;
    };
    for (const Case& row :
         {Case{"zh_CN.GB18030", "\xB0\xA1", "x", "\xB0\xA1x"},
          Case{"ja_JP.EUC-JP", "\xA4\xA2", "x", "\xA4\xA2X"},
          Case{"ja_JP.SHIFT_JIS", "\xB1", "\xB1", "\xB1"},
          // Each removal makes other characters of all that follow.
          Case{"zh_CN.GBK", "\xB0\xB0", "", "\xB0"}, Case{"ja_JP.EUC-JP", "\xA4\xA4", "", "\xA4"},
          Case{"en_US.UTF-8", "\xC3\xA9", "\xC3\x89", "\xC3\x89\xC3\xA9"}}) {
        const LocaleScope locale(row.locale);
        Kelm text("\xFF");  // ill-formed
        text.Repeat(row.repeated, nLength);
        text.Repeat(row.behind, nLength);
        EXPECT_EQ(text.NCRemove(row.find),
                  static_cast<int>(std::strlen(row.repeated) + std::strlen(row.behind)) * nLength /
                      static_cast<int>(std::strlen(row.find)))
            << row.locale;
        EXPECT_STREQ(text, "\xFF") << row.locale;
        text.Repeat(row.repeated, nLength);
        const char ch = row.repeated[0];
        const bool bSingle = std::strlen(row.repeated) == 1;
        EXPECT_EQ(text.NCRemove(ch), bSingle ? nLength : 0) << row.locale;
    }
}

// A byte that is alone in front of a small letter makes a character with the capital one.
TEST(BlindRemoval, FoldsThatJoinCharacters) {
    const LocaleScope locale("zh_HK.BIG5-HKSCS");
    Kelm text("\x8EiI");
    EXPECT_EQ(text.NCRemove("i"), 1);
    EXPECT_STREQ(text, "\x8Ei");
    text = "o\xA4\xFEo\xA4";
    EXPECT_EQ(text.NCRemove("o\xA4"), 1);
    EXPECT_STREQ(text, "\xFEo\xA4");
    text = "\x8Ei\x8E";
    EXPECT_EQ(text.NCRemove('\x8E'), 1);
    EXPECT_STREQ(text, "\x8Ei");
}

template <class TypeParam>
class Replacing : public ::testing::Test {};
TYPED_TEST_SUITE(Replacing, Twins);

TYPED_TEST(Replacing, GrowsInPlaceAndSharedWhateverTheNumberOfHits) {
    using String = typename Twin<TypeParam>::String;
    for (const int nHits : {255, 256, 257, 131072, 131073, 200000}) {
        const auto nUnits = static_cast<std::size_t>(nHits);
        auto text = from<TypeParam>(String(nUnits, 'x'), 3 * nUnits);
        auto sharer = text;
        ASSERT_EQ(sharer.Replace(T_("x"), T_("abc")), nHits);
        ASSERT_EQ(text.Replace(T_("x"), T_("abc")), nHits);
        ASSERT_EQ(whole(sharer), whole(text));
        String expected;
        for (int n = 0; n < nHits; ++n) {
            expected += T_("abc");
        }
        ASSERT_EQ(whole(text), expected) << nHits;
    }
}
