#pragma once

#include <algorithm>
#include <cstddef>

#include "multibyte/multibyte.h"
#include "pages/pages.h"
#include "search/search.h"

/// Searches that end at the first NUL, for both classes. Where that is, is not known, and behind it
/// there may be any amount of text. So the text is searched in stretches, each twice as long as all
/// before it, and before the next one the first quarter of what has been searched is looked through
/// for the NUL. A hit has to have none in front of it. A search costs a small multiple of what lies
/// in front of its end, and the look for the NUL a quarter of a pass at most. Where the NUL is
/// near, as in a list of short entries, one glance ahead finds it.
namespace searching {

/// Shorter texts are searched at once.
inline constexpr std::ptrdiff_t kFirstStretch = 1024;

/// So much of the others is looked through for the NUL first.
inline constexpr std::ptrdiff_t kGlance = 64;

/// Looks for the first NUL of a text, as far as is asked for.
template <class Unit>
class NulWatch {
public:
    explicit NulWatch(const Unit* first) : first_(first), clear_(first) {}

    /// The first NUL, if it is among so many units, or null.
    const Unit* Near(std::ptrdiff_t units) {
        const Unit* nul = platform::find_unit(first_, first_ + units, Unit{});
        clear_ = nul;
        return nul != first_ + units ? nul : nullptr;
    }

    /// Whether there is none in front of `p`.
    bool IsClear(const Unit* p) {
        if (p > clear_ && platform::find_unit(clear_, p, Unit{}) != p) {
            return false;
        }
        clear_ = std::max(clear_, p);
        return true;
    }

    /// Whether a search that has come to `end` without a hit may go on.
    bool MayGoOn(const Unit* end) { return IsClear(first_ + (end - first_) / 4); }

private:
    const Unit* first_;
    const Unit* clear_;
};

/// First hit of `find(first, last)` in front of the first NUL of [first, last), or null. A hit has
/// `size` units; `cut(first, p)` gives the last place up to `p` where the text may be cut, or
/// `first` where it knows none: then the next stretch begins at the front again.
template <class Unit, class Cut, class Find>
const Unit* find_before_nul(const Unit* first, const Unit* last, std::size_t size, Cut cut,
                            Find find) {
    if (last - first <= kFirstStretch) {
        const Unit* hit = find(first, last);
        return hit != nullptr && platform::find_unit(first, hit, Unit{}) == hit ? hit : nullptr;
    }
    NulWatch<Unit> watch(first);
    if (const Unit* end = watch.Near(kGlance)) {
        return find(first, end);
    }
    constexpr std::ptrdiff_t kMostUnits = 4;  // of a character
    const auto overlap = static_cast<std::ptrdiff_t>(std::max<std::size_t>(size, 1)) - 1;
    const Unit* from = first;
    for (std::ptrdiff_t stretch = std::max(kFirstStretch, 4 * overlap);; stretch *= 2) {
        const bool isLast = last - from <= stretch;
        const Unit* whole = isLast ? last : cut(from, from + stretch);
        const Unit* end = whole != from ? whole : from + stretch;
        const Unit* hit = find(from, end);
        if (hit != nullptr && (end == whole || end - hit > kMostUnits)) {
            return watch.IsClear(hit) ? hit : nullptr;
        }
        if (isLast || !watch.MayGoOn(end)) {
            return nullptr;
        }
        from = end == whole ? cut(from, end - overlap) : from;
    }
}

/// The last place up to `p` where a narrow text can be cut, `first` where none is near. Where only
/// a walk would tell, that is a byte that no longer character of any codeset has in it.
inline const char* narrow_cut(const platform::CodePage& page, const char* first, const char* p,
                              const char* last) {
    if (page.grouping != platform::Grouping::Other) {
        return platform::character_start(page, first, p, last);
    }
    constexpr unsigned char kLowestTrail = 0x30;
    constexpr std::ptrdiff_t kNear = 256;
    for (const char* cut = p; p - cut < kNear && cut > first; --cut) {
        if (static_cast<unsigned char>(*cut) < kLowestTrail) {
            return cut;
        }
    }
    return first;
}

template <class Find>
const char* narrow(const platform::CodePage& page, const char* first, const char* last,
                   std::size_t size, Find find) {
    const auto cut = [&](const char* front, const char* p) {
        return narrow_cut(page, front, p, last);
    };
    return find_before_nul(first, last, size, cut, find);
}

template <class Find>
const char16_t* wide(const char16_t* first, const char16_t* last, std::size_t size, Find find) {
    const auto cut = [](const char16_t*, const char16_t* p) { return p; };
    return find_before_nul(first, last, size, cut, find);
}

/// The place of a hit as an index into the text, -1 where there is none.
template <class Unit>
int index(const Unit* text, const Unit* hit) noexcept {
    return hit == nullptr ? -1 : static_cast<int>(hit - text);
}

}  // namespace searching
