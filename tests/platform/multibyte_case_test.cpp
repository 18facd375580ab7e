#include "multibyte_case.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "locales.h"
#include "multibyte.h"

namespace {

using platform::CodePage;
using platform::Grouping;
using Characters = std::vector<std::string>;

struct Alphabet {
    const char* locale;
    std::string bytes;
};

// Of every grouping: letters of both cases, pieces of longer characters that also occur alone, and
// bytes that are part of none.
const Alphabet kAlphabets[] = {
    {"C", "aA_\xC3\xA9"},
    {"en_US.UTF-8", "\xC3\xA9\x89Z\xFF"},
    {"en_US.UTF-8", "\xE2\x82\xAC\x61\xFF"},
    {"en_US.UTF-8", "\xF0\x90\x80\xC3_"},
    {"en_US.UTF-8", "\xED\x9F\xA0\xBF\xE1"},
    {"tr_TR.UTF-8", "iI\xC4\xB0\xB1"},
    {"de_DE.ISO-8859-1", "aA\xE4\xC4\xDF"},
    {"tr_TR.ISO-8859-9", "iI\xDD\xFD_"},
    {"en_US.ISO-8859-9", "iI\xDD\xFDz"},
    {"ja_JP.SHIFT_JIS", "\x82\x60\x81\xB1\x61"},
    {"zh_CN.GBK", "\xA3\xC1\xE1\x61\x41"},
    {"zh_TW.BIG5", "\xA2\xCF\xE9\x61\x41"},
    {"ja_JP.EUC-JP", "\xA3\xC1\xE1\x8F\x61"},
    {"zh_CN.GB18030", "\x81\x30\x84\xA3\x61"},
};

const CodePage& page() {
    return *platform::process_code_page();
}

// All texts up to `length` bytes.
std::vector<std::string> texts_over(const std::string& bytes, std::size_t length) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < length; ++i) {
        for (const char byte : bytes) {
            texts.push_back(texts[i] + byte);
        }
    }
    return texts;
}

Characters split(const std::string& text) {
    Characters characters;
    for (const char* p = text.c_str(); *p != '\0'; p += characters.back().size()) {
        characters.emplace_back(p, platform::_mbclen(page(), p));
    }
    return characters;
}

std::string join(const Characters& characters) {
    std::string text;
    for (const std::string& character : characters) {
        text += character;
    }
    return text;
}

// The fold by way of the C library alone.
std::string fold_one(const std::string& character, wint_t (*wide)(wint_t), int (*byte)(int)) {
    if (character.size() == 1) {
        const auto value = static_cast<unsigned char>(character[0]);
        const bool isFolded = value < 0x80 || page().grouping == Grouping::SingleByte;
        return std::string(1, static_cast<char>(isFolded ? byte(value) : value));
    }
    wchar_t value;
    std::mbstate_t state{};
    char bytes[16];
    if (std::mbrtowc(&value, character.data(), character.size(), &state) != character.size()) {
        return character;
    }
    const auto folded = static_cast<wchar_t>(wide(static_cast<wint_t>(value)));
    const bool fits = std::wcrtomb(bytes, folded, &state) == character.size();
    return fits ? std::string(bytes, character.size()) : character;
}

Characters upper(Characters characters) {
    for (std::string& character : characters) {
        character = fold_one(character, std::towupper, std::toupper);
    }
    return characters;
}

Characters lower(Characters characters) {
    for (std::string& character : characters) {
        character = fold_one(character, std::towlower, std::tolower);
    }
    return characters;
}

int sign(int order) {
    return (order > 0) - (order < 0);
}

std::vector<std::uint32_t> codes(const Characters& characters) {
    std::vector<std::uint32_t> result;
    for (const std::string& character : characters) {
        result.push_back(0);
        for (const char byte : character) {
            result.back() = result.back() << 8 | static_cast<unsigned char>(byte);
        }
    }
    return result;
}

int order_of(const std::vector<std::uint32_t>& left, const std::vector<std::uint32_t>& right) {
    return (left > right) - (left < right);
}

