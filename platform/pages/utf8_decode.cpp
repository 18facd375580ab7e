#include <algorithm>
#include <bit>

#include "lanes/ascii_runs.h"
#include "pages/utf16_walk.h"
#include "pages/utf8.h"
#include "pages/utf8_walk.h"

namespace platform {
namespace {

struct Step {
    char32_t code;
    std::size_t bytes;
    bool isWellFormed;
};

char32_t continuation_bits(char byte) {
    return static_cast<unsigned char>(byte) & 0x3F;
}

/// The character of three or four bytes at `p`, or the longest part of one that stands there.
Step read_long_step(const char* p, const char* last) {
    const auto lead = static_cast<unsigned char>(*p);
    if (last - p < 2 || !is_utf8_start(lead, static_cast<unsigned char>(p[1]))) {
        return {kReplacement, 1, false};
    }
    const std::size_t length = lead < 0xF0 ? 3 : 4;
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

/// Reads any character like that.
inline Step read_step(const char* p, const char* last) {
    const auto lead = static_cast<unsigned char>(*p);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    if (lead < 0xE0) {
        const bool isTwo = lead >= 0xC2 && last - p >= 2 && is_utf8_continuation(p[1]);
        return isTwo ? Step{(lead & 0x1Fu) << 6 | continuation_bits(p[1]), 2, true}
                     : Step{kReplacement, 1, false};
    }
    if (lead < 0xF0 && last - p >= 3 && is_utf8_continuation(p[1]) && is_utf8_continuation(p[2])) {
        const char32_t code =
            (lead & 0xFu) << 12 | continuation_bits(p[1]) << 6 | continuation_bits(p[2]);
        if (code >= 0x800 && !is_surrogate(code)) {
            return {code, 3, true};
        }
    }
    return read_long_step(p, last);
}

using Bytes = Lanes<char>::Vector;
using SignedBytes __attribute__((vector_size(16))) = signed char;

constexpr std::size_t kBlock = sizeof(Bytes);

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

/// A mask of the lanes from `index` on.
Bytes bytes_from(std::ptrdiff_t index) {
    constexpr Bytes kIndexes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    return reinterpret_cast<Bytes>(kIndexes >= static_cast<unsigned char>(index));
}

struct Halves {
    std::uint64_t low;
    std::uint64_t high;
};

/// Makes the window of the first block of a text, in front of which stand NULs.
Window first_window(const char* p) {
    const Bytes byte = load_lanes(p);
    const auto halves = std::bit_cast<Halves>(byte);
    const std::uint64_t low = bytes_low_first(halves.low);
    const std::uint64_t high = bytes_low_first(halves.high);
    const auto moved = [=](int bits) {
        return std::bit_cast<Bytes>(Halves{bytes_low_first(low << bits),
                                           bytes_low_first(high << bits | low >> (64 - bits))});
    };
    return {byte, moved(8), moved(16), moved(24)};
}

/// Checks the blocks of a text that starts on a character boundary.
struct Checker {
    /// A byte must be a continuation exactly where a lead of sufficient length stands one, two or
    /// three bytes in front. Adds the units less the bytes of the lanes that are `counted`.
    [[gnu::always_inline]] void Add(const Window& at, SignedBytes counted) {
        const SignedBytes isContinuation = reinterpret_cast<SignedBytes>(at.byte) < as_signed(0xC0);
        const SignedBytes isExpected =
            above(at.before, 0xBF) | above(at.before2, 0xDF) | above(at.before3, 0xEF);
        bad |= (isContinuation ^ isExpected) | equal(at.before & 0xFE, 0xC0);
        surplus += isContinuation & counted;
        if (hit_bits(above(at.before, 0xDF)) != 0) {
            AddLongLeads(reinterpret_cast<SignedBytes>(at.byte), at.before, counted);
        }
    }

    /// Overlong forms, surrogates and values above U+10FFFF, where continuations follow the leads.
    [[gnu::always_inline]] void AddLongLeads(SignedBytes byte, Bytes before, SignedBytes counted) {
        bad |= (equal(before, 0xE0) & (byte < as_signed(0xA0))) |
               (equal(before, 0xED) & (byte > as_signed(0x9F)));
        const SignedBytes isFour = above(before, 0xEF);
        if (hit_bits(isFour) != 0) {
            bad |= (equal(before, 0xF0) & (byte < as_signed(0x90))) |
                   (equal(before, 0xF4) & (byte > as_signed(0x8F))) | above(before, 0xF4);
            surplus -= isFour & counted;
        }
    }

    std::ptrdiff_t Surplus() const {
        constexpr std::uint64_t kEven = 0x00FF00FF00FF00FF;
        const auto [low, high] = std::bit_cast<Halves>(reinterpret_cast<Bytes>(surplus) + 0x80);
        const std::uint64_t sums =
            (low & kEven) + (low >> 8 & kEven) + (high & kEven) + (high >> 8 & kEven);
        const auto biased = static_cast<std::ptrdiff_t>(sums * 0x0001000100010001 >> 48);
        return biased - static_cast<std::ptrdiff_t>(kBlock) * 0x80;
    }

    SignedBytes bad{};
    SignedBytes surplus{};  ///< units less bytes
};

bool ends_within_sequence(const char* last) {
    return static_cast<unsigned char>(last[-1]) >= 0xC0 ||
           static_cast<unsigned char>(last[-2]) >= 0xE0 ||
           static_cast<unsigned char>(last[-3]) >= 0xF0;
}

/// Whether a segment is well-formed and so long that blocks can tell; only then are its units
/// added. The last block overlaps the one in front of it.
bool count_well_formed(const char* first, const char* last, std::size_t& units) {
    constexpr std::ptrdiff_t kStep = kBlock;
    constexpr std::ptrdiff_t kShortest = kStep + 3;
    if (last - first < kShortest) {
        return false;
    }
    const SignedBytes all = ~SignedBytes{};
    Checker checker;
    checker.Add(first_window(first), all);
    const char* p = first + kStep;
    for (; last - p >= kStep; p += kStep) {
        checker.Add(window_at(p), all);
    }
    if (p != last) {
        checker.Add(window_at(last - kStep),
                    reinterpret_cast<SignedBytes>(bytes_from(p + kStep - last)));
    }
    if (hit_bits(checker.bad) != 0 || ends_within_sequence(last)) {
        return false;
    }
    units += static_cast<std::size_t>(last - first + checker.Surplus());
    return true;
}

/// Where a segment from `p` ends: on a boundary if the text is well-formed there.
const char* segment_end(const char* p, const char* last) {
    if (last - p <= static_cast<std::ptrdiff_t>(kSegment)) {
        return last;
    }
    const char* end = p + kSegment;
    for (std::size_t i = 0; i < 3 && is_utf8_continuation(*end); ++i) {
        --end;
    }
    return end;
}

using Units = Lanes<char16_t>::Vector;

/// Two halves of what is wider than a block.
struct Wide {
    Bytes low;
    Bytes high;
};

/// The bits of `a` where `mask` has ones, else those of `b`.
template <class Vector>
Vector select(Vector mask, Vector a, Vector b) {
    return (a & mask) | (b & ~mask);
}

/// Shifts within each byte; what comes from the neighbour is masked out.
Bytes shift_left(Bytes bytes, int count, unsigned char mask) {
    return reinterpret_cast<Bytes>(reinterpret_cast<Units>(bytes) << count) & mask;
}
Bytes shift_right(Bytes bytes, int count, unsigned char mask) {
    return reinterpret_cast<Bytes>(reinterpret_cast<Units>(bytes) >> count) & mask;
}

/// The bytes of two blocks by turns.
Wide interleave(Bytes a, Bytes b) {
    return {__builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23),
            __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                    31)};
}

/// The units that would start at each byte, given the byte behind it: of sequences of one or two
/// bytes. Where none can start stands anything.
Wide short_units(Bytes byte, Bytes next) {
    const auto isLead = reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(byte) < 0);
    const Bytes low = shift_left(byte, 6, 0xC0) | (next & 0x3F);
    return interleave(select(isLead, low, byte), shift_right(byte, 2, 0x07) & isLead);
}

