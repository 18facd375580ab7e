// Structural edits and delimited fields.

#include <algorithm>
#include <climits>
#include <new>
#include <vector>

#include "twins.h"

namespace {

const int kEnds[] = {INT_MIN, -1, 0, 1, 4, 5, 6, INT_MAX};

std::string expand(std::string text, int nWidth, int& nTabs) {
    for (auto at = text.find('\t'); at != std::string::npos; at = text.find('\t')) {
        const int nColumn = static_cast<int>(at);
        const int nFill = nWidth > 0 ? nWidth - nColumn % nWidth : 0;
        text.replace(at, 1, std::string(static_cast<std::size_t>(nFill), ' '));
        ++nTabs;
    }
    return text;
}

/// Fields that are not there are empty; without a last one all are taken that there are.
template <class String, class Unit>
String elements(const String& text, int nFirst, int nLast, Unit delimiter) {
    std::vector<String> fields(1);
    for (const Unit ch : text) {
        ch == delimiter ? fields.emplace_back() : fields.back() += ch;
    }
    if (nLast >= 0) {
        fields.resize(static_cast<std::size_t>(nLast) + 1);
    }
    String result;
    for (auto n = static_cast<std::size_t>(nFirst); n < fields.size(); ++n) {
        result +=
            (n == static_cast<std::size_t>(nFirst) ? String() : String(1, delimiter)) + fields[n];
    }
    return result;
}

template <class TypeParam>
class Fields : public ::testing::Test {};
TYPED_TEST_SUITE(Fields, Twins);

}  // namespace

TEST(Edit, InsertAndDeleteClamp) {
    for (const int n : kEnds) {
        Open<Kelm> text("hello");
        const Kelm sharer(text);
        const auto nAt = static_cast<std::size_t>(std::clamp(n, 0, 5));
        EXPECT_EQ(text.Insert(n, ""), 5);
        EXPECT_EQ(text.Refs(), 2);
        EXPECT_EQ(text.Insert(n, "ab"), 7);
        EXPECT_EQ(whole(text), std::string("hello").insert(nAt, "ab"));
        EXPECT_EQ(text.GetAllocLength(), 7);
        text = "hello";
        const char* place = text;
        EXPECT_EQ(text.Insert(n, '\0'), 6);
        EXPECT_TRUE(text.constBuffer() == place && text[static_cast<int>(nAt)] == '\0');
        for (const int nCount : kEnds) {
            Open<Kelm> cut(sharer);
            EXPECT_EQ(cut.Delete(n, nCount), 5);
            std::string expected("hello");
            if (nCount > 0 && n < 5) {
                expected.erase(nAt, static_cast<std::size_t>(nCount));
            }
            EXPECT_EQ(whole(cut), expected) << n << ' ' << nCount;
            EXPECT_EQ(cut.constBuffer() == sharer.constBuffer(), expected == "hello");
            EXPECT_EQ(cut.GetAllocLength(), 5);
        }
        EXPECT_STREQ(sharer, "hello");
    }
}

TEST(Edit, RepeatAndDecrement) {
    Open<Kelm> text("hell");
    text.Repeat("ab", 3);
    EXPECT_TRUE(text == "hellababab" && text.GetAllocLength() == 10);
    const Kelm sharer(text);
    text.Repeat("x", 0);
    EXPECT_TRUE(text == "hellababab" && text.Refs() == 1);
    EXPECT_THROW(text.Repeat("abc", INT_MAX), std::bad_alloc);
    text.Repeat('z', 3);
    EXPECT_TRUE(text == "zzz" && text.GetAllocLength() == 3);
    const Open<Kelm> before(text--);
    const Open<Kelm> after(--text);
    EXPECT_TRUE(before == "zzz" && after == "z" && after.constBuffer() == text.constBuffer());
    text.Repeat('z', -1);
    EXPECT_TRUE((--text).IsEmpty() && Kelm::FromRepeat('x', -1).IsEmpty());
    EXPECT_EQ(WString::FromRepeat(u'\0', 3).GetLength(), 3);
}

