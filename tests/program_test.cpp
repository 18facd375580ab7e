// Whole random programs on both classes, held against the model after each step, whether or not an
// allocation fails, and random calls of the print, held against the C library.

#include "program.h"

#include <random>

#include "calls.h"
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

TEST(Programs, DoWhatTheModelDoes) {
    long nLive = 0;  // with the tables that stay
    for (unsigned seed = 0; seed < 16000; ++seed) {
        const auto bytes = random_bytes(seed, 2000);
        const std::string fault = programs::run(bytes.data(), bytes.size());
        ASSERT_TRUE(fault.empty()) << "seed " << seed << ' ' << fault;
        nLive = seed <= 1000 ? allocator.nLive.load() : nLive;
        ASSERT_EQ(allocator.nLive, nLive) << "seed " << seed << " leaks";
    }
    std::setlocale(LC_ALL, "C");
}

TEST(Calls, PrintAsTheCLibraryDoes) {
    for (const char* name : {"C", "de_DE.UTF-8"}) {
        const LocaleScope locale(name);
        for (unsigned seed = 0; seed < 100000; ++seed) {
            const auto bytes = random_bytes(seed, 60);
            ASSERT_EQ(calls::check(bytes.data(), bytes.size()), "") << name << " seed " << seed;
        }
    }
}
