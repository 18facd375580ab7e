#include "similarity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "oracle.h"
#include "texts.h"

namespace {

int common_length(const std::string& a, const std::string& b) {
    return platform::common_length(a.data(), static_cast<int>(a.size()), b.data(),
                                   static_cast<int>(b.size()));
}

void expect_like_oracle(const std::string& a, const std::string& b) {
    EXPECT_EQ(common_length(a, b), oracle::common_length(a, b)) << a << ' ' << b;
}

TEST(Similarity, LengthsAroundWordsAndStrips) {
    constexpr std::size_t kLengths[] = {1,   2,   63,  64,  65,  127, 128, 129, 191,
                                        192, 193, 255, 256, 257, 300, 513, 1000};
    std::mt19937 random(1);
    for (const unsigned letters : {2U, 20U, 256U}) {
        const auto text = [&](std::size_t length) {
            std::string result(length, ' ');
            std::generate(result.begin(), result.end(),
                          [&] { return static_cast<char>(random() % letters); });
            return result;
        };
        for (const std::size_t n : kLengths) {
            for (const std::size_t m : kLengths) {
                const std::string a = text(n);
                expect_like_oracle(a, text(m));
                expect_like_oracle(text(3) + a + text(5), text(7) + a + text(2));
            }
        }
    }
}

// Level rows and rows that grow everywhere let a carry run through all the words.
TEST(Similarity, EdgesOfTheTable) {
    std::string up, down;
    for (int i = 0; i < 256; ++i) {
        up += static_cast<char>(i);
        down += static_cast<char>(255 - i);
    }
    const std::string many(700, 'a');
    expect_like_oracle(up, down);
    expect_like_oracle(up + up, down + down + down);
    expect_like_oracle('x' + many + 'y', 'z' + many + many + 'x');
    expect_like_oracle('x' + many, many + 'y');
    expect_like_oracle(many, up + down);
    expect_like_oracle("x" + many + up, "y" + up + many);
}

// So long that the carries are no longer on the stack.
TEST(Similarity, LongTexts) {
    std::string a, b;
    std::mt19937 random(2);
    for (int i = 0; i < 40000; ++i) {
        a += static_cast<char>('a' + random() % 4);
    }
    for (int i = 0; i < 300; ++i) {
        b += static_cast<char>('a' + random() % 4);
    }
    expect_like_oracle("1" + a, "2" + b + "2");
    expect_like_oracle("1" + b + "1", "2" + a);
    EXPECT_EQ(common_length("1" + a + "2" + a, "3" + a + "2" + a), 80001);
}

}  // namespace
