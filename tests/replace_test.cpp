// Replacing and removing, against the slow steps that define the results.

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <type_traits>
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

/// Every hit of the text once, in front of and behind NULs.
int replace_once(std::string& text, const std::string& from, const std::string& to) {
    std::string folded = text;
    std::transform(folded.begin(), folded.end(), folded.begin(), [](char ch) {
        return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 32) : ch;
    });
    std::string result;
    int nHits = 0;
    std::size_t nAt = 0;
    for (auto hit = folded.find(upper(from)); hit != std::string::npos;
         hit = folded.find(upper(from), nAt)) {
        result += text.substr(nAt, hit - nAt) + to;
        nAt = hit + from.size();
        ++nHits;
    }
    text = result + text.substr(nAt);
    return nHits;
}

/// The steps as they are defined; a single pass where they would be too much work.
int replace_blind(std::string& text, const std::string& from, const std::string& to) {
    const std::string before = text;
    const std::size_t nMost = 64 * (text.size() + 65536);
    std::size_t nWork = 0;
    std::size_t nAt = 0;
    long long nResult = 0;
    while (nAt <= text.size()) {
        const std::string tail = text.substr(nAt);
        const std::size_t nFound = find_blind(tail, from);
        if (nFound == std::string::npos) {
            break;
        }
        const std::string form = tail.substr(nFound, from.size());
        std::string same = text;
        const auto nHits = static_cast<std::size_t>(replace_all(same, form, form));
        nWork += text.size() - nHits * from.size() + nHits * to.size();
        if (nWork > nMost) {
            text = before;
            return replace_once(text, from, to);
        }
        nResult += replace_all(text, form, to);
        nAt += nFound + to.size();
    }
    return static_cast<int>(std::min<long long>(nResult, INT_MAX));
}

