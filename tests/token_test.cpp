// Walks by every sequence of steps over all small texts, held against a slow walk.

#include <algorithm>
#include <cctype>
#include <string>

#include "texts.h"
#include "twins.h"

namespace {

enum class By { Word, Delimiter, Line };

/// A walk as the manual tells it, over a text without NUL.
struct Walk {
    const std::string& text;
    bool skips;
    std::size_t start = 0, end = 0, next = 0;
    bool more = true, ended = false;

    static bool IsIn(char ch, int (*test)(int)) {
        return static_cast<unsigned char>(ch) < 0x80 && test(ch) != 0;
    }
    static bool IsMark(char ch) { return ch != '_' && IsIn(ch, std::ispunct); }
    bool IsValid() const { return !ended && start < end; }
    std::string Current() const { return IsValid() ? text.substr(start, end - start) : ""; }
    template <class Test>
    std::size_t First(std::size_t from, Test test) const {
        while (from < text.size() && !test(text[from])) {
            ++from;
        }
        return from;
    }

    bool Step(By by, char delimiter) {
        return by == By::Line        ? Line()
               : by == By::Delimiter ? Token([&](char ch) { return ch == delimiter; })
                                     : Word();
    }
    bool Word() {
        while (Token(IsMark)) {
            if (!skips || start == text.size() || !IsMark(text[start])) {
                return true;
            }
        }
        return false;
    }
    template <class Test>
    bool Token(Test ends) {
        const auto at = First(next, [](char ch) { return !IsIn(ch, std::isspace); });
        if (ended || at == text.size()) {
            ended = true;
            return more = false;
        }
        start = at;
        const bool isQuoted = text[at] == '"' || text[at] == '\'';
        if (isQuoted) {
            start = at + 1;
            end = First(start, [&](char ch) { return ch == text[at]; });
        } else {
            end = First(start, [&](char ch) {
                const bool isHigh = static_cast<unsigned char>(ch) >= 0x80 && ch != '\xFF';
                return isHigh || IsIn(ch, std::isspace) || ends(ch);
            });
            end += end == start;
        }
        next = std::min(end + (isQuoted ? 2 : 1), text.size());
        return true;
    }
    bool Line() {
        if (!more) {
            return false;
        }
        const auto isEnd = [](char ch) { return ch == '\r' || ch == '\n'; };
        const auto begin = First(next, [&](char ch) { return !isEnd(ch); });
        start = begin > next ? begin : start;
        end = next = First(begin, isEnd);
        more = end < text.size();
        return true;
    }
};

/// Takes each step from here and goes on from where it leads.
void try_steps(const Kelm::Token& token, const Walk& walk, char delimiter,
               const std::string& path) {
    ASSERT_EQ(static_cast<bool>(token), walk.more) << path;
    ASSERT_EQ(token.IsValid(), walk.IsValid()) << path;
    ASSERT_EQ(whole(token.Current()), walk.Current()) << path;
    for (const By by : {By::Word, By::Delimiter, By::Line}) {
        Kelm::Token real = token;
        Walk model = walk;
        const bool isTaken = by == By::Word        ? real.Next()
                             : by == By::Delimiter ? real.Next(delimiter)
                                                   : real.NextLine();
        const std::string here = path + "wdl"[static_cast<int>(by)];
        ASSERT_EQ(isTaken, model.Step(by, delimiter)) << here;
        if (isTaken) {
            try_steps(real, model, delimiter, here);
        } else {
            ASSERT_EQ(static_cast<bool>(real), model.more) << here;
            ASSERT_EQ(whole(real.Current()), model.Current()) << here;
        }
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

struct OpenToken : Kelm::Token {
    using Token::FindChar;
    using Token::FindWhitespace;
    using Token::Token;
};

}  // namespace

TEST(Token, LooksForABlackByteAndForAGivenOne) {
    const Kelm text("a \t b");
    const OpenToken token(text);
    EXPECT_EQ(token.FindWhitespace(0), 0);
    EXPECT_EQ(token.FindWhitespace(1), 4);
    EXPECT_EQ(token.FindWhitespace(5), -1);
    EXPECT_EQ(token.FindChar(0, 'b'), 4);
    EXPECT_EQ(token.FindChar(1, 'a'), -1);
}

TEST(Token, WalksByEverySequenceOfSteps) {
    const std::string kLetters[] = {"a,'",  "a \n",        "\"' ",   "_+a", "\xFF\x81.",
                                    "a'\"", {"\r\n\0", 3}, "a,\x81", "'\n,"};
    for (const std::string& letters : kLetters) {
        for (const std::string& units : all_texts(letters, 6)) {
            const Kelm text = from<Kelm>(units);
            const std::string front = units.c_str();
            for (const bool skips : {false, true}) {
                Walk walk{front, skips};
                walk.Step(By::Word, 0);
                try_steps(Kelm::Token(text, skips), walk, letters[1], front + ' ');
                ASSERT_FALSE(HasFatalFailure()) << skips;
            }
        }
    }
}

TEST(Token, StartsAgain) {
    Kelm text("a b\0c", 5);
    Kelm::Token token(text);
    EXPECT_FALSE(token.SkipPunctuation(true));
    EXPECT_TRUE(token.SkipPunctuation(false));
    ++token;
    token++;
    EXPECT_FALSE(token);
    text = "new text";
    token.Restart();
    const Kelm converted = token;
    EXPECT_STREQ(converted, "new");
    EXPECT_STREQ(token(), "new");
    token.Clear();
    EXPECT_TRUE(token);
    EXPECT_FALSE(token.IsValid());
    EXPECT_TRUE(token.Current().IsEmpty());
    // The length of the text is known from its start alone.
    EXPECT_TRUE(token.Next());
    EXPECT_STREQ(token(), "ne");
}
