#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "lanes/vectors.h"

/// Taking units out of a text in place, in one pass.
namespace platform {

/// Units that are looked at in one step.
template <class Unit>
inline constexpr std::ptrdiff_t kCompactionStep = 2 * Lanes<Unit>::kCount;

/// Stores the units of a vector that are no hits. Stores every unit and steps over it or not, since
/// a branch would often be guessed wrong; takes the units from words, since what a store may have
/// changed would have to be loaded again.
template <class Unit>
Unit* keep_others(const Unit* block, std::uint64_t hits, Unit* write) {
    constexpr std::size_t kBits = 8 * sizeof(Unit);
    std::uint64_t words[2];
    std::memcpy(words, block, sizeof words);
    for (const std::uint64_t word : words) {
        for (std::size_t bit = 0; bit < 64; bit += kBits) {
            *write = static_cast<Unit>(units_low_first<Unit>(word) >> bit);
            write += ~hits & 1;
            hits >>= sizeof(Unit);
        }
    }
    return write;
}

/// Copies a step of units, of which `kept` count. Where the gap is too small for the whole step, no
/// more is stored: what is read next would be lost.
template <class Unit>
void copy_step(Unit* write, const Unit* read, std::ptrdiff_t kept) {
    if (kept < kCompactionStep<Unit> && read - write < kCompactionStep<Unit>) {
        std::memmove(write, read, static_cast<std::size_t>(kept) * sizeof(Unit));
        return;
    }
    const auto front = load_lanes(read);
    const auto back = load_lanes(read + Lanes<Unit>::kCount);
    store_lanes(write, front);
    store_lanes(write + Lanes<Unit>::kCount, back);
}

/// Stores the units of [read, last) that are no hits and gives the end of what is stored.
template <class Unit, class IsHit>
Unit* keep_each(const Unit* read, const Unit* last, Unit* write, IsHit isHit) {
    for (; read != last; ++read) {
        const Unit unit = *read;
        *write = unit;
        write += isHit(unit) ? 0 : 1;
    }
    return write;
}

/// Drops the hits from [first, last), closes the gaps and gives the new end. `hitsOf(p)` has a bit
/// for each byte of the hits in the step at `p`; `isHit` asks about one unit.
template <class Unit, class HitsOf, class IsHit>
Unit* drop_hits(Unit* first, Unit* last, HitsOf hitsOf, IsHit isHit) {
    constexpr std::ptrdiff_t kStep = kCompactionStep<Unit>;
    constexpr std::ptrdiff_t kLanes = Lanes<Unit>::kCount;
    const Unit* read = first;
    Unit* write = first;
    while (last - read >= kStep) {
        const std::uint64_t hits = hitsOf(read);
        if (hits == 0) {
            copy_step(write, read, kStep);
            read += kStep;
            write += kStep;
        } else if (without_first_hit<Unit>(without_first_hit<Unit>(hits)) == 0) {
            const std::ptrdiff_t kept = first_hit<Unit>(hits);
            copy_step(write, read, kept);
            read += kept + 1;
            write += kept;
        } else {
            write = keep_others(read, hits, write);
            write = keep_others(read + kLanes, hits >> 16, write);
            read += kStep;
        }
    }
    return keep_each(read, last, write, isHit);
}

}  // namespace platform
