#include <algorithm>
#include <cstdint>
#include <cstring>

#include "scan.h"
#include "vectors.h"

namespace platform {
namespace {

using Vector = Lanes<char>::Vector;

// So many bytes are looked up one by one before it pays to take the table apart.
constexpr std::ptrdiff_t kShort = 96;
constexpr std::ptrdiff_t kTried = 32;

constexpr std::ptrdiff_t kNarrow = Lanes<char>::kCount;
constexpr std::ptrdiff_t kWide = 4 * kNarrow;

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

// The members as single bytes and ranges of bytes, which whole registers can be compared with.
class Ranges {
public:
    // Whether the members are few enough for that to be faster than looking bytes up.
    bool Take(const bool* members) {
        bool isInside = false;
        unsigned begin = 0;
        for (unsigned base = 0; base < 256; base += 8) {
            std::uint64_t word;
            std::memcpy(&word, members + base, sizeof word);
            if (word == (isInside ? 0x0101010101010101U : 0U)) {
                continue;
            }
            for (unsigned byte = base; byte < base + 8; ++byte) {
                if (members[byte] == isInside) {
                    continue;
                }
                if (isInside && !Add(begin, byte - 1)) {
                    return false;
                }
                isInside = !isInside;
                begin = byte;
            }
        }
        return !isInside || Add(begin, 255);
    }

    // Bits of the members among 64 bytes.
    std::uint64_t Members(const char* p) const {
        const Vector bytes[4] = {load_lanes(p), load_lanes(p + kNarrow),
                                 load_lanes(p + 2 * kNarrow), load_lanes(p + 3 * kNarrow)};
        Vector hits[4] = {};
        for (int i = 0; i < singleCount_; ++i) {
            for (int j = 0; j < 4; ++j) {
                hits[j] |= reinterpret_cast<Vector>(bytes[j] == singles_[i]);
            }
        }
        for (int i = 0; i < rangeCount_; ++i) {
            for (int j = 0; j < 4; ++j) {
                hits[j] |= reinterpret_cast<Vector>(bytes[j] - lows_[i] <= spans_[i]);
            }
        }
        return (hit_bits(hits[0]) | hit_bits(hits[1]) << 16) |
               (hit_bits(hits[2]) << 32 | hit_bits(hits[3]) << 48);
    }

private:
    static constexpr int kMaxSingles = 10;
    static constexpr int kMaxRanges = 6;

    bool Add(unsigned low, unsigned high) {
        if (low == high && singleCount_ < kMaxSingles) {
            singles_[singleCount_++] = splat_lanes(static_cast<char>(low));
            return true;
        }
        if (rangeCount_ == kMaxRanges) {
            return false;
        }
        lows_[rangeCount_] = splat_lanes(static_cast<char>(low));
        spans_[rangeCount_++] = splat_lanes(static_cast<char>(high - low));
        return true;
    }

    int singleCount_ = 0;
    int rangeCount_ = 0;
    Vector singles_[kMaxSingles];
    Vector lows_[kMaxRanges];
    Vector spans_[kMaxRanges];
};

const char* find_in_blocks(const Ranges& ranges, const char* p, const char* last, bool wanted) {
    const std::uint64_t others = wanted ? 0 : ~std::uint64_t{0};
    while (p != last) {
        // The last block reaches back over bytes that are known to be no hits.
        const char* const block = std::min(p, last - kWide);
        const std::uint64_t hits = ranges.Members(block) ^ others;
        if (hits != 0) {
            return block + first_hit<char>(hits);
        }
        p = block + kWide;
    }
    return last;
}

}  // namespace

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
    Ranges ranges;
    return ranges.Take(members) ? find_in_blocks(ranges, tried, last, wanted)
                                : look_up(tried, last, members, wanted);
}

}  // namespace platform
