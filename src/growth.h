#pragma once

#include <cstddef>
#include <cstring>

/// Replacing by a longer text, for both classes.
namespace growth {

/// Hits of which the places are noted at a time, how often that can be done, and the product.
inline constexpr int kNoted = 256;
inline constexpr int kRounds = 512;
inline constexpr int kMost = kNoted * kRounds;

/// In place it works from the last hit to the first, so that each unit is moved once.
/// `search(first, last)` looks for the hits in a range; all places are indexes into the text.
template <class Unit, class Search>
class Replacement {
public:
    Replacement(Unit* text, int length, Search search)
        : text_(text), length_(length), search_(search) {}

    /// The number of hits, of which `first` is the first.
    int Count(const Unit* first) {
        auto hits = search_(first, text_ + length_);
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
            const int noted =
                round == lastRound ? count - round * kNoted : Note(round, end - oldSize);
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

    /// The same for up to `kNoted` hits, in a copy.
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

    /// Notes the hits of a round, all of which lie in front of what has been moved, unless the
    /// search text is part of that.
    int Note(int round, int last) {
        auto hits = search_(text_ + starts_[round], text_ + length_);
        for (int i = 0; i < kNoted; ++i) {
            const Unit* hit = hits.Next();
            if (hit == nullptr || hit - text_ > last) {
                return i;
            }
            places_[i] = static_cast<int>(hit - text_);
        }
        return kNoted;
    }

    Unit* text_;
    int length_;
    Search search_;
    int starts_[kRounds];  // the first hit of each round
    int places_[kNoted];
};

}  // namespace growth
