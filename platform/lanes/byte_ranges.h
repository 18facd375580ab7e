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
    using Vector = WideLanes<char>::Vector;

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
            singles_[i] = splat_lanes<kWideBytes>(set[i]);
        }
        singleCount_ = static_cast<int>(count);
    }

    // Bits of the members among 16 bytes.
    std::uint64_t Members(Lanes<char>::Vector bytes) const {
        decltype(bytes) hits[] = {{}};
        AddMembers(&bytes, hits);
        return hit_bits(hits[0]);
    }

    // Among those of a step.
    std::uint64_t StepMembers(const char* p) const {
        constexpr std::size_t kVectors = kStepUnits<char> / kWideBytes;
        Vector bytes[kVectors];
        for (std::size_t i = 0; i < kVectors; ++i) {
            bytes[i] = load_lanes<kWideBytes>(p + i * kWideBytes);
        }
        Vector hits[kVectors] = {};
        AddMembers(bytes, hits);
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < kVectors; ++i) {
            bits |= hit_bits(hits[i]) << i * kWideBytes;
        }
        return bits;
    }

private:
    static constexpr int kMaxSingles = kFewBytes;
    static constexpr int kMaxRanges = 6;

    template <class Bytes, std::size_t kCount>
    [[gnu::always_inline]] void AddMembers(const Bytes* bytes, Bytes (&hits)[kCount]) const {
        for (int i = 0; i < singleCount_; ++i) {
            const auto single = front_lanes<sizeof(Bytes)>(singles_[i]);
            for (std::size_t j = 0; j < kCount; ++j) {
                hits[j] |= reinterpret_cast<Bytes>(bytes[j] == single);
            }
        }
        for (int i = 0; i < rangeCount_; ++i) {
            const auto low = front_lanes<sizeof(Bytes)>(lows_[i]);
            const auto span = front_lanes<sizeof(Bytes)>(spans_[i]);
            for (std::size_t j = 0; j < kCount; ++j) {
                hits[j] |= reinterpret_cast<Bytes>(bytes[j] - low <= span);
            }
        }
    }

    bool Add(unsigned low, unsigned high) {
        if (low == high && singleCount_ < kMaxSingles) {
            singles_[singleCount_++] = splat_lanes<kWideBytes>(static_cast<char>(low));
            return true;
        }
        if (rangeCount_ == kMaxRanges) {
            return false;
        }
        lows_[rangeCount_] = splat_lanes<kWideBytes>(static_cast<char>(low));
        spans_[rangeCount_++] = splat_lanes<kWideBytes>(static_cast<char>(high - low));
        return true;
    }

    int singleCount_ = 0;
    int rangeCount_ = 0;
    Vector singles_[kMaxSingles];
    Vector lows_[kMaxRanges];
    Vector spans_[kMaxRanges];
};

}  // namespace platform
