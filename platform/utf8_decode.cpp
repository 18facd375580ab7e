#include <bit>

#include "ascii_runs.h"
#include "utf16_walk.h"
#include "utf8.h"
#include "utf8_walk.h"

namespace platform {
namespace {

static_assert(std::endian::native == std::endian::little,
              "bytes are read in pairs and fours as little-endian numbers");

constexpr char32_t kReplacement = 0xFFFD;

struct Step {
    char32_t code;
    std::size_t bytes;
    bool isWellFormed;
};

constexpr std::size_t sequence_length(unsigned char lead) {
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

char32_t continuation_bits(char byte) {
    return static_cast<unsigned char>(byte) & 0x3F;
}

/// The character at `p`, or the longest part of one that stands there.
Step read_step(const char* p, const char* last) {
    const auto lead = static_cast<unsigned char>(*p);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (last - p < 2 || !is_utf8_start(lead, static_cast<unsigned char>(p[1]))) {
        return {kReplacement, 1, false};
    }
    const std::size_t length = sequence_length(lead);
    const auto available = static_cast<std::size_t>(last - p);
    char32_t code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i == available || !is_utf8_continuation(p[i])) {
            return {kReplacement, i, false};
        }
        code = code << 6 | continuation_bits(p[i]);
    }
    return {code, length, true};
}

using Bytes = Lanes<char>::Vector;
using SignedBytes __attribute__((vector_size(16))) = signed char;

constexpr std::size_t kBlock = sizeof(Bytes);
constexpr std::size_t kBack = 3;  // bytes in front of a byte that decide whether it may stand there

/// A text is checked in segments, so that one bad byte sends no more than this on the slow way and
/// so that the lanes of a tally cannot overflow.
constexpr std::size_t kSegment = 64 * kBlock;

/// The value as a signed byte: what a comparison costs least with.
constexpr signed char as_signed(int byte) {
    return static_cast<signed char>(static_cast<unsigned char>(byte));
}

/// Lanes of ones where the bytes are above `byte`, as unsigned values.
SignedBytes above(Bytes bytes, int byte) {
    return reinterpret_cast<SignedBytes>(bytes ^ 0x80) > as_signed(byte ^ 0x80);
}

SignedBytes equal(Bytes bytes, unsigned char byte) {
    return reinterpret_cast<SignedBytes>(bytes == byte);
}

/// Sixteen bytes and what stands one, two and three bytes in front of each.
struct Window {
    Bytes byte;
    Bytes before;
    Bytes before2;
    Bytes before3;
};

Window window_at(const char* p) {
    return {load_lanes(p), load_lanes(p - 1), load_lanes(p - 2), load_lanes(p - 3)};
}

/// The first sixteen of a text.
Window first_window(const char* p) {
    const Bytes none{};
    const Bytes byte = load_lanes(p);
    return {byte,
            __builtin_shufflevector(none, byte, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27,
                                    28, 29, 30),
            __builtin_shufflevector(none, byte, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26,
                                    27, 28, 29),
            __builtin_shufflevector(none, byte, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
                                    26, 27, 28)};
}

/// Checks blocks of a text that starts on a character boundary.
struct Checker {
    /// A byte must be a continuation exactly where a lead of sufficient length stands one, two or
    /// three bytes in front. Adds the units less the bytes of the lanes that are `counted`.
    void Add(const Window& at, SignedBytes counted) {
        const auto byte = reinterpret_cast<SignedBytes>(at.byte);
        const SignedBytes isContinuation = byte < as_signed(0xC0);
        const SignedBytes isExpected =
            above(at.before, 0xBF) | above(at.before2, 0xDF) | above(at.before3, 0xEF);
        bad |= (isContinuation ^ isExpected) | equal(at.byte & 0xFE, 0xC0) | above(at.byte, 0xF4);
        // Overlong forms, surrogates, values above U+10FFFF: what follows is a continuation here.
        bad |= (equal(at.before, 0xE0) & (byte < as_signed(0xA0))) |
               (equal(at.before, 0xED) & (byte > as_signed(0x9F))) |
               (equal(at.before, 0xF0) & (byte < as_signed(0x90))) |
               (equal(at.before, 0xF4) & (byte > as_signed(0x8F)));
        surplus += (isContinuation - above(at.byte, 0xEF)) & counted;
    }

    std::ptrdiff_t Surplus() const {
        std::ptrdiff_t sum = 0;
        for (std::size_t i = 0; i < kBlock; ++i) {
            sum += surplus[i];
        }
        return sum;
    }

