#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "lanes/byte_order.h"

/// The few steps on 16 bytes that the scanners are made of. Plain compiler vectors, so they serve
/// every target; only the way from lanes to bits has a form of its own where one instruction does
/// it.
namespace platform {

using WordVector __attribute__((vector_size(16))) = std::uint64_t;

template <class Unit>
struct Lanes;

template <>
struct Lanes<char> {
    using Scalar = unsigned char;
    using Vector __attribute__((vector_size(16))) = unsigned char;
    static constexpr Vector kIndexes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    static constexpr std::ptrdiff_t kCount = 16;
};

template <>
struct Lanes<char16_t> {
    using Scalar = std::uint16_t;
    using Vector __attribute__((vector_size(16))) = std::uint16_t;
    static constexpr Vector kIndexes{0, 1, 2, 3, 4, 5, 6, 7};
    static constexpr std::ptrdiff_t kCount = 8;
};

template <class Unit>
inline typename Lanes<Unit>::Vector load_lanes(const Unit* p) {
    typename Lanes<Unit>::Vector v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class Unit>
inline void store_lanes(Unit* p, typename Lanes<Unit>::Vector v) {
    std::memcpy(p, &v, sizeof v);
}

template <class Unit>
inline typename Lanes<Unit>::Vector splat_lanes(Unit unit) {
    constexpr std::uint64_t kOnes = ~std::uint64_t{0} / ((1U << 8 * sizeof(Unit)) - 1);
    const std::uint64_t word = static_cast<typename Lanes<Unit>::Scalar>(unit) * kOnes;
    return reinterpret_cast<typename Lanes<Unit>::Vector>(WordVector{word, word});
}

/// Lanes of ones where the units are equal, like the masks below.
template <class Vector>
inline Vector lanes_equal(WordVector a, Vector b) {
    return reinterpret_cast<Vector>(reinterpret_cast<Vector>(a) == b);
}

template <class Unit>
inline typename Lanes<Unit>::Vector lanes_equal(const Unit* p, typename Lanes<Unit>::Vector v) {
    return reinterpret_cast<typename Lanes<Unit>::Vector>(load_lanes(p) == v);
}

/// A mask of the lanes from `index` on.
template <class Unit>
inline typename Lanes<Unit>::Vector lanes_from(std::ptrdiff_t index) {
    const auto bound = static_cast<typename Lanes<Unit>::Scalar>(index);
    return reinterpret_cast<typename Lanes<Unit>::Vector>(Lanes<Unit>::kIndexes >= bound);
}

/// A bit for each byte of a mask, the first byte lowest.
template <class Vector>
inline std::uint64_t hit_bits(Vector mask) {
#if defined(__SSE2__)
    return static_cast<std::uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(mask)));
#else
    std::uint64_t words[2];
    std::memcpy(words, &mask, sizeof words);
    const auto bits = [](std::uint64_t word) {
        return (bytes_low_first(word) & 0x8040201008040201) * 0x0101010101010101 >> 56;
    };
    return bits(words[0]) | bits(words[1]) << 8;
#endif
}

template <class Vector>
inline bool has_hit(Vector mask) {
#if defined(__SSE2__)
    return hit_bits(mask) != 0;
#else
    std::uint64_t words[2];
    std::memcpy(words, &mask, sizeof words);
    return (words[0] | words[1]) != 0;
#endif
}

/// Place of the first hit among these bits, of which there is at least one.
template <class Unit>
inline std::ptrdiff_t first_hit(std::uint64_t bits) {
    return std::countr_zero(bits) / static_cast<int>(sizeof(Unit));
}

template <class Unit>
inline std::ptrdiff_t last_hit(std::uint64_t bits) {
    return (63 - std::countl_zero(bits)) / static_cast<int>(sizeof(Unit));
}

template <class Unit>
inline std::uint64_t without_first_hit(std::uint64_t bits) {
    for (std::size_t i = 0; i < sizeof(Unit); ++i) {
        bits &= bits - 1;
    }
    return bits;
}

template <class Word>
inline Word load_word(const char* p) {
    Word word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// The two ends of a text of less than 16 bytes, which overlap where they must. In registers all
/// the way: stored as words and loaded as a vector they would take long.
template <class Word>
inline WordVector load_ends(const char* front, const char* back) {
    const std::uint64_t low = load_word<Word>(front);
    const std::uint64_t high = load_word<Word>(back);
    if constexpr (sizeof(Word) == sizeof(std::uint64_t)) {
        return WordVector{low, high};
    } else {
        return WordVector{kLowFirst ? low | high << 32 : low << 32 | high, 0};
    }
}

}  // namespace platform
