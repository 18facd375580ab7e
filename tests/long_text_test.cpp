// What long texts take another road for than short ones: random texts of many lengths and densities
// against the standard library.

#include <algorithm>
#include <climits>
#include <random>

#include "locales.h"
#include "twins.h"

namespace {

template <class TypeParam>
class LongText : public ::testing::Test {
protected:
    using Whole = typename Twin<TypeParam>::String;

    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

    /// Letters out of a few, rarely one of the others.
    Whole Text(int length, int letters, int rarity) {
        static const char kOthers[] = ",, \n#;\0\xAA";
        Whole text;
        for (int i = 0; i < length; ++i) {
            text += static_cast<typename Whole::value_type>(
                Below(rarity) == 0 ? kOthers[Below(8)] : 'a' + Below(letters));
        }
        return text;
    }

    Whole AnyText() { return Text(Below(Below(8) == 0 ? 9000 : 900), 3, 1 + Below(60)); }

    std::mt19937 random_{20};
};
TYPED_TEST_SUITE(LongText, Twins);

TYPED_TEST(LongText, ReplacesInPlaceAndInABlockOfItsOwn) {
    for (const char* locale : {"en_US.UTF-8", "ja_JP.SHIFT_JIS"}) {
        const LocaleScope scope(locale);
        for (int n = 0; n < 1500; ++n) {
            const auto text = this->AnyText();
            const auto old = this->Text(1 + this->Below(4), 1 + this->Below(3), INT_MAX);
            const auto to = this->Text(this->Below(8), 3, INT_MAX);
            auto expected = text;
            const int nHits = replace_all(expected, old, to);
            auto inPlace = from<TypeParam>(text, expected.size());
            const auto* pBefore = inPlace.constBuffer();
            const auto other = from<TypeParam>(text);
            auto shared = other;
            for (auto* pText : {&inPlace, &shared}) {
                ASSERT_EQ(pText->Replace(old.c_str(), to.c_str()), nHits) << n;
                ASSERT_EQ(whole(*pText), expected) << n;
            }
            ASSERT_EQ(inPlace.constBuffer(), pBefore) << n;
            ASSERT_EQ(whole(other), text) << n;
        }
    }
}

TYPED_TEST(LongText, GrowsInPlaceWhateverTheNumberOfHits) {
    for (const int nHits : {255, 256, 257, 131072, 131073, 200000}) {
        auto text =
            from<TypeParam>(typename TestFixture::Whole(static_cast<std::size_t>(nHits), 'x'),
                            3 * static_cast<std::size_t>(nHits));
        ASSERT_EQ(text.Replace(T_("x"), T_("abc")), nHits);
        typename TestFixture::Whole expected;
        for (int n = 0; n < nHits; ++n) {
            expected += T_("abc");
        }
        ASSERT_EQ(whole(text), expected) << nHits;
    }
}

TYPED_TEST(LongText, LosesUnitsAndClasses) {
    using Unit = typename Twin<TypeParam>::Unit;
    const LocaleScope scope("de_DE.ISO-8859-1");
    const struct {
        int (TypeParam::*remove)();
        const char* members;
    } classes[] = {{&TypeParam::RemoveSpace, " \n"},
                   {&TypeParam::RemovePunctuation, ",#;"},
                   {&TypeParam::RemoveControl, "\n"}};
    for (int n = 0; n < 1500; ++n) {
        const auto text = this->AnyText();
        auto object = from<TypeParam>(text);
        auto expected = text;
        std::erase(expected, Unit(','));
        ASSERT_EQ(object.Remove(Unit(',')), static_cast<int>(text.size() - expected.size()));
        ASSERT_EQ(whole(object), expected) << n;
        for (const auto& row : classes) {
            object = from<TypeParam>(text);
            expected = text;
            std::erase_if(expected, [&](Unit ch) {
                return (ch == 0 && row.members == std::string("\n")) ||
                       (ch > 0 && ch < 0x80 &&
                        std::string(row.members).find(static_cast<char>(ch)) != std::string::npos);
            });
            (object.*row.remove)();
            ASSERT_EQ(whole(object), expected) << n << row.members;
        }
    }
}

TYPED_TEST(LongText, HasElements) {
    using Unit = typename Twin<TypeParam>::Unit;
    using String = typename TestFixture::Whole;
    for (int n = 0; n < 1500; ++n) {
        const String text = this->AnyText();
        std::vector<String> elements(1);
        for (const Unit ch : text) {
            ch == Unit(',') ? elements.emplace_back() : (elements.back() += ch, elements.back());
        }
        const int nElement = this->Below(static_cast<int>(elements.size()));
        const String element = elements[static_cast<std::size_t>(nElement)];
        const TypeParam object = from<TypeParam>(text);
        ASSERT_EQ(whole(object.Element(nElement, Unit(','))), element) << n;
        if constexpr (std::is_same_v<TypeParam, Kelm>) {
            const String wanted = this->Below(4) == 0 ? "zz" : element.c_str();
            const auto found =
                std::find_if(elements.begin(), elements.end(),
                             [&](const String& one) { return wanted == one.c_str(); });
            ASSERT_EQ(object.IndexOfElement(wanted.c_str(), ','),
                      found == elements.end() ? -1 : found - elements.begin())
                << n;
        }
    }
}

}  // namespace
