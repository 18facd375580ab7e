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

/// Checks blocks of a text that starts on a character boundary.
struct Checker {
    /// Looks at sixteen bytes and the three in front of them. A byte must be a continuation
    /// exactly where a lead of sufficient length stands one, two or three bytes in front.
    void Add(const char* p) {
        const Bytes byte = load_lanes(p);
        const Bytes before = load_lanes(p - 1);
        const auto isContinuation = reinterpret_cast<SignedBytes>(byte) < -64;
        const auto isExpected =
            (before > 0xBF) | (load_lanes(p - 2) > 0xDF) | (load_lanes(p - 3) > 0xEF);
        bad |= reinterpret_cast<Bytes>(isContinuation ^ isExpected);
        bad |= reinterpret_cast<Bytes>(((byte & 0xFE) == 0xC0) | (byte > 0xF4));
        // Overlong forms, surrogates, values above U+10FFFF.
        bad |= reinterpret_cast<Bytes>(
            ((before == 0xE0) & (byte < 0xA0)) | ((before == 0xED) & (byte > 0x9F)) |
            ((before == 0xF0) & (byte < 0x90)) | ((before == 0xF4) & (byte > 0x8F)));
        surplus += reinterpret_cast<SignedBytes>(isContinuation) -
                   reinterpret_cast<SignedBytes>(byte > 0xEF);
    }

    std::ptrdiff_t Surplus() const {
        std::ptrdiff_t sum = 0;
        for (std::size_t i = 0; i < kBlock; ++i) {
            sum += surplus[i];
        }
        return sum;
    }

    Bytes bad{};
    SignedBytes surplus{};  ///< units less bytes in each lane
};

bool ends_within_sequence(const char* first, const char* last) {
    static constexpr unsigned char kLeads[] = {0xC0, 0xE0, 0xF0};
    for (std::size_t i = 0; i < kBack && last - first > static_cast<std::ptrdiff_t>(i); ++i) {
        if (static_cast<unsigned char>(last[-1 - static_cast<std::ptrdiff_t>(i)]) >= kLeads[i]) {
            return true;
        }
    }
    return false;
}

/// Whether a segment of at least a block is well-formed; only then are its units added.
bool count_well_formed(const char* first, const char* last, std::size_t& units) {
    const auto length = static_cast<std::size_t>(last - first);
    Checker checker;
    char edge[kBack + kBlock] = {};
    std::memcpy(edge + kBack, first, kBlock);
    checker.Add(edge + kBack);
    std::size_t i = kBlock;
    for (; i + kBlock <= length; i += kBlock) {
        checker.Add(first + i);
    }
    if (i < length) {
        std::memset(edge, 0, sizeof edge);
        std::memcpy(edge, first + i - kBack, kBack + length - i);
        checker.Add(edge + kBack);
    }
    if (hit_bits(checker.bad) != 0 || ends_within_sequence(first, last)) {
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

bool is_well_formed(const char* p, const char* end, std::size_t& units) {
    return end - p >= static_cast<std::ptrdiff_t>(kBlock) && count_well_formed(p, end, units);
}

using Units = Lanes<char16_t>::Vector;

/// The units that would come of the sequences of one to three bytes at p, p + 2, p + 4...: a lane
/// holds the first and the second byte of one.
Units units_at_even(const char* p) {
    Units pair;
    Units next;
    std::memcpy(&pair, p, sizeof pair);
    std::memcpy(&next, p + 2, sizeof next);
    const Units lead = pair & 0xFF;
    const Units second = pair >> 8 & 0x3F;
    const Units two = (lead & 0x1F) << 6 | second;
    const Units three = lead << 12 | second << 6 | (next & 0x3F);
    const Units longer = lead > 0xDF ? three : two;
    return lead > 0x7F ? longer : lead;
}

/// Sixteen bytes without leads of four: a unit is written for every byte and stays if the byte is
/// the first of its character. Needs room for sixteen units and reads two bytes more.
char16_t* decode_block(const char* p, char16_t* out) {
    std::uint16_t even[kBlock / 2];
    std::uint16_t odd[kBlock / 2];
    unsigned char advance[kBlock];
    const Units evenUnits = units_at_even(p);
    const Units oddUnits = units_at_even(p + 1);
    const Bytes isFirst =
        reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(load_lanes(p)) >= -64) & 1;
    std::memcpy(even, &evenUnits, sizeof even);
    std::memcpy(odd, &oddUnits, sizeof odd);
    std::memcpy(advance, &isFirst, sizeof advance);
    for (std::size_t i = 0; i < kBlock / 2; ++i) {
        *out = even[i];
        out += advance[2 * i];
        *out = odd[i];
        out += advance[2 * i + 1];
    }
    return out;
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

char16_t* decode_steps(const char*& p, const char* end, const char* last, char16_t* out) {
    while (p < end) {
        const Step step = read_step(p, last);
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
        } else if (decode_four_threes(p, out)) {
            p += 12;
            out += 4;
        } else if (hit_bits(block > 0xEF) == 0) {
            out = decode_block(p, out);
            p += kBlock;
            p += is_utf8_continuation(*p);
            p += is_utf8_continuation(*p);
        } else {
            out = decode_steps(p, p + kBlock, last, out);
        }
    }
    return decode_steps(p, last, last, out);
}

}  // namespace

Utf8Measure utf8_measure(const char* source, std::size_t length) noexcept {
    const char* const last = source + length;
    Utf8Measure measure{ascii_run(source, length), true};
    const char* p = source + measure.units;
    while (p != last) {
        const char* end = segment_end(p, last);
        if (is_well_formed(p, end, measure.units)) {
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
        if (is_well_formed(p, end, units)) {
            out = decode_well_formed(p, end, out, limit);
            p = end;
        } else {
            out = decode_steps(p, end, last, out);
        }
    }
}

}  // namespace platform
