#include <algorithm>
#include <bit>

#include "lanes/ascii_runs.h"
#include "pages/utf16_walk.h"
#include "pages/utf8.h"

namespace platform {
namespace {

using Units = Lanes<char16_t>::Vector;
using SignedUnits __attribute__((vector_size(16))) = std::int16_t;
using Words __attribute__((vector_size(16))) = std::uint32_t;
using HalfUnits __attribute__((vector_size(8))) = std::uint16_t;

constexpr std::ptrdiff_t kBlock = Lanes<char16_t>::kCount;

/// A step writes no further than this.
constexpr std::ptrdiff_t kBlockRoom = 3 * kBlock + 1;

/// Blocks after which the lanes of a tally, which grow by at most 4 a block, are added up.
constexpr std::ptrdiff_t kTallyBlocks = 4096;

/// Lanes of ones where the first half of a surrogate pair stands. Reads one unit more.
SignedUnits pairs_in_block(const char16_t* p) {
    return reinterpret_cast<SignedUnits>(is_high_surrogate(load_lanes(p)) &
                                         is_low_surrogate(load_lanes(p + 1)));
}

std::ptrdiff_t sum_of(SignedUnits lanes) {
    std::ptrdiff_t sum = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(kBlock); ++i) {
        sum += lanes[i];
    }
    return sum;
}

std::size_t bytes_of(char16_t unit) {
    return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
}

/// The byte of a sequence that takes the bits from `shift` on.
char continuation(char32_t code, int shift) {
    return static_cast<char>(0x80 | (code >> shift & 0x3F));
}

char* put_three(char32_t code, char* out) {
    out[0] = static_cast<char>(0xE0 | code >> 12);
    out[1] = continuation(code, 6);
    out[2] = continuation(code, 0);
    return out + 3;
}

char* put_four(char32_t code, char* out) {
    out[0] = static_cast<char>(0xF0 | code >> 18);
    out[1] = continuation(code, 12);
    out[2] = continuation(code, 6);
    out[3] = continuation(code, 0);
    return out + 4;
}

struct Stop {
    const char16_t* p;
    char* out;
};

/// The units in front of `end`, and on to the second half of a pair.
Stop encode_steps(const char16_t* p, const char16_t* end, const char16_t* last, char* out) {
    while (p < end) {
        const char16_t unit = *p++;
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
        } else if (unit < 0x800) {
            out[0] = static_cast<char>(0xC0 | unit >> 6);
            out[1] = continuation(unit, 0);
            out += 2;
        } else if (!is_surrogate(unit)) {
            out = put_three(unit, out);
        } else if (const char32_t code = utf16_code(p - 1, last); code >= 0x10000) {
            out = put_four(code, out);
            ++p;
        } else {
            out = put_three(kReplacement, out);
        }
    }
    return {p, out};
}

/// Units that are done one by one where a surrogate shows up: there may be more of them.
constexpr std::ptrdiff_t kSurrogateStretch = 4 * kBlock;

/// Eight lengths, added up.
struct Places {
    explicit Places(Units lengths) {
        using HalfBytes __attribute__((vector_size(8))) = unsigned char;
        const auto counts =
            std::bit_cast<std::uint64_t>(__builtin_convertvector(lengths, HalfBytes));
        const std::uint64_t ends = counts * 0x0101010101010101;  // byte i: the sum up to i
        begins = ends - counts;
        total = ends >> 56;
    }

    std::size_t Begin(unsigned int i) const { return begins >> 8 * i & 0xFF; }

    std::uint64_t begins;
    std::uint64_t total;
};

/// Eight units below U+0800. Neighbours are put together, so that half as many stores do.
char* encode_block_of_twos(Units units, char* out) {
    const Units two = (units >> 6 | 0xC0) | (units & 0x3F) << 8 | 0x8000;
    const Units isTwo = reinterpret_cast<Units>(reinterpret_cast<SignedUnits>(units) > 0x7F);
    const auto apart = reinterpret_cast<Words>(isTwo != 0 ? two : units);
    const Words together = (apart & 0xFF) | (apart >> 16 << 8);
    const Words isFirstTwo = reinterpret_cast<Words>(isTwo) << 16;
    const Words chosen = isFirstTwo != 0 ? apart : together;
    const Places places(1 - isTwo);
    std::uint32_t pairs[4];
    std::memcpy(pairs, &chosen, sizeof pairs);
    for (unsigned int i = 0; i < 4; ++i) {
        std::memcpy(out + places.Begin(2 * i), &pairs[i], sizeof pairs[i]);
    }
    return out + places.total;
}

/// Four units as 32 bits each.
Words widen_four(const char16_t* p) {
    HalfUnits half;
    std::memcpy(&half, p, sizeof half);
    return __builtin_convertvector(half, Words);
}

Words three_bytes(Words code) {
    return (code >> 12 | 0xE0) | (code << 2 & 0x3F00) | (code & 0x3F) << 16 | 0x808000;
}

