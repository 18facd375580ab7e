#include "multibyte/case.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "lanes/ascii_runs.h"
#include "lanes/vectors.h"
#include "multibyte/fold.h"
#include "search/folded_search.h"
#include "search/member_scan.h"

namespace platform {
namespace {

using Bytes = Lanes<char>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char>::kCount;

// Below this the check for the usual fold costs more than the vectors save.
constexpr std::ptrdiff_t kLongText = 32;

// What characters of two bytes fold to. The C library is slow to tell, so in a long text a
// character that comes again is not asked for again. Others of several bytes hardly ever have a
// case.
class PairFold {
public:
    PairFold(const CodePage& page, const Fold& fold) : page_(page), fold_(fold) {}

    void operator()(char* p) {
        const auto pair = load_word<std::uint16_t>(p);
        Answer& answer = answers_[(pair ^ pair >> 6) % kSlots];
        if (answer.pair != pair) {
            fold_character(page_, fold_, p, 2);
            answer = {pair, load_word<std::uint16_t>(p)};
            return;
        }
        std::memcpy(p, &answer.folded, sizeof answer.folded);
    }

private:
    static constexpr std::size_t kSlots = 256;

    struct Answer {
        std::uint16_t pair;
        std::uint16_t folded;
    };

    const CodePage& page_;
    const Fold& fold_;
    Answer answers_[kSlots] = {};  // no character is two NULs
};

template <std::size_t kBytes>
void fold_lanes(const Fold& fold, char* p) {
    store_lanes(p, fold.Ascii(load_lanes<kBytes>(p)));
}

// Folds whole vectors of ASCII from `p` on; gives the place behind them.
char* fold_ascii_steps(const Fold& fold, char* p, const char* last) {
    while (last - p >= kStepUnits<char> && is_ascii_long_step(p)) {
        for (const char* end = p + kStepUnits<char>; p != end; p += kWideBytes) {
            fold_lanes<kWideBytes>(fold, p);
        }
    }
    while (last - p >= kLanes && is_ascii_step(p)) {
        fold_lanes<kNarrowBytes>(fold, p);
        p += kLanes;
    }
    return p;
}

// Folds the ASCII bytes from `p` on; gives the first other byte, or `last`.
inline char* fold_ascii(const Fold& fold, bool inVectors, char* p, const char* last) {
    // In other scripts a run is often a lone space, too short to try.
    if (inVectors && last - p >= kLanes && is_ascii(p[1])) {
        p = fold_ascii_steps(fold, p, last);
    }
    for (; p < last && is_ascii(*p); ++p) {
        *p = fold.Byte(*p);
    }
    return p;
}

void fold_single_bytes(const Fold& fold, bool inVectors, char* p, const char* last) {
    while (p < last) {
        p = fold_ascii(fold, inVectors, p, last);
        for (; p < last && !is_ascii(*p); ++p) {
            *p = fold.Byte(*p);
        }
    }
}

template <class FoldPair>
void fold_characters(const CodePage& page, const Fold& fold, bool inVectors, char* p,
                     const char* last, FoldPair&& foldPair) {
    while (p < last) {
        p = fold_ascii(fold, inVectors, p, last);
        while (p < last && !is_ascii(*p)) {
            const std::size_t length = character_length(page, p);
            // Two in the most frequent case is a guess of the processor, not a wait for the bytes.
            if (length == 2) {
                foldPair(p);
                p += 2;
                continue;
            }
            if (length > 1) {
                fold_character(page, fold, p, length);
            }
            p += length;
        }
    }
}

void fold_text(const CodePage& page, const Fold& fold, char* text) {
    const char* last = text + std::strlen(text);
    const bool inVectors = last - text >= kLongText && fold.IsUsualForAscii();
    if (page.grouping == Grouping::SingleByte) {
        fold_single_bytes(fold, inVectors, text, last);
        return;
    }
    char* rest = fold_ascii(fold, inVectors, text, last);
    if (last - rest >= kLongText) {
        fold_characters(page, fold, inVectors, rest, last, PairFold(page, fold));
    } else {
        fold_characters(page, fold, inVectors, rest, last,
                        [&](char* p) { fold_character(page, fold, p, 2); });
    }
}

void store_word(char* p, std::uint64_t word) {
    std::memcpy(p, &word, sizeof word);
}

// The halves change places in the stores: a third shuffle would be the slowest step.
inline void store_reversed(char* p, Bytes bytes) {
    auto pairs = reinterpret_cast<Lanes<char16_t>::Vector>(bytes);
    pairs = pairs << 8 | pairs >> 8;
    pairs = __builtin_shufflevector(pairs, pairs, 3, 2, 1, 0, 4, 5, 6, 7);
    pairs = __builtin_shufflevector(pairs, pairs, 0, 1, 2, 3, 7, 6, 5, 4);
    const auto words = std::bit_cast<std::array<std::uint64_t, 2>>(pairs);
    store_word(p, words[1]);
    store_word(p + 8, words[0]);
}

// Fewer bytes than a vector. The result is that of `reverse_bytes`.
bool reverse_few(char* first, char* last) {
    const bool isAscii = std::all_of(first, last, [](char byte) { return is_ascii(byte); });
    if (last - first < 8) {
        std::reverse(first, last);
        return isAscii;
    }
    const auto front = load_word<std::uint64_t>(first);
    const auto back = load_word<std::uint64_t>(last - 8);
    store_word(first, __builtin_bswap64(back));
    store_word(last - 8, __builtin_bswap64(front));
    return isAscii;
}

// Gives whether all bytes are ASCII, which costs next to nothing on the way.
bool reverse_bytes(char* first, char* last) {
    Bytes seen{};
    // Both ends are read before either is written, so in the middle they may overlap.
    for (; last - first >= kLanes; first += kLanes) {
        last -= kLanes;
        const Bytes front = load_lanes(first);
        const Bytes back = load_lanes(last);
        store_reversed(first, back);
        store_reversed(last, front);
        seen |= front | back;
    }
    const bool restIsAscii = first >= last || reverse_few(first, last);
    return restIsAscii && !has_hit(seen > 0x7F);
}

void reverse_within_characters(const CodePage& page, char* first, const char* last) {
    for (char* p = first; p < last;) {
        const std::size_t length = is_ascii(*p) ? 1 : character_length(page, p);
        if (length == 2) {
            std::swap(p[0], p[1]);
            p += 2;
            continue;
        }
        std::reverse(p, p + length);
        p += length;
    }
}

}  // namespace

void _mbsupr(const CodePage& page, char* text) noexcept {
    fold_text(page, Fold::Upper(), text);
}

void _mbslwr(const CodePage& page, char* text) noexcept {
    fold_text(page, Fold::Lower(), text);
}

void _mbsrev(const CodePage& page, char* text) noexcept {
    char* const last = text + std::strlen(text);
    const bool isAscii = reverse_bytes(text, last);
    if (isAscii || page.grouping == Grouping::SingleByte) {
        return;
    }
    // Where characters begin can be told from the front only. What is turned round inside each of
    // them comes out in order at the end.
    reverse_bytes(text, last);
    reverse_within_characters(page, text, last);
    reverse_bytes(text, last);
}

const char* find_folded(const CodePage& page, const char* first, const char* last,
                        const char* upper, std::size_t count) noexcept {
    if (count == 0 || static_cast<std::size_t>(last - first) < count) {
        return count == 0 ? first : nullptr;
    }
    const Fold fold = Fold::Upper();
    const bool isUsual =
        fold.IsUsualForAscii() && (page.grouping == Grouping::Utf8 || !fold.ReachesAscii());
    if (count == 1 && isUsual) {
        const char both[] = {*upper, Fold::Lower().Byte(*upper)};
        const char* hit = find_any_of(first, last, both, both[0] != both[1] ? 2 : 1, true);
        return hit != last ? hit : nullptr;
    }
    return find_folded(
        first, last, upper, count, [fold](char byte) { return fold.Byte(byte); }, isUsual);
}

}  // namespace platform
