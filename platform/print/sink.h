#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace platform {

/// Where the print writes: a stretch of memory that is never passed. What does not fit is counted.
template <class Unit>
class Sink {
public:
    Sink(Unit* destination, int capacity)
        : begin_(destination), next_(destination), end_(destination) {
        if (destination != nullptr && capacity > 0) {
            end_ += capacity;
        }
    }

    std::size_t Room() const { return static_cast<std::size_t>(end_ - next_); }

    /// For a writer that needs no more than `Room`; it says with `Advance` what it has written.
    Unit* Next() { return next_; }
    void Advance(int count) { next_ += count; }

    void Put(Unit unit) {
        if (next_ != end_) {
            *next_++ = unit;
        } else {
            ++lost_;
        }
    }

    void Put(const Unit* text, std::size_t count) {
        const std::size_t kept = Keep(count);
        if (kept != 0) {
            std::memcpy(next_, text, kept * sizeof(Unit));
            next_ += kept;
        }
    }

    void PutAscii(const char* text, std::size_t count) {
        if constexpr (std::is_same<Unit, char>::value) {
            Put(text, count);
        } else {
            const std::size_t kept = Keep(count);
            for (std::size_t i = 0; i < kept; ++i) {
                next_[i] = static_cast<Unit>(text[i]);
            }
            next_ += kept;
        }
    }

    void Fill(char character, std::size_t count) {
        if (count == 0) {
            return;
        }
        const std::size_t kept = Keep(count);
        std::fill_n(next_, kept, static_cast<Unit>(character));
        next_ += kept;
    }

    /// The length that the text would have with room enough.
    int Length() const {
        const unsigned long long length = static_cast<unsigned long long>(next_ - begin_) + lost_;
        return static_cast<int>(std::min<unsigned long long>(length, INT_MAX));
    }

    /// Terminates the text and gives its length.
    int Finish() {
        // An empty text without room may be a static one that all threads share: not even the value
        // that it has may be stored there.
        const bool isTerminated = next_ == nullptr || (begin_ == end_ && *begin_ == Unit{});
        if (!isTerminated) {
            *next_ = Unit{};
        }
        return Length();
    }

private:
    std::size_t Keep(std::size_t count) {
        const std::size_t kept = std::min(count, Room());
        lost_ += count - kept;
        return kept;
    }

    Unit* begin_;
    Unit* next_;
    Unit* end_;
    unsigned long long lost_ = 0;
};

}  // namespace platform
