#include "search/text_search.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "lanes/vectors.h"
#include "search/scan.h"

namespace platform {
namespace {

// How common a unit is in text, by guess: a bad guess costs time only.
constexpr unsigned char kRare = 20;
constexpr unsigned char kForeign = 60;
constexpr std::string_view kFromRareToCommon =
    "jqxz\n\t-_/'\"();=:.,0123456789kvbywgfpmucldhrsnioate ";

constexpr auto kCommonness = [] {
    std::array<unsigned char, 256> ranks{};
    ranks.fill(kRare - 1);
    std::fill(ranks.begin() + 0x80, ranks.end(), kForeign);
    unsigned char rank = kRare - 4;
    for (const char unit : kFromRareToCommon) {
        ranks[static_cast<unsigned char>(unit)] = rank++;
    }
    return ranks;
}();

template <class Unit>
unsigned char commonness(Unit unit) {
    const auto value = static_cast<typename Lanes<Unit>::Scalar>(unit);
    return value < kCommonness.size() ? kCommonness[value] : kForeign;
}

// Of a long text the beginning has uncommon units enough.
constexpr std::size_t kChoice = 32;

// A text of so many bytes is looked for at so many places before it pays to prepare anything.
constexpr std::size_t kQuickBytes = 32;
constexpr std::ptrdiff_t kQuickPlaces = 256;

// A unit that is in more than one of so many blocks is not rare.
constexpr std::ptrdiff_t kCommon = 8;

// What may be spent on comparisons: this much, and a multiple of the way already gone. A comparison
// costs a glance, and the length of the text where its ends fit.
constexpr std::size_t kSlack = 2048;
constexpr std::size_t kSpentPerUnit = 8;
constexpr std::size_t kGlance = 16;

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

// Two units of the text, at their offsets: a place is looked at closely where both fit.
template <class Unit>
struct Probe {
    static constexpr std::ptrdiff_t kNarrow = Lanes<Unit>::kCount;
    static constexpr std::ptrdiff_t kWide = 4 * kNarrow;
    using Vector = typename Lanes<Unit>::Vector;

    Probe(const Unit* text, std::size_t a, std::size_t b)
        : first(a), second(b), firstUnit(splat_lanes(text[a])), secondUnit(splat_lanes(text[b])) {}

    Vector At(const Unit* p) const {
        return lanes_equal(p + first, firstUnit) & lanes_equal(p + second, secondUnit);
    }

    // A bit for each byte of the places from `p` on where both fit.
    std::uint64_t Hits(const Unit* p) const {
        const Vector a = At(p);
        const Vector b = At(p + kNarrow);
        const Vector c = At(p + 2 * kNarrow);
        const Vector d = At(p + 3 * kNarrow);
        if (!has_hit((a | b) | (c | d))) {
            return 0;
        }
        return (hit_bits(a) | hit_bits(b) << 16) | (hit_bits(c) << 32 | hit_bits(d) << 48);
    }

    bool HasFirst(const Unit* p) const {
        p += first;
        return has_hit(
            (lanes_equal(p, firstUnit) | lanes_equal(p + kNarrow, firstUnit)) |
            (lanes_equal(p + 2 * kNarrow, firstUnit) | lanes_equal(p + 3 * kNarrow, firstUnit)));
    }

