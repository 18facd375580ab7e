#pragma once

#include "search/search.h"
#include "storage.h"

/// Delimited text as ranges, for both classes.
namespace fields {

/// The place behind the delimiter number `nCount` of [first, last), or null if there are fewer.
/// `nCount` becomes the number of those that were missing.
template <class Unit>
const Unit* skip(const Unit* first, const Unit* last, Unit delimiter, long long& nCount) noexcept {
    // To count the delimiters of a stretch is faster than to find them, but it must be short enough
    // that the way back does not show.
    constexpr std::ptrdiff_t kStretch = 256;
    constexpr long long kFew = 4;
    while (nCount > kFew && last - first >= kStretch) {
        const auto nHits =
            static_cast<long long>(platform::count_unit(first, first + kStretch, delimiter));
        if (nHits >= nCount) {
            break;
        }
        nCount -= nHits;
        first += kStretch;
    }
    while (nCount > 0) {
        const Unit* hit = platform::find_unit(first, last, delimiter);
        if (hit == last) {
            return nullptr;
        }
        first = hit + 1;
        --nCount;
    }
    return first;
}

/// A run of elements: the text that is there and the delimiters of the elements that are not.
template <class Unit>
struct Run {
    const Unit* first;
    const Unit* last;
    long long padding;
};

/// The elements `nFirst` to `nLast` of [first, last); a negative `nLast` means the last there is.
template <class Unit>
Run<Unit> find(const Unit* first, const Unit* last, int nFirst, int nLast,
               Unit delimiter) noexcept {
    const Run<Unit> none = {last, last, 0};
    if (nFirst < 0 || (nLast >= 0 && nLast < nFirst)) {
        return none;
    }
    long long nMissing = nFirst;
    const Unit* start = skip(first, last, delimiter, nMissing);
    if (nLast < 0) {
        return start == nullptr ? none : Run<Unit>{start, last, 0};
    }
    long long nElements = static_cast<long long>(nLast) - nFirst + 1;
    if (start == nullptr || start == last) {
        return {last, last, nElements - 1};
    }
    const Unit* end = skip(start, last, delimiter, nElements);
    if (end != nullptr) {
        return {start, end - 1, 0};
    }
    return {start, last, nElements - 1};
}

/// `text`, which is new, becomes the run of elements of `source`.
template <class Unit>
void take(Unit*& text, const Unit* source, int first, int last, Unit delimiter) {
    const Run<Unit> run =
        find<Unit>(source, source + storage::length(source), first, last, delimiter);
    const int count = storage::distance(run.first, run.last);
    storage::alloc(text, storage::checked_length(count + run.padding));
    storage::copy_units(text, run.first, count);
    std::fill_n(text + count, run.padding, delimiter);
}

}  // namespace fields
