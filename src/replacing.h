#pragma once

#include <climits>
#include <cstddef>
#include <cstring>

#include "multibyte/multibyte.h"
#include "storage.h"
#include "wide/wide.h"

/// Replacing and removing texts, once for both classes. `search.First(first, last)` gives the first
/// hit of a range or null, and `search.Hits(first, last)` all of them one by one, by `Next`, each
/// looked for from the end of the one before.
///
/// A result that is not longer takes one pass. A longer one is counted first, and the places of the
/// hits are noted on the way. In place it is then written from the last hit to the first, so that
/// each unit moves once; what is noted is renewed a round at a time, from the hit that the round
/// begins with.
namespace replacing {

/// Hits of which the places are noted at a time, how often that can be done, and the product.
inline constexpr int kNoted = 256;
inline constexpr int kRounds = 512;
inline constexpr int kMost = kNoted * kRounds;

template <class Unit, class Search>
class Growth {
public:
    Growth(Unit* text, int length, const Search& search)
        : text_(text), length_(length), search_(search) {}

    /// The number of hits, of which `first` is the first.
    int Count(const Unit* first) {
        auto hits = search_.Hits(first, text_ + length_);
        int count = 0;
        while (const Unit* hit = hits.Next()) {
            const int place = static_cast<int>(hit - text_);
            if (count % kNoted == 0 && count < kMost) {
                starts_[count / kNoted] = place;
            }
            places_[count % kNoted] = place;
            ++count;
        }
        return count;
    }

    /// Puts the `newSize` units at `newText` in the place of each of the `count` hits, at most
    /// `kMost`, of `oldSize` units. The block has the room.
    void Replace(int count, int oldSize, const Unit* newText, int newSize) {
        int write = length_ + count * (newSize - oldSize);
        int end = length_;
        const int lastRound = (count - 1) / kNoted;
        for (int round = lastRound; round >= 0; --round) {
            // Those of the last round are noted since they were counted.
            if (round != lastRound) {
                Note(round);
            }
            const int noted = round == lastRound ? count - round * kNoted : kNoted;
            for (int i = noted - 1; i >= 0; --i) {
                const int behind = places_[i] + oldSize;
                write -= end - behind;
                std::memmove(text_ + write, text_ + behind, Bytes(end - behind));
                write -= newSize;
                std::memcpy(text_ + write, newText, Bytes(newSize));
                end = places_[i];
            }
        }
    }

    /// Does that for up to `kNoted` hits, in a copy.
    void CopyTo(Unit* dest, int count, int oldSize, const Unit* newText, int newSize) const {
        const auto put = [&dest](const Unit* units, int size) {
            std::memcpy(dest, units, Bytes(size));
            dest += size;
        };
        int read = 0;
        for (int i = 0; i < count; ++i) {
            put(text_ + read, places_[i] - read);
            put(newText, newSize);
            read = places_[i] + oldSize;
        }
        put(text_ + read, length_ - read);
    }

private:
    static std::size_t Bytes(int size) { return static_cast<std::size_t>(size) * sizeof(Unit); }

    /// Notes the hits of a full round, all of which lie in front of what has been moved.
    void Note(int round) {
        auto hits = search_.Hits(text_ + starts_[round], text_ + length_);
        for (int& place : places_) {
            place = static_cast<int>(hits.Next() - text_);
        }
    }

