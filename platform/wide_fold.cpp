#include <wctype.h>

#include <algorithm>
#include <functional>

#include "page_loads.h"
#include "two_way.h"
#include "wide_text.h"

namespace platform {
namespace {

using Units = Lanes<char16_t>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;
constexpr char16_t kFirstNonAscii = 0x80;
constexpr char16_t kCaseBit = 0x20;
constexpr char16_t kLetters = 26;

using UnitMap = char16_t (*)(char16_t) noexcept;

char16_t space_map(char16_t unit) noexcept {
    return iswspace(unit);
}

char16_t punctuation_map(char16_t unit) noexcept {
    return iswpunct(unit);
}

char16_t control_map(char16_t unit) noexcept {
    return iswcntrl(unit);
}

// What the locale says of units, for a walk over many of them: the C library is slow to answer, so
// a unit that comes again is not asked for again.
class Answers {
public:
    explicit Answers(UnitMap ask) : ask_(ask) {
        // No unit is filed under another's slot, so this slot starts out as unknown as the others.
        unit_[0] = 1;
    }

    char16_t operator()(char16_t unit) {
        const std::size_t slot = unit % kSlots;
        if (unit_[slot] != unit) {
            unit_[slot] = unit;
            answer_[slot] = ask_(unit);
        }
        return answer_[slot];
    }

private:
    static constexpr std::size_t kSlots = 256;

    UnitMap ask_;
    char16_t unit_[kSlots] = {};
    char16_t answer_[kSlots];
};

struct Case {
    UnitMap fold;
    char16_t firstLetter;
};

constexpr Case kUpper{towupper, u'a'};
constexpr Case kLower{towlower, u'A'};

// Whether each of the 26 letters folds to its partner, which is not so in Turkish. Nothing else
// below 0x80 has a case in any locale: the standard forbids it of digits, punctuation, space and
// control characters.
bool is_usual_for_ascii(Case to) {
    for (char16_t i = 0; i < kLetters; ++i) {
        const auto letter = static_cast<char16_t>(to.firstLetter + i);
        if (to.fold(letter) != (letter ^ kCaseBit)) {
            return false;
        }
    }
    return true;
}

inline Units lanes_at_least(Units units, char16_t limit) {
    return reinterpret_cast<Units>(units >= splat_lanes(limit));
}

inline Units letter_lanes(Units units, char16_t firstLetter) {
    return reinterpret_cast<Units>(units - splat_lanes(firstLetter) < splat_lanes(kLetters));
}

// Texts shorter than this are not worth asking for 26 letters.
constexpr std::ptrdiff_t kLongText = 32;

void fold_units(char16_t* first, char16_t* last, Case to) {
    Answers fold(to.fold);
    if (last - first >= kLongText && is_usual_for_ascii(to)) {
        for (; last - first >= kLanes; first += kLanes) {
            const Units units = load_lanes(first);
            if (has_hit(lanes_at_least(units, kFirstNonAscii))) {
                std::transform(first, first + kLanes, first, std::ref(fold));
            } else {
                store_lanes(first,
                            units ^ (letter_lanes(units, to.firstLetter) & splat_lanes(kCaseBit)));
            }
        }
    }
    std::transform(first, last, first, std::ref(fold));
}

char16_t* remove_members(char16_t* first, char16_t* last, UnitMap isMember) {
    Answers answers(isMember);
    char16_t* end = first;
    for (; first != last; ++first) {
        const char16_t unit = *first;
        *end = unit;
        end += answers(unit) == 0;
    }
    return end;
}

// The lanes that may hold what folds to one unit: the unit, its lower-case partner, and everything
// whose fold only the locale knows.
class Anchor {
public:
    Anchor(char16_t upper, char16_t firstUnknown)
        : upper_(splat_lanes(upper)),
          lower_(splat_lanes(IsLetter(upper) ? static_cast<char16_t>(upper | kCaseBit) : upper)),
          firstUnknown_(splat_lanes(firstUnknown)) {}

    Units Candidates(const char16_t* p) const {
        const Units units = load_lanes(p);
        return reinterpret_cast<Units>(units == upper_) | reinterpret_cast<Units>(units == lower_) |
               reinterpret_cast<Units>(units >= firstUnknown_);
    }

private:
    static bool IsLetter(char16_t upper) { return upper >= u'A' && upper <= u'Z'; }

    Units upper_;
    Units lower_;
    Units firstUnknown_;
};

class FoldedSearch {
public:
    FoldedSearch(const char16_t* first, const char16_t* last, const char16_t* upper,
                 std::ptrdiff_t count)
        : at_(first), last_(last), upper_(upper), count_(count), fold_(towupper) {}

