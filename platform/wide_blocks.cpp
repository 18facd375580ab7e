#include "wide_blocks.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <bit>

#include "page_loads.h"

namespace platform {

#if defined(__x86_64__)
namespace {

// Registers twice as wide as those that every processor of this kind has. As to the sanitizers, see
// load_in_page.
#define KELM_AVX2 __attribute__((target("avx2"), no_sanitize("address", "thread")))

constexpr std::ptrdiff_t kWideLanes = sizeof(__m256i) / sizeof(char16_t);

KELM_AVX2 inline __m256i load_common_avx2(const char16_t* left, const char16_t* right) {
    const __m256i units = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(left));
    const __m256i others = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(right));
    return _mm256_and_si256(_mm256_cmpeq_epi16(units, others), units);
}

KELM_AVX2 inline unsigned zero_bits_avx2(__m256i units) {
    return static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(units, _mm256_setzero_si256())));
}

KELM_AVX2 std::ptrdiff_t end_in_blocks_avx2(const char16_t* left, const char16_t* right,
                                            std::ptrdiff_t blocks) {
    const char16_t* const first = left;
    for (; blocks > 0; --blocks) {
        __m256i least = _mm256_set1_epi16(-1);
        for (std::ptrdiff_t i = 0; i < kBlockUnits; i += kWideLanes) {
            least = _mm256_min_epu16(least, load_common_avx2(left + i, right + i));
        }
        if (zero_bits_avx2(least) != 0) {
            break;
        }
        left += kBlockUnits;
        right += kBlockUnits;
    }
    std::ptrdiff_t at = 0;
    for (; blocks > 0; at += kWideLanes) {
        if (const unsigned ends = zero_bits_avx2(load_common_avx2(left + at, right + at))) {
            at += std::countr_zero(ends) / 2;
            break;
        }
    }
    return left - first + at;
}

}  // namespace
#endif

std::ptrdiff_t end_in_blocks(const char16_t* left, const char16_t* right,
                             std::ptrdiff_t blocks) noexcept {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return end_in_blocks_avx2(left, right, blocks);
    }
#endif
    return end_in_blocks_by_lanes(left, right, blocks);
}

std::ptrdiff_t end_in_blocks_by_lanes(const char16_t* left, const char16_t* right,
                                      std::ptrdiff_t blocks) noexcept {
    constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;
    std::ptrdiff_t at = 0;
    for (; blocks > 0; --blocks, at += kBlockUnits) {
        Lanes<char16_t>::Vector ends{};
        for (std::ptrdiff_t i = 0; i < kBlockUnits; i += kLanes) {
            ends |= zero_lanes(load_common(left + at + i, right + at + i));
        }
        if (has_hit(ends)) {
            break;
        }
    }
    for (std::ptrdiff_t end = kLanes; blocks > 0 && end == kLanes; at += end) {
        end = end_in_vector(left + at, right + at);
    }
    return at;
}

}  // namespace platform