    Unit* text_;
    int length_;
    const Search& search_;
    int starts_[kRounds];  // the first hit of each round
    int places_[kNoted];
};

/// Writes [first, last) to `write`, which may be the same place or in front of it, with up to
/// `most` hits replaced; gives the place behind it and their number.
template <class Unit, class Hits>
Unit* merge(Unit* write, Hits hits, const Unit* first, const Unit* last, int oldSize,
            const Unit* newText, int newSize, int most, int& count) {
    for (count = 0; count < most; ++count) {
        const Unit* hit = hits.Next();
        if (hit == nullptr) {
            break;
        }
        write = storage::carry(write, first, hit);
        write = std::copy_n(newText, newSize, write);
        first = hit + oldSize;
    }
    return storage::carry(write, first, last);
}

/// In one pass: the room for a result that is not longer is known beforehand.
template <class Unit, class Search>
int by_shorter(Unit*& text, int oldSize, const Unit* newText, int newSize, const Search& search) {
    storage::Header<Unit>* block = storage::header_of(text);
    const Unit* first = text;
    const Unit* last = first + block->nDataLength;
    const Unit* hit = search.First(first, last);
    if (hit == nullptr) {
        return 0;
    }
    const bool moves = storage::refs(block) > 1;
    if (moves) {
        storage::alloc(text, block->nDataLength);
    }
    int count = 0;
    const Unit* end = merge<Unit>(text, search.Hits(hit, last), first, last, oldSize, newText,
                                  newSize, INT_MAX, count);
    storage::set_length(text, storage::distance<Unit>(text, end));
    if (moves) {
        blocks::release<Unit>(block);
    }
    return count;
}

/// In place where the block is not shared and has room, else in a block of exactly the length.
template <class Unit, class Search>
int by_longer(Unit*& text, int oldSize, const Unit* newText, int newSize, const Search& search) {
    storage::Header<Unit>* block = storage::header_of(text);
    const int length = block->nDataLength;
    const Unit* first = text;
    const Unit* hit = search.First(first, first + length);
    if (hit == nullptr) {
        return 0;
    }
    Growth<Unit, Search> growth(text, length, search);
    const int count = growth.Count(hit);
    const int newLength =
        storage::checked_length(length + (static_cast<long long>(newSize) - oldSize) * count);
    int merged = 0;
    if (storage::refs(block) > 1 || block->nAllocLength < newLength) {
        storage::alloc(text, newLength);
        if (count <= kNoted) {
            growth.CopyTo(text, count, oldSize, newText, newSize);
        } else {
            merge<Unit>(text, search.Hits(hit, first + length), first, first + length, oldSize,
                        newText, newSize, count, merged);
        }
        blocks::release<Unit>(block);
    } else if (count <= kMost) {
        growth.Replace(count, oldSize, newText, newSize);
        storage::set_length(text, newLength);
    } else {
        // To the end of its room, so that the merge forward never overtakes what it reads.
        first += newLength - length;
        storage::move_units(text + (newLength - length), text, length + 1);
        merge<Unit>(text, search.Hits(first, first + length), first, first + length, oldSize,
                    newText, newSize, count, merged);
        storage::set_length(text, newLength);
    }
    platform::require(text[newLength] == Unit{}, storage::Particular<Unit>::kNewTerminated);
    return count;
}

/// Replaces every hit of `oldSize` units; the result is their number.
template <class Unit, class Search>
int replace(Unit*& text, int oldSize, const Unit* newText, int newSize, const Search& search) {
    return newSize > oldSize ? by_longer(text, oldSize, newText, newSize, search)
                             : by_shorter(text, oldSize, newText, newSize, search);
}

/// The search for a narrow text.
struct NarrowSearch {
    const char* First(const char* first, const char* last) const {
        return platform::_mbsstr(page, first, last, text, size);
    }
    platform::TextHits Hits(const char* first, const char* last) const {
        return {page, first, last, text, size};
    }

    const platform::CodePage& page;
    const char* text;
    std::size_t size;
};

/// The search for a wide text.
struct WideSearch {
    const char16_t* First(const char16_t* first, const char16_t* last) const {
        return platform::wcsstr(first, last, text, size);
    }
    platform::WideTextHits Hits(const char16_t* first, const char16_t* last) const {
        return {first, last, text, size};
    }

    const char16_t* text;
    std::size_t size;
};

/// Removes hits of `size` units, always the leftmost, also those that a removal forms, until none
/// is left in the first `end` units; gives their number and moves the end.
///
/// What is done lies in front of `write`, what is to do from `read` on. A hit that a removal has
/// formed spans both, and is shorter than the text on either side of the gap that it needs. So the
/// whole is one walk, whatever the hits.
template <class Unit, class Find>
int remove_joining(Unit* text, int size, Find find, int& end) {
    int write = 0;
    int read = 0;
    int count = 0;
    const auto across = [&] {
        const int first = std::max(write - (size - 1), 0);
        const int head = std::min(size - 1, end - read);
        if (write - first + head < size) {
            return false;
        }
        storage::move_units(text + write, text + read, head);
        const Unit* hit = find(text + first, text + write + head);
        if (hit == nullptr) {
            return false;
        }
        const int place = storage::distance<Unit>(text, hit);
        read += place + size - write;
        write = place;
        return true;
    };
    while (const Unit* hit = find(text + read, text + end)) {
        const int place = storage::distance<Unit>(text, hit);
        storage::move_units(text + write, text + read, place - read);
        write += place - read;
        read = place + size;
        do {
            ++count;
        } while (across());
    }
    storage::move_units(text + write, text + read, end - read);
    end = write + end - read;
    return count;
}

/// The state that removing `count` hits of `size` units one at a time leaves: the lock and its
/// block, or else a block of exactly the length. A last removal that leaves nothing stays in the
/// block of the one before.
template <class Unit>
void take_rest(Unit*& text, int count, int size, const Unit* rest, int restLength) {
    if (storage::refs(storage::header_of(text)) < 0 || (restLength == 0 && count == 1)) {
        storage::assign_copy(text, restLength, rest);
        return;
    }
    storage::Owner<Unit> copy;
    storage::with_capacity(copy.text, rest, restLength, restLength == 0 ? size : restLength);
    storage::move_assign(text, copy.text);
}

/// Removes hits as `remove_joining` does from the text up to its first NUL. What stands behind that
/// comes along.
template <class Unit, class Find>
int remove_all(Unit*& text, int size, Find find) {
    const Unit* all = text;
    const int segment = storage::length_of(all);
    if (find(all, all + segment) == nullptr) {
        return 0;
    }
    storage::Owner<Unit> rest;
    storage::alloc_copy<Unit>(rest.text, text, storage::length(text));
    int end = segment;
    const int count = remove_joining(rest.text, size, find, end);
    const Unit* last =
        storage::carry<Unit>(rest.text + end, text + segment, text + storage::length(text));
    take_rest<Unit>(text, count, size, rest.text, storage::distance<Unit>(rest.text, last));
    return count;
}

}  // namespace replacing
