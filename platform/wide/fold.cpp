#include <ctype.h>
#include <wctype.h>

#include <algorithm>
#include <optional>

#include "lanes/ascii_runs.h"
#include "lanes/compaction.h"
#include "lanes/letters.h"
#include "lanes/page_loads.h"
#include "search/folded_search.h"
#include "wide/wide.h"

namespace platform {
namespace {

using Units = Lanes<char16_t>::Vector;
using WideUnits = WideLanes<char16_t>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;
constexpr char16_t kFirstNonAscii = 0x80;

// What the locale says of units, for a walk over many of them: the C library is slow to answer, so
// a unit that comes again is not asked for again.
template <class Answer>
class Answers {
public:
    using Ask = Answer (*)(char16_t) noexcept;

    explicit Answers(Ask ask) : ask_(ask) {
        // No unit is filed under another's slot, so this slot starts out as unknown as the others.
        unit_[0] = 1;
    }

    Answer operator()(char16_t unit) {
        const std::size_t slot = unit % kSlots;
        if (unit_[slot] != unit) {
            unit_[slot] = unit;
            answer_[slot] = ask_(unit);
        }
        return answer_[slot];
    }

private:
    static constexpr std::size_t kSlots = 256;

    Ask ask_;
    char16_t unit_[kSlots] = {};
    Answer answer_[kSlots];
};

using Folds = Answers<char16_t>;
using Membership = Answers<bool>;

// One direction of case, for a walk over many units.
class Folder {
public:
    static Folder Upper() { return {towupper, *__ctype_toupper_loc(), u'a'}; }
    static Folder Lower() { return {towlower, *__ctype_tolower_loc(), u'A'}; }

    // Whether the letters of ASCII fold to each other, which is not so in Turkish. No locale may
    // give a case to other characters of ASCII.
    bool IsUsualForAscii() const { return isUsual_; }

    char16_t operator()(char16_t unit) {
        if (isUsual_ && unit < kFirstNonAscii) {
            return static_cast<char16_t>(is_letter(unit, firstLetter_) ? unit ^ kCaseBit : unit);
        }
        if (!answers_) {
            answers_.emplace(fold_);
        }
        return (*answers_)(unit);
    }

    char16_t FirstLetter() const { return firstLetter_; }

private:
    Folder(Folds::Ask fold, const std::int32_t* bytes, char16_t firstLetter)
        : fold_(fold), firstLetter_(firstLetter) {
        std::int32_t differences = 0;
        for (std::int32_t i = 0; i < kLetters; ++i) {
            differences |= bytes[firstLetter + i] ^ (firstLetter + i) ^ kCaseBit;
        }
        // A thread that is older than the locale still has the table of bytes that it began with.
        const auto i = static_cast<char16_t>(firstLetter + (u'i' - u'a'));
        isUsual_ = differences == 0 && fold(i) == (i ^ kCaseBit);
    }

    Folds::Ask fold_;
    char16_t firstLetter_;
    bool isUsual_;
    std::optional<Folds> answers_;
};

// Folds from the start on, as long as a step holds nothing but ASCII; gives where it stopped.
char16_t* fold_ascii(char16_t* first, char16_t* last, char16_t firstLetter) {
    constexpr std::ptrdiff_t kStep = kStepUnits<char16_t>;
    for (; last - first >= kStep && is_ascii_long_step(first); first += kStep) {
        for (char16_t* p = first; p != first + kStep; p += WideLanes<char16_t>::kCount) {
            store_lanes(p, turn_letters(load_lanes<kWideBytes>(p), firstLetter));
        }
    }
    return first;
}

void fold_units(char16_t* first, char16_t* last, Folder&& fold) {
    if (fold.IsUsualForAscii()) {
        // By value: what is stored might be the folder's.
        const char16_t firstLetter = fold.FirstLetter();
        first = fold_ascii(first, last, firstLetter);
        for (; last - first >= kLanes; first += kLanes) {
            const Units units = load_lanes(first);
            store_lanes(first, turn_letters(units, firstLetter));
            const auto others = reinterpret_cast<Units>(units >= splat_lanes(kFirstNonAscii));
            for (std::uint64_t hits = hit_bits(others); hits != 0;
                 hits = without_first_hit<char16_t>(hits)) {
                char16_t& unit = first[first_hit<char16_t>(hits)];
                unit = fold(unit);
            }
        }
    }
    for (; first != last; ++first) {
        *first = fold(*first);
    }
}

// A class of units; what the locale hardly ever puts into it is one run of ASCII.
struct Members {
    Membership::Ask isMember;
    char16_t firstOther;
    char16_t lastOther;
};

constexpr Members kSpace{iswspace, u'!', u'~'};
constexpr Members kPunctuation{iswpunct, u'a', u'z'};
constexpr Members kControl{iswcntrl, u' ', u'~'};

// So short that hardly a unit comes again.
constexpr std::ptrdiff_t kShortText = 32;

// Long enough that asking for all of ASCII in advance does not show.
constexpr std::ptrdiff_t kLongText = 4096;

// Drops the members of a long text.
char16_t* remove_by_vectors(char16_t* first, char16_t* last, Members members, Membership& answers) {
    bool isAsciiMember[kFirstNonAscii];
    for (char16_t unit = 0; unit < kFirstNonAscii; ++unit) {
        isAsciiMember[unit] = members.isMember(unit);
    }
    const auto isMember = [&](char16_t unit) -> bool {
        return unit < kFirstNonAscii ? isAsciiMember[unit] : answers(unit);
    };
    if (std::any_of(isAsciiMember + members.firstOther, isAsciiMember + members.lastOther + 1,
                    [](bool isHit) { return isHit; })) {
        return keep_each<char16_t>(first, last, first, isMember);
    }
    const Units firstOther = splat_lanes(members.firstOther);
    const Units span = splat_lanes(static_cast<char16_t>(members.lastOther - members.firstOther));
    const auto candidates = [=](const char16_t* p) {
        return hit_bits(reinterpret_cast<Units>(load_lanes(p) - firstOther > span));
    };
    const auto hitsOf = [&](const char16_t* p) {
        std::uint64_t hits = 0;
        std::uint64_t open = candidates(p) | candidates(p + kLanes) << 16;
        for (; open != 0; open = without_first_hit<char16_t>(open)) {
            const std::ptrdiff_t lane = first_hit<char16_t>(open);
            hits |= std::uint64_t{isMember(p[lane]) ? 3U : 0U} << 2 * lane;
        }
        return hits;
    };
    return drop_hits(first, last, hitsOf, isMember);
}

char16_t* remove_members(char16_t* first, char16_t* last, Members members) {
    if (last - first < kShortText) {
        return keep_each<char16_t>(first, last, first, members.isMember);
    }
    Membership answers(members.isMember);
    if (last - first >= kLongText) {
        return remove_by_vectors(first, last, members, answers);
    }
    return keep_each<char16_t, Membership&>(first, last, first, answers);
}

// Lanes of ones where the units are equal, or the two cases of one letter.
WideUnits alike_lanes(WideUnits left, WideUnits right, WideUnits caseBit) {
    const WideUnits difference = left ^ right;
    return reinterpret_cast<WideUnits>(difference == 0) |
           (reinterpret_cast<WideUnits>(difference == caseBit) &
            letter_lanes(left | splat_lanes<kWideBytes>(char16_t{kCaseBit}), u'a'));
}

class FoldedComparison {
public:
    FoldedComparison(const char16_t* left, const char16_t* right) : left_(left), right_(right) {}

