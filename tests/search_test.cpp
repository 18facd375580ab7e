// What long texts cost, and that they are searched as short ones are.

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <functional>
#include <random>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "locales.h"
#include "oracle.h"
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

// Long enough to be searched in stretches, which must cut no character and no hit.
TEST(LongSearching, StretchesAgainstAWalk) {
    std::mt19937 random(7);
    for (const char* name : kLocales) {
        const LocaleScope locale(name);
        for (int nRound = 0; nRound < 300; ++nRound) {
            // In Shift_JIS the second byte of a long character may be a letter.
            const char* const pieces[] = {
                "a", "b", " ", std::string_view(name).ends_with("JIS") ? "\204a" : "\xA4\xE0"};
            std::string text;
            while (text.size() < 5000) {
                const auto n = random();
                text += n % 2000 == 1 && nRound % 2 == 1 ? std::string(1, '\0') : pieces[n / 8 % 4];
            }
            const std::size_t nStart = random() % 2000;
            const std::string find =
                oracle::until_nul(text.substr(2500 + random() % 2400, 1 + random() % 9));
            const std::size_t nHit = oracle::find(oracle::until_nul(text.substr(nStart)), find);
            const Kelm object(text.data(), static_cast<int>(text.size()));
            ASSERT_EQ(object.Find(find.c_str(), static_cast<int>(nStart)),
                      nHit == std::string::npos ? -1 : static_cast<int>(nStart + nHit))
                << name << " round " << nRound;
        }
    }
}
