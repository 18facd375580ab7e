#include <cerrno>
#include <climits>
#include <cstdarg>
#include <string>
#include <utility>

#include "twins.h"

template <class T>
class Formatting : public ::testing::Test {};
TYPED_TEST_SUITE(Formatting, Twins);

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

// The programs do what is known and short.
TEST(Format, OfASystemError) {
    Open<Kelm> text;
    errno = ENOENT;
    text.FormatMsg(0, "x");
    EXPECT_STREQ(text, "x <Error Code=2 (0x2)>, No such file or directory");
    text.FormatMsg(0x80000005, "x");
    EXPECT_STREQ(text, "x <Error Code=-2147483643 (0x80000005)>, ");
    const Kelm longest = Kelm::FromRepeat('x', 2100);
    text.FormatMsg(5, "%s", longest.constBuffer());
    EXPECT_STREQ(text, longest + " <Error Code=5 (0x5)>, ");
    text.FormatMsg(5, "%s", Kelm::FromRepeat('x', 2048 - 25 - 18).constBuffer());
    EXPECT_LE(text.GetLength(), 2048);
}
