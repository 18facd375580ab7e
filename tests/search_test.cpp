// Searching and extraction, against plain searches of the standard library over all small texts.

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <functional>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "locales.h"
#include "twins.h"

namespace {

template <class TypeParam>
class Searching : public ::testing::Test {};
TYPED_TEST_SUITE(Searching, Twins);

const int kEnds[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 2, 4, 5, 6, INT_MAX - 1, INT_MAX};

int index(std::size_t n) {
    return n == std::string::npos ? -1 : static_cast<int>(n);
}

const char* const kLocales[] = {"C", "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS", "ja_JP.EUC-JP"};

template <class Function>
double seconds(Function function) {
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

TYPED_TEST(Searching, AllSmallTexts) {
    using String = typename Twin<TypeParam>::String;
    using Unit = typename Twin<TypeParam>::Unit;
    const auto finds = all_texts(String(T_("aB")), 3);
    for (const String& text : all_texts(String(T_("abB")), 6)) {
        const TypeParam object(text.c_str());
        const int nLength = static_cast<int>(text.size());
        const String upper = whole([&] {
            TypeParam copy(object);
            copy.MakeUpper();
            return copy;
        }());
        for (const String& find : finds) {
            for (int nStart = -1; nStart <= nLength + 1; ++nStart) {
                const auto nFrom = static_cast<std::size_t>(std::max(nStart, 0));
                ASSERT_EQ(object.Find(find.c_str(), nStart), index(text.find(find, nFrom)));
                ASSERT_EQ(object.Find(Unit('B'), nStart), index(text.find(Unit('B'), nFrom)));
            }
            TypeParam other(find.c_str());
            other.MakeUpper();
            ASSERT_EQ(object.NCFind(find.c_str()), index(upper.find(whole(other))));
            int nCount = 0;
            for (auto at = find.empty() ? String::npos : text.find(find); at != String::npos;
                 at = text.find(find, at + find.size())) {
                ++nCount;
            }
            ASSERT_EQ(object.Count(find.c_str()), nCount);
            ASSERT_EQ(object.FindOneOf(find.c_str()), index(text.find_first_of(find)));
        }
        ASSERT_EQ(object.ReverseFind(Unit('a')), index(text.rfind(Unit('a'))));
        ASSERT_EQ(object.NCFind(Unit('b')), index(upper.find(Unit('B'))));
    }
}

TYPED_TEST(Searching, EndsAtNul) {
    using Unit = typename Twin<TypeParam>::Unit;
    const Unit nul = 0;
    TypeParam text(T_("abcab"));
    EXPECT_EQ(text.Find(nul), 5);
    EXPECT_EQ(text.Find(nul, 5), -1);
    EXPECT_EQ(text.ReverseFind(nul), 5);
    EXPECT_EQ(TypeParam().Find(nul), -1);
    EXPECT_EQ(TypeParam().ReverseFind(nul), 0);
    EXPECT_EQ(TypeParam().Find(T_("")), 0);
    EXPECT_EQ(TypeParam().NCFind(static_cast<const Unit*>(nullptr)), 0);
    text.SetAt(2, nul);
    EXPECT_EQ(text.Find(T_("ab"), 1), -1);
    EXPECT_EQ(text.Find(T_("ab"), 3), 3);
    EXPECT_EQ(text.Find(Unit('b'), 2), -1);
    EXPECT_EQ(text.NCFind(T_("AB")), 0);
    EXPECT_EQ(text.ReverseFind(Unit('b')), 1);
    EXPECT_EQ(text.Count(Unit('a')), 2);
    EXPECT_EQ(text.Count(T_("a")), 1);
    EXPECT_EQ(text.Count(nul), 1);
    EXPECT_EQ(text.FindOneOf(T_("xyz")), -1);
    const Unit* null = nullptr;
    EXPECT_TRUE(text.Find(null) == -1 && text.Find(null, 2) == -1 && text.FindOneOf(null) == -1 &&
                text.Count(null) == 0);
}

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
        const bool bLeads = std::strchr(name, 'J') != nullptr;
        for (int nRound = 0; nRound < 300; ++nRound) {
            std::string text;
            std::vector<bool> starts;
            while (text.size() < 5000) {
                const auto n = random();
                const bool bLong = bLeads && n % 3 == 0;
                text += bLong ? "\xA4\xE0"
                        : n % 2000 == 1 && nRound % 2 == 1
                            ? std::string(1, '\0')
                            : std::string(1, "ab "[n % 7 == 0 ? 2 : n % 2]);
                starts.resize(text.size(), false);
                starts[text.size() - (bLong ? 2 : 1)] = true;
            }
            // In Shift_JIS the first byte is a character and the second leads: another text.
            if (std::strcmp(name, "ja_JP.SHIFT_JIS") == 0) {
                std::replace(text.begin(), text.end(), '\xA4', '\x84');
                std::replace(text.begin(), text.end(), '\xE0', 'a');
            }
            const std::size_t nStart = static_cast<std::size_t>(
                std::find(starts.begin() + random() % 2000, starts.end(), true) - starts.begin());
            const std::string find = text.substr(2500 + random() % 2400, 1 + random() % 9);
            const auto hit = [&] {
                const std::size_t nEnd = std::min(text.find('\0', nStart), text.size());
                auto at = text.substr(0, nEnd).find(find, nStart);
                while (at != std::string::npos && !starts[at]) {
                    at = text.substr(0, nEnd).find(find, at + 1);
                }
                return index(at);
            };
            if (find.find('\0') != std::string::npos) {
                continue;
            }
            const Kelm object(text.data(), static_cast<int>(text.size()));
            ASSERT_EQ(object.Find(find.c_str(), static_cast<int>(nStart)), hit())
                << name << " round " << nRound;
        }
    }
}

