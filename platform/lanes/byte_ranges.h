#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "lanes/vectors.h"

namespace platform {

/// Up to how many single bytes a set of them may have.
inline constexpr std::size_t kFewBytes = 16;

/// A set of bytes as single bytes and ranges of bytes, which whole registers can be compared with.
class ByteRanges {
    using Vector = Lanes<char>::Vector;
    static constexpr std::ptrdiff_t kNarrow = Lanes<char>::kCount;

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

    void Take(const char* set, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            singles_[i] = splat_lanes(set[i]);
        }
        singleCount_ = static_cast<int>(count);
    }

    std::uint64_t Members(Vector bytes) const {
        Vector hits{};
        for (int i = 0; i < singleCount_; ++i) {
            hits |= reinterpret_cast<Vector>(bytes == singles_[i]);
        }
        for (int i = 0; i < rangeCount_; ++i) {
            hits |= reinterpret_cast<Vector>(bytes - lows_[i] <= spans_[i]);
        }
        return hit_bits(hits);
    }

    // Bits of the members among 64 bytes.
    std::uint64_t WideMembers(const char* p) const {
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
    static constexpr int kMaxSingles = kFewBytes;
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

}  // namespace platform
