#include <cerrno>
#include <climits>
#include <cstdarg>
#include <string>
#include <utility>

#include "twins.h"

template <class T>
class Formatting : public ::testing::Test {};
TYPED_TEST_SUITE(Formatting, Twins);

TYPED_TEST(Formatting, TakesTheBlockOfTheEstimate) {
    Open<TypeParam> text;
    text.Format(T_(""));
    EXPECT_EQ(text.Refs(), -1);
    text.Format(T_("%d"), 5);
    EXPECT_TRUE(text == T_("5") && text.GetAllocLength() == 32 && text.Refs() == 1);
    const auto* place = text.GetBuffer(100);
    text.Format(T_("%d|%s"), -7, T_("x"));
    EXPECT_TRUE(text == T_("-7|x") && text.constBuffer() == place && text.GetAllocLength() == 100);
    text.Format(T_(""));
    EXPECT_TRUE(text.IsEmpty() && text.constBuffer() == place);
    Open<TypeParam> shared(T_("hello"));
    const Open<TypeParam> other(shared);
    shared.Format(T_(""));
    EXPECT_TRUE(shared.IsEmpty() && shared.GetAllocLength() == 5 && other == T_("hello"));
    const Open<TypeParam> made(Open<TypeParam>::FromFormat(T_("%s"), T_("abc")));
    EXPECT_TRUE(made == T_("abc") && made.GetAllocLength() == 3 && made.Refs() == 1);
    EXPECT_EQ(Open<TypeParam>(Open<TypeParam>::FromFormat(T_(""))).Refs(), -1);
    EXPECT_EQ(Open<TypeParam>::FromFormat(T_("%.0s"), T_("abc")).GetAllocLength(), 3);
}

TYPED_TEST(Formatting, AppendsBehindTheOldText) {
    Open<TypeParam> text(T_("ab"));
    const Open<TypeParam> other(text);
    text.AppendFormat(T_("%d"), 7);
    EXPECT_TRUE(text == T_("ab7") && text.GetAllocLength() == 34 && other == T_("ab"));
    text.AppendFormat(T_("%c%d"), 0, 8);
    EXPECT_TRUE(text == T_("ab7") && text.GetLength() == 3);
    text.SetAt(1, 0);
    text.AppendFormat(T_("%d"), 9);
    EXPECT_EQ(text.GetLength(), 1);
}

TYPED_TEST(Formatting, NeverCutsWhereTheEstimateIsShort) {
    using String = typename Twin<TypeParam>::String;
    Open<TypeParam> text(T_("ab"));
    text.AppendFormat(T_("%400f"), 1.5);
    EXPECT_EQ(text.GetLength(), 402);
    EXPECT_EQ(text.GetAllocLength(), 402);
    EXPECT_EQ(whole(text).substr(0, 2), String(T_("ab")));
    text.Format(T_("%f"), -1.7976931348623157e308);
    EXPECT_EQ(text.GetLength(), 317);
    text.Format(T_("%.40d"), INT_MIN);
    EXPECT_EQ(text.GetLength(), 41);
    text.Format(T_("%.150e"), 1e-300);
    EXPECT_EQ(text.GetLength(), 157);
}

template <class Text, class Unit>
std::pair<int, int> measured(Unit* dest, const Unit* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int nAllowance = Open<Text>::GetFormattedLength(format, arguments);
    const int nLength = Open<Text>::VFormat(dest, format, arguments);
    va_end(arguments);
    return {nAllowance, nLength};
}

TYPED_TEST(Formatting, MeasuresAndPrintsByItself) {
    typename Twin<TypeParam>::Unit place[8];
    EXPECT_EQ(measured<TypeParam>(place, T_("<%d>"), 42),
              std::make_pair(32 + Open<TypeParam>::FromFormat(T_("<>")).GetAllocLength(), 4));
    EXPECT_EQ(typename Twin<TypeParam>::String(place), T_("<42>"));
    EXPECT_EQ(Open<TypeParam>::FromFormat(T_("%5000d"), 7).GetLength(), 5000);
}

TEST(Format, OfASystemError) {
    Open<Kelm> text("old");
    text.FormatMsg(5, "%s", "open");
    EXPECT_STREQ(text, "open <Error Code=5 (0x5)>, Input/output error");
    EXPECT_GE(text.GetAllocLength(), 2048);
    errno = ENOENT;
    text.FormatMsg(0, "x");
    EXPECT_STREQ(text, "x <Error Code=2 (0x2)>, No such file or directory");
    text.FormatMsg(0x80000005, "x");
    EXPECT_STREQ(text, "x <Error Code=-2147483643 (0x80000005)>, ");
    const Kelm longest = Kelm::FromRepeat('x', 2100);
    text.FormatMsg(5, "%s", longest.constBuffer());
    EXPECT_STREQ(text, longest + " <Error Code=5 (0x5)>, ");
    const Kelm edge = Kelm::FromRepeat('x', 2048 - 25 - 18);
    text.FormatMsg(5, "%s", edge.constBuffer());
    EXPECT_LE(text.GetLength(), 2048);
}