/// The same steps by the class's own members, in every page and with the block that they leave; -1
/// where they are many.
int replace_each_step(Kelm& text, const char* find, const char* put) {
    Kelm old(find);
    old.MakeUpper();
    int nResult = 0;
    for (int nStep = 0, nAt = 0; nStep < 30 && text.GetLength() < 300; ++nStep) {
        const Kelm tail = text.Mid(nAt);
        Kelm folded(tail);
        folded.MakeUpper();
        const int nFound = folded.Find(old);
        if (nFound < 0) {
            return nResult;
        }
        nResult += text.Replace(tail.Mid(nFound, old.GetLength()), put);
        nAt += nFound + static_cast<int>(std::strlen(put));
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
    for (const std::string& text : all_texts(std::string("abA\0", 4), 3)) {
        for (const std::string& find : olds) {
            for (const std::string put : news) {
                std::string expected = text;
                const int nHits = replace_blind(expected, find, put);
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
        std::string expected = whole(text);
        const int nHits = replace_once(expected, row.find, row.put);
        ASSERT_EQ(text.NCReplace(row.find, row.put), nHits) << row.text;
        ASSERT_TRUE(whole(text) == expected) << row.text;
        ASSERT_EQ(text.GetAllocLength(), text.GetLength()) << row.text;
    }
    // The third step alone would be too much.
    Kelm two("aA");
    EXPECT_EQ(two.NCReplace("a", Kelm::FromRepeat('A', 2000)), 2);
    EXPECT_TRUE(two == Kelm::FromRepeat('A', 4000));
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

// With bytes that an edit brings together to other characters.
TEST(BlindEdits, AgainstEachStepInAllPages) {
    struct Case {
        const char* locale;
        const char* alphabet;
        std::vector<const char*> finds;
    };
    const Case cases[] = {
        {"ja_JP.SHIFT_JIS",
         "aA\x83\xB1",
         {"a", "aA", "\203a", "A\203A", "\203\203", "\xB1", "\x83"}},
        {"ja_JP.EUC-JP", "a\xA4\xA2\x8F", {"a", "\xA4\xA2", "A\xA2", "\x8F", "\xA2\xA4\xA4"}},
        {"zh_CN.GB18030", "a\x81\x30\xB0", {"A", "\x81\x30\x81\x30", "\xB0\x61", "0", "\x81"}},
        {"en_US.UTF-8", "a\xC3\xA9\xE3", {"A", "\xC3\xA9", "a\xA9", "\xE3", "\xA9\xE3"}},
        {"de_DE.ISO-8859-1", "a\xC4\xE4", {"A", "\xC4", "\xE4\xC4"}}};
    for (const Case& row : cases) {
        const LocaleScope locale(row.locale);
        for (const std::string& text : all_texts(std::string(row.alphabet), 6)) {
            const auto each_step = [&](auto find, int nLength) {
                Kelm expected(text.c_str());
                int nHits = 0;
                for (int at = expected.NCFind(find); at >= 0; at = expected.NCFind(find)) {
                    expected = expected.Left(at) + expected.Mid(at + nLength);
                    ++nHits;
                }
                Kelm object(text.c_str());
                ASSERT_EQ(object.NCRemove(find), nHits) << row.locale << ' ' << text << ' ' << find;
                ASSERT_EQ(whole(object), whole(expected))
                    << row.locale << ' ' << text << ' ' << find;
            };
            for (const char* find : row.finds) {
                each_step(find, static_cast<int>(std::strlen(find)));
                for (const char* put : {"", "x", "aA", row.finds[1], row.alphabet + 1}) {
                    Open<Kelm> expected = from<Kelm>(text, text.size() + 2);
                    Open<Kelm> object = from<Kelm>(text, text.size() + 2);
                    if (text.size() % 2 == 1) {
                        expected.LockBuffer();
                        object.LockBuffer();
                    }
                    const int nHits = text.size() < 5 ? replace_each_step(expected, find, put) : -1;
                    ASSERT_TRUE(nHits < 0 ||
                                (object.NCReplace(find, put) == nHits &&
                                 whole(object) == whole(expected) &&
                                 object.GetAllocLength() == expected.GetAllocLength() &&
                                 object.Refs() == expected.Refs()))
                        << row.locale << ' ' << text << ' ' << find << ' ' << put;
                }
            }
            Kelm mirrored(text.c_str());
            mirrored.MakeReverse();
            Kelm again(mirrored);
            again.MakeReverse();
            for (const char* pch = row.alphabet; *pch != '\0'; ++pch) {
                each_step(*pch, 1);
                Kelm left(mirrored);
                left.TrimLeft(*pch);
                left.MakeReverse();
                Kelm right(text.c_str());
                right.TrimRight(*pch);
                // Not where the mirror has other characters.
                ASSERT_TRUE(again != text.c_str() || right == left) << row.locale << ' ' << text;
            }
        }
    }
}

// What lies within the value's own text counts as it was at the call.
TYPED_TEST(Replacing, ArgumentsWithinTheOwnText) {
    using Unit = typename Twin<TypeParam>::Unit;
    using Text = Open<TypeParam>;
    using Edit = std::function<void(Text&, const Unit*, const Unit*)>;
    std::vector<Edit> edits = {
        [](Text& text, const Unit* one, const Unit* two) { text.Replace(one, two); },
        [](Text& text, const Unit* one, const Unit*) { text.Remove(one); },
        [](Text& text, const Unit* one, const Unit*) { text.NCRemove(one); },
        [](Text& text, const Unit* one, const Unit*) { text.TrimLeft(one); },
        [](Text& text, const Unit* one, const Unit*) { text.TrimRight(one); }};
    if constexpr (std::is_same_v<TypeParam, Kelm>) {
        edits.push_back(
            [](Text& text, const char* one, const char* two) { text.NCReplace(one, two); });
        edits.push_back([](Text& text, const char* one, const char*) { text.Insert(2, one); });
        edits.push_back([](Text& text, const char* one, const char*) { text.Repeat(one, 3); });
    }
    const typename Twin<TypeParam>::String source = T_("aAbaBab");
    for (const Edit& edit : edits) {
        for (std::size_t nOne = 0; nOne <= source.size(); ++nOne) {
            for (std::size_t nTwo = 0; nTwo <= source.size(); ++nTwo) {
                for (const std::size_t nRoom : {std::size_t{0}, std::size_t{99}}) {
                    Text expected = from<TypeParam>(source, nRoom);
                    edit(expected, source.c_str() + nOne, source.c_str() + nTwo);
                    Text text = from<TypeParam>(source, nRoom);
                    edit(text, text.constBuffer() + nOne, text.constBuffer() + nTwo);
                    ASSERT_EQ(whole(text), whole(expected)) << nOne << ' ' << nTwo;
                    ASSERT_EQ(text.GetAllocLength(), expected.GetAllocLength());
                }
            }
        }
    }
}

TYPED_TEST(Replacing, NoSetTrimsNothing) {
    const Open<TypeParam> text(T_(" a "));
    const typename Twin<TypeParam>::Unit* none = nullptr;
    Open<TypeParam> left(text);
    left.TrimLeft(none);
    EXPECT_EQ(left.constBuffer(), text.constBuffer());
    Open<TypeParam> right(text);
    right.TrimRight(none);
    EXPECT_NE(right.constBuffer(), text.constBuffer());
    EXPECT_EQ(whole(right), whole(text));
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
