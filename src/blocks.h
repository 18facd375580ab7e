#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>

/// What the blocks of both classes have in common. `Data` is a header, `Unit` a character behind
/// it.
namespace blocks {

/// At least acquire: whoever sees 1 goes on to write, and must not overtake the reads of the holder
/// whose decrement it saw.
template <class Data>
int refs(const Data* pData) noexcept {
    return __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
}

template <class Data>
void add_ref(Data* pData) noexcept {
    __atomic_add_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST);
}

/// The count after giving up one reference. Below 0 for a locked block, which is freed like one at
/// 0.
template <class Data>
int drop_ref(Data* pData) noexcept {
    return __atomic_sub_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST);
}

/// A sum of lengths as an `int`; what no block can hold is a failed allocation.
inline int checked_length(long long nLength) {
    if (nLength >= INT_MAX) {
        throw std::bad_alloc();
    }
    return static_cast<int>(nLength);
}

/// Memory for a header, `nLength` units and a terminator. The byte count is 32 bits wide and
/// signed, which sets the largest capacity.
template <class Data, class Unit>
Data* allocate(int nLength) {
    const std::int64_t nBytes =
        static_cast<std::int64_t>(sizeof(Data)) +
        (std::int64_t{nLength} + 1) * static_cast<std::int64_t>(sizeof(Unit));
    if (nBytes > INT32_MAX) {
        throw std::bad_alloc();
    }
    const std::size_t nSize = static_cast<std::size_t>(nBytes);
    void* p = ::operator new[](nSize);
    // A client's own operator may give null instead of throwing.
    if (p == nullptr) {
        p = ::operator new[](nSize);
    }
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<Data*>(p);
}

/// Whether `p` points into [first, first + count], which need not be part of the same array.
template <class Unit>
bool points_into(const Unit* p, const Unit* first, int count) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    return address >= begin && address <= begin + static_cast<std::size_t>(count) * sizeof(Unit);
}

}  // namespace blocks
