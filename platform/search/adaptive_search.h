#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "lanes/vectors.h"
#include "search/two_way.h"

/// The search for a pattern, exact or with case ignored, that is fast on ordinary text and linear
/// on any.
///
/// At first 64 bytes of places at a time are probed by the two units of the pattern that are least
/// common in everyday text; where both fit, the whole is compared. One that is rare is even looked
/// for alone, until it turns out not to be rare here. What comparisons cost is added up. When it
/// outweighs the way gone so far, the text is adverse, and the two-way search takes over for the
/// rest. The rows find_text, nc_find and count_text of the benchmark chose the ranks and the
/// constants.
namespace platform {

// How common a unit is in text, by guess: a bad guess costs time only.
inline constexpr unsigned char kRare = 20;
inline constexpr unsigned char kForeign = 60;

inline constexpr auto kCommonness = [] {
    constexpr std::string_view kFromRareToCommon =
        "jqxz\n\t-_/'\"();=:.,0123456789kvbywgfpmucldhrsnioate ";
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

// What a comparison costs however soon it ends, in units compared.
inline constexpr std::size_t kGlance = 16;

/// Two units of a pattern, at their offsets: a place is compared where both may be. A `Test` tells
/// of a vector of units which may be the one that it was made of.
template <class Unit, class Test>
struct Probe {
    static constexpr std::ptrdiff_t kNarrow = Lanes<Unit>::kCount;
    static constexpr std::ptrdiff_t kWide = kStepUnits<Unit>;

    Probe(const Unit* pattern, std::size_t a, std::size_t b)
        : first(a), second(b), firstTest(pattern[a]), secondTest(pattern[b]) {}

    template <std::size_t kBytes = kNarrowBytes>
    auto At(const Unit* p) const {
        return firstTest.template At<kBytes>(p + first) &
               secondTest.template At<kBytes>(p + second);
    }

    /// A bit for each byte of the places from `p` on where both may be.
    std::uint64_t Hits(const Unit* p) const {
        const auto at = [this](const Unit* place) { return At<kWideBytes>(place); };
        return has_hit(any_in_step(p, at)) ? bits_in_step(p, at) : 0;
    }

    bool HasFirst(const Unit* p) const {
        return has_hit(any_in_step(p + first, [this](const Unit* place) {
            return firstTest.template At<kWideBytes>(place);
        }));
    }

    std::size_t first;
    std::size_t second;
    Test firstTest;
    Test secondTest;
};

struct TwoOffsets {
    std::size_t first;
    std::size_t second;
};

/// Those of two of the least common units, the least common one first. Among equal ones the last of
/// the pattern is the second: what is far apart seldom fits together by chance. Of a long pattern
/// the beginning has uncommon units enough.
template <class Unit, class Rank>
TwoOffsets choose_units(const Unit* pattern, std::size_t count, Rank rank) {
    constexpr std::size_t kChoice = 32;
    TwoOffsets chosen{0, count - 1};
    unsigned firstRank = rank(pattern[0]);
    unsigned secondRank = rank(pattern[count - 1]);
    for (std::size_t i = 1; i < std::min(count, kChoice); ++i) {
        const unsigned next = rank(pattern[i]);
        if (next < firstRank) {
            if (firstRank < secondRank || chosen.second == i) {
                chosen.second = chosen.first;
                secondRank = firstRank;
            }
            chosen.first = i;
            firstRank = next;
        } else if (next < secondRank) {
            chosen.second = i;
            secondRank = next;
        }
    }
    return chosen;
}

/// A `Matcher` has the pattern as `pattern` and `count`, at least 1, which stay the caller's, and
/// says what fits: `Test` and `Rank` of a unit of the pattern, `CanProbe` whether a `Test` knows
/// all that fits, `At(p)` the unit that counts at a place, `Matches(p, spent)` whether all of the
/// pattern is there, which adds its cost.
template <class Unit, class Matcher>
class AdaptiveSearch {
public:
    /// Looks in [first, last) for what a matcher of these parts fits.
    template <class... Parts>
    AdaptiveSearch(const Unit* first, const Unit* last, Parts&&... parts) noexcept
        : matcher_{std::forward<Parts>(parts)...}, first_(first), next_(first), end_(first) {
        Begin(static_cast<std::size_t>(last - first));
    }

    /// The next place, which may overlap the one before; null when there is none left.
    const Unit* Next() noexcept;

    /// The next place that does not overlap the one that this gave before.
    const Unit* NextApart() noexcept;

    /// Leaves out the places in front of `place`, which is not behind the end.
    void SkipTo(const Unit* place) noexcept;

private:
    using Probing = Probe<Unit, typename Matcher::Test>;
    enum class Way : unsigned char { TwoUnits, OneUnit, Linear };

    // A unit that is in more than one of so many blocks is not rare.
    static constexpr std::ptrdiff_t kCommon = 8;

    // What may be spent on comparisons: this much, and a multiple of the way already gone.
    static constexpr std::size_t kSlack = 2048;
    static constexpr std::size_t kSpentPerUnit = 8;

    void Begin(std::size_t size);
    const Unit* NextByProbes();
    const Unit* NextInRest();
    const Unit* Match(std::uint64_t hits, const Unit* block);
    void TurnLinear();
    const Unit* NextLinear();

    Matcher matcher_;
    const Unit* first_;
    const Unit* next_;  // first place not looked at
    const Unit* end_;   // behind the last place where the pattern has room
    TwoOffsets units_{};
    std::size_t spent_ = 0;
    Way way_ = Way::TwoUnits;
    std::ptrdiff_t met_ = 0;  // blocks with the first unit

    // The linear way needs these.
    CriticalCut cut_{};
    std::size_t known_ = 0;  // units at `next_` known to fit
};

template <class Unit, class Matcher>
void AdaptiveSearch<Unit, Matcher>::Begin(std::size_t size) {
    if (matcher_.count <= size) {
        end_ += size - matcher_.count + 1;
    }
    if (!matcher_.CanProbe()) {
        TurnLinear();
    } else if (end_ - first_ < Probing::kWide) {
        units_.second = matcher_.count - 1;
    } else {
        units_ = choose_units(matcher_.pattern, matcher_.count, Matcher::Rank);
        way_ = Matcher::Rank(matcher_.pattern[units_.first]) < kRare ? Way::OneUnit : Way::TwoUnits;
    }
}

template <class Unit, class Matcher>
const Unit* AdaptiveSearch<Unit, Matcher>::Next() noexcept {
    if (way_ != Way::Linear) {
        const Unit* match = NextByProbes();
        if (way_ != Way::Linear) {
            return match;
        }
    }
    return NextLinear();
}

template <class Unit, class Matcher>
const Unit* AdaptiveSearch<Unit, Matcher>::NextApart() noexcept {
    const Unit* match = Next();
    if (match != nullptr) {
        SkipTo(match + matcher_.count);
    }
    return match;
}

template <class Unit, class Matcher>
void AdaptiveSearch<Unit, Matcher>::SkipTo(const Unit* place) noexcept {
    if (place > next_) {
        next_ = std::min(place, end_);
        known_ = 0;
    }
}

// Takes note of the first match among the hits of a block and gives it, unless that becomes too
// much work.
template <class Unit, class Matcher>
inline const Unit* AdaptiveSearch<Unit, Matcher>::Match(std::uint64_t hits, const Unit* block) {
    for (; hits != 0; hits = without_first_hit<Unit>(hits)) {
        const Unit* place = block + first_hit<Unit>(hits);
        if (spent_ > kSlack + kSpentPerUnit * static_cast<std::size_t>(place - first_)) {
            next_ = place;
            TurnLinear();
            return nullptr;
        }
        if (matcher_.Matches(place, spent_)) {
            next_ = place + 1;
            return place;
        }
    }
    return nullptr;
}

template <class Unit, class Matcher>
const Unit* AdaptiveSearch<Unit, Matcher>::NextByProbes() {
    const Unit* const end = end_;
    const Probing probe(matcher_.pattern, units_.first, units_.second);
    const Unit* place = next_;
    for (; end - place >= Probing::kWide; place += Probing::kWide) {
        if (way_ == Way::OneUnit) {
            while (end - place >= Probing::kWide && !probe.HasFirst(place)) {
                place += Probing::kWide;
            }
            if (end - place < Probing::kWide) {
                break;
            }
            // In this text the unit may not be rare at all.
            if (++met_ > kCommon + (place - first_) / (Probing::kWide * kCommon)) {
                way_ = Way::TwoUnits;
            }
        }
        const std::uint64_t hits = probe.Hits(place);
        if (hits == 0) {
            continue;
        }
        const Unit* match = Match(hits, place);
        if (match != nullptr || way_ == Way::Linear) {
            return match;
        }
    }
    next_ = place;
    return NextInRest();
}

template <class Unit, class Matcher>
const Unit* AdaptiveSearch<Unit, Matcher>::NextInRest() {
    if (end_ - first_ < Probing::kNarrow) {
        while (next_ != end_) {
            const Unit* place = next_++;
            if (matcher_.At(place) == *matcher_.pattern && matcher_.Matches(place, spent_)) {
                return place;
            }
        }
        return nullptr;
    }
    const Probing probe(matcher_.pattern, units_.first, units_.second);
    while (next_ != end_) {
        // The last block reaches back over places that are done.
        const Unit* const block = std::min(next_, end_ - Probing::kNarrow);
        const std::uint64_t hits = hits_from<Unit>(hit_bits(probe.At(block)), next_ - block);
        const Unit* match = Match(hits, block);
        if (match != nullptr || way_ == Way::Linear) {
            return match;
        }
        next_ = block + Probing::kNarrow;
    }
    return nullptr;
}

template <class Unit, class Matcher>
void AdaptiveSearch<Unit, Matcher>::TurnLinear() {
    cut_ = cut_pattern(matcher_.pattern, matcher_.count);
    way_ = Way::Linear;
}

template <class Unit, class Matcher>
const Unit* AdaptiveSearch<Unit, Matcher>::NextLinear() {
    const Unit* const pattern = matcher_.pattern;
    const Unit* place = next_;
    std::size_t known = known_;
    const auto step = [&](std::size_t units, std::size_t nextKnown) {
        place += std::min(static_cast<std::ptrdiff_t>(units), end_ - place);
        known = nextKnown;
    };
    const Unit* match = nullptr;
    while (match == nullptr && place != end_) {
        std::size_t i = std::max(cut_.right, known);
        while (i < matcher_.count && matcher_.At(place + i) == pattern[i]) {
            ++i;
        }
        if (i < matcher_.count) {
            step(i - cut_.right + 1, 0);
            continue;
        }
        i = cut_.right;
        while (i > known && matcher_.At(place + i - 1) == pattern[i - 1]) {
            --i;
        }
        match = i <= known ? place : nullptr;
        step(cut_.period, cut_.remembered);
    }
    next_ = place;
    known_ = known;
    return match;
}

}  // namespace platform