int order_of(const Characters& left, const Characters& right) {
    return order_of(codes(left), codes(right));
}

std::string changed(void (*change)(const CodePage&, char*) noexcept, std::string text) {
    change(page(), text.data());
    return text;
}

// Bytes of all kinds, ASCII in most places.
std::string random_text(std::mt19937& random, const std::string& bytes, std::size_t length) {
    std::string text(length, 'x');
    for (char& byte : text) {
        const auto value = static_cast<unsigned>(random());
        byte = value % 3 == 0 ? bytes[value / 8 % bytes.size()]
                              : static_cast<char>('A' + value / 8 % ('z' + 1 - 'A'));
    }
    return text;
}

TEST(MultibyteCase, ShortTextsAreInTheOrderOfAWalkByCharacter) {
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        const CodePage& codePage = page();
        const std::vector<std::string> texts = texts_over(alphabet.bytes, 4);
        std::vector<std::vector<std::uint32_t>> exact, folded;
        for (const std::string& text : texts) {
            exact.push_back(codes(split(text)));
            folded.push_back(codes(lower(split(text))));
        }
        int wrong = 0;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            for (std::size_t j = 0; j < texts.size(); ++j) {
                const char* left = texts[i].c_str();
                const char* right = texts[j].c_str();
                wrong +=
                    sign(platform::_mbscmp(codePage, left, right)) != order_of(exact[i], exact[j]);
                wrong += sign(platform::_mbsicmp(codePage, left, right)) !=
                         order_of(folded[i], folded[j]);
            }
        }
        EXPECT_EQ(wrong, 0) << alphabet.locale << ' ' << testing::PrintToString(alphabet.bytes);
    }
}

TEST(MultibyteCase, OrderOfTextsThatPartLate) {
    std::mt19937 random(1);
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        const std::string end = random_text(random, alphabet.bytes, 40);
        for (std::size_t length = 0; length < 700; length += 1 + length / 32) {
            const std::string start = random_text(random, alphabet.bytes, length);
            const std::string left = start + random_text(random, alphabet.bytes, 3) + end;
            std::string right = start + random_text(random, alphabet.bytes, 3) + end;
            EXPECT_EQ(sign(platform::_mbscmp(page(), left.c_str(), right.c_str())),
                      order_of(split(left), split(right)));
            right = join(random() % 2 == 0 ? upper(split(right)) : lower(split(right)));
            EXPECT_EQ(sign(platform::_mbsicmp(page(), left.c_str(), right.c_str())),
                      order_of(lower(split(left)), lower(split(right))))
                << alphabet.locale << ' ' << testing::PrintToString(left);
        }
    }
}

TEST(MultibyteCase, FoldsAndReversesCharacterByCharacter) {
    std::mt19937 random(2);
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        std::vector<std::string> texts = texts_over(alphabet.bytes, 4);
        for (std::size_t length = 5; length < 200; ++length) {
            texts.push_back(random_text(random, alphabet.bytes, length));
            texts.push_back(random_text(random, "@[`{", length));
        }
        for (const std::string& text : texts) {
            const Characters characters = split(text);
            EXPECT_EQ(changed(platform::_mbsupr, text), join(upper(characters)));
            EXPECT_EQ(changed(platform::_mbslwr, text), join(lower(characters)));
            EXPECT_EQ(changed(platform::_mbsrev, text),
                      join({characters.rbegin(), characters.rend()}))
                << alphabet.locale << ' ' << testing::PrintToString(text);
        }
    }
}

TEST(MultibyteCase, FoldsEveryCharacterOfTheLocale) {
    for (const char* name : {"en_US.UTF-8", "tr_TR.UTF-8", "ja_JP.SHIFT_JIS", "zh_CN.GB18030"}) {
        const LocaleScope locale(name);
        std::string all;
        for (wchar_t value = 1; value < 0x1F000; ++value) {
            char bytes[16];
            std::mbstate_t state{};
            const std::size_t length = std::wcrtomb(bytes, value, &state);
            all.append(bytes, length <= sizeof bytes ? length : 0);
        }
        const Characters characters = split(all);
        EXPECT_TRUE(changed(platform::_mbsupr, all) == join(upper(characters))) << name;
        EXPECT_TRUE(changed(platform::_mbslwr, all) == join(lower(characters))) << name;
    }
}

