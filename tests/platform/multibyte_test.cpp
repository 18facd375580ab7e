#include "multibyte/characters.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cwchar>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "alphabets.h"
#include "locales.h"
#include "multibyte/single_bytes.h"
#include "texts.h"

namespace {

using alphabets::Alphabet;
using alphabets::kAlphabets;
using platform::CodePage;
using platform::Grouping;
constexpr std::size_t kNone = std::string::npos;

bool is_utf8_character(const std::string& bytes) {
    const auto bits = [&](std::size_t i) -> unsigned {
        return static_cast<unsigned char>(bytes[i]);
    };
    const std::size_t length = bytes.size();
    unsigned value = bits(0) & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (bits(i) >> 6 != 2) {
            return false;
        }
        value = value << 6 | (bits(i) & 0x3FU);
    }
    const unsigned least[] = {0x80, 0x800, 0x10000};
    return bits(0) >> (7 - length) == (2U << length) - 2 && value >= least[length - 2] &&
           value <= 0x10FFFF && value / 0x800 != 0xD800 / 0x800;
}

bool is_character(const CodePage& page, const std::string& bytes) {
    switch (page.grouping) {
        case Grouping::SingleByte:
            return false;
        case Grouping::Utf8:
            return bytes.size() <= 4 && is_utf8_character(bytes);
        case Grouping::DoubleByte:
            return bytes.size() == 2 && page.IsLead(static_cast<unsigned char>(bytes[0])) &&
                   bytes[1] != '\0';
        case Grouping::Other:
            break;
    }
    mbstate_t state{};
    return mbrlen(bytes.data(), bytes.size(), &state) == bytes.size();
}

using Characters = std::vector<std::string>;

// By trying every length.
Characters split(const CodePage& page, const std::string& text) {
    Characters characters;
    for (std::size_t at = 0; at < text.size(); at += characters.back().size()) {
        std::size_t length = 4;
        while (length > 1 &&
               (at + length > text.size() || !is_character(page, text.substr(at, length)))) {
            --length;
        }
        characters.push_back(text.substr(at, length));
    }
    return characters;
}

bool contains(const Characters& characters, const std::string& character) {
    return std::find(characters.begin(), characters.end(), character) != characters.end();
}

// One text of a range, in a block of its size and a terminator, beside the walk over it.
class Walk {
public:
    Walk(const CodePage& page, const std::string& text)
        : page_(page),
          text_(text),
          characters_(split(page, text)),
          block_(std::make_unique<char[]>(text.size() + 1)),
          first_(block_.get()),
          last_(first_ + text.size()) {
        std::copy(text.begin(), text.end(), block_.get());
        for (const std::string& character : characters_) {
            starts_.insert(starts_.end(), character.size(), starts_.size());
        }
        starts_.push_back(text.size());
    }

    void ExpectByte(char byte) const {
        const auto value = static_cast<unsigned char>(byte);
        std::size_t firstHit = kNone;
        std::size_t lastHit = kNone;
        for (std::size_t at = 0; at < text_.size(); ++at) {
            if (text_[at] == byte && starts_[at] == at && starts_[at + 1] == at + 1) {
                firstHit = std::min(firstHit, at);
                lastHit = at;
            }
        }
        EXPECT_EQ(Position(platform::_mbschr(page_, first_, last_, value)), firstHit);
        EXPECT_EQ(Position(platform::_mbsrchr(page_, first_, last_, value)), lastHit);
    }

    void ExpectText(const std::string& wanted) const {
        std::size_t hit = text_.find(wanted);
        while (hit != kNone && starts_[hit] != hit) {
            hit = text_.find(wanted, hit + 1);
        }
        EXPECT_EQ(Position(platform::_mbsstr(page_, first_, last_, wanted.data(), wanted.size())),
                  hit);
        if (hit != kNone && !wanted.empty()) {
            const char* rest = first_ + hit + wanted.size();
            EXPECT_EQ(platform::count_text(page_, first_, last_, wanted.data(), wanted.size()),
                      1 + platform::count_text(page_, rest, last_, wanted.data(), wanted.size()));
        }
    }