    const char16_t* Run() {
        const bool isUsual = last_ - at_ >= kLongText && is_usual_for_ascii(kUpper);
        const char16_t firstUnknown = isUsual ? kFirstNonAscii : u'\0';
        const Anchor head(upper_[0], firstUnknown);
        const Anchor tail(upper_[count_ - 1], firstUnknown);
        for (; patience_ >= 0 && last_ - at_ >= count_ + kLanes - 1; at_ += kLanes) {
            const Units candidates = head.Candidates(at_) & tail.Candidates(at_ + count_ - 1);
            for (std::uint64_t bits = hit_bits(candidates); bits != 0;
                 bits = without_first_hit<char16_t>(bits)) {
                const std::ptrdiff_t lane = first_hit<char16_t>(bits);
                if (IsMatch(at_ + lane)) {
                    return at_ + lane;
                }
            }
            patience_ += kLanes;
        }
        for (; patience_ >= 0 && last_ - at_ >= count_; ++at_) {
            if (IsMatch(at_)) {
                return at_;
            }
        }
        return RunSteadily();
    }

private:
    bool IsMatch(const char16_t* p) {
        std::ptrdiff_t i = 0;
        while (i < count_ && fold_(p[i]) == upper_[i]) {
            ++i;
        }
        patience_ -= i;
        return i == count_;
    }

    // Never looks at a unit more often than a few times, whatever the texts are.
    const char16_t* RunSteadily() {
        const auto length = static_cast<std::size_t>(last_ - at_);
        const std::size_t found =
            find_two_way(upper_, static_cast<std::size_t>(count_), length,
                         [this](std::size_t position) { return fold_(at_[position]); });
        return found != length ? at_ + found : nullptr;
    }

    const char16_t* at_;
    const char16_t* last_;
    const char16_t* upper_;
    std::ptrdiff_t count_;
    // Units that candidates may still fold in vain before the candidates are given up.
    std::ptrdiff_t patience_ = 1024;
    Answers fold_;
};

// Lanes of ones where the units are equal, or the two cases of one letter.
Units alike_lanes(Units left, Units right, Units caseBit) {
    const Units difference = left ^ right;
    return reinterpret_cast<Units>(difference == 0) |
           (reinterpret_cast<Units>(difference == caseBit) &
            letter_lanes(left | splat_lanes(kCaseBit), u'a'));
}

class FoldedComparison {
public:
    FoldedComparison(const char16_t* left, const char16_t* right)
        : left_(left), right_(right), fold_(towlower) {}

    int Run() {
        while (!Decides()) {
            left_ += kLanes;
            right_ += kLanes;
        }
        return result_;
    }

private:
    bool Decides() {
        if (is_in_one_page(left_, kVectorBytes) && is_in_one_page(right_, kVectorBytes)) {
            return VectorDecides();
        }
        std::ptrdiff_t i = 0;
        while (i < kLanes && !UnitDecides(i)) {
            ++i;
        }
        return i < kLanes;
    }

    bool VectorDecides() {
        std::uint64_t open = OpenLanes();
        if (open != 0 && !isUsualKnown_) {
            isUsualKnown_ = true;
            caseBit_ = splat_lanes(is_usual_for_ascii(kLower) ? kCaseBit : u'\0');
            open = OpenLanes();
        }
        for (; open != 0; open = without_first_hit<char16_t>(open)) {
            if (UnitDecides(first_hit<char16_t>(open))) {
                return true;
            }
        }
        return false;
    }

    std::uint64_t OpenLanes() const {
        const Units left = load_in_page(left_);
        return hit_bits(~alike_lanes(left, load_in_page(right_), caseBit_) |
                        reinterpret_cast<Units>(left == 0));
    }

    bool UnitDecides(std::ptrdiff_t i) {
        result_ = fold_(left_[i]) - fold_(right_[i]);
        return result_ != 0 || left_[i] == 0 || right_[i] == 0;
    }

    const char16_t* left_;
    const char16_t* right_;
    Units caseBit_{};
    bool isUsualKnown_ = false;
    int result_ = 0;
    Answers fold_;
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
    // Most comparisons end here, before anything that is made for long texts can pay.
    for (std::ptrdiff_t i = 0; i < kLanes; ++i) {
        const int difference = left[i] == right[i] ? 0 : towlower(left[i]) - towlower(right[i]);
        if (difference != 0 || left[i] == 0 || right[i] == 0) {
            return difference;
        }
    }
    return FoldedComparison(left + kLanes, right + kLanes).Run();
}

void _wcsupr(char16_t* text) noexcept {
    fold_units(text, text + wcslen(text), kUpper);
}

void _wcslwr(char16_t* text) noexcept {
    fold_units(text, text + wcslen(text), kLower);
}

const char16_t* find_folded(const char16_t* first, const char16_t* last, const char16_t* upper,
                            std::size_t count) noexcept {
    if (count == 0) {
        return first;
    }
    if (static_cast<std::size_t>(last - first) < count) {
        return nullptr;
    }
    return FoldedSearch(first, last, upper, static_cast<std::ptrdiff_t>(count)).Run();
}

char16_t* remove_space(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, space_map);
}

char16_t* remove_punctuation(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, punctuation_map);
}

char16_t* remove_control(char16_t* first, char16_t* last) noexcept {
    return remove_members(first, last, control_map);
}

}  // namespace platform
