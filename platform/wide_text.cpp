#include "wide_text.h"

#include <algorithm>
#include <bitset>

#include "page_loads.h"
#include "scan.h"

namespace platform {
namespace {

using Units = Lanes<char16_t>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;
constexpr std::ptrdiff_t kUnrolled = 4;
constexpr std::uintptr_t kUnrolledBytes = kUnrolled * kVectorBytes;

inline Units zero_lanes(Units units) {
    return reinterpret_cast<Units>(units == 0);
}

inline Units load_zero_lanes(const char16_t* p) {
    return zero_lanes(load_in_page(p));
}

// All-zero lanes where the units differ or are both NUL, else the unit.
inline Units load_common(const char16_t* left, const char16_t* right) {
    const Units units = load_in_page(left);
    return reinterpret_cast<Units>(units == load_in_page(right)) & units;
}

bool are_equal_unrolled(const char16_t* left, const char16_t* right) {
    Units ends{};
    for (std::ptrdiff_t i = 0; i < kUnrolled; ++i) {
        ends |= zero_lanes(load_common(left + i * kLanes, right + i * kLanes));
    }
    return !has_hit(ends);
}

// Goes over one vector's worth of units at most; true if it met a difference or the end, at `at`.
bool ends_in_vector(const char16_t* left, const char16_t* right, std::ptrdiff_t& at) {
    if (is_in_one_page(left + at, kVectorBytes) && is_in_one_page(right + at, kVectorBytes)) {
        const std::uint64_t ends = hit_bits(zero_lanes(load_common(left + at, right + at)));
        at += ends != 0 ? first_hit<char16_t>(ends) : kLanes;
        return ends != 0;
    }
    for (const std::ptrdiff_t stop = at + kLanes; at < stop; ++at) {
        if (left[at] != right[at] || left[at] == 0) {
            return true;
        }
    }
    return false;
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

inline Units reversed(Units units) {
    return __builtin_shufflevector(units, units, 7, 6, 5, 4, 3, 2, 1, 0);
}

}  // namespace

std::size_t wcslen(const char16_t* text) noexcept {
    const std::uintptr_t offset = address_of(text) % kVectorBytes;
    const auto* block = reinterpret_cast<const char16_t*>(address_of(text) - offset);
    const auto skipped = static_cast<std::ptrdiff_t>(offset / sizeof(char16_t));
    std::uint64_t ends = hit_bits(load_zero_lanes(block) & lanes_from<char16_t>(skipped));
    while (ends == 0) {
        block += kLanes;
        if (address_of(block) % kUnrolledBytes == 0) {
            while (!has_hit(load_zero_lanes(block) | load_zero_lanes(block + kLanes) |
                            load_zero_lanes(block + 2 * kLanes) |
                            load_zero_lanes(block + 3 * kLanes))) {
                block += kUnrolled * kLanes;
            }
        }
        ends = hit_bits(load_zero_lanes(block));
    }
    return static_cast<std::size_t>(block - text + first_hit<char16_t>(ends));
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
    while (!ends_in_vector(left, right, at)) {
        while (is_in_one_page(left + at, kUnrolledBytes) &&
               is_in_one_page(right + at, kUnrolledBytes) &&
               are_equal_unrolled(left + at, right + at)) {
            at += kUnrolled * kLanes;
        }
    }
    return left[at] - right[at];
}

int wcsncmp(const char16_t* left, const char16_t* right, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        if (left[i] != right[i] || left[i] == 0) {
            return left[i] - right[i];
        }
    }
    return 0;
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
