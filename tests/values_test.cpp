// Numbers, flags, classes, similarity and order.

#include <climits>
#include <cmath>
#include <type_traits>

#include "locales.h"
#include "twins.h"

namespace {

struct Reading {
    const char* text;
    int nInt;
    double dDouble;
    bool bBool;
};

const Reading kReadings[] = {
    {"", 0, 0, false},
    {"0", 0, 0, false},
    {"ab", 171, 0, false},
    {"  42", 42, 42, true},
    {"0x1A", 26, 0, true},
    {"0f", 15, 0, true},
    {"-ff", -255, 0, false},
    {"-10", -10, -10, true},
    {"1e2", 1, 100, true},
    {"ffffffff", INT_MAX, 0, false},
    {"99999999999", INT_MAX, 99999999999.0, true},
    {"abc1", 43969, 0, true},
    {"0.5", 0, 0.5, false},
    {"true1", 0, 0, false},
    {" TRUE\t", 0, 0, true},
    {"oN", 0, 0, true},
    {"Yes", 0, 0, true},
    {"yes sir", 0, 0, false},
    {"inf", 0, 0, false},
};

template <class A, class B>
bool right_order(const A& a, const B& b, int nSign) {
    return (a < b) == (nSign < 0) && (a <= b) == (nSign <= 0) && (a == b) == (nSign == 0) &&
           (a != b) == (nSign != 0) && (a >= b) == (nSign >= 0) && (a > b) == (nSign > 0);
}

template <class Text, class Unit>
bool right_orders(const Text& a, const Unit* b, int nSign) {
    return right_order(a, b, nSign) && right_order(b, a, -nSign) &&
           (b == nullptr || right_order(a, Text(b), nSign));
}

}  // namespace

TEST(Values, Read) {
    for (const Reading& row : kReadings) {
        const Kelm narrow(row.text);
        const WString wide(narrow);
        EXPECT_TRUE(narrow.Int() == row.nInt && wide.Int() == row.nInt) << row.text;
        EXPECT_TRUE(narrow.Long() == row.nInt && wide.Long() == row.nInt) << row.text;
        EXPECT_TRUE(narrow.Double() == row.dDouble && wide.Double() == row.dDouble) << row.text;
        EXPECT_TRUE(narrow.Bool() == row.bBool && wide.Bool() == row.bBool) << row.text;
    }
    EXPECT_EQ(Kelm("ffffffff").Int64(), 4294967295);
    EXPECT_EQ(WString(u"-9999999999999999999").Int64(), LLONG_MIN);
    EXPECT_TRUE(Kelm("on\0 2", 5).Bool() == false && Kelm("on\0 x", 5).Bool());
    const Kelm minus("-1");
    EXPECT_EQ(minus.To<unsigned int>(), UINT_MAX);
    EXPECT_EQ(minus.To<unsigned long>(), 4294967295UL);
    EXPECT_EQ(minus.To<unsigned long long>(), ULLONG_MAX);
    EXPECT_TRUE(minus.To<long>() == -1 && minus.To<long long>() == -1 && minus.To<bool>());
    EXPECT_EQ(Kelm("0.1").To<float>(), 0.1F);
    const LocaleScope locale("de_DE.UTF-8");
    EXPECT_EQ(Kelm("1,5").To<double>(), 1.5);
    EXPECT_EQ(WString(u"1,5").Double(), 1.5);
    EXPECT_STREQ(Kelm::From(-1.5), "-1,5");
}

template <class T>
class Written : public ::testing::Test {};
TYPED_TEST_SUITE(Written, Twins);

TYPED_TEST(Written, NumbersKeepTheCapacityOfTheirFormat) {
    const auto check = [](const Open<TypeParam>& text, const auto* digits, int nCapacity) {
        EXPECT_TRUE(text == digits);
        EXPECT_EQ(text.GetAllocLength(), nCapacity);
    };
    check(TypeParam::From(-5), T_("-5"), 32);
    check(TypeParam::From(INT_MIN), T_("-2147483648"), 32);
    check(TypeParam::From(4294967295U), T_("4294967295"), 32);
    check(TypeParam::From(LONG_MIN), T_("-9223372036854775808"), 32);
    check(TypeParam::From(ULONG_MAX), T_("18446744073709551615"), 32);
    check(TypeParam::From(-1LL), T_("-1"), 32);
    check(TypeParam::From(ULLONG_MAX), T_("18446744073709551615"), 32);
    check(TypeParam::From(1.0 / 3), T_("0.333333"), 128);
    check(TypeParam::From(0.0), T_("0"), 128);
    check(TypeParam::From(1e300), T_("1e+300"), 128);
    check(TypeParam::From(-HUGE_VAL), T_("-inf"), 128);
}

