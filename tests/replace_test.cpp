// Replacing and removing, against the slow steps that define the results.

#include <algorithm>
#include <climits>
#include <functional>
#include <vector>

#include "locales.h"
#include "twins.h"

namespace {

template <class TypeParam>
class Replacing : public ::testing::Test {};
TYPED_TEST_SUITE(Replacing, Twins);

template <class String>
String upper(String text) {
    const auto end = std::find(text.begin(), text.end(), 0);
    std::transform(text.begin(), end, text.begin(), [](auto ch) {
        return static_cast<typename String::value_type>(ch >= 'a' && ch <= 'z' ? ch - 32 : ch);
    });
    return text;
}

/// First case-blind hit in front of the first NUL.
template <class String>
std::size_t find_blind(const String& text, const String& find) {
    return upper(text).substr(0, text.find(typename String::value_type())).find(upper(find));
}

/// The steps as they are defined, bounded in growth; -1 where they are too many to wait for.
int replace_blind(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t nLimit = std::max<std::size_t>(65536, 16 * text.size() * to.size());
    std::size_t nAt = 0;
    long long nResult = 0;
    for (int nStep = 0; nStep < 60 && text.size() < 2000; ++nStep) {
        const std::string tail = nAt <= text.size() ? text.substr(nAt) : "";
        const std::size_t nFound = find_blind(tail, from);
        if (nFound == std::string::npos) {
            return static_cast<int>(nResult);
        }
        std::string next = text;
        const int nHits = replace_all(next, tail.substr(nFound, from.size()), to);
        if (next.size() > text.size() && next.size() > nLimit) {
            return static_cast<int>(nResult);
        }
        text = next;
        nResult += nHits;
        nAt += nFound + to.size();
    }
    return -1;
}

template <class String>
int remove_blind(String& text, const String& find) {
    int nHits = 0;
    for (auto at = find_blind(text, find); at != String::npos; at = find_blind(text, find)) {
        text.erase(at, find.size());
        ++nHits;
    }
    return nHits;
}

template <class String>
String letters(const char* narrow) {
    return String(narrow, narrow + std::char_traits<char>::length(narrow)) +
           typename String::value_type();
}

}  // namespace

TYPED_TEST(Replacing, AllSmallTexts) {
    using String = typename Twin<TypeParam>::String;
    auto olds = all_texts(String(T_("ab")), 3);
    olds.erase(olds.begin());
    const std::vector<String> news = {T_(""), T_("b"), T_("aa"), T_("abab")};
    for (const String& text : all_texts(letters<String>("ab"), 6)) {
        for (const String& find : olds) {
            for (const String& put : news) {
                String expected = text;
                const int nHits = replace_all(expected, find, put);
                const int nLength = static_cast<int>(text.size());
                const int nNewLength = static_cast<int>(expected.size());

                Open<TypeParam> object = from<TypeParam>(text);
                const Open<TypeParam> sharer(object);
                ASSERT_EQ(object.Replace(find.c_str(), put.c_str()), nHits);
                ASSERT_EQ(whole(object), expected);
                ASSERT_EQ(whole(sharer), text);
                ASSERT_EQ(object.constBuffer() == sharer.constBuffer(), nHits == 0);
                ASSERT_EQ(object.GetAllocLength(),
                          nHits == 0 ? nLength : std::max(nLength, nNewLength));

                Open<TypeParam> room = from<TypeParam>(text);
                const auto* place = room.GetBuffer(40);
                ASSERT_EQ(room.Replace(find.c_str(), put.empty() ? nullptr : put.c_str()), nHits);
                ASSERT_TRUE(whole(room) == expected && room.constBuffer() == place);
                ASSERT_TRUE(room[nNewLength] == 0 && room.GetAllocLength() == 40);
            }
        }
    }
}

