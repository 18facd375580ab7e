#include <cstddef>
#include <cstdint>

#include "lanes/vectors.h"

std::uint64_t portable_hit_bits(const unsigned char* mask);
bool portable_has_hit(const unsigned char* mask);

namespace {

TEST(Lanes, AreTheSameBitsInTheirPortableForm) {
    for (std::uint32_t bits = 0; bits < 0x10000; ++bits) {
        unsigned char mask[16];
        for (std::size_t i = 0; i < sizeof mask; ++i) {
            mask[i] = (bits >> i & 1) != 0 ? 0xFF : 0;
        }
        const auto lanes = platform::load_lanes(reinterpret_cast<const char*>(mask));
        ASSERT_EQ(platform::hit_bits(lanes), bits);
        ASSERT_EQ(portable_hit_bits(mask), bits);
        ASSERT_EQ(platform::has_hit(lanes), bits != 0);
        ASSERT_EQ(portable_has_hit(mask), bits != 0);
    }
}

}  // namespace
