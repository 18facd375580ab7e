// A text of up to 32 bytes is compared in one step, and is often found soon or looked for in a
// short text. So it is tried at the first 256 places with nothing prepared, by its first and last
// unit, before the adaptive search takes over; in what is shorter than a register, all places are
// looked at in one or two steps. Both pay in the row find_text of short texts, which takes twice
// and one and a half times as long without. All places of such a text are counted by probes alone,
// since nothing can mislead them: without that, count_text takes 1.2 to 2 times as long.

#include "search/text_search.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "lanes/vectors.h"
#include "search/scan.h"

namespace platform {
namespace {

constexpr std::size_t kQuickBytes = 32;
constexpr std::ptrdiff_t kQuickPlaces = 256;

template <class Word>
bool equal_ends(const char* a, const char* b, std::size_t size) {
    const std::size_t back = size - sizeof(Word);
    return ((load_word<Word>(a) ^ load_word<Word>(b)) |
            (load_word<Word>(a + back) ^ load_word<Word>(b + back))) == 0;
}

// Up to kQuickBytes all of the texts, above that their ends.
inline bool equal_at_ends(const char* a, const char* b, std::size_t size) {
    if (size >= sizeof(std::uint64_t)) {
        if (size <= 2 * sizeof(std::uint64_t)) {
            return equal_ends<std::uint64_t>(a, b, size);
        }
        const std::size_t back = size - kQuickBytes / 2;
        return !has_hit(
            ~(lanes_equal(a, load_lanes(b)) & lanes_equal(a + back, load_lanes(b + back))));
    }
    if (size >= sizeof(std::uint32_t)) {
        return equal_ends<std::uint32_t>(a, b, size);
    }
    return a[0] == b[0] && a[size - 1] == b[size - 1] && a[size / 2] == b[size / 2];
}

template <class Unit>
using ExactProbe = Probe<Unit, typename ExactMatcher<Unit>::Test>;

// The first of the hits in a block where all of the text is, or null.
template <class Unit>
inline const Unit* quick_match(std::uint64_t hits, const Unit* block, const Unit* text,
                               std::size_t size) {
    for (; hits != 0; hits = without_first_hit<Unit>(hits)) {
        const Unit* place = block + first_hit<Unit>(hits);
        if (equal_at_ends(reinterpret_cast<const char*>(place), reinterpret_cast<const char*>(text),
                          size)) {
            return place;
        }
    }
    return nullptr;
}

// The first match in [first, end), which are from half a register to a register full of places:
// half of them from the front and half from the back, which may overlap.
template <class Word, class Unit>
const Unit* match_in_halves(const Unit* first, const Unit* end, const Unit* text,
                            std::size_t count) {
    constexpr std::size_t kBytes = sizeof(Word);
    const Unit* const back = end - kBytes / sizeof(Unit);
    const auto hits = [=](std::size_t offset) {
        const auto* p = reinterpret_cast<const char*>(first + offset);
        const auto* q = reinterpret_cast<const char*>(back + offset);
        return hit_bits(lanes_equal(load_ends<Word>(p, q), splat_lanes(text[offset])));
    };
    const std::uint64_t found = hits(0) & hits(count - 1);
    const std::size_t size = count * sizeof(Unit);
    const std::uint64_t front = found & ((1U << kBytes) - 1);
    if (const Unit* match = quick_match(front, first, text, size)) {
        return match;
    }
    return quick_match(found >> kBytes & ((1U << kBytes) - 1), back, text, size);
}

template <class Unit>
[[gnu::noinline]] const Unit* find_single(const Unit* first, const Unit* last, Unit unit) {
    const Unit* hit = find_unit(first, last, unit);
    return hit != last ? hit : nullptr;
}

template <class Unit>
[[gnu::noinline]] const Unit* find_with_care(const Unit* first, const Unit* last, const Unit* text,
                                             std::size_t count) {
    return TextSearch<Unit>(first, last, text, count).Next();
}

// Looks at the places in [first, end), of which there is one at least. A text is often found soon
// and then all that counts is how few steps it takes to begin: so nothing is called in here but
// what takes the search over.
template <class Unit>
const Unit* find_quickly(const Unit* first, const Unit* end, const Unit* text, std::size_t count) {
    constexpr std::ptrdiff_t kNarrow = ExactProbe<Unit>::kNarrow;
    constexpr std::ptrdiff_t kWide = ExactProbe<Unit>::kWide;
    const std::size_t size = count * sizeof(Unit);
    const Unit* place = first;
    if (end - first < kNarrow) {
        if (end - first >= kNarrow / 2) {
            return match_in_halves<std::uint64_t>(first, end, text, count);
        }
        if (end - first >= kNarrow / 4) {
            return match_in_halves<std::uint32_t>(first, end, text, count);
        }
        for (; place != end; ++place) {
            if (*place == *text && quick_match(1, place, text, size) != nullptr) {
                return place;
            }
        }
        return nullptr;
    }
    const ExactProbe<Unit> probe(text, 0, count - 1);
    for (; end - place >= kWide; place += kWide) {
        if (place - first >= kQuickPlaces) {
            return find_with_care(place, end + count - 1, text, count);
        }
        if (const Unit* match = quick_match(probe.Hits(place), place, text, size)) {
            return match;
        }
    }
    while (place != end) {
        // The last block reaches back over places that are known to be no matches.
        const Unit* const block = std::min(place, end - kNarrow);
        const std::uint64_t hits = hit_bits(probe.At(block));
        if (const Unit* match = quick_match(hits, block, text, size)) {
            return match;
        }
        place = block + kNarrow;
    }
    return nullptr;
}

}  // namespace

template <class Unit>
bool ExactMatcher<Unit>::Matches(const Unit* place, std::size_t& spent) const {
    const auto* a = reinterpret_cast<const char*>(place);
    const auto* b = reinterpret_cast<const char*>(pattern);
    const std::size_t size = count * sizeof(Unit);
    spent += kGlance;
    if (size <= kQuickBytes || !equal_at_ends(a, b, size)) {
        return size <= kQuickBytes && equal_at_ends(a, b, size);
    }
    spent += count;
    return std::memcmp(a, b, size) == 0;
}

template <class Unit>
const Unit* find_text(const Unit* first, const Unit* last, const Unit* text,
                      std::size_t count) noexcept {
    const auto size = static_cast<std::size_t>(last - first);
    if (count == 0) {
        return first;
    }
    if (count > size) {
        return nullptr;
    }
    if (count == 1) {
        return find_single(first, last, *text);
    }
    return count * sizeof(Unit) <= kQuickBytes
               ? find_quickly(first, first + (size - count + 1), text, count)
               : find_with_care(first, last, text, count);
}

// The search text is compared in one step, so that nothing can mislead.
template <class Unit>
std::size_t count_short_text(const Unit* first, const Unit* end, const Unit* text,
                             std::size_t count) {
    constexpr std::ptrdiff_t kWide = ExactProbe<Unit>::kWide;
    const std::size_t size = count * sizeof(Unit);
    const TwoOffsets units = choose_units(text, count, ExactMatcher<Unit>::Rank);
    const ExactProbe<Unit> probe(text, units.first, units.second);
    std::size_t found = 0;
    const Unit* next = first;
    for (const Unit* block = first; end - block >= kWide; block += kWide) {
        std::uint64_t hits = probe.Hits(block);
        while (hits != 0 && next - block < kWide) {
            hits = hits_from<Unit>(hits, std::max(block, next) - block);
            const Unit* match = quick_match(hits, block, text, size);
            if (match == nullptr) {
                break;
            }
            ++found;
            next = match + count;
        }
        next = std::max(next, std::min(block + kWide, end));
    }
    while (next < end) {
        const Unit* match = find_quickly(next, end, text, count);
        if (match == nullptr) {
            break;
        }
        ++found;
        next = match + count;
    }
    return found;
}

template <class Unit>
std::size_t count_text(const Unit* first, const Unit* last, const Unit* text,
                       std::size_t count) noexcept {
    const auto size = static_cast<std::size_t>(last - first);
    if (count == 0 || count > size) {
        return 0;
    }
    if (count == 1) {
        return count_unit(first, last, *text);
    }
    if (count * sizeof(Unit) <= kQuickBytes) {
        return count_short_text(first, first + (size - count + 1), text, count);
    }
    std::size_t found = 0;
    TextSearch<Unit> search(first, last, text, count);
    while (search.NextApart() != nullptr) {
        ++found;
    }
    return found;
}

template class AdaptiveSearch<char, ExactMatcher<char>>;
template class AdaptiveSearch<char16_t, ExactMatcher<char16_t>>;
template const char* find_text(const char*, const char*, const char*, std::size_t) noexcept;
template const char16_t* find_text(const char16_t*, const char16_t*, const char16_t*,
                                   std::size_t) noexcept;
template std::size_t count_text(const char*, const char*, const char*, std::size_t) noexcept;
template std::size_t count_text(const char16_t*, const char16_t*, const char16_t*,
                                std::size_t) noexcept;

}  // namespace platform