TYPED_TEST(Replacing, BlindRemovalOfAllSmallTexts) {
    using String = typename Twin<TypeParam>::String;
    auto finds = all_texts(String(T_("aB")), 3);
    finds.erase(finds.begin());
    for (const String& text : all_texts(letters<String>("abA"), 6)) {
        for (const String& find : finds) {
            String expected = text;
            const int nHits = remove_blind(expected, find);
            Open<TypeParam> object = from<TypeParam>(text);
            const Open<TypeParam> sharer(object);
            ASSERT_EQ(object.NCRemove(find.c_str()), nHits);
            ASSERT_EQ(whole(object), expected);
            ASSERT_EQ(whole(sharer), text);
            ASSERT_EQ(object.constBuffer() == sharer.constBuffer(), nHits == 0);
            const int nLast = nHits > 1 ? static_cast<int>(find.size()) : 0;
            ASSERT_EQ(object.GetAllocLength(),
                      expected.empty() && nHits > 0 ? nLast : static_cast<int>(expected.size()));
            if (find.size() == 1) {
                ASSERT_EQ(from<TypeParam>(text).NCRemove(find[0]), nHits);
            }
        }
    }
    Open<TypeParam> text(T_("aXbxc"));
    EXPECT_EQ(text.NCRemove(typename Twin<TypeParam>::Unit()), 0);
    EXPECT_EQ(text.NCRemove(T_("")), 0);
}

TEST(BlindReplacing, AllSmallTexts) {
    auto olds = all_texts(std::string("aB"), 2);
    olds.erase(olds.begin());
    const char* const news[] = {"", "a", "A", "xA", "Ab", "ba", "aab"};
    for (const std::string& text : all_texts(std::string("abA\0", 4), 4)) {
        for (const std::string& find : olds) {
            for (const std::string put : news) {
                std::string expected = text;
                const int nHits = replace_blind(expected, find, put);
                if (nHits < 0) {
                    continue;
                }
                Open<Kelm> object = from<Kelm>(text);
                ASSERT_EQ(object.NCReplace(find.c_str(), put.c_str()), nHits)
                    << text << ' ' << find << ' ' << put;
                ASSERT_EQ(whole(object), expected) << text << ' ' << find << ' ' << put;
            }
        }
    }
}

TEST(BlindReplacing, LeavesItsBlockAtPositionZero) {
    Open<Kelm> text("aXbxcX");
    text.GetBuffer(50);
    EXPECT_EQ(text.NCReplace("x", nullptr), 3);
    EXPECT_TRUE(text == "abc" && text.GetAllocLength() == 6);
    Open<Kelm> locked("aXb");
    const char* place = locked.LockBuffer();
    EXPECT_EQ(locked.NCReplace("x", "y"), 1);
    EXPECT_TRUE(locked == "ayb" && locked.constBuffer() == place && locked.Refs() == -1);
    EXPECT_EQ(locked.NCRemove("Y"), 1);
    EXPECT_TRUE(locked == "ab" && locked.constBuffer() == place && locked.Refs() == -1);
}

TEST(BlindReplacing, LongTextsInLinearTime) {
    const int nLength = 50000;
    Kelm same = Kelm::FromRepeat('a', nLength);
    EXPECT_EQ(same.NCReplace("A", "A"), INT_MAX);
    EXPECT_TRUE(same == Kelm::FromRepeat('A', nLength));
    Kelm growing = Kelm::FromRepeat('a', nLength);
    growing.NCReplace("a", "aa");
    EXPECT_LE(growing.GetLength(), 32 * nLength);
    Kelm joining = Kelm::FromRepeat('a', nLength) + Kelm::FromRepeat('B', nLength);
    EXPECT_EQ(joining.NCRemove("ab"), nLength);
    EXPECT_TRUE(joining.IsEmpty());
    WString wide = WString::FromRepeat(u'a', nLength) + WString::FromRepeat(u'B', nLength);
    EXPECT_EQ(wide.NCRemove(u"ab"), nLength);
    for (const char* name : {"zh_CN.GB18030", "zh_CN.GBK"}) {
        const LocaleScope locale(name);
        Kelm usual;
        usual.Repeat("\xB0\xA1\xB0\xA1xB", 10 * nLength);
        EXPECT_EQ(usual.NCRemove("Xb"), 10 * nLength);
        EXPECT_EQ(usual.GetLength(), 40 * nLength);
    }
}

