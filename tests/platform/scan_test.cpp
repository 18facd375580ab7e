#include "search/scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "guarded.h"
#include "search/folded_search.h"
#include "search/member_scan.h"
#include "search/text_search.h"
#include "texts.h"

namespace {

// A text at one end of its pages, next to one that cannot be read.
template <class Unit, int kNumber = 0>
class Exact {
public:
    Exact(const std::basic_string<Unit>& text, bool bEnd)
        : first_(Pages().Put(text.data(), text.size(), bEnd)), size_(text.size()) {}
    Unit* First() const { return first_; }
    Unit* Last() const { return first_ + size_; }
    std::basic_string<Unit> Until(const Unit* end) const {
        return {static_cast<const Unit*>(First()), end};
    }

private:
    static GuardedPages<Unit>& Pages() {
        static GuardedPages<Unit> pages(100000);
        return pages;
    }

    Unit* first_;
    std::size_t size_;
};

template <class Unit>
class ScanTest : public testing::Test {
protected:
    using Text = std::basic_string<Unit>;

    static Text Wide(const std::string& text) { return {text.begin(), text.end()}; }

    static void ExpectUnits(const Text& text, Unit unit) {
        ExpectUnits(text, unit, false);
        ExpectUnits(text, unit, true);
    }
    static void ExpectUnits(const Text& text, Unit unit, bool bEnd) {
        const Exact<Unit> exact(text, bEnd);
        const auto hits = std::count(text.begin(), text.end(), unit);
        const Unit* first = exact.First();
        const Unit* last = exact.Last();
        EXPECT_EQ(platform::find_unit(first, last, unit) - first,
                  std::find(text.begin(), text.end(), unit) - text.begin());
        const Unit* hit = platform::find_last_unit(first, last, unit);
        EXPECT_EQ(hit == nullptr ? Text::npos : static_cast<std::size_t>(hit - first),
                  text.rfind(unit));
        EXPECT_EQ(platform::count_unit(first, last, unit), static_cast<std::size_t>(hits));

        Text replaced = text;
        const Unit other = static_cast<Unit>(unit ^ 0x81);
        std::replace(replaced.begin(), replaced.end(), unit, other);
        const Exact<Unit, 1> target(text, bEnd);
        EXPECT_EQ(platform::replace_unit(target.First(), target.Last(), unit, other),
                  static_cast<std::size_t>(hits));
        EXPECT_EQ(target.Until(target.Last()), replaced);

        Text left = text;
        std::erase(left, unit);
        EXPECT_EQ(exact.Until(platform::remove_unit(exact.First(), exact.Last(), unit)), left);
    }

    // The first place and all places, overlapping ones too.
    static void ExpectPlaces(const Text& text, const Text& wanted) {
        ExpectPlaces(text, wanted, false);
        ExpectPlaces(text, wanted, true);
    }
    static void ExpectPlaces(const Text& text, const Text& wanted, bool bEnd) {
        const Exact<Unit> exact(text, bEnd);
        const Exact<Unit, 1> pattern(wanted, bEnd);
        const auto position = [&](const Unit* hit) {
            return hit == nullptr ? Text::npos : static_cast<std::size_t>(hit - exact.First());
        };
        ASSERT_EQ(position(platform::find_text<Unit>(exact.First(), exact.Last(), pattern.First(),
                                                     wanted.size())),
                  text.find(wanted));
        if (wanted.empty()) {
            return;
        }
        platform::TextSearch<Unit> search(exact.First(), exact.Last(), pattern.First(),
                                          wanted.size());
        // What cannot be probed is searched by the linear way alone.
        const auto same = [](Unit unit) { return unit; };
        using Matcher = platform::FoldedMatcher<Unit, decltype(same)>;
        platform::AdaptiveSearch<Unit, Matcher> linear(exact.First(), exact.Last(), pattern.First(),
                                                       wanted.size(), same, false);
        std::size_t count = 0;
        for (std::size_t at = text.find(wanted); at != Text::npos; ++count) {
            at = text.find(wanted, at + wanted.size());
        }
        ASSERT_EQ(
            platform::count_text<Unit>(exact.First(), exact.Last(), pattern.First(), wanted.size()),
            count);
        std::size_t place = text.find(wanted);
        for (bool isLeft = true; isLeft; place = text.find(wanted, place + 1)) {
            ASSERT_EQ(position(search.Next()), place);
            ASSERT_EQ(position(linear.Next()), place);
            isLeft = place != Text::npos;
        }
    }
};

using Units = testing::Types<char, char16_t>;
TYPED_TEST_SUITE(ScanTest, Units);

TYPED_TEST(ScanTest, UnitsAtEveryPlaceOfEveryLength) {
    const auto high = static_cast<TypeParam>(0xC3);
    for (std::size_t length = 0; length < 150; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::basic_string<TypeParam> text(length, 'a');
            text[place] = text[length - 1 - place / 3] = high;
            this->ExpectUnits(text, high);
        }
        this->ExpectUnits(std::basic_string<TypeParam>(length, 'a'), 0);
        this->ExpectUnits(std::basic_string<TypeParam>(length, 0), 0);
    }
    // More hits in a lane than it can count.
    this->ExpectUnits(std::basic_string<TypeParam>(100000, 'a'), 'a');
    std::mt19937 random(1);
    for (unsigned density = 2; density < 40; density += 3) {
        std::basic_string<TypeParam> text(5000, 0);
        std::generate(text.begin(), text.end(),
                      [&] { return static_cast<TypeParam>(random() % density); });
        this->ExpectUnits(text, 1);
    }
}

