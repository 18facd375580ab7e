#include "wide/wide.h"

#include <algorithm>
#include <bitset>

#include "lanes/page_loads.h"
#include "search/scan.h"

namespace platform {
namespace {

using Units = Lanes<char16_t>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;

constexpr std::ptrdiff_t kBlockUnits = 64;

// In bytes; blocks may lie anywhere, but those of a left text so aligned are gone through faster.
constexpr std::uintptr_t kBlockAlignment = 32;

template <std::size_t kBytes = kNarrowBytes>
inline auto load_zero_lanes(const char16_t* p) {
    return zero_lanes(load_in_page<kBytes>(p));
}

// Goes on by a vector's worth of units at most; true if it met a difference or the end, at `at`.
bool ends_in_step(const char16_t* left, const char16_t* right, std::ptrdiff_t& at) {
    if (is_in_one_page(left + at) && is_in_one_page(right + at)) {
        const std::ptrdiff_t end = end_in_vector(left + at, right + at);
        at += end;
        return end != kLanes;
    }
    for (const std::ptrdiff_t stop = at + kLanes; at < stop; ++at) {
        if (left[at] != right[at] || left[at] == 0) {
            return true;
        }
    }
    return false;
}

// From here to the nearer end of the two pages.
std::ptrdiff_t units_in_pages(const char16_t* left, const char16_t* right) {
    return static_cast<std::ptrdiff_t>(std::min(bytes_in_page(left), bytes_in_page(right)) /
                                       sizeof(char16_t));
}

// Index of the first unit that differs or ends both texts, or all units of the blocks if there is
// none. Looks at any unit of the blocks, also behind the end.
std::ptrdiff_t end_in_blocks(const char16_t* left, const char16_t* right, std::ptrdiff_t blocks) {
    std::ptrdiff_t at = 0;
    for (; blocks > 0; --blocks, at += kBlockUnits) {
        WideLanes<char16_t>::Vector ends{};
        for (std::ptrdiff_t i = 0; i < kBlockUnits; i += WideLanes<char16_t>::kCount) {
            ends |= zero_lanes(load_common<kWideBytes>(left + at + i, right + at + i));
        }
        if (has_hit(ends)) {
            break;
        }
    }
    for (std::ptrdiff_t end = kLanes; blocks > 0 && end == kLanes; at += end) {
        end = end_in_vector(left + at, right + at);
    }
    return at;
}

// Finds that in as many blocks as the pages hold. In front of the end of a page, a block begins
// among the units that are known to be equal, of which there is a block.
bool ends_in_pages(const char16_t* left, const char16_t* right, std::ptrdiff_t& at) {
    const std::ptrdiff_t units = units_in_pages(left + at, right + at);
    at -= std::max<std::ptrdiff_t>(kBlockUnits - units, 0);
    const std::ptrdiff_t blocks = std::max<std::ptrdiff_t>(units / kBlockUnits, 1);
    const std::ptrdiff_t end = end_in_blocks(left + at, right + at, blocks);
    at += end;
    return end != blocks * kBlockUnits;
}

// Sets this small are looked for a vector of the text at a time.
constexpr std::size_t kSmallSet = 16;

const char16_t* find_member_of_small(const char16_t* first, const char16_t* last,
                                     const char16_t* set, std::size_t count) {
    for (; last - first >= kLanes; first += kLanes) {
        Units members{};
        for (std::size_t i = 0; i < count; ++i) {
            members |= lanes_equal(first, splat_lanes(set[i]));
        }
        if (const std::uint64_t bits = hit_bits(members)) {
            return first + first_hit<char16_t>(bits);
        }
    }
    const char16_t* const found = std::find_first_of(first, last, set, set + count);
    return found != last ? found : nullptr;
}

const char16_t* find_member_of_large(const char16_t* first, const char16_t* last,
                                     const char16_t* set, std::size_t count) {
    std::bitset<0x10000> members;
    for (std::size_t i = 0; i < count; ++i) {
        members[set[i]] = true;
    }
    const char16_t* const found =
        std::find_if(first, last, [&members](char16_t unit) { return members[unit]; });
    return found != last ? found : nullptr;
}

// In three steps that are one instruction each on every baseline; of a single step some compilers
// make one instruction a lane.
inline Units reversed(Units units) {
    const Units low = __builtin_shufflevector(units, units, 3, 2, 1, 0, 4, 5, 6, 7);
    const Units both = __builtin_shufflevector(low, low, 0, 1, 2, 3, 7, 6, 5, 4);
    return __builtin_shufflevector(both, both, 4, 5, 6, 7, 0, 1, 2, 3);
}

}  // namespace

std::size_t wcslen(const char16_t* text) noexcept {
    constexpr std::ptrdiff_t kStep = kStepUnits<char16_t>;
    const auto skipped =
        static_cast<std::ptrdiff_t>(address_of(text) % kNarrowBytes / sizeof(char16_t));
    const char16_t* p = text - skipped;
    std::uint64_t ends = hits_from<char16_t>(hit_bits(load_zero_lanes(p)), skipped);
    while (ends == 0) {
        p += kLanes;
        if (address_of(p) % (kStep * sizeof(char16_t)) == 0) {
            while (!has_hit(any_in_step(p, load_zero_lanes<kWideBytes>))) {
                p += kStep;
            }
        }
        ends = hit_bits(load_zero_lanes(p));
    }
    return static_cast<std::size_t>(p - text + first_hit<char16_t>(ends));
}

const char16_t* wcschr(const char16_t* first, const char16_t* last, char16_t unit) noexcept {
    const char16_t* const found = find_unit(first, last, unit);
    return found != last ? found : nullptr;
}

const char16_t* wcsrchr(const char16_t* first, const char16_t* last, char16_t unit) noexcept {
    return find_last_unit(first, last, unit);
}

const char16_t* wcsstr(const char16_t* first, const char16_t* last, const char16_t* text,
                       std::size_t count) noexcept {
    return find_text(first, last, text, count);
}

const char16_t* wcspbrk(const char16_t* first, const char16_t* last, const char16_t* set) noexcept {
    const std::size_t count = wcslen(set);
    return count <= kSmallSet ? find_member_of_small(first, last, set, count)
                              : find_member_of_large(first, last, set, count);
}

int wcscmp(const char16_t* left, const char16_t* right) noexcept {
    std::ptrdiff_t at = 0;
    do {
        if (ends_in_step(left, right, at)) {
            return left[at] - right[at];
        }
    } while (at < kBlockUnits && units_in_pages(left + at, right + at) < kBlockUnits);
    // For the sake of aligned loads, some of what is equal once more.
    const auto past =
        static_cast<std::ptrdiff_t>(address_of(left + at) % kBlockAlignment / sizeof(char16_t));
    if (past <= at && units_in_pages(left + at - past, right + at - past) >= kBlockUnits) {
        at -= past;
    }
    while (!ends_in_pages(left, right, at)) {
    }
    return left[at] - right[at];
}

void _wcsrev(char16_t* text) noexcept {
    char16_t* last = text + wcslen(text);
    for (; last - text >= 2 * kLanes; text += kLanes) {
        last -= kLanes;
        const Units front = load_lanes(text);
        store_lanes(text, reversed(load_lanes(last)));
        store_lanes(last, reversed(front));
    }
    std::reverse(text, last);
}

}  // namespace platform
