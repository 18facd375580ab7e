#include "similarity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>

#include "oracle.h"

namespace {

int common_length(const std::string& a, const std::string& b) {
    return platform::common_length(a.data(), static_cast<int>(a.size()), b.data(),
                                   static_cast<int>(b.size()));
}

void expect_like_oracle(const std::string& a, const std::string& b) {
    EXPECT_EQ(common_length(a, b), oracle::common_length(a, b)) << a << ' ' << b;
}

// Level rows and rows that grow everywhere, which let a carry run through all the words, and texts
// so long that the carries do not fit on the stack.
TEST(Similarity, LikeTheOracle) {
    std::mt19937 random(1);
    const auto text = [&](std::size_t length) {
        std::string result(length, ' ');
        std::generate(result.begin(), result.end(),
                      [&] { return static_cast<char>('a' + random() % 4); });
        return result;
    };
    std::string up(256, ' ');
    std::iota(up.begin(), up.end(), '\0');
    const std::string down(up.rbegin(), up.rend()), many(700, 'a');
    expect_like_oracle(up + up, down + down + down);
    expect_like_oracle('x' + many + 'y', 'z' + many + many + 'x');
    expect_like_oracle(many, up + down);
    expect_like_oracle("x" + many + up, "y" + up + many);
    const std::string a = text(40000), b = text(300);
    expect_like_oracle("1" + a, "2" + b + "2");
    expect_like_oracle("1" + b + "1", "2" + a);
    expect_like_oracle("1" + text(100), "2" + b);
    EXPECT_EQ(common_length("1" + a + "2" + a, "3" + a + "2" + a), 80001);
}

}  // namespace
