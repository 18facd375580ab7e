#include "search/scan.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "lanes/compaction.h"
#include "lanes/vectors.h"

namespace platform {
namespace {

// Steps after which a byte lane, which each of up to four vectors of a step takes one from, is
// still not full.
constexpr std::ptrdiff_t kStepsPerSum = 255 / 4;

template <class Unit, class Vector>
Vector any_equal(const Unit* p, Vector wanted) {
    return any_in_step(p, [wanted](const Unit* q) { return lanes_equal(q, wanted); });
}

template <class Unit>
const Unit* find_by_lanes(const Unit* first, const Unit* last, Unit unit) {
    constexpr std::ptrdiff_t kLanes = Lanes<Unit>::kCount;
    const auto wideWanted = splat_lanes<kWideBytes>(unit);
    const Unit* p = first;
    while (last - p >= kStepUnits<Unit> && !has_hit(any_equal(p, wideWanted))) {
        p += kStepUnits<Unit>;
    }
    const auto wanted = front_lanes<kNarrowBytes>(wideWanted);
    for (; last - p >= kLanes; p += kLanes) {
        if (const std::uint64_t hits = hit_bits(lanes_equal(p, wanted))) {
            return p + first_hit<Unit>(hits);
        }
    }
    if (p != last && last - first >= kLanes) {
        const std::uint64_t hits = hit_bits(lanes_equal(last - kLanes, wanted));
        return hits != 0 ? last - kLanes + first_hit<Unit>(hits) : last;
    }
    while (p != last && *p != unit) {
        ++p;
    }
    return p;
}

template <class Unit>
const Unit* find_last_by_lanes(const Unit* first, const Unit* last, Unit unit) {
    constexpr std::ptrdiff_t kLanes = Lanes<Unit>::kCount;
    const auto wideWanted = splat_lanes<kWideBytes>(unit);
    const Unit* p = last;
    while (p - first >= kStepUnits<Unit> && !has_hit(any_equal(p - kStepUnits<Unit>, wideWanted))) {
        p -= kStepUnits<Unit>;
    }
    const auto wanted = front_lanes<kNarrowBytes>(wideWanted);
    for (; p - first >= kLanes; p -= kLanes) {
        if (const std::uint64_t hits = hit_bits(lanes_equal(p - kLanes, wanted))) {
            return p - kLanes + last_hit<Unit>(hits);
        }
    }
    if (p != first && last - first >= kLanes) {
        const std::uint64_t hits = hit_bits(lanes_equal(first, wanted));
        return hits != 0 ? first + last_hit<Unit>(hits) : nullptr;
    }
    while (p != first) {
        if (*--p == unit) {
            return p;
        }
    }
    return nullptr;
}

// How often each lane of a vector is equal in the step at `p`, as a negative number.
template <class Unit, class Vector>
Vector step_sum(const Unit* p, Vector wanted) {
    Vector sum{};
    for (const Unit* q = p; q != p + kStepUnits<Unit>; q += WideLanes<Unit>::kCount) {
        sum += lanes_equal(q, wanted);
    }
    return sum;
}

// Neighbours are added up in lanes of twice the width, which all sums have room in.
template <class Vector>
std::size_t lane_sum(Vector lanes) {
    constexpr int kBits = 8 * sizeof lanes[0];
    constexpr std::uint64_t kEven = ~std::uint64_t{0} / ((std::uint64_t{1} << kBits) + 1);
    constexpr std::uint64_t kOnes = ~std::uint64_t{0} / ((std::uint64_t{1} << 2 * kBits) - 1);
    std::uint64_t words[sizeof lanes / sizeof(std::uint64_t)];
    std::memcpy(words, &lanes, sizeof words);
    std::uint64_t sums = 0;
    for (const std::uint64_t word : words) {
        sums += (word & kEven) + (word >> kBits & kEven);
    }
    return static_cast<std::size_t>(sums * kOnes >> (64 - 2 * kBits));
}

}  // namespace

template <class Unit>
const Unit* find_unit(const Unit* first, const Unit* last, Unit unit) noexcept {
    if constexpr (sizeof(Unit) > 1) {
        return find_by_lanes(first, last, unit);
    } else if (first == last) {
        return last;
    } else {
        const void* hit = std::memchr(first, unit, static_cast<std::size_t>(last - first));
        return hit != nullptr ? static_cast<const Unit*>(hit) : last;
    }
}

template <class Unit>
const Unit* find_last_unit(const Unit* first, const Unit* last, Unit unit) noexcept {
    if constexpr (sizeof(Unit) > 1) {
        return find_last_by_lanes(first, last, unit);
    } else if (first == last) {
        return nullptr;
    } else {
        return static_cast<const Unit*>(
            memrchr(first, unit, static_cast<std::size_t>(last - first)));
    }
}

template <class Unit>
std::size_t count_unit(const Unit* first, const Unit* last, Unit unit) noexcept {
    constexpr std::ptrdiff_t kLanes = Lanes<Unit>::kCount;
    std::size_t count = 0;
    if (last - first < kLanes) {
        for (const Unit* p = first; p != last; ++p) {
            count += *p == unit;
        }
        return count;
    }
    const auto wideWanted = splat_lanes<kWideBytes>(unit);
    const Unit* p = first;
    while (last - p >= kStepUnits<Unit>) {
        // An equal lane reads as -1.
        typename WideLanes<Unit>::Vector sums{};
        std::ptrdiff_t steps = kStepsPerSum;
        for (; steps > 0 && last - p >= kStepUnits<Unit>; --steps, p += kStepUnits<Unit>) {
            sums -= step_sum(p, wideWanted);
        }
        count += lane_sum(sums);
    }
    const auto wanted = front_lanes<kNarrowBytes>(wideWanted);
    typename Lanes<Unit>::Vector sums{};
    for (; last - p >= kLanes; p += kLanes) {
        sums -= lanes_equal(p, wanted);
    }
    // The last block reaches back over units that are counted.
    const std::uint64_t hits =
        hits_from<Unit>(hit_bits(lanes_equal(last - kLanes, wanted)), kLanes - (last - p));
    return count + lane_sum(sums) + static_cast<std::size_t>(std::popcount(hits)) / sizeof(Unit);
}

template <class Unit>
std::size_t replace_unit(Unit* first, Unit* last, Unit from, Unit to) noexcept {
    constexpr std::ptrdiff_t kLanes = WideLanes<Unit>::kCount;
    const auto wanted = splat_lanes<kWideBytes>(from);
    const auto change = splat_lanes<kWideBytes>(static_cast<Unit>(from ^ to));
    std::size_t count = 0;
    Unit* p = first;
    while (last - p >= kStepUnits<Unit>) {
        typename WideLanes<Unit>::Vector sums{};
        std::ptrdiff_t steps = kStepsPerSum;
        for (; steps > 0 && last - p >= kStepUnits<Unit>; --steps, p += kStepUnits<Unit>) {
            // Without a hit nothing is stored, which keeps cache lines clean.
            if (!has_hit(any_equal<Unit>(p, wanted))) {
                continue;
            }
            for (Unit* q = p; q != p + kStepUnits<Unit>; q += kLanes) {
                const auto found = lanes_equal(q, wanted);
                store_lanes(q, load_lanes<kWideBytes>(q) ^ (found & change));
                sums -= found;
            }
        }
        count += lane_sum(sums);
    }
    for (; p != last; ++p) {
        const bool isHit = *p == from;
        *p = isHit ? to : *p;
        count += isHit;
    }
    return count;
}

template <class Unit>
Unit* remove_unit(Unit* first, Unit* last, Unit unit) noexcept {
    const auto wanted = splat_lanes(unit);
    Unit* hit = first + (find_unit<Unit>(first, last, unit) - first);
    return drop_hits(
        hit, last,
        [wanted](const Unit* p) {
            return hit_bits(lanes_equal(p, wanted)) |
                   hit_bits(lanes_equal(p + Lanes<Unit>::kCount, wanted)) << 16;
        },
        [unit](Unit value) { return value == unit; });
}

template const char* find_unit(const char*, const char*, char) noexcept;
template const char16_t* find_unit(const char16_t*, const char16_t*, char16_t) noexcept;
template const char* find_last_unit(const char*, const char*, char) noexcept;
template const char16_t* find_last_unit(const char16_t*, const char16_t*, char16_t) noexcept;
template std::size_t count_unit(const char*, const char*, char) noexcept;
template std::size_t count_unit(const char16_t*, const char16_t*, char16_t) noexcept;
template std::size_t replace_unit(char*, char*, char, char) noexcept;
template std::size_t replace_unit(char16_t*, char16_t*, char16_t, char16_t) noexcept;
template char* remove_unit(char*, char*, char) noexcept;
template char16_t* remove_unit(char16_t*, char16_t*, char16_t) noexcept;

}  // namespace platform