TYPED_TEST(Searching, ExtractionClampsAndShares) {
    using String = typename Twin<TypeParam>::String;
    const String text(T_("hello"));
    const TypeParam object(text.c_str());
    const auto check = [&](const TypeParam& piece, long long nFirst, long long nCount) {
        nFirst = std::max(nFirst, 0LL);
        nCount = std::clamp(nCount, 0LL, std::max(5 - nFirst, 0LL));
        const bool bWhole = nFirst == 0 && nCount == 5;
        EXPECT_EQ(whole(piece), nCount == 0 ? String()
                                            : text.substr(static_cast<std::size_t>(nFirst),
                                                          static_cast<std::size_t>(nCount)));
        EXPECT_EQ(piece.constBuffer() == object.constBuffer(), bWhole);
        EXPECT_EQ(piece.GetAllocLength(), nCount);
    };
    for (const int n : kEnds) {
        for (const int nCount : kEnds) {
            check(object.Mid(n, nCount), n, nCount);
        }
        check(object.Mid(n), n, INT_MAX);
        check(object.Left(n), 0, n);
        check(object.Right(n), 5LL - std::clamp(n, 0, 5), n);
        EXPECT_TRUE(TypeParam().Mid(n, n).IsEmpty() && TypeParam().Left(n).IsEmpty());
        EXPECT_EQ(object.Find(T_("l"), n), n <= 2 ? 2 : -1);
    }
}

TEST(Spans, EndAtTheSetAndAtNul) {
    const Open<Kelm> text("aab c\0aa", 8);
    EXPECT_STREQ(text.SpanIncluding("ba"), "aab");
    EXPECT_STREQ(text.SpanExcluding("c"), "aab ");
    EXPECT_EQ(text.SpanExcluding("xyz").GetLength(), 5);
    EXPECT_TRUE(text.SpanIncluding("").IsEmpty() && text.SpanIncluding(nullptr).IsEmpty());
    const Kelm plain("abc");
    EXPECT_EQ(plain.SpanExcluding(nullptr).constBuffer(), plain.constBuffer());
}

TYPED_TEST(Searching, CaseAndTrims) {
    using Unit = typename Twin<TypeParam>::Unit;
    Open<TypeParam> text(T_(" \tab c \n"));
    const Open<TypeParam> sharer(text);
    const Open<TypeParam> trimmed(text.Trim());
    EXPECT_TRUE(trimmed == T_("ab c") && trimmed.GetAllocLength() == 8 && text.Refs() == 2);
    text.TrimLeft(T_(""));
    EXPECT_EQ(text.Refs(), 2);
    text.TrimRight(T_(""));
    EXPECT_EQ(text.Refs(), 1);
    text.TrimRight();
    text.TrimLeft();
    EXPECT_TRUE(text == T_("ab c") && text.GetAllocLength() == 8 && sharer.GetLength() == 8);
    text.MakeReverse();
    text.MakeUpper();
    EXPECT_TRUE(text == T_("C BA"));
    text.TrimRight(Unit('A'));
    text.TrimLeft(T_("BC"));
    EXPECT_TRUE(text == T_(" B"));
    text.MakeLower();
    text.TrimRight(Unit());
    text.TrimRight(T_("xb"));
    text.TrimLeft(Unit(' '));
    EXPECT_TRUE(text.IsEmpty() && text.GetAllocLength() == 8);
    text = T_("ab  cd");
    text.SetAt(4, 0);
    text.TrimRight();
    EXPECT_EQ(text.GetLength(), 2);
    Open<TypeParam> nuls(TypeParam::FromRepeat(Unit(), 3));
    nuls.TrimLeft(Unit());
    EXPECT_EQ(nuls.GetLength(), 0);
}

TEST(Utf8, FoldsWhatKeepsItsWidth) {
    const LocaleScope locale("de_DE.UTF-8");
    Kelm text("Gr\303\274\303\237e");
    EXPECT_EQ(text.NCFind("\303\234\303\237"), 2);
    EXPECT_EQ(text.NCReplace("\303\234", "ue"), 1);
    EXPECT_EQ(text.NCRemove("\303\237"), 1);
    EXPECT_STREQ(text, "Gruee");
}
