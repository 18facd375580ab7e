#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

/// What the two-way search of Crochemore and Perrin knows of a pattern. It finds a pattern in
/// linear time and without memory of its own: the right part is compared first, from the left, then
/// the left part. A difference in the right part allows a step up to it, one in the left part a
/// step by the period, since the cut is chosen so that nothing shorter can fit.
namespace platform {

/// Where a pattern is cut for the search, and the step that may be taken after its right part has
/// matched and its left part has not.
struct CriticalCut {
    std::size_t right;
    std::size_t period;
    /// Units that need no second look after such a step; 0 unless the pattern is periodic.
    std::size_t remembered;
};

/// Start and period of the greatest suffix, the order of units turned round for `isReversed`.
template <class Unit>
std::pair<std::size_t, std::size_t> greatest_suffix(const Unit* pattern, std::size_t count,
                                                    bool isReversed) {
    std::size_t start = 0;
    std::size_t period = 1;
    std::size_t challenger = 1;
    std::size_t matched = 0;
    while (challenger + matched < count) {
        const Unit kept = pattern[start + matched];
        const Unit tried = pattern[challenger + matched];
        if (kept == tried) {
            if (++matched == period) {
                challenger += period;
                matched = 0;
            }
        } else if ((kept > tried) != isReversed) {
            challenger += matched + 1;
            matched = 0;
            period = challenger - start;
        } else {
            start = challenger++;
            matched = 0;
            period = 1;
        }
    }
    return {start, period};
}

template <class Unit>
CriticalCut cut_pattern(const Unit* pattern, std::size_t count) {
    const auto [right, period] =
        std::max(greatest_suffix(pattern, count, false), greatest_suffix(pattern, count, true));
    if (right + period <= count && std::equal(pattern, pattern + right, pattern + period)) {
        return {right, period, count - period};
    }
    return {right, std::max(right, count - right) + 1, 0};
}

}  // namespace platform
