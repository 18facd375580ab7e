// The form of the vector vocabulary for targets without instructions of their own for it.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#undef __SSE2__
#define platform portable  // in a namespace of its own: the other form is in this program too
#include "lanes/vectors.h"

std::uint64_t portable_hit_bits(const unsigned char* mask);
bool portable_has_hit(const unsigned char* mask);

std::uint64_t portable_hit_bits(const unsigned char* mask) {
    return portable::hit_bits(portable::load_lanes(reinterpret_cast<const char*>(mask)));
}

bool portable_has_hit(const unsigned char* mask) {
    return portable::has_hit(portable::load_lanes(reinterpret_cast<const char*>(mask)));
}
