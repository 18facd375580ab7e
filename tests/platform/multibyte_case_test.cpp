#include "multibyte/case.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "alphabets.h"
#include "locales.h"
#include "multibyte/characters.h"
#include "texts.h"

namespace {

using alphabets::Alphabet;
using alphabets::kAlphabets;
using platform::CodePage;
using platform::Grouping;
using Characters = std::vector<std::string>;

const CodePage& page() {
    return *platform::process_code_page();
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

Characters folded(Characters characters, wint_t (*wide)(wint_t), int (*byte)(int)) {
    for (std::string& character : characters) {
        character = fold_one(character, wide, byte);
    }
    return characters;
}

Characters upper(const std::string& text) {
    return folded(split(text), std::towupper, std::toupper);
}

Characters lower(const std::string& text) {
    return folded(split(text), std::towlower, std::tolower);
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

int order_of(const Characters& left, const Characters& right) {
    const auto l = codes(left);
    const auto r = codes(right);
    return (l > r) - (l < r);
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
        const std::vector<std::string> texts = all_texts(alphabet.bytes, 4);
        std::vector<std::vector<std::uint32_t>> exact, blind;
        for (const std::string& text : texts) {
            exact.push_back(codes(split(text)));
            blind.push_back(codes(lower(text)));
        }
        int wrong = 0;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            for (std::size_t j = 0; j < texts.size(); ++j) {
                const char* left = texts[i].c_str();
                const char* right = texts[j].c_str();
                const int order = (exact[i] > exact[j]) - (exact[i] < exact[j]);
                const int blindOrder = (blind[i] > blind[j]) - (blind[i] < blind[j]);
                wrong += sign(platform::_mbscmp(codePage, left, right)) != order;
                wrong += sign(platform::_mbsicmp(codePage, left, right)) != blindOrder;
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
            right = join(random() % 2 == 0 ? upper(right) : lower(right));
            EXPECT_EQ(sign(platform::_mbsicmp(page(), left.c_str(), right.c_str())),
                      order_of(lower(left), lower(right)))
                << alphabet.locale << ' ' << testing::PrintToString(left);
        }
    }
}

TEST(MultibyteCase, FoldsAndReversesCharacterByCharacter) {
    std::mt19937 random(2);
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        std::vector<std::string> texts = all_texts(alphabet.bytes, 4);
        for (std::size_t length = 5; length < 200; ++length) {
            texts.push_back(random_text(random, alphabet.bytes, length));
            texts.push_back(random_text(random, "@[`{", length));
        }
        for (const std::string& text : texts) {
            const Characters characters = split(text);
            const std::string behind = text.substr(join(characters).size());
            EXPECT_EQ(changed(platform::_mbsupr, text), join(upper(text)) + behind);
            EXPECT_EQ(changed(platform::_mbslwr, text), join(lower(text)) + behind);
            EXPECT_EQ(changed(platform::_mbsrev, text),
                      join({characters.rbegin(), characters.rend()}) + behind)
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
        EXPECT_TRUE(changed(platform::_mbsupr, all) == join(upper(all))) << name;
        EXPECT_TRUE(changed(platform::_mbslwr, all) == join(lower(all))) << name;
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
        std::string letters = alphabet.bytes;
        std::erase(letters, '\0');
        for (const std::string& wanted : all_texts(std::string("AI_"), 3)) {
            for (const std::string& text : all_texts(letters, 3)) {
                expect_found_where_folding_first_finds(text, wanted);
            }
            for (const std::size_t length : {15U, 16U, 17U, 18U, 33U, 100U, 1000U}) {
                const std::string bytes = letters + "aAiI_";
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
