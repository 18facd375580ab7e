#include <strings.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "lanes/ascii_runs.h"
#include "multibyte/case.h"
#include "multibyte/fold.h"

namespace platform {
namespace {

using Bytes = Lanes<char>::Vector;
constexpr std::size_t kLanes = Lanes<char>::kCount;

struct Pair {
    int Order(std::size_t at) const {
        return static_cast<unsigned char>(left[at]) - static_cast<unsigned char>(right[at]);
    }

    static Bytes CaseBit() { return Bytes{}; }

    Bytes Alike(std::size_t at, Bytes) const {
        return reinterpret_cast<Bytes>(load_lanes(left + at) == load_lanes(right + at));
    }

    const char* left;
    const char* right;
};

// The texts folded byte by byte. In UTF-8 that leaves the bytes of longer characters as they are.
class FoldedPair {
public:
    FoldedPair(const Fold& fold, const char* leftText, const char* rightText)
        : left(leftText), right(rightText), fold_(fold) {}

    int Order(std::size_t at) const {
        return static_cast<unsigned char>(fold_.Byte(left[at])) -
               static_cast<unsigned char>(fold_.Byte(right[at]));
    }

    // In which bit letters of the same fold differ; none where the fold is not the usual one.
    Bytes CaseBit() const { return splat_lanes(fold_.IsUsualForAscii() ? char{kCaseBit} : '\0'); }

    // Not all that folds to the same, but nearly all.
    Bytes Alike(std::size_t at, Bytes caseBit) const {
        const Bytes bytes = load_lanes(left + at);
        const Bytes difference = bytes ^ load_lanes(right + at);
        return reinterpret_cast<Bytes>(difference == 0) |
               (reinterpret_cast<Bytes>(difference == caseBit) &
                letter_lanes(bytes | caseBit, 'a'));
    }