Words one_to_three_bytes(Words code) {
    const Words two = (code >> 6 | 0xC0) | (code & 0x3F) << 8 | 0x8000;
    const Words longer = code > 0x7FF ? three_bytes(code) : two;
    return code > 0x7F ? longer : code;
}

/// Eight units from U+0800 up that are no surrogates.
char* encode_block_of_threes(const char16_t* p, char* out) {
    std::uint32_t sequences[kBlock];
    const Words low = three_bytes(widen_four(p));
    const Words high = three_bytes(widen_four(p + 4));
    std::memcpy(sequences, &low, sizeof low);
    std::memcpy(sequences + 4, &high, sizeof high);
    for (std::size_t i = 0; i < static_cast<std::size_t>(kBlock); ++i) {
        std::memcpy(out + 3 * i, &sequences[i], sizeof sequences[i]);
    }
    return out + 3 * kBlock;
}

/// Eight units that are no surrogates.
char* encode_block(const char16_t* p, Units units, char* out) {
    std::uint32_t sequences[kBlock];
    const Words low = one_to_three_bytes(widen_four(p));
    const Words high = one_to_three_bytes(widen_four(p + 4));
    std::memcpy(sequences, &low, sizeof low);
    std::memcpy(sequences + 4, &high, sizeof high);
    const Places places(1 - reinterpret_cast<Units>(units > 0x7F) -
                        reinterpret_cast<Units>(units > 0x7FF));
    for (unsigned int i = 0; i < static_cast<unsigned int>(kBlock); ++i) {
        std::memcpy(out + places.Begin(i), &sequences[i], sizeof sequences[i]);
    }
    return out + places.total;
}

}  // namespace

std::size_t count_surrogate_pairs(const char16_t* source, std::size_t length) noexcept {
    const char16_t* const last = source + length;
    const char16_t* p = source;
    std::size_t pairs = 0;
    while (last - p > kBlock) {
        const std::ptrdiff_t blocks = std::min((last - p - 1) / kBlock, kTallyBlocks);
        SignedUnits tally{};
        for (std::ptrdiff_t i = 0; i < blocks; ++i, p += kBlock) {
            tally -= pairs_in_block(p);
        }
        pairs += static_cast<std::size_t>(sum_of(tally));
    }
    for (; last - p > 1; ++p) {
        pairs += is_high_surrogate(p[0]) && is_low_surrogate(p[1]);
    }
    return pairs;
}

std::size_t utf8_size(const char16_t* source, std::size_t length, std::size_t ascii) noexcept {
    const char16_t* const last = source + length;
    const char16_t* p = source + ascii;
    std::ptrdiff_t size = p - source;
    while (last - p > kBlock) {
        const std::ptrdiff_t blocks = std::min((last - p - 1) / kBlock, kTallyBlocks);
        SignedUnits surplus{};
        for (std::ptrdiff_t i = 0; i < blocks; ++i, p += kBlock) {
            const Units units = load_lanes(p);
            // One byte, a second and a third; a pair counts as two times three but has four.
            surplus -= reinterpret_cast<SignedUnits>(units > 0x7F) +
                       reinterpret_cast<SignedUnits>(units > 0x7FF) - 2 * pairs_in_block(p);
        }
        size += blocks * kBlock + sum_of(surplus);
    }
    for (; p != last; ++p) {
        size += static_cast<std::ptrdiff_t>(bytes_of(*p));
        size -= last - p > 1 && is_high_surrogate(p[0]) && is_low_surrogate(p[1]) ? 2 : 0;
    }
    return static_cast<std::size_t>(size);
}

void utf8_encode(const char16_t* source, std::size_t length, char* destination,
                 std::size_t size) noexcept {
    const char16_t* const last = source + length;
    const char* const limit = destination + size;
    const char16_t* p = source;
    char* out = destination;
    while (last - p >= 2 * kBlock && limit - out >= kBlockRoom) {
        const Units units = load_lanes(p);
        const std::uint64_t upper = hit_bits(units > 0x7FF);
        if (is_ascii_step(p)) {
            transfer_step(p, out);
            p += 2 * kBlock;
            out += 2 * kBlock;
        } else if (kLowFirst && upper == 0) {
            out = encode_block_of_twos(units, out);
            p += kBlock;
        } else if (!kLowFirst || hit_bits(are_surrogates(units)) != 0) {
            const char16_t* end = p + std::min(kSurrogateStretch, last - p);
            const Stop stop = encode_steps(p, end, last, out);
            p = stop.p;
            out = stop.out;
        } else {
            out = upper == hit_bits(~Units{}) ? encode_block_of_threes(p, out)
                                              : encode_block(p, units, out);
            p += kBlock;
        }
    }
    encode_steps(p, last, last, out);
}

std::size_t utf8_encode_once(const char16_t* source, std::size_t length,
                             char* destination) noexcept {
    const char16_t* const last = source + length;
    return static_cast<std::size_t>(encode_steps(source, last, last, destination).out -
                                    destination);
}

}  // namespace platform