    SignedBytes bad{};
    SignedBytes surplus{};
};

/// Ones in the lanes from `first` on.
SignedBytes lanes_from(std::size_t first) {
    static constexpr signed char kSteps[2 * kBlock] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                                       0,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -1,
                                                       -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    SignedBytes lanes;
    std::memcpy(&lanes, kSteps + kBlock - first, sizeof lanes);
    return lanes;
}

bool ends_within_sequence(const char* last) {
    return static_cast<unsigned char>(last[-1]) >= 0xC0 ||
           static_cast<unsigned char>(last[-2]) >= 0xE0 ||
           static_cast<unsigned char>(last[-3]) >= 0xF0;
}

/// Whether a segment is well-formed and so long that blocks can tell; only then are its units
/// added. The last block may overlap the one in front of it.
bool count_well_formed(const char* first, const char* last, std::size_t& units) {
    const auto length = static_cast<std::size_t>(last - first);
    if (length != kBlock && length < kBlock + kBack) {
        return false;
    }
    Checker checker;
    checker.Add(first_window(first), lanes_from(0));
    std::size_t i = kBlock;
    for (; i + kBlock <= length; i += kBlock) {
        checker.Add(window_at(first + i), lanes_from(0));
    }
    if (i < length) {
        checker.Add(window_at(last - kBlock), lanes_from(kBlock - (length - i)));
    }
    if (hit_bits(checker.bad) != 0 || ends_within_sequence(last)) {
        return false;
    }
    units += length + static_cast<std::size_t>(checker.Surplus());
    return true;
}

/// Where a segment from `p` ends: on a boundary if the text is well-formed there.
const char* segment_end(const char* p, const char* last) {
    if (last - p <= static_cast<std::ptrdiff_t>(kSegment)) {
        return last;
    }
    const char* end = p + kSegment;
    for (std::size_t i = 0; i < kBack && is_utf8_continuation(*end); ++i) {
        --end;
    }
    return end;
}

using Units = Lanes<char16_t>::Vector;

Units load_pairs(const char* p) {
    Units pairs;
    std::memcpy(&pairs, p, sizeof pairs);
    return pairs;
}

/// The units of the sequences of one or two bytes at p, p + 2, p + 4...: a lane holds two bytes.
Units short_units_at(const char* p) {
    const Units pair = load_pairs(p);
    const Units lead = pair & 0xFF;
    const Units two = (pair & 0x1F) << 6 | (pair >> 8 & 0x3F);
    return lead > 0x7F ? two : lead;
}

/// The same for sequences of up to three bytes.
Units units_at(const char* p) {
    const Units pair = load_pairs(p);
    const Units third = load_pairs(p + 2) & 0x3F;
    const Units three = pair << 12 | (pair >> 2 & 0xFC0) | third;
    return (pair & 0xFF) > 0xDF ? three : short_units_at(p);
}

/// Sixteen bytes, given the units that would start at their even and odd places: of a pair of
/// places those units are written that start a character. Needs room for sixteen units.
char16_t* put_starting(const char* p, Units even, Units odd, char16_t* out) {
    using HalfBytes __attribute__((vector_size(8))) = unsigned char;
    const auto isStart = reinterpret_cast<SignedBytes>(load_lanes(p)) >= as_signed(0xC0);
    const auto starts = reinterpret_cast<Units>(reinterpret_cast<Bytes>(isStart) & 1);
    const Units first = (starts & 0xFF) != 0 ? even : odd;
    const Units low = __builtin_shufflevector(first, odd, 0, 8, 1, 9, 2, 10, 3, 11);
    const Units high = __builtin_shufflevector(first, odd, 4, 12, 5, 13, 6, 14, 7, 15);
    std::uint32_t pairs[8];
    std::memcpy(pairs, &low, sizeof low);
    std::memcpy(pairs + 4, &high, sizeof high);
    const auto counts = std::bit_cast<std::uint64_t>(
        __builtin_convertvector((starts & 0xFF) + (starts >> 8), HalfBytes));
    const std::uint64_t ends = counts * 0x0101010101010101;  // byte i: the sum of the counts to i
    const std::uint64_t begins = ends - counts;
    for (unsigned int i = 0; i < 8; ++i) {
        std::memcpy(out + (begins >> 8 * i & 0xFF), &pairs[i], sizeof pairs[i]);
    }
    return out + (ends >> 56);
}

/// Four sequences of three bytes; false if that is not what stands at `p`. Reads one byte more.
bool decode_four_threes(const char* p, char16_t* out) {
    using Words __attribute__((vector_size(16))) = std::uint32_t;
    using FourUnits __attribute__((vector_size(8))) = std::uint16_t;
    std::uint32_t word[4];
    for (std::size_t i = 0; i < 4; ++i) {
        std::memcpy(&word[i], p + 3 * i, sizeof word[i]);
    }
    const Words words = {word[0], word[1], word[2], word[3]};
    const auto isOther = reinterpret_cast<Bytes>((words & 0xC0C0F0) != 0x8080E0);
    if (hit_bits(isOther) != 0) {
        return false;
    }
    const Words codes = (words & 0xF) << 12 | (words & 0x3F00) >> 2 | (words >> 16 & 0x3F);
    const auto units = __builtin_convertvector(codes, FourUnits);
    std::memcpy(out, &units, sizeof units);
    return true;
}

/// The character at `p` of a well-formed text.
Step trust_step(const char* p) {
    const auto lead = static_cast<unsigned char>(*p);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xE0) {
        return {(lead & 0x1Fu) << 6 | continuation_bits(p[1]), 2, true};
    }
    const char32_t code = continuation_bits(p[1]) << 6 | continuation_bits(p[2]);
    if (lead < 0xF0) {
        return {(lead & 0xFu) << 12 | code, 3, true};
    }
    return {(lead & 0x7u) << 18 | code << 6 | continuation_bits(p[3]), 4, true};
}