    std::size_t first;
    std::size_t second;
    Vector firstUnit;
    Vector secondUnit;
};

// Without the hits in front of `place`.
template <class Unit>
std::uint64_t hits_from(std::uint64_t hits, const Unit* block, const Unit* place) {
    const auto done = (place - block) * static_cast<std::ptrdiff_t>(sizeof(Unit));
    return hits >> done << done;
}

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
    constexpr std::ptrdiff_t kNarrow = Probe<Unit>::kNarrow;
    constexpr std::ptrdiff_t kWide = Probe<Unit>::kWide;
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
    const Probe<Unit> probe(text, 0, count - 1);
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

struct TwoUnits {
    std::size_t first;
    std::size_t second;
};

// The two least common ones, the least common one first.
template <class Unit>
TwoUnits choose_well(const Unit* text, std::size_t count) {
    TwoUnits chosen{0, 0};
    unsigned rank = commonness(text[0]);
    unsigned secondRank = ~0U;
    for (std::size_t i = 1; i < std::min(count, kChoice); ++i) {
        const unsigned next = commonness(text[i]);
        if (next < rank) {
            chosen = {i, chosen.first};
            secondRank = rank;
            rank = next;
        } else if (next < secondRank) {
            chosen.second = i;
            secondRank = next;
        }
    }
    return chosen;
}

}  // namespace

template <class Unit>
TextSearch<Unit>::TextSearch(const Unit* first, const Unit* last, const Unit* text,
                             std::size_t count) noexcept
    : first_(first), next_(first), end_(first), text_(text), count_(count) {
    const auto size = static_cast<std::size_t>(last - first);
    if (count <= size) {
        end_ += size - count + 1;
    }
    const TwoUnits units = choose_well(text, count);
    firstUnit_ = units.first;
    secondUnit_ = units.second;
    way_ = commonness(text[units.first]) < kRare ? Way::OneUnit : Way::TwoUnits;
}

template <class Unit>
const Unit* TextSearch<Unit>::Next() noexcept {
    if (way_ != Way::Linear) {
        const Unit* match = NextByUnits();
        if (way_ != Way::Linear) {
            return match;
        }
    }
    return NextLinear();
}

template <class Unit>
const Unit* TextSearch<Unit>::NextApart() noexcept {
    const Unit* match = Next();
    if (match != nullptr) {
        SkipTo(match + count_);
    }
    return match;
}

template <class Unit>
void TextSearch<Unit>::SkipTo(const Unit* place) noexcept {
    if (place > next_) {
        next_ = std::min(place, end_);
        known_ = 0;
    }
}

template <class Unit>
bool TextSearch<Unit>::Matches(const Unit* place) {
    const auto* a = reinterpret_cast<const char*>(place);
    const auto* b = reinterpret_cast<const char*>(text_);
    const std::size_t size = count_ * sizeof(Unit);
    spent_ += kGlance;
    if (size <= kQuickBytes || !equal_at_ends(a, b, size)) {
        return size <= kQuickBytes && equal_at_ends(a, b, size);
    }
    spent_ += count_;
    return std::memcmp(a, b, size) == 0;
}

// Takes note of the first match among the hits of a block and gives it.
template <class Unit>
const Unit* TextSearch<Unit>::Match(std::uint64_t hits, const Unit* block) {
    for (; hits != 0; hits = without_first_hit<Unit>(hits)) {
        const Unit* place = block + first_hit<Unit>(hits);
        if (Matches(place)) {
            next_ = place + 1;
            return place;
        }
    }
    return nullptr;
}

template <class Unit>
const Unit* TextSearch<Unit>::NextByUnits() {
    constexpr std::ptrdiff_t kWide = Probe<Unit>::kWide;
    const Probe<Unit> probe(text_, firstUnit_, secondUnit_);
    const Unit* const end = end_;
    const Unit* place = next_;
    for (; end - place >= kWide; place += kWide) {
        if (way_ == Way::OneUnit) {
            if (!probe.HasFirst(place)) {
                continue;
            }
            // In this text the unit may not be rare at all.
            if (++met_ > kCommon + (place - first_) / (kWide * kCommon)) {
                way_ = Way::TwoUnits;
            }
        }
        const std::uint64_t hits = probe.Hits(place);
        if (hits == 0) {
            continue;
        }
        next_ = place;
        if (spent_ > kSlack + kSpentPerUnit * static_cast<std::size_t>(place - first_)) {
            TurnLinear();
            return nullptr;
        }
        if (const Unit* match = Match(hits, place)) {
            return match;
        }
    }
    next_ = place;
    return NextInRest();
}

template <class Unit>
const Unit* TextSearch<Unit>::NextInRest() {
    constexpr std::ptrdiff_t kNarrow = Probe<Unit>::kNarrow;
    if (end_ - first_ < kNarrow) {
        while (next_ != end_) {
            const Unit* place = next_++;
            if (*place == *text_ && Matches(place)) {
                return place;
            }
        }
        return nullptr;
    }
    const Probe<Unit> probe(text_, firstUnit_, secondUnit_);
    while (next_ != end_) {
        const Unit* const block = std::min(next_, end_ - kNarrow);
        const std::uint64_t hits = hits_from(hit_bits(probe.At(block)), block, next_);
        if (const Unit* match = Match(hits, block)) {
            return match;
        }
        next_ = block + kNarrow;
    }
    return nullptr;
}

template <class Unit>
void TextSearch<Unit>::TurnLinear() {
    cut_ = cut_pattern(text_, count_);
    way_ = Way::Linear;
}

template <class Unit>
const Unit* TextSearch<Unit>::NextLinear() {
    const auto step = [this](std::size_t units, std::size_t known) {
        next_ += std::min(static_cast<std::ptrdiff_t>(units), end_ - next_);
        known_ = known;
    };
    while (next_ != end_) {
        const Unit* const place = next_;
        std::size_t i = std::max(cut_.right, known_);
        while (i < count_ && place[i] == text_[i]) {
            ++i;
        }
        if (i < count_) {
            step(i - cut_.right + 1, 0);
            continue;
        }
        i = cut_.right;
        while (i > known_ && place[i - 1] == text_[i - 1]) {
            --i;
        }
        const bool isMatch = i <= known_;
        step(cut_.period, cut_.remembered);
        if (isMatch) {
            return place;
        }
    }
    return nullptr;
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

// Of a text that is compared in a step, so that nothing can mislead.
template <class Unit>
std::size_t count_short_text(const Unit* first, const Unit* end, const Unit* text,
                             std::size_t count) {
    constexpr std::ptrdiff_t kWide = Probe<Unit>::kWide;
    const std::size_t size = count * sizeof(Unit);
    const TwoUnits units = choose_well(text, count);
    const Probe<Unit> probe(text, units.first, units.second);
    std::size_t found = 0;
    const Unit* next = first;
    for (const Unit* block = first; end - block >= kWide; block += kWide) {
        std::uint64_t hits = probe.Hits(block);
        while (hits != 0 && next - block < kWide) {
            hits = hits_from(hits, block, std::max(block, next));
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

template class TextSearch<char>;
template class TextSearch<char16_t>;
template const char* find_text(const char*, const char*, const char*, std::size_t) noexcept;
template const char16_t* find_text(const char16_t*, const char16_t*, const char16_t*,
                                   std::size_t) noexcept;
template std::size_t count_text(const char*, const char*, const char*, std::size_t) noexcept;
template std::size_t count_text(const char16_t*, const char16_t*, const char16_t*,
                                std::size_t) noexcept;

}  // namespace platform
