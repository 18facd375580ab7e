#pragma once

#include <atomic>

/// How `operator new[]` says no: the other one always throws.
enum class Refusal { None, Throw, ThrowFromThenOn, Null, NullTwice, NullFromThenOn };

/// What the operators of the test program ask before they allocate. In a fuzz target nobody asks.
struct Allocator {
    std::atomic<long> nLive{0};
    Refusal refusal = Refusal::None;
    long nCalls = 0;
    long nFail = 0;
    long nRefused = 0;

    /// Relaxed: any other order would order threads by it and hide their races.
    void Count(long nBlocks) { nLive.fetch_add(nBlocks, std::memory_order_relaxed); }

    void Arm(Refusal how, long nFirst) {
        refusal = how;
        nFail = nFirst;
        nCalls = nRefused = 0;
    }

    bool Refuses() {
        if (refusal == Refusal::None || ++nCalls < nFail) {
            return false;
        }
        const bool bOn = refusal == Refusal::ThrowFromThenOn || refusal == Refusal::NullFromThenOn;
        const long nLast = refusal == Refusal::NullTwice ? nFail + 1 : nFail;
        nRefused += bOn || nCalls <= nLast;
        return bOn || nCalls <= nLast;
    }
};

inline Allocator allocator;
