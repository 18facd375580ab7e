// The form of the vector vocabulary for targets without instructions of their own for it.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#undef __SSE2__
#undef __AVX2__
#define platform portable  // in a namespace of its own: the other form is in this program too
#include "lanes/vectors.h"

std::uint64_t portable_hit_bits(const unsigned char* mask, std::size_t bytes);
bool portable_has_hit(const unsigned char* mask, std::size_t bytes);

std::uint64_t portable_hit_bits(const unsigned char* mask, std::size_t bytes) {
    const auto* p = reinterpret_cast<const char*>(mask);
    return bytes == 16 ? portable::hit_bits(portable::load_lanes<16>(p))
                       : portable::hit_bits(portable::load_lanes<32>(p));
}

bool portable_has_hit(const unsigned char* mask, std::size_t bytes) {
    const auto* p = reinterpret_cast<const char*>(mask);
    return bytes == 16 ? portable::has_hit(portable::load_lanes<16>(p))
                       : portable::has_hit(portable::load_lanes<32>(p));
}
