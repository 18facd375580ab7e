#pragma once

#include <cstddef>
#include <cstdint>

#include "search/two_way.h"

namespace platform {

/// The places of a text inside another, for `char` and `char16_t`. Fast on ordinary text; on text
/// made to mislead it, still linear for all places together.
template <class Unit>
class TextSearch {
public:
    /// Looks for the `count` units at `text`, at least 1, in [first, last). Both stay the caller's.
    TextSearch(const Unit* first, const Unit* last, const Unit* text, std::size_t count) noexcept;

    /// The next place, which may overlap the one before; null when there is none left.
    const Unit* Next() noexcept;

    /// The next place that does not overlap the one that this gave before.
    const Unit* NextApart() noexcept;

    /// Leaves out the places in front of `place`, which is not behind the end.
    void SkipTo(const Unit* place) noexcept;

private:
    enum class Way : unsigned char { TwoUnits, OneUnit, Linear };

    const Unit* NextByUnits();
    const Unit* NextInRest();
    const Unit* Match(std::uint64_t hits, const Unit* block);
    bool Matches(const Unit* place);
    void TurnLinear();
    const Unit* NextLinear();

    const Unit* first_;
    const Unit* next_;  // first place not looked at
    const Unit* end_;   // behind the last place where the text has room
    const Unit* text_;
    std::size_t count_;
    std::size_t firstUnit_;
    std::size_t secondUnit_;
    std::size_t spent_ = 0;  // units compared so far
    Way way_;
    std::ptrdiff_t met_ = 0;  // blocks with the first unit

    // Of the linear way.
    CriticalCut cut_{};
    std::size_t known_ = 0;  // units at `next_` known to fit
};

}  // namespace platform
