#include <cstddef>
#include <cstdint>

#include "lanes/vectors.h"

std::uint64_t portable_hit_bits(const unsigned char* mask, std::size_t bytes);
bool portable_has_hit(const unsigned char* mask, std::size_t bytes);

namespace {

template <std::size_t kBytes>
void ExpectTheSameBits(std::uint64_t bits) {
    unsigned char mask[kBytes];
    for (std::size_t i = 0; i < kBytes; ++i) {
        mask[i] = (bits >> i & 1) != 0 ? 0xFF : 0;
    }
    const auto lanes = platform::load_lanes<kBytes>(reinterpret_cast<const char*>(mask));
    ASSERT_EQ(platform::hit_bits(lanes), bits);
    ASSERT_EQ(portable_hit_bits(mask, kBytes), bits);
    ASSERT_EQ(platform::has_hit(lanes), bits != 0);
    ASSERT_EQ(portable_has_hit(mask, kBytes), bits != 0);
}

TEST(Lanes, AreTheSameBitsInTheirPortableForm) {
    for (std::uint64_t bits = 0; bits < 0x10000; ++bits) {
        ASSERT_NO_FATAL_FAILURE(ExpectTheSameBits<16>(bits));
        ASSERT_NO_FATAL_FAILURE(ExpectTheSameBits<32>(bits << 16 | (bits * 0x9E37 & 0xFFFF)));
        ASSERT_NO_FATAL_FAILURE(ExpectTheSameBits<32>(bits));
    }
}

}  // namespace
