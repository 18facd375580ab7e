#include <bit>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

float Share(std::size_t common, const std::string& a) {
    return static_cast<float>(common) / static_cast<float>(a.size());
}

/// What a user writes down first: two rows of cells.
float TwoRows(const std::string& a, const std::string& b) {
    std::vector<unsigned> previous(a.size() + 1);
    std::vector<unsigned> next(a.size() + 1);
    for (char ch : b) {
        for (std::size_t j = 1; j <= a.size(); j++)
            next[j] = a[j - 1] == ch ? previous[j - 1] + 1 : std::max(previous[j], next[j - 1]);
        std::swap(previous, next);
    }
    return Share(previous[a.size()], a);
}

/// The usual bit-parallel way: a bit for each byte of one text, whole rows of words for each byte
/// of the other, as the libraries for approximate matching do it.
float BitParallel(const std::string& a, const std::string& b) {
    std::size_t words = (a.size() + 63) / 64;
    std::vector<std::uint64_t> positions(256 * words);
    for (std::size_t i = 0; i < a.size(); i++)
        positions[static_cast<unsigned char>(a[i]) * words + i / 64] |= std::uint64_t{1} << i % 64;

    std::vector<std::uint64_t> row(words, ~std::uint64_t{0});
    for (char ch : b) {
        const std::uint64_t* match = &positions[static_cast<unsigned char>(ch) * words];
        unsigned long long carry = 0;
        for (std::size_t i = 0; i < words; i++) {
            std::uint64_t both = row[i] & match[i];
            std::uint64_t sum = row[i] + both;
            unsigned long long over = sum < both;
            sum += carry;
            over |= sum < carry;
            row[i] = sum | (row[i] - both);
            carry = over;
        }
    }
    std::size_t common = 0;
    for (std::size_t i = 0; i < a.size(); i++)
        common += (~row[i / 64] >> i % 64) & 1;
    return Share(common, a);
}

void Similar(Workload& work) {
    std::string a = Words(work.Size());
    std::string b = Prose(work.Size() + 7).substr(7);
    work.Add("kelm", [a = Kelm(a.c_str()), b = Kelm(b.c_str())] { return a.Similar(b); });
    work.Add("kelm_text", [a = Kelm(a.c_str()), b] { return a.Similar(b.c_str()); });
    work.Add("bit_parallel", [a, b] { return BitParallel(a, b); });
    work.Add("two_rows", [a, b] { return TwoRows(a, b); });
}

}  // namespace

void AddSimilar(Suite& suite) {
    suite.Add("similar", {kSmall, 64, kMedium, 10000}, Similar);
}

}  // namespace bench
