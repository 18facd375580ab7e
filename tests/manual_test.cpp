// The examples of the header and the documents, taken out of them, and what they promise.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Kelm.h"

TEST(Manual, TextsAndFormatting) {
#include "Kelm.h-1.inc"
#include "Kelm.h-2.inc"
#include "Kelm.h-6.inc"
    EXPECT_TRUE(wide == u"Ada");
    EXPECT_EQ(back, name);
    EXPECT_STREQ(report, "Ada       99.5 % of 5000000000");
}

TEST(Manual, Sharing) {
#include "Kelm.h-3.inc"
    EXPECT_STREQ(a, "text");
    EXPECT_STREQ(b, "text!");
}

TEST(Manual, LengthAndCapacity) {
#include "Kelm.h-4.inc"
#include "Kelm.h-5.inc"
    EXPECT_EQ(bytes.GetLength(), 3);
    EXPECT_EQ(upToNul.GetLength(), 1);
    EXPECT_EQ(line.GetAllocLength(), line.GetLength());
}

TEST(Manual, CodePages) {
#include "Kelm.h-7.inc"
    EXPECT_TRUE(sign == u"\u30AB");
    EXPECT_STREQ(utf8, "\xE3\x82\xAB");
}

TEST(Manual, Walks) {
    const Kelm text("first line\n\nsecond 'line two'\n"), row("a;;b");
    std::string used;
    struct {
        std::string& used;
        void operator()(const Kelm& piece) const { used += (piece + "|").constBuffer(); }
        void operator()(int number, const Kelm& line) const {
            (*this)(Kelm::From(number));
            (*this)(line);
        }
    } const use{used};
#include "Kelm.h-8.inc"
    {
#include "Kelm.h-9.inc"
    } {
#include "coming-from.md-1.inc"
    } EXPECT_EQ(used, "first|line|second|line two|1|first line|2||3|second 'line two'|a||b|");
}

TEST(Manual, Writing) {
    const std::vector<Kelm> words = {"some", "words"};
    Kelm text;
    const auto read_name = [](char* to, int) { std::strcpy(to, "Ada"); };
#include "sharing.md-1.inc"
#include "sharing.md-2.inc"
    EXPECT_STREQ(line, "some words ");
    EXPECT_EQ(line.GetAllocLength(), line.GetLength());
    EXPECT_STREQ(text, "Ada");
}
