#pragma once

#include <bit>
#include <cstdint>

/// What the layer knows of the processor's order of bytes. Words from memory are taken apart from
/// their low end, so that is where their first byte has to be.
namespace platform {

inline constexpr bool kLowFirst = std::endian::native == std::endian::little;

/// A word from memory with its first byte lowest, and such a word as it stands in memory.
constexpr std::uint32_t bytes_low_first(std::uint32_t word) {
    return kLowFirst ? word : __builtin_bswap32(word);
}
constexpr std::uint64_t bytes_low_first(std::uint64_t word) {
    return kLowFirst ? word : __builtin_bswap64(word);
}

/// The same for a word of units, each of which stays as it is.
template <class Unit>
constexpr std::uint64_t units_low_first(std::uint64_t word) {
    const std::uint64_t bytes = bytes_low_first(word);
    if constexpr (kLowFirst || sizeof(Unit) == 1) {
        return bytes;
    }
    constexpr std::uint64_t kEven = 0x00FF00FF00FF00FF;
    return (bytes & kEven) << 8 | (bytes >> 8 & kEven);
}

}  // namespace platform