char16_t* decode_trusted_steps(const char*& p, const char* end, char16_t* out) {
    while (p < end) {
        const Step step = trust_step(p);
        out = put_utf16(step.code, out);
        p += step.bytes;
    }
    return out;
}

/// A well-formed segment into room that ends at `limit`.
char16_t* decode_well_formed(const char* p, const char* last, char16_t* out,
                             const char16_t* limit) {
    constexpr std::ptrdiff_t kReach = kBlock + 3;
    while (last - p >= kReach && limit - out >= static_cast<std::ptrdiff_t>(kBlock)) {
        const Bytes block = load_lanes(p);
        if (hit_bits(block > 0x7F) == 0) {
            widen_step(p, out);
            p += kBlock;
            out += kBlock;
        } else if (hit_bits(above(block, 0xDF)) == 0) {
            out = put_starting(p, short_units_at(p), short_units_at(p + 1), out);
            p += kBlock;
            p += is_utf8_continuation(*p);
        } else if (decode_four_threes(p, out)) {
            p += 12;
            out += 4;
        } else if (hit_bits(above(block, 0xEF)) == 0) {
            out = put_starting(p, units_at(p), units_at(p + 1), out);
            p += kBlock;
            p += is_utf8_continuation(*p);
            p += is_utf8_continuation(*p);
        } else {
            out = decode_trusted_steps(p, p + kBlock, out);
        }
    }
    return decode_trusted_steps(p, last, out);
}

}  // namespace

Utf8Measure utf8_measure(const char* source, std::size_t length) noexcept {
    const char* const last = source + length;
    Utf8Measure measure{ascii_run(source, length), true};
    const char* p = source + measure.units;
    while (p != last) {
        const char* end = segment_end(p, last);
        if (count_well_formed(p, end, measure.units)) {
            p = end;
        }
        while (p < end) {
            const Step step = read_step(p, last);
            measure.isWellFormed &= step.isWellFormed;
            measure.units += utf16_units(step.code);
            p += step.bytes;
        }
    }
    return measure;
}

void utf8_decode(const char* source, std::size_t length, Utf8Measure measure,
                 char16_t* destination) noexcept {
    const char* const last = source + length;
    const char16_t* const limit = destination + measure.units;
    if (measure.isWellFormed) {
        measure.units == length ? widen(source, length, destination)
                                : void(decode_well_formed(source, last, destination, limit));
        return;
    }
    char16_t* out = destination;
    for (const char* p = source; p != last;) {
        const char* end = segment_end(p, last);
        std::size_t units = 0;
        if (count_well_formed(p, end, units)) {
            out = decode_well_formed(p, end, out, limit);
            p = end;
        }
        while (p < end) {
            const Step step = read_step(p, last);
            out = put_utf16(step.code, out);
            p += step.bytes;
        }
    }
}

}  // namespace platform
