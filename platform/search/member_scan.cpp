// Bytes are looked up in the table one by one as long as that may be all there is to do: a member
// is mostly near. Then the table is taken apart into single bytes and ranges, with which 64 bytes
// at a time are compared; a table of too many pieces is looked up to the end. The row find_one_of
// chose the lengths.

#include "search/member_scan.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "lanes/byte_ranges.h"
#include "lanes/vectors.h"

namespace platform {
namespace {

using Vector = Lanes<char>::Vector;

// So many bytes are looked up one by one before it pays to take the table apart.
constexpr std::ptrdiff_t kShort = 96;
constexpr std::ptrdiff_t kTried = 32;

constexpr std::ptrdiff_t kNarrow = Lanes<char>::kCount;
constexpr std::ptrdiff_t kWide = kStepUnits<char>;

const char* look_up(const char* p, const char* last, const bool* members, bool wanted) {
    const auto fits = [=](char byte) {
        return members[static_cast<unsigned char>(byte)] == wanted;
    };
    for (; last - p >= 4; p += 4) {
        if (fits(p[0])) {
            return p;
        }
        if (fits(p[1])) {
            return p + 1;
        }
        if (fits(p[2])) {
            return p + 2;
        }
        if (fits(p[3])) {
            return p + 3;
        }
    }
    while (p != last && !fits(*p)) {
        ++p;
    }
    return p;
}

// The text has 16 bytes or more.
const char* find_in_blocks(const ByteRanges& ranges, const char* p, const char* last, bool wanted) {
    const std::uint64_t others = wanted ? 0 : ~std::uint64_t{0};
    for (; last - p >= kWide; p += kWide) {
        if (const std::uint64_t hits = ranges.StepMembers(p) ^ others) {
            return p + first_hit<char>(hits);
        }
    }
    while (p != last) {
        // The last block reaches back over bytes that are known to be no hits.
        const char* const block = std::min(p, last - kNarrow);
        const std::uint64_t hits = (ranges.Members(load_lanes(block)) ^ others) & 0xFFFF;
        if (hits != 0) {
            return block + first_hit<char>(hits);
        }
        p = block + kNarrow;
    }
    return last;
}

// The two words at the ends cover the text.
template <class Word>
const char* find_in_ends(const char* first, const char* last, const char* set, std::size_t count,
                         bool wanted) {
    constexpr std::ptrdiff_t kSize = sizeof(Word);
    const auto bytes = reinterpret_cast<Vector>(load_ends<Word>(first, last - kSize));
    Vector found{};
    for (std::size_t i = 0; i < count; ++i) {
        found |= reinterpret_cast<Vector>(bytes == splat_lanes(set[i]));
    }
    constexpr std::uint64_t kAll = (1U << 2 * kSize) - 1;
    const std::uint64_t hits = (hit_bits(found) ^ (wanted ? 0 : kAll)) & kAll;
    if (hits == 0) {
        return last;
    }
    const std::ptrdiff_t index = first_hit<char>(hits);
    return index < kSize ? first + index : last - 2 * kSize + index;
}

}  // namespace

const char* find_any_of(const char* first, const char* last, const char* set, std::size_t count,
                        bool wanted) noexcept {
    if (last - first >= kNarrow) {
        ByteRanges ranges;
        ranges.Take(set, count);
        return find_in_blocks(ranges, first, last, wanted);
    }
    if (last - first >= 8) {
        return find_in_ends<std::uint64_t>(first, last, set, count, wanted);
    }
    if (last - first >= 4) {
        return find_in_ends<std::uint32_t>(first, last, set, count, wanted);
    }
    while (first != last && (std::find(set, set + count, *first) != set + count) != wanted) {
        ++first;
    }
    return first;
}

const char* find_member(const char* first, const char* last, const bool* members,
                        bool wanted) noexcept {
    if (last - first < kShort) {
        return look_up(first, last, members, wanted);
    }
    const char* const tried = first + kTried;
    const char* const hit = look_up(first, tried, members, wanted);
    if (hit != tried) {
        return hit;
    }
    ByteRanges ranges;
    return ranges.Take(members) ? find_in_blocks(ranges, tried, last, wanted)
                                : look_up(tried, last, members, wanted);
}

}  // namespace platform