TYPED_TEST(ScanTest, TextsInAllShortTexts) {
    const auto texts = all_texts(this->Wide("ab"), 7);
    for (const auto& text : texts) {
        for (std::size_t i = 0; i < 63; ++i) {
            this->ExpectPlaces(text, texts[i]);
        }
    }
}

TYPED_TEST(ScanTest, TextsInLongTexts) {
    std::mt19937 random(2);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 6000; ++round) {
        // From nearly one letter to many; uncommon letters change the way of the search.
        const std::string letters = round % 3 == 0 ? "ab" : round % 3 == 1 ? "aaaaaaaaaz" : "etaoQ";
        std::basic_string<TypeParam> text(below(round % 5 == 0 ? 1200 : 120), 0);
        std::generate(text.begin(), text.end(),
                      [&] { return static_cast<TypeParam>(letters[below(letters.size())]); });
        std::basic_string<TypeParam> wanted =
            text.substr(below(text.size() + 1), 1 + below(round % 7 == 0 ? 300 : 40));
        if (round % 2 == 0 && !wanted.empty()) {
            wanted[below(wanted.size())] = static_cast<TypeParam>(letters[0]);
        }
        this->ExpectPlaces(text, wanted);
    }
}

// In quadratic time none of these would come to an end.
TYPED_TEST(ScanTest, MisleadingTexts) {
    constexpr std::size_t kSize = 1 << 20;
    const auto a = this->Wide(std::string(kSize, 'a'));
    const auto half = a.substr(0, kSize / 2);
    std::basic_string<TypeParam> pairs;
    while (pairs.size() < kSize) {
        pairs += this->Wide("ab");
    }
    const auto b = this->Wide("b");
    const auto expect = [](const auto& text, const auto& wanted, std::size_t count) {
        platform::TextSearch<TypeParam> search(text.data(), text.data() + text.size(),
                                               wanted.data(), wanted.size());
        std::size_t found = 0;
        while (search.Next() != nullptr) {
            ++found;
        }
        EXPECT_EQ(found, count);
        EXPECT_EQ(platform::find_text(text.data(), text.data() + text.size(), wanted.data(),
                                      wanted.size()) != nullptr,
                  count > 0);
    };
    expect(a, half, kSize / 2 + 1);
    expect(a, half + b, 0);
    expect(a, b + half, 0);
    expect(a, half.substr(0, 1000) + b + half.substr(0, 1000), 0);
    expect(pairs, pairs.substr(0, kSize / 2), kSize / 4 + 1);
    expect(pairs, pairs.substr(0, kSize / 2) + b, 0);
    expect(pairs, pairs.substr(0, 100) + pairs.substr(1, 101), 0);
}

TEST(FindMemberTest, LikeALookUp) {
    const std::string sets[] = {"",
                                std::string(1, '\0'),
                                " ",
                                "\x80",
                                "\xFF",
                                " \t\r\n",
                                "0123456789",
                                "az09AZ_.",
                                "ABCDEFGHIJKLMNOPQRSTUVWXYZabcxyz\x80\x81\xFE\xFF",
                                "acegikmoqsuwyACEGIKMOQSUWY"};
    std::mt19937 random(3);
    for (const std::string& set : sets) {
        bool members[256] = {};
        for (const char byte : set) {
            members[static_cast<unsigned char>(byte)] = true;
        }
        for (const bool wanted : {false, true}) {
            const auto fits = [&](int byte) { return members[byte & 0xFF] == wanted; };
            for (std::size_t length = 0; length < 400; length += 1 + length / 20) {
                std::string text;
                while (text.size() < length) {
                    const int byte = static_cast<int>(random() % 256);
                    // A run that is long, or one without an end when nothing can be in it.
                    const bool isEnd = random() % 200 == 0;
                    text += static_cast<char>(byte);
                    if (fits(byte) && !isEnd && set.size() % 200 != 0) {
                        text.back() = wanted ? '#' : set[random() % set.size()];
                    }
                }
                for (const bool bEnd : {false, true}) {
                    const Exact<char> exact(text, bEnd);
                    EXPECT_EQ(platform::find_member(exact.First(), exact.Last(), members, wanted) -
                                  exact.First(),
                              std::find_if(text.begin(), text.end(), fits) - text.begin())
                        << set << ' ' << length;
                }
            }
        }
    }
}

}  // namespace
