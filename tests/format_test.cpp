#include <cerrno>
#include <climits>
#include <cstdarg>
#include <string>
#include <utility>

#include "twins.h"

template <class T>
class Formatting : public ::testing::Test {};
TYPED_TEST_SUITE(Formatting, Twins);

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
