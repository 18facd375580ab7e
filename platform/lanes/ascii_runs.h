#pragma once

#include "lanes/vectors.h"

/// The ASCII in front of a text and the plain way between bytes and units, sixteen at a time.
namespace platform {

inline constexpr std::size_t kAsciiStep = 16;

/// A run of Latin-1, of which ASCII is a part, from bytes to units, or back from units below 256.
template <std::size_t kCount = kAsciiStep, class From, class To>
inline void transfer_step(const From* source, To* destination) noexcept {
    using Source = typename Lanes<From>::Scalar;
    using Target = typename Lanes<To>::Scalar;
    using In __attribute__((vector_size(kCount * sizeof(From)))) = Source;
    using Out __attribute__((vector_size(kCount * sizeof(To)))) = Target;
    In in;
    std::memcpy(&in, source, sizeof in);
    const Out out = __builtin_convertvector(in, Out);
    std::memcpy(destination, &out, sizeof out);
}

/// What one round of a long transfer takes.
inline constexpr std::size_t kAsciiRound = 4 * kAsciiStep;

/// The same at any length. The last step overlaps the one in front of it, and so does the first of
/// a long text, which is stored on boundaries of sixteen bytes behind that.
template <class From, class To>
inline void transfer(const From* source, std::size_t count, To* destination) noexcept {
    constexpr std::size_t kHalf = kAsciiStep / 2;
    if (count < kHalf) {
        for (std::size_t i = 0; i < count; ++i) {
            destination[i] = static_cast<To>(static_cast<typename Lanes<From>::Scalar>(source[i]));
        }
        return;
    }
    if (count < kAsciiStep) {
        transfer_step<kHalf>(source, destination);
        transfer_step<kHalf>(source + count - kHalf, destination + count - kHalf);
        return;
    }
    std::size_t i = 0;
    if (count >= kAsciiRound) {
        transfer_step(source, destination);
        i = (-reinterpret_cast<std::uintptr_t>(destination) & 15) / sizeof *destination;
    }
    for (; i + kAsciiRound <= count; i += kAsciiRound) {
        for (std::size_t k = 0; k < kAsciiRound; k += kAsciiStep) {
            transfer_step(source + i + k, destination + i + k);
        }
    }
    for (; i + kAsciiStep < count; i += kAsciiStep) {
        transfer_step(source + i, destination + i);
    }
    transfer_step(source + count - kAsciiStep, destination + count - kAsciiStep);
}

inline bool is_ascii(char byte) noexcept {
    return static_cast<unsigned char>(byte) < 0x80;
}
inline bool is_ascii(char16_t unit) noexcept {
    return unit < 0x80;
}

/// Whether the next sixteen are all ASCII.
inline bool is_ascii_step(const char* p) noexcept {
    return hit_bits(load_lanes(p) > 0x7F) == 0;
}
inline bool is_ascii_step(const char16_t* p) noexcept {
    return hit_bits((load_lanes(p) | load_lanes(p + 8)) > 0x7F) == 0;
}

/// Whether all of a step is.
template <class Unit>
inline bool is_ascii_long_step(const Unit* p) noexcept {
    return !has_hit(any_in_step(p, load_lanes<kWideBytes, Unit>) > 0x7F);
}

/// How many of the next eight bytes stand in front of the first that is not ASCII.
inline std::size_t ascii_of_eight(const char* p) noexcept {
    std::uint64_t bytes;
    std::memcpy(&bytes, p, sizeof bytes);
    const std::uint64_t others = bytes_low_first(bytes) & 0x8080808080808080;
    return others == 0 ? sizeof bytes : static_cast<std::size_t>(std::countr_zero(others)) / 8;
}

/// How many bytes or units in front are ASCII.
template <class Unit>
inline std::size_t ascii_run(const Unit* p, std::size_t count) noexcept {
    constexpr std::size_t kLanes = Lanes<Unit>::kCount;
    std::size_t i = 0;
    while (i + kStepUnits<Unit> <= count && is_ascii_long_step(p + i)) {
        i += kStepUnits<Unit>;
    }
    const auto first_other = [p](std::size_t at) {
        const std::uint64_t others = hit_bits(load_lanes(p + at) > 0x7F);
        return at + (others != 0 ? static_cast<std::size_t>(first_hit<Unit>(others)) : kLanes);
    };
    for (; i + kLanes <= count; i += kLanes) {
        if (const std::size_t end = first_other(i); end != i + kLanes) {
            return end;
        }
    }
    if (count >= kLanes) {
        return i == count ? count : first_other(count - kLanes);
    }
    if constexpr (sizeof(Unit) == 1) {
        if (count >= 8) {
            const std::size_t front = ascii_of_eight(p);
            return front < 8 ? front : count - 8 + ascii_of_eight(p + count - 8);
        }
    }
    while (i < count && is_ascii(p[i])) {
        ++i;
    }
    return i;
}

}  // namespace platform
