// Whole random programs on both classes, held against the model after each step, whether or not an
// allocation fails.

#include "program.h"

#include <random>

#include "locales.h"
#include "twins.h"

namespace {

std::vector<unsigned char> random_bytes(unsigned seed, std::size_t nBytes) {
    std::mt19937 random(seed);
    std::vector<unsigned char> bytes(nBytes);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    return bytes;
}

}  // namespace

// KELM_PROGRAMS="10000000 32000" runs that many from that seed on.
TEST(Programs, DoWhatTheModelDoes) {
    const char* const wanted = std::getenv("KELM_PROGRAMS");
    std::istringstream in(wanted == nullptr ? "32000 0" : wanted);
    unsigned count = 0, first = 0;
    ASSERT_TRUE(in >> count >> first);
    long nLive = 0;  // with the tables that stay
    for (unsigned seed = first; seed - first < count; ++seed) {
        const auto bytes = random_bytes(seed, seed % 8 == 0 ? 4000 : 40 + seed % 1000);
        const std::string fault = programs::run(bytes.data(), bytes.size());
        ASSERT_TRUE(fault.empty()) << "seed " << seed << ' ' << fault;
        nLive = seed - first <= 1000 ? allocator.nLive.load() : nLive;
        ASSERT_EQ(allocator.nLive, nLive) << "seed " << seed << " leaks";
    }
    std::setlocale(LC_ALL, "C");
}
