#include <algorithm>
#include <bit>

#include "ascii_runs.h"
#include "utf16_walk.h"
#include "utf8.h"

namespace platform {
namespace {

static_assert(std::endian::native == std::endian::little,
              "sequences are written as little-endian numbers");

using Units = Lanes<char16_t>::Vector;
using SignedUnits __attribute__((vector_size(16))) = std::int16_t;
using Words __attribute__((vector_size(16))) = std::uint32_t;
using HalfUnits __attribute__((vector_size(8))) = std::uint16_t;

constexpr std::ptrdiff_t kBlock = Lanes<char16_t>::kCount;

/// A step writes no further than this.
constexpr std::ptrdiff_t kBlockRoom = 3 * kBlock + 1;

/// Blocks after which the lanes of a tally, which grow by at most 4 a block, are added up.
constexpr std::ptrdiff_t kTallyBlocks = 4096;

SignedUnits in_kind(Units units, std::uint16_t mask, std::uint16_t kind) {
    return reinterpret_cast<SignedUnits>((units & mask) == kind);
}

/// Lanes of ones where the first half of a surrogate pair stands. Reads one unit more.
SignedUnits pairs_in_block(const char16_t* p) {
    return in_kind(load_lanes(p), 0xFC00, 0xD800) & in_kind(load_lanes(p + 1), 0xFC00, 0xDC00);
}

std::ptrdiff_t sum_of(SignedUnits lanes) {
    std::ptrdiff_t sum = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(kBlock); ++i) {
        sum += lanes[i];
    }
    return sum;
}

std::size_t bytes_of(char32_t code) {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

char* put_utf8(char32_t code, char* out) {
    const std::size_t bytes = bytes_of(code);
    if (bytes == 1) {
        *out = static_cast<char>(code);
        return out + 1;
    }
    for (std::size_t i = bytes - 1; i > 0; --i) {
        out[i] = static_cast<char>(0x80 | (code & 0x3F));
        code >>= 6;
    }
    out[0] = static_cast<char>((0xF00 >> bytes & 0xF0) | code);
    return out + bytes;
}

char* encode_steps(const char16_t*& p, const char16_t* end, const char16_t* last, char* out) {
    while (p < end) {
        const char32_t code = utf16_code(p, last);
        out = put_utf8(is_surrogate(code) ? 0xFFFD : code, out);
        p += utf16_units(code);
    }
    return out;
}

/// Where eight sequences begin, a byte each, and their length together.
struct Places {
    explicit Places(Units lengths) {
        using HalfBytes __attribute__((vector_size(8))) = unsigned char;
        const auto counts =
            std::bit_cast<std::uint64_t>(__builtin_convertvector(lengths, HalfBytes));
        const std::uint64_t ends = counts * 0x0101010101010101;  // byte i: the sum up to i
        begins = ends - counts;
        total = ends >> 56;
    }

    std::uint64_t begins;
    std::uint64_t total;
};

/// Writes sequences in order, each over what the one in front wrote too much.
template <class Sequence>
char* put_sequences(const Sequence* sequences, const Places& places, char* out) {
    for (unsigned int i = 0; i < static_cast<unsigned int>(kBlock); ++i) {
        std::memcpy(out + (places.begins >> 8 * i & 0xFF), &sequences[i], sizeof sequences[i]);
    }
    return out + places.total;
}

/// Eight units below U+0800.
char* encode_block_of_twos(Units units, char* out) {
    const Units two = (units >> 6 | 0xC0) | (units & 0x3F) << 8 | 0x8000;
    const Units isTwo = reinterpret_cast<Units>(units > 0x7F);
    const Units chosen = isTwo != 0 ? two : units;
    std::uint16_t sequences[kBlock];
    std::memcpy(sequences, &chosen, sizeof sequences);
    return put_sequences(sequences, Places(1 - isTwo), out);
}

/// The sequences of four units that are no surrogates.
void make_sequences(const char16_t* p, std::uint32_t* sequences) {
    HalfUnits half;
    std::memcpy(&half, p, sizeof half);
    const Words code = __builtin_convertvector(half, Words);
    const Words last = code & 0x3F;
    const Words two = (code >> 6 | 0xC0) | last << 8 | 0x8000;
    const Words three = (code >> 12 | 0xE0) | (code << 2 & 0x3F00) | last << 16 | 0x808000;
    const Words longer = code > 0x7FF ? three : two;
    const Words chosen = code > 0x7F ? longer : code;
    std::memcpy(sequences, &chosen, sizeof chosen);
}

/// Eight units that are no surrogates.
char* encode_block(const char16_t* p, Units units, char* out) {
    std::uint32_t sequences[kBlock];
    make_sequences(p, sequences);
    make_sequences(p + kBlock / 2, sequences + kBlock / 2);
    const Units lengths =
        1 - reinterpret_cast<Units>(units > 0x7F) - reinterpret_cast<Units>(units > 0x7FF);
    return put_sequences(sequences, Places(lengths), out);
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

std::size_t utf8_size(const char16_t* source, std::size_t length) noexcept {
    const char16_t* const last = source + length;
    const char16_t* p = source + ascii_run(source, length);
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
    if (size == length) {
        narrow(source, length, destination);
        return;
    }
    const char16_t* const last = source + length;
    const char* const limit = destination + size;
    const char16_t* p = source;
    char* out = destination;
    while (last - p >= 2 * kBlock && limit - out >= kBlockRoom) {
        const Units units = load_lanes(p);
        if (is_ascii_step(p)) {
            narrow_step(p, out);
            p += 2 * kBlock;
            out += 2 * kBlock;
        } else if (hit_bits(units > 0x7FF) == 0) {
            out = encode_block_of_twos(units, out);
            p += kBlock;
        } else if (hit_bits(in_kind(units, 0xF800, 0xD800)) == 0) {
            out = encode_block(p, units, out);
            p += kBlock;
        } else {
            out = encode_steps(p, p + kBlock, last, out);
        }
    }
    encode_steps(p, last, last, out);
}

}  // namespace platform