    void ExpectSet(const std::string& set) const {
        const Characters members = split(page_, set);
        const std::size_t outside = Run([&](const auto& one) { return !contains(members, one); });
        const std::size_t inside = Run([&](const auto& one) { return contains(members, one); });
        EXPECT_EQ(Position(platform::_mbspbrk(page_, first_, last_, set.c_str())),
                  outside == text_.size() ? kNone : outside);
        EXPECT_EQ(platform::_mbscspn(page_, first_, last_, set.c_str()), outside);
        EXPECT_EQ(platform::_mbsspn(page_, first_, last_, set.c_str()), inside);

        const platform::ByteSet bytes(page_, set.c_str());
        std::size_t run = text_.size();
        std::size_t at = 0;
        for (const std::string& character : characters_) {
            const bool isIn = contains(members, character.substr(0, 1));
            EXPECT_EQ(bytes.Has(character[0]), isIn);
            run = !isIn ? text_.size() : std::min(run, at);
            at += character.size();
        }
        EXPECT_EQ(Position(platform::trailing_run(page_, first_, last_, bytes.has)), run);
    }

    void ExpectStarts() const {
        for (std::size_t i = 0; i <= text_.size(); ++i) {
            EXPECT_EQ(Position(platform::character_start(page_, first_, first_ + i, last_)),
                      starts_[i]);
        }
        if (!characters_.empty()) {
            const std::size_t length = characters_[0].size();
            EXPECT_EQ(platform::_mbclen(page_, first_), length);
            EXPECT_EQ(platform::_mbsinc(page_, first_) - first_,
                      *first_ == '\0' ? 0 : static_cast<std::ptrdiff_t>(length));
        }
    }

    void ExpectAll(const std::vector<std::string>& wanted) const {
        SCOPED_TRACE(testing::Message() << page_.converter << testing::PrintToString(text_));
        ExpectStarts();
        for (const std::string& text : wanted) {
            if (text.size() == 1) {
                ExpectByte(text[0]);
            }
            if (text.find('\0') == kNone) {
                ExpectText(text);
                ExpectSet(text);
            }
        }
    }

private:
    std::size_t Position(const char* p) const {
        return p == nullptr ? kNone : static_cast<std::size_t>(p - first_);
    }

    template <class Test>
    std::size_t Run(Test test) const {
        std::size_t length = 0;
        for (std::size_t i = 0; i < characters_.size() && test(characters_[i]); ++i) {
            length += characters_[i].size();
        }
        return length;
    }

    const CodePage& page_;
    std::string text_;
    Characters characters_;
    std::vector<std::size_t> starts_;  // of the character at each byte
    std::unique_ptr<char[]> block_;
    const char* first_;
    const char* last_;
};

TEST(MultibyteTest, LikeAWalkInAllShortTexts) {
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        const auto wanted = all_texts(alphabet.bytes, 2);
        for (const std::string& text : all_texts(alphabet.bytes, 5)) {
            Walk(*platform::process_code_page(), text).ExpectAll(wanted);
        }
    }
}

TEST(MultibyteTest, LikeAWalkInLongTexts) {
    std::mt19937 random(1);
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        auto wanted = all_texts(alphabet.bytes, 1);
        wanted.push_back(alphabet.bytes.substr(0, 2) + "x;");
        for (int round = 0; round < 40; ++round) {
            // Mostly what is not looked for, so that hits are far from the beginning.
            std::string text;
            while (text.size() < 300) {
                text += random() % 30 != 0
                            ? std::string("abcd")
                            : std::string(1 + random() % 5, alphabet.bytes[random() % 5]) +
                                  alphabet.bytes[random() % 5];
            }
            const CodePage& page = *platform::process_code_page();
            Walk(page, text).ExpectAll(wanted);
            Walk(page, text)
                .ExpectText(text.substr(random() % 200).substr(0, 1 + random() % 60).c_str());
            Walk(page, text).ExpectSet("abcd" + alphabet.bytes.substr(0, 3));
        }
    }
}