TEST(Edit, TabsStopByTheWholeText) {
    for (const std::string text : {"", "a", "\t", "a\tb", "\t\t", "abc\t\n\tx", "abcd\te\t\t"}) {
        for (const int nWidth : {INT_MIN, -4, 0, 1, 2, 4, 7, 1000}) {
            int nTabs = 0;
            const std::string expected = expand(text, nWidth, nTabs);
            Open<Kelm> object(text.c_str());
            object.GetBuffer(10);
            const char* place = object;
            EXPECT_EQ(object.ReplaceTabs(nWidth), nTabs);
            EXPECT_EQ(whole(object), expected) << text << ' ' << nWidth;
            EXPECT_EQ(object.constBuffer() == place, nTabs == 0);
            EXPECT_EQ(object.GetAllocLength(), nTabs == 0 ? 10 : object.GetLength());
        }
    }
    Kelm text("\t\t");
    EXPECT_THROW(text.ReplaceTabs(INT_MAX), std::bad_alloc);
    EXPECT_STREQ(text, "\t\t");
}

TYPED_TEST(Fields, Elements) {
    using Unit = typename Twin<TypeParam>::Unit;
    using String = typename Twin<TypeParam>::String;
    for (const String& text : all_texts(String(T_("a,")), 5)) {
        const Open<TypeParam> object(text.c_str());
        for (int nFirst = -1; nFirst < 7; ++nFirst) {
            for (const int nLast : {INT_MIN, -1, 0, 1, 2, 3, 4, 9}) {
                const String expected = elements(text, nFirst, nLast, Unit(','));
                const TypeParam result = object.Elements(nFirst, nLast, Unit(','));
                ASSERT_EQ(whole(result), expected) << nFirst << ' ' << nLast;
                ASSERT_EQ(result.GetAllocLength(), result.GetLength());
                if (nFirst == nLast) {
                    ASSERT_EQ(whole(object.Element(nFirst, Unit(','))), expected) << nFirst;
                }
            }
        }
        EXPECT_EQ(object.Refs(), object.IsEmpty() ? -1 : 1);
    }
    EXPECT_TRUE(TypeParam(T_("a")).Elements(INT_MAX, INT_MAX, Unit(',')).IsEmpty());
    EXPECT_TRUE(TypeParam(T_("a,b")).Element(-1, Unit(',')).IsEmpty());
    EXPECT_THROW(TypeParam(T_("a")).Elements(0, INT_MAX, Unit(',')), std::bad_alloc);
}

TEST(IndexOfElement, ByTextAndValue) {
    const Kelm text("a,,b");
    EXPECT_TRUE(text.IndexOfElement("", ',') == 1 && text.IndexOfElement("b", ',') == 2);
    EXPECT_TRUE(text.IndexOfElement("c", ',') == -1 && text.IndexOfElement("a,", ',') == -1);
    EXPECT_EQ(text.IndexOfElement(static_cast<const char*>(nullptr), ','), -1);
    const Kelm empty;
    EXPECT_TRUE(empty.IndexOfElement("", ',') == 0 && empty.IndexOfElement(0, ',') == 0 &&
                empty.IndexOfElement(0.0, ',') == 0 && empty.IndexOfElement('\0', ',') == 0 &&
                empty.IndexOfElement(false, ',') == 0);
    EXPECT_EQ(Kelm("x,0").IndexOfElement(0, ','), 0);
    EXPECT_EQ(Kelm("7,ff").IndexOfElement(255, ','), 1);
    EXPECT_EQ(Kelm("abc,def").IndexOfElement('d', ','), 1);
    EXPECT_EQ(Kelm("yes,x,on").IndexOfElement(false, ','), 1);
    EXPECT_EQ(Kelm("x,oN ").IndexOfElement(true, ','), 1);
    EXPECT_EQ(Kelm("a,1.50").IndexOfElement(1.5, ','), 1);
    // The delimiter would go on with the number in front of it.
    EXPECT_EQ(Kelm("1e5e2").IndexOfElement(2, 'e'), 2);
    const Kelm longer = Kelm::FromRepeat('0', 500) + "7;8";
    EXPECT_EQ(longer.IndexOfElement(7, ';'), 0);
    EXPECT_EQ(Kelm("ab\0c,ab", 7).IndexOfElement("ab", ','), 0);
}