    const char* left;
    const char* right;

private:
    const Fold& fold_;
};

// Needs as many bytes in front of `at` as a vector has, all without a difference.
template <class Texts>
std::size_t difference_within(const Texts& texts, std::size_t at, std::size_t end, Bytes caseBit) {
    while (at < end) {
        // The last step looks at some bytes for the second time.
        const std::size_t step = std::min(at, end - kLanes);
        std::uint64_t hits = hit_bits(~texts.Alike(step, caseBit));
        for (; hits != 0; hits = without_first_hit<char>(hits)) {
            const std::size_t place = step + static_cast<std::size_t>(first_hit<char>(hits));
            if (texts.Order(place) != 0) {
                return place;
            }
        }
        at = step + kLanes;
    }
    return end;
}

// Where the texts differ first from `at` on; where they do not, the end of both. Their lengths are
// not known, so they are taken in pieces.
template <class Texts>
std::size_t first_difference(const Texts& texts, std::size_t at) {
    constexpr std::size_t kPiece = 256;
    for (const std::size_t soon = at + kLanes; at < soon; ++at) {
        if (texts.Order(at) != 0 || texts.left[at] == '\0') {
            return at;
        }
    }
    const Bytes caseBit = texts.CaseBit();
    for (;;) {
        const std::size_t size =
            std::min(::strnlen(texts.left + at, kPiece), ::strnlen(texts.right + at, kPiece));
        const std::size_t end = at + size;
        at = difference_within(texts, at, end, caseBit);
        if (at < end || size < kPiece) {
            return at;
        }
    }
}

// As numbers, first byte high. That byte is not NUL, so the longer one is the larger.
int compare_codes(const char* left, std::size_t leftLength, const char* right,
                  std::size_t rightLength) {
    if (leftLength != rightLength) {
        return leftLength < rightLength ? -1 : 1;
    }
    return std::memcmp(left, right, leftLength);
}

int compare_characters(const CodePage& page, const char* left, const char* right) {
    return compare_codes(left, character_length(page, left), right, character_length(page, right));
}

// The last place not above `at` where in both texts a character starts, `at` being where the texts
// differ first. That is the start of the first characters that differ: one of the two holds the
// byte at `at`.
std::size_t common_start_utf8(const char* left, const char* right, std::size_t at) {
    for (std::size_t back = 1; back < 4 && back <= at; ++back) {
        const std::size_t start = at - back;
        if (!is_utf8_continuation(left[start])) {
            const std::size_t longer =
                std::max(utf8_length(left + start), utf8_length(right + start));
            return longer > back ? start : at;
        }
    }
    return at;
}

// A byte that is no lead ends its character, so behind it the leads go in pairs.
std::size_t common_start_double_byte(const CodePage& page, const char* left, std::size_t at) {
    std::size_t start = at;
    while (start > 0 && page.IsLead(static_cast<unsigned char>(left[start - 1]))) {
        --start;
    }
    return at - (at - start) % 2;
}

int compare_utf8(const char* left, const char* right, int byteOrder) {
    const std::size_t at = first_difference(Pair{left, right}, 0);
    if (is_ascii(left[at]) || is_ascii(right[at])) {
        // No longer character holds the ASCII byte. Whatever stands opposite is no smaller.
        return byteOrder;
    }
    const std::size_t start = common_start_utf8(left, right, at);
    return compare_codes(left + start, utf8_length(left + start), right + start,
                         utf8_length(right + start));
}

int compare_double_byte(const CodePage& page, const char* left, const char* right) {
    const std::size_t start =
        common_start_double_byte(page, left, first_difference(Pair{left, right}, 0));
    return compare_characters(page, left + start, right + start);
}

// The texts differ.
int compare_walking(const CodePage& page, const char* left, const char* right) {
    for (;;) {
        if (is_ascii(*left) && *left == *right) {
            ++left;
            ++right;
            continue;
        }
        const std::size_t length = character_length(page, left);
        const int order = compare_codes(left, length, right, character_length(page, right));
        if (order != 0) {
            return order;
        }
        left += length;
        right += length;
    }
}

int compare_folded_codes(const CodePage& page, const Fold& fold, const char* left,
                         std::size_t leftLength, const char* right, std::size_t rightLength) {
    if (compare_codes(left, leftLength, right, rightLength) == 0) {
        return 0;
    }
    char leftFolded[MB_LEN_MAX];
    char rightFolded[MB_LEN_MAX];
    std::memcpy(leftFolded, left, leftLength);
    std::memcpy(rightFolded, right, rightLength);
    fold_character(page, fold, leftFolded, leftLength);
    fold_character(page, fold, rightFolded, rightLength);
    return compare_codes(leftFolded, leftLength, rightFolded, rightLength);
}

int compare_folded_walking(const CodePage& page, const Fold& fold, const char* left,
                           const char* right) {
    for (;;) {
        if (is_ascii(*left) && is_ascii(*right)) {
            const int order = static_cast<unsigned char>(fold.Byte(*left)) -
                              static_cast<unsigned char>(fold.Byte(*right));
            if (order != 0 || *left == '\0') {
                return order;
            }
            ++left;
            ++right;
            continue;
        }
        const std::size_t length = character_length(page, left);
        const int order =
            compare_folded_codes(page, fold, left, length, right, character_length(page, right));
        if (order != 0) {
            return order;
        }
        left += length;
        right += length;
    }
}

int compare_folded_utf8(const CodePage& page, const Fold& fold, const char* left,
                        const char* right) {
    const FoldedPair texts(fold, left, right);
    for (std::size_t at = 0;;) {
        at = first_difference(texts, at);
        if (is_ascii(left[at]) || is_ascii(right[at])) {
            return texts.Order(at);
        }
        at = common_start_utf8(left, right, at);
        while (!is_ascii(left[at]) && !is_ascii(right[at])) {
            const std::size_t length = utf8_length(left + at);
            const int order = compare_folded_codes(page, fold, left + at, length, right + at,
                                                   utf8_length(right + at));
            if (order != 0) {
                return order;
            }
            at += length;
        }
    }
}

int compare_folded_single_bytes(const Fold& fold, const char* left, const char* right) {
    const FoldedPair texts(fold, left, right);
    return texts.Order(first_difference(texts, 0));
}

// Takes the texts as single bytes. Where an instrumented build puts its own `strcasecmp` in the
// place of the C library's, that knows the 26 letters and not the locale: it misses pairs, which
// the comparison afterwards finds, but must not be asked where an I is no capital i.
bool is_same_by_library(const Fold& fold, const char* left, const char* right) {
    return fold.Byte('I') == 'i' && ::strcasecmp(left, right) == 0;
}

}  // namespace

int _mbscmp(const CodePage& page, const char* left, const char* right, int byteOrder) noexcept {
    switch (page.grouping) {
        case Grouping::SingleByte:
            return byteOrder;
        case Grouping::Utf8:
            return compare_utf8(left, right, byteOrder);
        case Grouping::DoubleByte:
            return compare_double_byte(page, left, right);
        case Grouping::Other:
            break;
    }
    return compare_walking(page, left, right);
}

int _mbsicmp(const CodePage& page, const char* left, const char* right) noexcept {
    const Fold fold = Fold::Lower();
    switch (page.grouping) {
        case Grouping::SingleByte:
            return is_same_by_library(fold, left, right)
                       ? 0
                       : compare_folded_single_bytes(fold, left, right);
        case Grouping::Utf8:
            return is_same_by_library(fold, left, right)
                       ? 0
                       : compare_folded_utf8(page, fold, left, right);
        case Grouping::DoubleByte:
        case Grouping::Other:
            break;
    }
    // What looks like a letter may be part of a longer character.
    return std::strcmp(left, right) == 0 ? 0 : compare_folded_walking(page, fold, left, right);
}

int _mbscoll(const CodePage&, const char* left, const char* right) {
    return std::strcoll(left, right);
}

int _mbsicoll(const CodePage& page, const char* left, const char* right) {
    constexpr std::size_t kSmall = 512;
    const std::size_t leftSize = std::strlen(left) + 1;
    const std::size_t rightSize = std::strlen(right) + 1;
    char small[kSmall];
    std::unique_ptr<char[]> large;
    char* copies = small;
    if (leftSize + rightSize > kSmall) {
        large.reset(new char[leftSize + rightSize]);
        copies = large.get();
    }
    std::memcpy(copies, left, leftSize);
    std::memcpy(copies + leftSize, right, rightSize);
    _mbslwr(page, copies);
    _mbslwr(page, copies + leftSize);
    return std::strcoll(copies, copies + leftSize);
}

}  // namespace platform
