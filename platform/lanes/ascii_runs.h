#pragma once

#include "lanes/vectors.h"

/// The ASCII in front of a text and the plain way between bytes and units, sixteen at a time.
namespace platform {

inline constexpr std::size_t kAsciiStep = 16;

/// Sixteen bytes of Latin-1, of which ASCII is a part, as units.
inline void widen_step(const char* source, char16_t* destination) noexcept {
    unsigned char bytes[kAsciiStep];
    std::uint16_t units[kAsciiStep];
    std::memcpy(bytes, source, sizeof bytes);
    for (std::size_t i = 0; i < kAsciiStep; ++i) {
        units[i] = bytes[i];
    }
    std::memcpy(destination, units, sizeof units);
}

/// The low bytes of sixteen units.
inline void narrow_step(const char16_t* source, char* destination) noexcept {
    std::uint16_t units[kAsciiStep];
    unsigned char bytes[kAsciiStep];
    std::memcpy(units, source, sizeof units);
    for (std::size_t i = 0; i < kAsciiStep; ++i) {
        bytes[i] = static_cast<unsigned char>(units[i]);
    }
    std::memcpy(destination, bytes, sizeof bytes);
}

/// Steps of sixteen that one round of a long copy takes.
inline constexpr std::size_t kAsciiRound = 4 * kAsciiStep;

/// Long texts are stored on boundaries of sixteen bytes, behind a first step that overlaps.
inline void widen(const char* source, std::size_t count, char16_t* destination) noexcept {
    std::size_t i = 0;
    if (count >= kAsciiRound) {
        widen_step(source, destination);
        i = (-reinterpret_cast<std::uintptr_t>(destination) & 15) / sizeof *destination;
    }
    for (; i + kAsciiRound <= count; i += kAsciiRound) {
        for (std::size_t k = 0; k < kAsciiRound; k += kAsciiStep) {
            widen_step(source + i + k, destination + i + k);
        }
    }
    for (; i + kAsciiStep <= count; i += kAsciiStep) {
        widen_step(source + i, destination + i);
    }
    for (; i < count; ++i) {
        destination[i] = static_cast<unsigned char>(source[i]);
    }
}

inline void narrow(const char16_t* source, std::size_t count, char* destination) noexcept {
    std::size_t i = 0;
    for (; i + kAsciiStep <= count; i += kAsciiStep) {
        narrow_step(source + i, destination + i);
    }
    for (; i < count; ++i) {
        destination[i] = static_cast<char>(source[i]);
    }
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

/// How many of the next eight bytes stand in front of the first that is not ASCII.
inline std::size_t ascii_of_eight(const char* p) noexcept {
    std::uint64_t bytes;
    std::memcpy(&bytes, p, sizeof bytes);
    const std::uint64_t others = bytes & 0x8080808080808080;
    return others == 0 ? sizeof bytes : static_cast<std::size_t>(std::countr_zero(others)) / 8;
}

/// Eight bytes as units, of which the caller takes what it needs.
inline void widen_eight(const char* source, char16_t* destination) noexcept {
    unsigned char bytes[8];
    std::uint16_t units[8];
    std::memcpy(bytes, source, sizeof bytes);
    for (std::size_t i = 0; i < 8; ++i) {
        units[i] = bytes[i];
    }
    std::memcpy(destination, units, sizeof units);
}

/// How many bytes or units in front are ASCII.
template <class Unit>
inline std::size_t ascii_run(const Unit* p, std::size_t count) noexcept {
    constexpr std::ptrdiff_t kLanes = Lanes<Unit>::kCount;
    std::size_t i = 0;
    for (; i + 4 * kLanes <= count; i += 4 * kLanes) {
        const auto all = load_lanes(p + i) | load_lanes(p + i + kLanes) |
                         load_lanes(p + i + 2 * kLanes) | load_lanes(p + i + 3 * kLanes);
        if (hit_bits(all > 0x7F) != 0) {
            break;
        }
    }
    while (i + kAsciiStep <= count && is_ascii_step(p + i)) {
        i += kAsciiStep;
    }
    while (i < count && is_ascii(p[i])) {
        ++i;
    }
    return i;
}

}  // namespace platform
