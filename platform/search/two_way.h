#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

/// Search of a text that is computed unit by unit, in linear time and without memory of its own.
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

/// Position of the first occurrence of the pattern in the `length` units that `text(position)`
/// gives, or `length`. The pattern is not empty.
template <class Unit, class Text>
std::size_t find_two_way(const Unit* pattern, std::size_t count, std::size_t length, Text text) {
    const CriticalCut cut = cut_pattern(pattern, count);
    std::size_t remembered = 0;
    for (std::size_t at = 0; count <= length && at <= length - count;) {
        std::size_t i = std::max(cut.right, remembered);
        while (i < count && pattern[i] == text(at + i)) {
            ++i;
        }
        if (i < count) {
            at += i - cut.right + 1;
            remembered = 0;
            continue;
        }
        i = cut.right;
        while (i > remembered && pattern[i - 1] == text(at + i - 1)) {
            --i;
        }
        if (i <= remembered) {
            return at;
        }
        at += cut.period;
        remembered = cut.remembered;
    }
    return length;
}

}  // namespace platform