TEST(DoubleByte, HitsStandOnCharacters) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    // The second byte of the first character is the letter A; 203 leads and trails.
    Kelm text("\203AA\203\203A");
    EXPECT_TRUE(text.Find('A') == 2 && text.ReverseFind('A') == 5 && text.Find("\203A") == 0);
    EXPECT_TRUE(text.Count('A') == 3 && text.Count("A") == 2 && text.FindOneOf("A") == 2);
    EXPECT_EQ(text.ReverseFind('\203'), -1);
    EXPECT_TRUE(text.NCFind('\203') == -1 && text.NCFind('\0') == 6);
    EXPECT_TRUE(text.NCRemove('\261') == 0 && Kelm("a\261\261").NCRemove('\261') == 2);
    EXPECT_EQ(text.Replace('A', 'x'), 2);
    EXPECT_STREQ(text, "\203Ax\203\203x");
    EXPECT_EQ(text.Replace("\203A", "--"), 1);
    EXPECT_EQ(text.NCRemove("X"), 2);
    EXPECT_STREQ(text, "--\203\203");
    Kelm trimmed("\203A  \203  ");
    trimmed.TrimRight();
    trimmed.MakeReverse();
    EXPECT_STREQ(trimmed, "\203   \203A");
    EXPECT_STREQ(Kelm("b\203Ab").SpanExcluding("A"), "b\203Ab");
}

TEST(DoubleByte, BlindRemovalAgainstEachStep) {
    const LocaleScope locale("ja_JP.SHIFT_JIS");
    for (const std::string& text : all_texts(std::string("aA\x83"), 6)) {
        for (const char* find : {"a", "aA", "\203a", "A\203A", "\203\203"}) {
            Kelm expected(text.c_str());
            int nHits = 0;
            const int nLength = static_cast<int>(std::char_traits<char>::length(find));
            for (int at = expected.NCFind(find); at >= 0; at = expected.NCFind(find)) {
                expected = expected.Left(at) + expected.Mid(at + nLength);
                ++nHits;
            }
            Kelm object(text.c_str());
            ASSERT_EQ(object.NCRemove(find), nHits) << text;
            ASSERT_EQ(whole(object), whole(expected)) << text;
        }
    }
}

TYPED_TEST(Replacing, CompactionsAndCharacters) {
    using Unit = typename Twin<TypeParam>::Unit;
    Open<TypeParam> text(T_(" a,b;\tc\x01 a"));
    const Open<TypeParam> sharer(text);
    EXPECT_EQ(text.Remove(Unit('q')), 0);
    EXPECT_NE(text.constBuffer(), sharer.constBuffer());
    const auto* place = text.constBuffer();
    EXPECT_EQ(text.RemoveControl(), 2);
    EXPECT_EQ(text.RemovePunctuation(), 2);
    EXPECT_EQ(text.RemoveSpace(), 2);
    EXPECT_EQ(text.Remove(Unit('a')), 2);
    EXPECT_TRUE(text == T_("bc") && text.constBuffer() == place && text.GetAllocLength() == 10);
    EXPECT_EQ(text.Replace(Unit('b'), Unit()), 1);
    EXPECT_EQ(text.GetLength(), 2);
    EXPECT_EQ(text.Replace(Unit(), Unit('b')), 1);
    EXPECT_EQ(text.Replace(Unit('b'), Unit('b')), 0);
    EXPECT_TRUE(text == T_("bc"));
    text.SetAt(0, 0);
    EXPECT_EQ(text.Remove(Unit()), 1);
    EXPECT_TRUE(text == T_("c"));
    EXPECT_EQ(text.Replace(nullptr, T_("x")), 0);
    EXPECT_EQ(text.Replace(T_(""), T_("x")), 0);
}
