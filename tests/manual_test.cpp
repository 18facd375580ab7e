// The examples of the manual at the top of the header, as they stand there.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Kelm.h"

TEST(Manual, AText) {
    Kelm name("Ada");
    EXPECT_STREQ(name, "Ada");
    WString wide(name);
    Kelm back = wide.ToKelm();
    EXPECT_TRUE(wide == u"Ada");
    EXPECT_EQ(back, name);
}

TEST(Manual, Sharing) {
    Kelm a("text"), b(a);
    EXPECT_EQ(a.constBuffer(), b.constBuffer());
    b.Append('!');
    EXPECT_STREQ(a, "text");
    EXPECT_STREQ(b, "text!");
}

TEST(Manual, LengthAndCapacity) {
    Kelm bytes("a\0b", 3);
    Kelm upToNul("a\0b");
    EXPECT_EQ(bytes.GetLength(), 3);
    EXPECT_EQ(upToNul.GetLength(), 1);

    Kelm line;
    line.GetBuffer(200);
    EXPECT_EQ(line.GetAllocLength(), 200);
    EXPECT_EQ(line.GetLength(), 0);
    const char* place = line;
    line.Append("built without a new block for each piece");
    EXPECT_EQ(line.constBuffer(), place);
    line.FreeExtra();
    EXPECT_EQ(line.GetAllocLength(), line.GetLength());
}

TEST(Manual, Formatting) {
    Kelm name("Ada");
    Kelm report = Kelm::FromFormat("%-8s %5.1f %%", name.constBuffer(), 99.5);
    report.AppendFormat(" of %I64d", 5000000000LL);
    EXPECT_STREQ(report, "Ada       99.5 % of 5000000000");
}

TEST(Manual, CodePages) {
    WString sign = WString::FromCodePage("\x83\x4a", 932);
    EXPECT_TRUE(sign == u"\u30AB");
    Kelm utf8 = sign.ToKelm(65001);
    EXPECT_STREQ(utf8, "\xE3\x82\xAB");
}

TEST(Manual, Tokens) {
    Kelm text("first line\nsecond 'line two'");
    Kelm words;
    for (Kelm::Token token(text); token; ++token) {
        words << token.Current() << ';';
    }
    EXPECT_STREQ(words, "first;line;second;line two;");
    Kelm::Token line(text);
    Kelm lines;
    while (line.NextLine()) {
        lines << line.Current() << ';';
    }
    EXPECT_STREQ(lines, "first line;second 'line two';");
}

TEST(Manual, LinesWithNumbers) {
    for (const Kelm text : {"", "one", "one\n\nthree\n", "\n\r\n", "\n\n4"}) {
        std::istringstream stream{std::string(text)};
        std::string expected;
        const auto use = [&](int number, const Kelm& line) {
            ASSERT_TRUE(std::getline(stream, expected)) << number;
            EXPECT_EQ(line, expected.c_str());
        };
        int number = 0;
        for (int start = 0, end; start < text.GetLength(); start = end + 1) {
            end = text.Find('\n', start);
            end = end < 0 ? text.GetLength() : end;
            use(++number, text.Mid(start, end - start));
        }
        EXPECT_FALSE(std::getline(stream, expected));
    }
}
