#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "ascii_runs.h"
#include "multibyte_case.h"
#include "multibyte_fold.h"

namespace platform {
namespace {

using Bytes = Lanes<char>::Vector;
constexpr std::size_t kLanes = Lanes<char>::kCount;

// Texts are taken in hand in pieces of this size: their lengths are not known.
constexpr std::size_t kPiece = 256;

// Where two texts that differ do so first.
std::size_t first_difference(const char* left, const char* right) {
    std::size_t at = 0;
    for (; at < kLanes; ++at) {
        if (left[at] != right[at]) {
            return at;
        }
    }
    for (std::size_t piece = kPiece; piece >= kLanes; piece /= 2) {
        while (std::strncmp(left + at, right + at, piece) == 0) {
            at += piece;
        }
    }
    while (left[at] == right[at]) {
        ++at;
    }
    return at;
}

// Texts folded byte by byte. In UTF-8 that leaves the bytes of longer characters as they are.
class FoldedBytes {
public:
    FoldedBytes(const Fold& fold, const char* left, const char* right)
        : fold_(fold), left_(left), right_(right) {}

    int Order(std::size_t at) const {
        return static_cast<unsigned char>(fold_.Byte(left_[at])) -
               static_cast<unsigned char>(fold_.Byte(right_[at]));
    }

    // Where they differ first, from `at` on; the end of both where they do not.
    std::size_t Difference(std::size_t at) const {
        for (const std::size_t soon = at + kLanes; at < soon; ++at) {
            if (Order(at) != 0 || left_[at] == '\0') {
                return at;
            }
        }
        const Bytes caseBit = splat_lanes(fold_.IsUsualForAscii() ? kCaseBit : '\0');
        for (;;) {
            const std::size_t size =
                std::min(::strnlen(left_ + at, kPiece), ::strnlen(right_ + at, kPiece));
            const std::size_t end = at + size;
            at = DifferenceWithin(at, end, caseBit);
            if (at < end || size < kPiece) {
                return at;
            }
        }
    }

private:
    // Needs a vector of equal bytes in front of `at`.
    std::size_t DifferenceWithin(std::size_t at, std::size_t end, Bytes caseBit) const {
        while (at < end) {
            // The last step looks at some bytes for the second time.
            const std::size_t step = std::min(at, end - kLanes);
            std::uint64_t hits = hit_bits(~Alike(step, caseBit));
            for (; hits != 0; hits = without_first_hit<char>(hits)) {
                const std::size_t place = step + static_cast<std::size_t>(first_hit<char>(hits));
                if (Order(place) != 0) {
                    return place;
                }
            }
            at = step + kLanes;
        }
        return end;
    }

    // Equal bytes, and letters that differ by `caseBit`.
    Bytes Alike(std::size_t at, Bytes caseBit) const {
        const Bytes left = load_lanes(left_ + at);
        const Bytes difference = left ^ load_lanes(right_ + at);
        const auto isLetter = reinterpret_cast<Bytes>((left | caseBit) - 'a' < kLetters);
        return reinterpret_cast<Bytes>(difference == 0) |
               (reinterpret_cast<Bytes>(difference == caseBit) & isLetter);
    }

    static constexpr char kCaseBit = 0x20;
    static constexpr unsigned char kLetters = 26;

    const Fold& fold_;
    const char* left_;
    const char* right_;
};

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
    const std::size_t at = first_difference(left, right);
    if (is_ascii(left[at]) || is_ascii(right[at])) {
        // No longer character holds the ASCII byte. Whatever stands opposite is no smaller.
        return byteOrder;
    }
    const std::size_t start = common_start_utf8(left, right, at);
    return compare_codes(left + start, utf8_length(left + start), right + start,
                         utf8_length(right + start));
}

int compare_double_byte(const CodePage& page, const char* left, const char* right) {
    const std::size_t start = common_start_double_byte(page, left, first_difference(left, right));
    return compare_characters(page, left + start, right + start);
}

// For texts that differ.
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
    const FoldedBytes bytes(fold, left, right);
    for (std::size_t at = 0;;) {
        at = bytes.Difference(at);
        if (is_ascii(left[at]) || is_ascii(right[at])) {
            return bytes.Order(at);
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
    const FoldedBytes bytes(fold, left, right);
    return bytes.Order(bytes.Difference(0));
}

}  // namespace

int _mbscmp(const CodePage& page, const char* left, const char* right) noexcept {
    const int byteOrder = std::strcmp(left, right);
    if (byteOrder == 0) {
        return 0;
    }
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
            return compare_folded_single_bytes(fold, left, right);
        case Grouping::Utf8:
            return compare_folded_utf8(page, fold, left, right);
        case Grouping::DoubleByte:
        case Grouping::Other:
            break;
    }
    // What looks like a letter may be part of a longer character, so there is no short cut but
    // this.
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