    int Run() {
        while (!Decides()) {
            left_ += WideLanes<char16_t>::kCount;
            right_ += WideLanes<char16_t>::kCount;
        }
        return result_;
    }

private:
    bool Decides() {
        if (is_in_one_page<kWideBytes>(left_) && is_in_one_page<kWideBytes>(right_)) {
            return VectorDecides();
        }
        std::ptrdiff_t i = 0;
        while (i < WideLanes<char16_t>::kCount && !UnitDecides(i)) {
            ++i;
        }
        return i < WideLanes<char16_t>::kCount;
    }

    bool VectorDecides() {
        for (std::uint64_t open = OpenLanes(); open != 0;) {
            const bool hadFold = fold_.has_value();
            if (UnitDecides(first_hit<char16_t>(open))) {
                return true;
            }
            open = hadFold ? without_first_hit<char16_t>(open) : OpenLanes();
        }
        return false;
    }

    std::uint64_t OpenLanes() const {
        const WideUnits left = load_in_page<kWideBytes>(left_);
        return hit_bits(~alike_lanes(left, load_in_page<kWideBytes>(right_), caseBit_) |
                        reinterpret_cast<WideUnits>(left == 0));
    }

    bool UnitDecides(std::ptrdiff_t i) {
        if (left_[i] == right_[i]) {
            return left_[i] == 0;
        }
        if (!fold_) {
            fold_.emplace(Folder::Lower());
            caseBit_ =
                splat_lanes<kWideBytes>(fold_->IsUsualForAscii() ? char16_t{kCaseBit} : u'\0');
        }
        result_ = (*fold_)(left_[i]) - (*fold_)(right_[i]);
        return result_ != 0 || left_[i] == 0 || right_[i] == 0;
    }

    const char16_t* left_;
    const char16_t* right_;
    int result_ = 0;
    // The case does not count before a difference has shown that it has to be asked for.
    std::optional<Folder> fold_;
    WideUnits caseBit_{};
};

}  // namespace

char16_t towupper(char16_t unit) noexcept {
    const wint_t folded = ::towupper(unit);
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

char16_t towlower(char16_t unit) noexcept {
    const wint_t folded = ::towlower(unit);
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

bool iswspace(char16_t unit) noexcept {
    return ::iswspace(unit) != 0;
}

bool iswpunct(char16_t unit) noexcept {
    return ::iswpunct(unit) != 0;
}

bool iswcntrl(char16_t unit) noexcept {
    return ::iswcntrl(unit) != 0;
}

bool iswdigit(char16_t unit) noexcept {
    return ::iswdigit(unit) != 0;
}

int _wcsicmp(const char16_t* left, const char16_t* right) noexcept {
    return FoldedComparison(left, right).Run();
}

void _wcsupr(char16_t* text) noexcept {
    fold_units(text, text + wcslen(text), Folder::Upper());
}

void _wcslwr(char16_t* text) noexcept {
    fold_units(text, text + wcslen(text), Folder::Lower());
}

const char16_t* find_folded(const char16_t* first, const char16_t* last, const char16_t* upper,
                            std::size_t count) noexcept {
    if (count == 0 || static_cast<std::size_t>(last - first) < count) {
        return count == 0 ? first : nullptr;
    }
    Folder fold = Folder::Upper();
    return find_folded(first, last, upper, count, fold, fold.IsUsualForAscii());
}

char16_t* remove_space(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, kSpace);
}

char16_t* remove_punctuation(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, kPunctuation);
}

char16_t* remove_control(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, kControl);
}

}  // namespace platform
