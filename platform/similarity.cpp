#include "similarity.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

// The row of the usual table, which tells for each prefix of one text the longest common
// subsequence with what has been read of the other, grows by 0 or 1 from place to place. Here a bit
// stands for each place, set where the row stays level, and one addition takes in the next byte for
// all the places of a word.
namespace platform {
namespace {

using Word = std::uint64_t;
constexpr std::ptrdiff_t kWordBits = 64;
constexpr std::ptrdiff_t kStripWords = 4;
constexpr std::ptrdiff_t kStripBytes = kStripWords * kWordBits;
constexpr std::ptrdiff_t kByteValues = 256;

// Carries for a text of this many words of bits are kept without an allocation.
constexpr std::size_t kFewWords = 512;

// A length that can be rounded up to whole strips.
struct Run {
    const char* first;
    std::ptrdiff_t length;
};

template <std::ptrdiff_t kWords>
struct Row {
    Word level[kWords];
};

// Where in a strip of the text each byte stands.
template <std::ptrdiff_t kWords>
struct Places {
    explicit Places(Run strip) {
        for (std::ptrdiff_t i = 0; i < strip.length; ++i) {
            const auto byte = static_cast<unsigned char>(strip.first[i]);
            of[byte][i / kWordBits] |= Word{1} << i % kWordBits;
        }
    }

    Word of[kByteValues][kWords] = {};
};

// Takes in one byte; the carry comes from the strip below, the result goes to the one above.
template <std::ptrdiff_t kWords>
inline Word read_byte(Row<kWords>& row, const Word* places, Word carry) {
    for (std::ptrdiff_t i = 0; i < kWords; ++i) {
        const Word level = row.level[i];
        const Word matches = level & places[i];
        const Word sum = level + matches;
        const Word sumWithCarry = sum + carry;
        carry = static_cast<Word>(sum < matches) | static_cast<Word>(sumWithCarry < carry);
        row.level[i] = sumWithCarry | (level ^ matches);
    }
    return carry;
}

// The length of the common subsequence that falls to one strip.
template <std::ptrdiff_t kWords>
int count_in_strip(Run strip, Run read, Word* carries) {
    const Places<kWords> places(strip);
    Row<kWords> row;
    std::fill_n(row.level, kWords, ~Word{0});
    for (std::ptrdiff_t start = 0; start < read.length; start += kWordBits) {
        const std::ptrdiff_t count = std::min(kWordBits, read.length - start);
        Word carriesIn = carries[start / kWordBits];
        Word carriesOut = 0;
        for (std::ptrdiff_t i = 0; i < count; ++i) {
            const auto byte = static_cast<unsigned char>(read.first[start + i]);
            carriesOut |= read_byte(row, places.of[byte], carriesIn & 1) << i;
            carriesIn >>= 1;
        }
        carries[start / kWordBits] = carriesOut;
    }
    int count = 0;
    for (const Word level : row.level) {
        count += std::popcount(~level);
    }
    return count;
}

int count_in_strip(Run strip, Run read, Word* carries) {
    if (strip.length <= kWordBits) {
        return count_in_strip<1>(strip, read, carries);
    }
    if (strip.length <= 2 * kWordBits) {
        return count_in_strip<2>(strip, read, carries);
    }
    return count_in_strip<kStripWords>(strip, read, carries);
}

int count_in_strips(Run strips, Run read, Word* carries) {
    int count = 0;
    for (std::ptrdiff_t i = 0; i < strips.length; i += kStripBytes) {
        const Run strip{strips.first + i, std::min(kStripBytes, strips.length - i)};
        count += count_in_strip(strip, read, carries);
    }
    return count;
}

// The whole of it for a text of one word, which needs no carries. Of the table only what the texts
// ask for is cleared where that is less.
int count_in_word(Run word, Run read) {
    Word places[kByteValues];
    const auto clear = [&places](char byte) { places[static_cast<unsigned char>(byte)] = 0; };
    if (read.length < kByteValues) {
        std::for_each(read.first, read.first + read.length, clear);
        std::for_each(word.first, word.first + word.length, clear);
    } else {
        std::fill(std::begin(places), std::end(places), Word{0});
    }
    for (std::ptrdiff_t i = 0; i < word.length; ++i) {
        places[static_cast<unsigned char>(word.first[i])] |= Word{1} << i;
    }
    Word level = ~Word{0};
    for (std::ptrdiff_t i = 0; i < read.length; ++i) {
        const Word matches = level & places[static_cast<unsigned char>(read.first[i])];
        level = (level + matches) | (level ^ matches);
    }
    return std::popcount(~level);
}

int count_common(Run strips, Run read) {
    if (strips.length <= kWordBits) {
        return count_in_word(strips, read);
    }
    const auto words = static_cast<std::size_t>((read.length - 1) / kWordBits + 1);
    if (words <= kFewWords) {
        Word carries[kFewWords];
        std::fill_n(carries, words, Word{0});
        return count_in_strips(strips, read, carries);
    }
    const auto carries = std::make_unique<Word[]>(words);
    return count_in_strips(strips, read, carries.get());
}

// Cuts off what both texts begin and end with, which is part of a longest common subsequence, and
// gives its length.
int cut_common_ends(Run& a, Run& b) {
    const std::ptrdiff_t shorter = std::min(a.length, b.length);
    std::ptrdiff_t front = 0;
    while (front < shorter && a.first[front] == b.first[front]) {
        ++front;
    }
    std::ptrdiff_t back = 0;
    while (back < shorter - front && a.first[a.length - 1 - back] == b.first[b.length - 1 - back]) {
        ++back;
    }
    a = {a.first + front, a.length - front - back};
    b = {b.first + front, b.length - front - back};
    return static_cast<int>(front + back);
}

}  // namespace

int common_length(const char* a, int n, const char* b, int m) {
    Run strips{a, n};
    Run read{b, m};
    const int ends = cut_common_ends(strips, read);
    if (strips.length > read.length) {
        std::swap(strips, read);
    }
    return strips.length <= 0 ? ends : ends + count_common(strips, read);
}

}  // namespace platform
