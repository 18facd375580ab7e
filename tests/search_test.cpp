// What long texts cost, and that they are searched as short ones are.

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

#include "locales.h"
#include "twins.h"

namespace {

template <class TypeParam>
class Searching : public ::testing::Test {};
TYPED_TEST_SUITE(Searching, Twins);

const char* const kLocales[] = {"C", "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS", "ja_JP.EUC-JP"};

template <class Function>
double seconds(Function function) {
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

// Four hundred searches of a text that ends after ten units, with much behind it, take less than
// forty passes over it.
TYPED_TEST(Searching, CostsNothingBehindTheNul) {
    using Unit = typename Twin<TypeParam>::Unit;
    using Search = std::function<int(const TypeParam&)>;
    std::vector<std::pair<const char*, Search>> searches = {
        {"Find(C)", [](const TypeParam& text) { return text.Find(Unit('q')); }},
        {"Find(C, int)", [](const TypeParam& text) { return text.Find(Unit(0xE9), 1); }},
        {"Find(C const*)", [](const TypeParam& text) { return text.Find(T_("qz")); }},
        {"Find(C const*, int)", [](const TypeParam& text) { return text.Find(T_("qz"), 1); }},
        {"FindOneOf", [](const TypeParam& text) { return text.FindOneOf(T_("qz")); }},
        {"ReverseFind", [](const TypeParam& text) { return text.ReverseFind(Unit('q')); }},
        {"NCFind(C)", [](const TypeParam& text) { return text.NCFind(Unit('q')); }},
        {"NCFind(C const*)", [](const TypeParam& text) { return text.NCFind(T_("qz")); }},
        {"Count", [](const TypeParam& text) { return text.Count(T_("qz")) - 1; }}};
    if constexpr (std::is_same_v<TypeParam, Kelm>) {
        searches.emplace_back("NCFind, folded copy",
                              [](const Kelm& text) { return text.NCFind("\xE9q"); });
    }
    TypeParam text = TypeParam::FromRepeat(Unit('a'), 1 << 24);
    text.SetAt(10, 0);
    int nPasses = 0;
    const double passes = seconds([&] {
        for (int n = 0; n < 40; ++n) {
            nPasses += text.Count(Unit('b')) + 1;
        }
    });
    ASSERT_EQ(nPasses, 40);
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (const auto& search : searches) {
            const double taken = seconds([&] {
                for (int n = 0; n < 400; ++n) {
                    ASSERT_EQ(search.second(text), -1) << name << ' ' << search.first;
                }
            });
            EXPECT_LT(taken, passes) << name << ' ' << search.first;
        }
    }
}

TYPED_TEST(Searching, FindsNothingBehindANul) {
    using Unit = typename Twin<TypeParam>::Unit;
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    for (const int nHit : {900, 4000}) {
        TypeParam text = TypeParam::FromRepeat(Unit('a'), 5000);
        text.SetAt(300, 0);
        text.SetAt(nHit, 'Q');
        EXPECT_EQ(text.Find(Unit('Q')), -1) << nHit;
        EXPECT_EQ(text.Find(T_("Qa")), -1) << nHit;
        EXPECT_EQ(text.FindOneOf(T_("Qz")), -1) << nHit;
        EXPECT_EQ(text.NCFind(T_("qa")), -1) << nHit;
    }
}

// A text that is searched in stretches is cut between characters, also where some of their bytes
// are those of digits.
TEST(LongText, IsCutBetweenCharacters) {
    const LocaleScope locale("zh_CN.GB18030");
    for (int nShift = 0; nShift < 4; ++nShift) {
        Kelm text = Kelm::FromRepeat('x', nShift);
        text.Repeat("\x81\x30\x81\x30", 2000);
        text << Kelm::FromRepeat('x', nShift) << "\x81\x30\x81\x30\x30";
        EXPECT_EQ(text.Find('0'), text.GetLength() - 1) << nShift;
        EXPECT_EQ(text.Find("0"), text.GetLength() - 1) << nShift;
        EXPECT_EQ(text.FindOneOf("01"), text.GetLength() - 1) << nShift;
    }
}