TEST(MultibyteCase, WhatIsBehindANulStays) {
    for (const char* name : {"C", "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS"}) {
        const LocaleScope locale(name);
        const std::string text("ab\x82\0cD", 6);
        EXPECT_EQ(changed(platform::_mbsupr, text), std::string("AB\x82\0cD", 6));
        EXPECT_EQ(changed(platform::_mbsrev, text), std::string("\x82"
                                                                "ba\0cD",
                                                                6));
    }
}

TEST(MultibyteCase, CollationIsTheLocales) {
    struct {
        const char* locale;
        const char *left, *right;
        int exact, ignoringCase;
    } const cases[] = {
        {"C", "a", "B", 1, -1},
        {"de_DE.UTF-8", "Zebra", "\xC3\x84pfel", 1, 1},
        {"de_DE.UTF-8", "\xC3\xA4pfel", "\xC3\x84PFEL", -1, 0},
        {"de_DE.ISO-8859-1", "\xE4pfel", "\xC4PFEL", -1, 0},
    };
    for (const auto& c : cases) {
        const LocaleScope locale(c.locale);
        for (const std::size_t tail : {0U, 300U, 3000U}) {
            const std::string left = c.left + std::string(tail, 'x');
            const std::string right = c.right + std::string(tail, 'x');
            EXPECT_EQ(sign(platform::_mbscoll(page(), left.c_str(), right.c_str())), c.exact);
            EXPECT_EQ(sign(platform::_mbsicoll(page(), left.c_str(), right.c_str())),
                      c.ignoringCase)
                << c.locale << ' ' << c.left << ' ' << tail;
        }
    }
}

void expect_found_where_folding_first_finds(const std::string& text, const std::string& upper) {
    const std::size_t expected = changed(platform::_mbsupr, text).find(upper);
    const char* first = text.data();
    const char* found =
        platform::find_folded(page(), first, first + text.size(), upper.data(), upper.size());
    const std::size_t position =
        found != nullptr ? static_cast<std::size_t>(found - first) : std::string::npos;
    EXPECT_EQ(position, expected) << testing::PrintToString(text) << ' ' << upper;
}

TEST(MultibyteCase, FindsWhereFoldingFirstFinds) {
    std::mt19937 random(3);
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        if (page().grouping != Grouping::Utf8 && page().grouping != Grouping::SingleByte) {
            continue;
        }
        for (const std::string& wanted : texts_over("AI_", 3)) {
            for (const std::string& text : texts_over(alphabet.bytes, 3)) {
                expect_found_where_folding_first_finds(text, wanted);
            }
            for (const std::size_t length : {15U, 16U, 17U, 18U, 33U, 100U, 1000U}) {
                const std::string bytes = alphabet.bytes + "aAiI_";
                expect_found_where_folding_first_finds(random_text(random, bytes, length), wanted);
            }
        }
    }
}

// By comparing at every place this would go on for minutes.
TEST(MultibyteCase, SearchIsLinearInTextMadeToMislead) {
    constexpr std::size_t kLength = 2000000;
    std::string text(kLength, 'a');
    std::string wanted(kLength / 8, 'A');
    wanted[wanted.size() / 2] = 'B';
    for (const char* name : {"C", "tr_TR.ISO-8859-9"}) {
        const LocaleScope locale(name);
        const char* last = text.data() + text.size();
        EXPECT_EQ(platform::find_folded(page(), text.data(), last, wanted.data(), wanted.size()),
                  nullptr);
        const std::size_t place = kLength / 2 + 1;
        text[place + wanted.size() / 2] = 'b';
        EXPECT_EQ(platform::find_folded(page(), text.data(), last, wanted.data(), wanted.size()),
                  text.data() + place);
        text[place + wanted.size() / 2] = 'a';
    }
}

}  // namespace