/// Gives those of sequences of up to three bytes.
Wide units(Bytes byte, Bytes next, Bytes third) {
    const auto isLead = reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(byte) < 0);
    const auto isThree = reinterpret_cast<Bytes>(above(byte, 0xDF));
    const Bytes upper = select(isThree, next, byte);
    const Bytes lower = select(isThree, third, next);
    const Bytes low = shift_left(upper, 6, 0xC0) | (lower & 0x3F);
    const Bytes high = shift_right(upper, 2, 0x0F) | (shift_left(byte, 4, 0xF0) & isThree);
    return interleave(select(isLead, low, byte), high & isLead);
}

/// Eight units as pairs; the first of a pair gives way to the second where nothing starts.
void make_pairs(Bytes made, Bytes isInside, std::uint32_t* pairs) {
    using Words __attribute__((vector_size(16))) = std::uint32_t;
    const auto seconds = reinterpret_cast<Bytes>(reinterpret_cast<Words>(made) >> 16);
    const Bytes chosen = select(isInside, seconds, made);
    std::memcpy(pairs, &chosen, sizeof chosen);
}

/// Writes the units of those bytes that start a character, a pair of bytes at a time. Needs room
/// for sixteen.
char16_t* put_starting(Bytes byte, const Wide& made, char16_t* out) {
    using HalfBytes __attribute__((vector_size(8))) = unsigned char;
    const auto isInside =
        reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(byte) < as_signed(0xC0));
    const Wide insides = interleave(isInside, isInside);
    std::uint32_t pairs[8];
    make_pairs(made.low, insides.low, pairs);
    make_pairs(made.high, insides.high, pairs + 4);
    const auto ones = reinterpret_cast<Units>(isInside + 1);
    const auto counts =
        std::bit_cast<std::uint64_t>(__builtin_convertvector(ones + (ones >> 8), HalfBytes));
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

/// How far a run of single steps came.
struct Stop {
    const char* p;
    char16_t* out;
};