TEST(WrittenWide, AppendsToWideText) {
    WString text;
    const short nShort = -5;
    const unsigned short nUnsigned = 65535;
    const char16_t ch = 65;
    const long nLong = LONG_MAX;
    const char* null = nullptr;
    text << nShort << nUnsigned << ch << 1 << 2U << nLong << "n\xC3\xA4" << null << u"w"
         << Kelm("k");
    EXPECT_TRUE(text == u"-565535A129223372036854775807n\u00E4wk");
    const Open<WString> shared(text);
    text.Append(Kelm());
    text += Kelm();
    EXPECT_EQ(text.constBuffer(), shared.constBuffer());
    EXPECT_TRUE(text + null == text && text + "x" + Kelm("y") == text + u"xy");
    EXPECT_EQ((WString() + Kelm()).constBuffer(), WString().constBuffer());
    static_assert(!std::is_constructible_v<Kelm, WString> && !std::is_assignable_v<Kelm, WString>);
}

TEST(Classes, ByByte) {
    const Kelm text("a1 B\0", 5);
    EXPECT_TRUE(Kelm("123").IsDigit() && !Kelm("12a").IsDigit() && !Kelm(" 12").IsDigit());
    EXPECT_TRUE(Kelm("a1").IsAlNum() && !Kelm("a1").IsAlpha() && Kelm("aB").IsAlpha());
    EXPECT_TRUE(Kelm("AB").IsUpper() && !Kelm("AB1").IsUpper() && Kelm("ab").IsLower());
    EXPECT_TRUE(Kelm(" \t").IsSpace() && !text.IsAlNum() && !Kelm("1\0", 2).IsDigit());
    EXPECT_TRUE(text.IsDigit(1) && text.IsAlNum(0) && text.IsAlpha(3) && text.IsUpper(3) &&
                text.IsLower(0) && text.IsSpace(2) && !text.IsAlpha(5));
    const Kelm empty;
    EXPECT_TRUE(empty.IsDigit() && empty.IsAlNum() && empty.IsAlpha() && empty.IsUpper() &&
                empty.IsLower() && empty.IsSpace());
    const LocaleScope locale("de_DE.ISO-8859-1");
    EXPECT_TRUE(Kelm("\xE4").IsLower() && Kelm("\xC4").IsUpper(0));
}

TEST(Similar, DividesByItsOwnLength) {
    EXPECT_TRUE(Kelm().Similar("") == 0 && Kelm().Similar("a") == 0 && Kelm("a").Similar("") == 0);
    EXPECT_EQ(Kelm("abcbdab").Similar("bdcaba"), 4 / 7.0F);
    EXPECT_EQ(Kelm("bdcaba").Similar("abcbdab"), 4 / 6.0F);
    EXPECT_EQ(Kelm("a\0b", 3).Similar(Kelm("x\0b", 3)), 2 / 3.0F);
    EXPECT_EQ(Kelm("a\0b", 3).Similar("a"), 1 / 3.0F);
}

TEST(Order, ByCharacterUpToNul) {
    const struct {
        const char *a, *b;
        int nCase, nNoCase;
    } rows[] = {{"", "", 0, 0},      {"abc", "abc", 0, 0}, {"ab", "abc", -1, -1},
                {"abc", "ab", 1, 1}, {"abc", "ABC", 1, 0}, {"a", "B", 1, -1},
                {"_", "A", 1, -1},   {"z", "\x7F", -1, -1}};
    for (const auto& row : rows) {
        const Kelm a(row.a), b(row.b);
        EXPECT_TRUE(right_orders(a, row.b, row.nCase)) << row.a << ' ' << row.b;
        EXPECT_TRUE(right_orders(WString(a), WString(b).constBuffer(), row.nCase));
        EXPECT_EQ(sign(a.CompareNoCase(b)), row.nNoCase) << row.a << ' ' << row.b;
        EXPECT_EQ(sign(WString(a).CompareNoCase(WString(b))), row.nNoCase);
        EXPECT_EQ(sign(a.Collate(b)), row.nCase);
        EXPECT_EQ(sign(a.CollateNoCase(b)), row.nNoCase);
    }
    const char* null = nullptr;
    const char16_t* wideNull = nullptr;
    EXPECT_TRUE(right_orders(Kelm(), null, 1) && Kelm().Compare(null) == 1);
    EXPECT_TRUE(right_orders(WString(), wideNull, 1) && WString().CompareNoCase(wideNull) == 1);
    EXPECT_TRUE(Kelm("ab\0x", 4) == Kelm("ab\0y", 4) && Kelm("ab\0x", 4) == "ab");
    EXPECT_TRUE(WString(u"\xFFFF") > u"\xD83D\xDE00" && WString(u"\x8000") > u"z");
    const LocaleScope locale("de_DE.UTF-8");
    EXPECT_LT(Kelm("\xC3\xA4").Collate("b"), 0);
    EXPECT_GT(Kelm("\xC3\xA4").Compare("b"), 0);
    EXPECT_EQ(Kelm("\xC3\xA4").CompareNoCase("\xC3\x84"), 0);
}