// In quadratic time these would take hours.
TEST(MultibyteTest, TextsOfLeadBytesAlone) {
    const CodePage& page = *platform::find_code_page(932);
    for (const std::string unit : {"\x81", "\x81\x40"}) {
        std::string text;
        while (text.size() < 1 << 20) {
            text += unit;
        }
        const char* first = text.c_str();
        const char* last = first + text.size();
        bool all[256];
        std::fill(std::begin(all), std::end(all), true);
        EXPECT_EQ(platform::trailing_run(page, first, last, all), first);
        EXPECT_EQ(platform::_mbschr(page, first, last, 0x81), nullptr);
        // Shorter, since a sanitizer looks at all of the text before each step back.
        EXPECT_EQ(platform::_mbsrchr(page, last - 0x4000, last, 0x81), nullptr);
        EXPECT_EQ(platform::_mbschr(page, first, last, 0x40), nullptr);
        EXPECT_EQ(platform::_mbsrchr(page, last - 0x4000, last, 0x40), nullptr);
        EXPECT_EQ(platform::_mbspbrk(page, first, last, "@\x81"), nullptr);
        const std::string inside = text.substr(text.size() / 2 + 1);
        EXPECT_EQ(platform::_mbsstr(page, first, last, inside.data(), inside.size()),
                  unit.size() == 1 ? first : nullptr);
    }
}

TEST(MultibyteTest, ErrnoStays) {
    const LocaleScope locale("ja_JP.EUC-JP");
    errno = 0;
    EXPECT_EQ(platform::_mbclen(*platform::process_code_page(), "\xA4z"), 1U);
    EXPECT_EQ(errno, 0);
}

TEST(MultibyteTest, Values) {
    EXPECT_TRUE(platform::_ismbcspace('\v'));
    EXPECT_FALSE(platform::_ismbcspace(0x100 + ' '));
    EXPECT_TRUE(platform::_ismbcdigit('0') && platform::_ismbcdigit('9'));
    EXPECT_FALSE(platform::_ismbcdigit('0' - 1) || platform::_ismbcdigit('9' + 1));
    EXPECT_EQ(platform::_mbsnbcmp("I64d", "I64", 3), 0);
    EXPECT_NE(platform::_mbsnbcmp("I6", "I64", 3), 0);
}

TEST(SingleBytesTest, ClassesOfTheLocale) {
    using platform::ByteClass;
    struct {
        bool (*isIn)(char) noexcept;
        int (*expected)(int);
        ByteClass (*members)() noexcept;
    } const classes[] = {
        {platform::isspace, std::isspace, ByteClass::Space},
        {platform::ispunct, std::ispunct, ByteClass::Punctuation},
        {platform::iscntrl, std::iscntrl, ByteClass::Control},
        {platform::isdigit, std::isdigit, ByteClass::Digit},
        {platform::isalnum, std::isalnum, ByteClass::AlNum},
        {platform::isalpha, std::isalpha, ByteClass::Alpha},
        {platform::isupper, std::isupper, ByteClass::Upper},
        {platform::islower, std::islower, ByteClass::Lower},
    };
    for (const char* name : {"C", "en_US.UTF-8", "de_DE.ISO-8859-1", "tr_TR.ISO-8859-9"}) {
        const LocaleScope locale(name);
        std::string all;
        for (int value = 0; value < 256; ++value) {
            all += static_cast<char>(value);
            EXPECT_EQ(platform::toupper(all.back()), static_cast<char>(std::toupper(value)));
            EXPECT_EQ(platform::tolower(all.back()), static_cast<char>(std::tolower(value)));
        }
        for (const auto& one : classes) {
            const ByteClass members = one.members();
            const auto expected = [&](char ch) {
                return one.expected(static_cast<unsigned char>(ch)) != 0;
            };
            std::string in;
            std::string out;
            for (const char ch : all) {
                EXPECT_EQ(one.isIn(ch), expected(ch)) << name << ' ' << int{ch};
                (expected(ch) ? in : out) += ch;
            }
            for (std::size_t skip = 0; skip < 20; ++skip) {
                std::string text = all.substr(skip);
                std::string left = text;
                std::erase_if(left, expected);
                char* end = platform::remove_class(members, text.data(), text.data() + text.size());
                EXPECT_EQ(std::string(text.data(), end), left);
                std::string run = (in + in + in + in).substr(0, skip);
                EXPECT_TRUE(platform::all_in_class(members, run.data(), run.data() + run.size()));
                run.insert(skip / 2, 1, out[0]);
                EXPECT_FALSE(platform::all_in_class(members, run.data(), run.data() + run.size()));
            }
        }
    }
}

}  // namespace