/// The characters of a well-formed text that begin in front of `end`.
Stop decode_trusted_steps(const char* p, const char* end, char16_t* out) {
    while (p < end) {
        const auto lead = static_cast<unsigned char>(*p);
        if (lead < 0x80) {
            *out++ = lead;
            p += 1;
        } else if (lead < 0xE0) {
            *out++ = static_cast<char16_t>((lead & 0x1Fu) << 6 | continuation_bits(p[1]));
            p += 2;
        } else if (lead < 0xF0) {
            *out++ = static_cast<char16_t>((lead & 0xFu) << 12 | continuation_bits(p[1]) << 6 |
                                           continuation_bits(p[2]));
            p += 3;
        } else {
            out = put_utf16((lead & 0x7u) << 18 | continuation_bits(p[1]) << 12 |
                                continuation_bits(p[2]) << 6 | continuation_bits(p[3]),
                            out);
            p += 4;
        }
    }
    return {p, out};
}

/// Counts a segment that blocks cannot tell, and on to the end of its last character.
const char* count_steps(const char* p, const char* end, const char* last, Utf8Measure& measure) {
    std::size_t units = 0;
    bool isWellFormed = true;
    while (p < end) {
        if (is_ascii(*p) && end - p >= 8) {
            const std::size_t ascii = ascii_of_eight(p);
            units += ascii;
            p += ascii;
            continue;
        }
        const Step step = read_step(p, last);
        isWellFormed &= step.isWellFormed;
        units += utf16_units(step.code);
        p += step.bytes;
    }
    measure.units += units;
    measure.isWellFormed &= isWellFormed;
    return p;
}

/// Decodes the same into room that ends at `limit`.
Stop decode_steps(const char* p, const char* end, const char* last, char16_t* out,
                  const char16_t* limit) {
    while (p < end) {
        if (is_ascii(*p) && end - p >= 8 && limit - out >= 8) {
            const std::size_t ascii = ascii_of_eight(p);
            transfer_step<8>(p, out);
            out += ascii;
            p += ascii;
            continue;
        }
        const Step step = read_step(p, last);
        out = put_utf16(step.code, out);
        p += step.bytes;
    }
    return {p, out};
}

/// Bytes that are done one by one where a lead of four shows up: there may be more of them.
constexpr std::ptrdiff_t kFourStretch = 4 * kBlock;

/// A well-formed segment into room that ends at `limit`. The lanes make units low byte first.
char16_t* decode_well_formed(const char* p, const char* last, char16_t* out,
                             const char16_t* limit) {
    constexpr std::ptrdiff_t kReach = kBlock + 3;
    while (last - p >= kReach && limit - out >= static_cast<std::ptrdiff_t>(kBlock)) {
        const Bytes block = load_lanes(p);
        if (hit_bits(block > 0x7F) == 0) {
            transfer_step(p, out);
            p += kBlock;
            out += kBlock;
        } else if (kLowFirst && hit_bits(above(block, 0xDF)) == 0) {
            out = put_starting(block, short_units(block, load_lanes(p + 1)), out);
            p += kBlock;
            p += is_utf8_continuation(*p);
        } else if (kLowFirst && decode_four_threes(p, out)) {
            p += 12;
            out += 4;
        } else if (kLowFirst && hit_bits(above(block, 0xEF)) == 0) {
            out = put_starting(block, units(block, load_lanes(p + 1), load_lanes(p + 2)), out);
            p += kBlock;
            p += is_utf8_continuation(*p);
            p += is_utf8_continuation(*p);
        } else {
            const Stop stop = decode_trusted_steps(p, p + std::min(kFourStretch, last - p), out);
            p = stop.p;
            out = stop.out;
        }
    }
    return decode_trusted_steps(p, last, out).out;
}

}  // namespace

Utf8Measure utf8_measure(const char* source, std::size_t length, std::size_t ascii) noexcept {
    const char* const last = source + length;
    Utf8Measure measure{ascii, true};
    for (const char* p = source + ascii; p != last;) {
        const char* end = segment_end(p, last);
        p = count_well_formed(p, end, measure.units) ? end : count_steps(p, end, last, measure);
    }
    return measure;
}

void utf8_decode(const char* source, std::size_t length, Utf8Measure measure,
                 char16_t* destination) noexcept {
    const char* const last = source + length;
    const char16_t* const limit = destination + measure.units;
    if (measure.isWellFormed) {
        decode_well_formed(source, last, destination, limit);
        return;
    }
    char16_t* out = destination;
    for (const char* p = source; p != last;) {
        const char* end = segment_end(p, last);
        std::size_t units = 0;
        if (count_well_formed(p, end, units)) {
            out = decode_well_formed(p, end, out, limit);
            p = end;
        } else {
            const Stop stop = decode_steps(p, end, last, out, limit);
            p = stop.p;
            out = stop.out;
        }
    }
}

std::size_t utf8_decode_once(const char* source, std::size_t length,
                             char16_t* destination) noexcept {
    const char* const last = source + length;
    const char16_t* const limit = destination + length;
    return static_cast<std::size_t>(decode_steps(source, last, last, destination, limit).out -
                                    destination);
}

}  // namespace platform
