#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "lanes/byte_order.h"

/// The few operations on vectors that the scanners are made of. Plain compiler vectors, so they
/// serve every target; only the way from lanes to bits has a form of its own where one instruction
/// does it.
///
/// Where nothing else is said, a vector has 16 bytes, whatever is compiled for: short text and the
/// ends of long text are seldom longer. Long text is gone through in steps of 64 bytes, and those
/// in vectors as wide as pays on the processor.
namespace platform {

inline constexpr std::size_t kNarrowBytes = 16;

// Vectors of 64 bytes, where a processor has them, are slower in these loops than those of 32.
#if defined(__AVX2__)
inline constexpr std::size_t kWideBytes = 32;
#else
inline constexpr std::size_t kWideBytes = kNarrowBytes;
#endif

template <class Unit, std::size_t kBytes = kNarrowBytes>
struct Lanes {
    using Scalar = std::conditional_t<sizeof(Unit) == 1, unsigned char, std::uint16_t>;
    using Vector __attribute__((vector_size(kBytes))) = Scalar;
    static constexpr std::ptrdiff_t kCount = kBytes / sizeof(Unit);
};

template <class Unit>
using WideLanes = Lanes<Unit, kWideBytes>;

using WordVector __attribute__((vector_size(kNarrowBytes))) = std::uint64_t;

template <std::size_t kBytes = kNarrowBytes, class Unit>
inline typename Lanes<Unit, kBytes>::Vector load_lanes(const Unit* p) {
    typename Lanes<Unit, kBytes>::Vector v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class Unit, class Vector>
inline void store_lanes(Unit* p, Vector v) {
    std::memcpy(p, &v, sizeof v);
}

template <std::size_t kBytes = kNarrowBytes, class Unit>
inline typename Lanes<Unit, kBytes>::Vector splat_lanes(Unit unit) {
    using Words __attribute__((vector_size(kBytes))) = std::uint64_t;
    constexpr std::uint64_t kOnes = ~std::uint64_t{0} / ((1U << 8 * sizeof(Unit)) - 1);
    const std::uint64_t word = static_cast<typename Lanes<Unit>::Scalar>(unit) * kOnes;
    return reinterpret_cast<typename Lanes<Unit, kBytes>::Vector>(Words{} + word);
}

/// Lanes of ones where the units are equal, like the masks below.
template <class Vector>
inline Vector lanes_equal(WordVector a, Vector b) {
    return reinterpret_cast<Vector>(reinterpret_cast<Vector>(a) == b);
}

template <class Unit, class Vector>
inline Vector lanes_equal(const Unit* p, Vector v) {
    return reinterpret_cast<Vector>(load_lanes<sizeof v>(p) == v);
}

/// A bit for each byte of a mask, the first byte lowest.
template <class Vector>
inline std::uint64_t hit_bits(Vector mask) {
#if defined(__AVX2__)
    if constexpr (sizeof mask == 32) {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(reinterpret_cast<__m256i>(mask)));
    }
#endif
#if defined(__SSE2__)
    if constexpr (sizeof mask == 16) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(mask)));
    }
#endif
    constexpr std::size_t kWords = sizeof mask / sizeof(std::uint64_t);
    std::uint64_t words[kWords];
    std::memcpy(words, &mask, sizeof words);
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < kWords; ++i) {
        bits |=
            (bytes_low_first(words[i]) & 0x8040201008040201) * 0x0101010101010101 >> 56 << 8 * i;
    }
    return bits;
}

template <class Vector>
inline bool has_hit(Vector mask) {
#if defined(__SSE2__)
    return hit_bits(mask) != 0;
#else
    constexpr std::size_t kWords = sizeof mask / sizeof(std::uint64_t);
    std::uint64_t words[kWords];
    std::memcpy(words, &mask, sizeof words);
    std::uint64_t any = 0;
    for (const std::uint64_t word : words) {
        any |= word;
    }
    return any != 0;
#endif
}

/// Units of a step.
template <class Unit>
inline constexpr std::ptrdiff_t kStepUnits = 64 / sizeof(Unit);

/// Any of the ones in what `lanesAt` gives for the vectors of the step at `p`.
template <class Unit, class LanesAt>
inline auto any_in_step(const Unit* p, LanesAt lanesAt) {
    auto any = lanesAt(p);
    for (std::ptrdiff_t i = WideLanes<Unit>::kCount; i < kStepUnits<Unit>;
         i += WideLanes<Unit>::kCount) {
        any |= lanesAt(p + i);
    }
    return any;
}

/// A bit for each byte of the masks that it gives for them.
template <class Unit, class LanesAt>
inline std::uint64_t bits_in_step(const Unit* p, LanesAt lanesAt) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < kStepUnits<Unit>; i += WideLanes<Unit>::kCount) {
        bits |= hit_bits(lanesAt(p + i)) << i * sizeof(Unit);
    }
    return bits;
}

/// The lanes in front, of a vector that has the same in all.
template <std::size_t kBytes, class Vector>
inline auto front_lanes(Vector v) {
    using Front __attribute__((vector_size(kBytes))) = std::remove_reference_t<decltype(v[0])>;
    Front front;
    std::memcpy(&front, &v, sizeof front);
    return front;
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

/// Without the hits in front of a place.
template <class Unit>
inline std::uint64_t hits_from(std::uint64_t bits, std::ptrdiff_t place) {
    const auto done = place * static_cast<std::ptrdiff_t>(sizeof(Unit));
    return bits >> done << done;
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
