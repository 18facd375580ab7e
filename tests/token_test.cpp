#include <string>

#include "twins.h"

namespace {

enum class By { Word, WordNoPunctuation, Comma, Line };

/// The token at construction and one for each true step, each followed by a bar.
std::string walk(const Kelm& text, By by) {
    Kelm::Token token(text, by == By::WordNoPunctuation);
    const auto step = [&] {
        return by == By::Comma ? token.Next(',') : by == By::Line ? token.NextLine() : token.Next();
    };
    std::string tokens;
    if (!token) {
        EXPECT_FALSE(token.IsValid());
        EXPECT_TRUE(token.Current().IsEmpty());
    } else {
        do {
            const std::string current = whole(token.Current());
            EXPECT_EQ(token.IsValid(), !current.empty());
            tokens += current + '|';
        } while (step() && tokens.size() < 99);
    }
    EXPECT_FALSE(token);
    EXPECT_FALSE(step());
    return tokens;
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

TEST(Token, Walks) {
    const struct {
        const char* text;
        By by;
        const char* tokens;
    } walks[] = {
        {"", By::Word, ""},
        {"   ", By::Line, ""},
        {"abc def", By::Word, "abc|def|"},
        {"abc,def", By::Word, "abc|def|"},
        {"abc, def", By::Word, "abc|def|"},
        {",abc", By::Word, ",|bc|"},
        {"a,,b", By::Word, "a|,|"},
        {"(a+b)", By::Word, "(|+|)|"},
        {"(a+b)", By::WordNoPunctuation, ""},
        {"a, b", By::WordNoPunctuation, "a|b|"},
        {"x , y z", By::WordNoPunctuation, "x|y|z|"},
        {"_x y_z", By::Word, "_x|y_z|"},
        {"don't", By::Word, "don|t|"},
        {"a 'b c' d", By::Word, "a|b c|d|"},
        {"a \"b'c\" d", By::Word, "a|b'c|d|"},
        {"'abc'x y", By::Word, "abc|y|"},
        {"'abc'", By::Word, "abc|"},
        {"'it''s'", By::Word, "it|s|"},
        {"''", By::Word, "|"},
        {"'ab", By::Word, "ab|"},
        {"a '", By::Word, "a||"},
        {"',' a", By::WordNoPunctuation, "a|"},
        {"a,b c", By::Comma, "a|b|c|"},
        {"a-b,c", By::Comma, "a|b|c|"},
        {"a,'b,c',d", By::Comma, "a|b,c|d|"},
        {"a,b-c_d,e", By::Comma, "a|b-c_d|e|"},
        {"a,,b", By::Comma, "a|,|"},
        {"a,,,b", By::Comma, "a|,|b|"},
        {",a", By::Comma, ",|"},
        {"h\xE9llo", By::Word, "h|llo|"},
        {"\x81\x40\x81\x41", By::Word, "\x81|\x81|"},
        {"x\xFFy z", By::Word, "x\xFFy|z|"},
        {"first line\nsecond", By::Line, "first|first line|second|"},
        {"a\r\n\r\nb c", By::Line, "a|b c|"},
        {"a\nb\nc", By::Line, "a|a\nb|c|"},
        {"a\n", By::Line, "a|a\n|"},
        {"one two\n", By::Line, "one|one two||"},
        {"\n\nabc\n", By::Line, "abc|abc\n|"},
    };
    for (const auto& expected : walks) {
        EXPECT_EQ(walk(Kelm(expected.text), expected.by), expected.tokens) << expected.text;
    }
}

TEST(Token, EndsAtTheFirstNulAndStartsAgain) {
    Kelm text("a b\0c", 5);
    EXPECT_EQ(walk(text, By::Word), "a|b|");
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
}
