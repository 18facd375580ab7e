#pragma once

#include <cstddef>
#include <utility>

#include "lanes/letters.h"
#include "search/adaptive_search.h"

namespace platform {

/// What fits where `Fold` makes a unit of the text equal to one of the pattern, which is folded to
/// upper case already. `Fold` may be a reference.
template <class Unit, class Fold>
struct FoldedMatcher {
    /// The unit, its lower-case partner, and in 16-bit text everything beyond ASCII: the fold of
    /// that only the locale knows.
    class Test {
        using Vector = typename WideLanes<Unit>::Vector;

    public:
        explicit Test(Unit upper)
            : caseBit_(splat_lanes<kWideBytes>(
                  static_cast<Unit>(is_letter(upper, Unit('A')) ? kCaseBit : 0))),
              lower_(splat_lanes<kWideBytes>(upper) | caseBit_) {}

        template <std::size_t kBytes>
        auto At(const Unit* p) const {
            const auto units = load_lanes<kBytes>(p);
            using Mask = typename Lanes<Unit, kBytes>::Vector;
            const auto known = reinterpret_cast<Mask>((units | front_lanes<kBytes>(caseBit_)) ==
                                                      front_lanes<kBytes>(lower_));
            if constexpr (sizeof(Unit) == 1) {
                return known;
            } else {
                return known | reinterpret_cast<Mask>(units > splat_lanes<kBytes>(Unit(0x7F)));
            }
        }

    private:
        Vector caseBit_;
        Vector lower_;
    };

    static unsigned Rank(Unit upper) {
        return commonness(
            static_cast<Unit>(is_letter(upper, Unit('A')) ? upper | kCaseBit : upper));
    }
    bool CanProbe() const { return isUsual; }
    Unit At(const Unit* p) { return fold(*p); }

    bool Matches(const Unit* place, std::size_t& spent) {
        // From the back, since what was probed is mostly in front.
        std::size_t left = count;
        while (left > 0 && At(place + left - 1) == pattern[left - 1]) {
            --left;
        }
        spent += kGlance + count - left;
        return left == 0;
    }

    const Unit* pattern;
    std::size_t count;
    Fold fold;
    bool isUsual;
};

/// First place in [first, last) that folds to the `count` units at `upper`, at least 1, or null.
/// `isUsual` says that the letters of ASCII fold to each other, and in narrow text that no other
/// byte folds to ASCII. Without it the search is linear, but slower.
template <class Unit, class Fold>
const Unit* find_folded(const Unit* first, const Unit* last, const Unit* upper, std::size_t count,
                        Fold&& fold, bool isUsual) {
    using Matcher = FoldedMatcher<Unit, Fold>;
    AdaptiveSearch<Unit, Matcher> search(first, last, upper, count, std::forward<Fold>(fold),
                                         isUsual);
    return search.Next();
}

}  // namespace platform
