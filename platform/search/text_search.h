#pragma once

#include <cstddef>

#include "search/adaptive_search.h"

/// Texts inside others, for `char` and `char16_t`, unit by unit. NUL is a unit like any other, and
/// nothing outside [first, last) is read.
namespace platform {

/// First occurrence of the `count` units at `text`, or null. An empty text is found at `first`.
template <class Unit>
const Unit* find_text(const Unit* first, const Unit* last, const Unit* text,
                      std::size_t count) noexcept;

/// Occurrences that do not overlap, from left to right; 0 for an empty text.
template <class Unit>
std::size_t count_text(const Unit* first, const Unit* last, const Unit* text,
                       std::size_t count) noexcept;

/// What fits where units must be equal.
template <class Unit>
struct ExactMatcher {
    class Test {
    public:
        explicit Test(Unit unit) : unit_(splat_lanes<kWideBytes>(unit)) {}

        template <std::size_t kBytes>
        auto At(const Unit* p) const {
            return lanes_equal(p, front_lanes<kBytes>(unit_));
        }

    private:
        typename WideLanes<Unit>::Vector unit_;
    };

    static unsigned Rank(Unit unit) { return commonness(unit); }
    static bool CanProbe() { return true; }
    // The analyzer takes the end of the last block that was probed for null.
    static Unit At(const Unit* p) { return *p; }  // NOLINT(clang-analyzer-core.NullDereference)
    bool Matches(const Unit* place, std::size_t& spent) const;

    const Unit* pattern;
    std::size_t count;
};

extern template class AdaptiveSearch<char, ExactMatcher<char>>;
extern template class AdaptiveSearch<char16_t, ExactMatcher<char16_t>>;

/// The places of a text, one after the other; what lies in front of the last one given may have
/// changed meanwhile.
template <class Unit>
class TextSearch : public AdaptiveSearch<Unit, ExactMatcher<Unit>> {
public:
    /// Looks for the `count` units at `text`, at least 1, in [first, last). Both stay the caller's.
    TextSearch(const Unit* first, const Unit* last, const Unit* text, std::size_t count) noexcept
        : AdaptiveSearch<Unit, ExactMatcher<Unit>>(first, last, text, count) {}
};

}  // namespace platform
