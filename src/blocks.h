#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>

#include "Kelm.h"
#include "assertion.h"

/// The block behind a text: its header, the static empty one, its count and its memory. A block is
/// known by its header; `Unit` is what its characters are made of.
namespace blocks {

/// What is particular to the blocks of a class. The texts are those of its assertions.
template <class Unit>
struct Particular;

template <>
struct Particular<char> {
    using Header = KelmData;
    static constexpr const char* kSourceIsNil = "stringSrc.GetData () != KelmDataNil";
    static constexpr const char* kTerminated = "m_pchData [GetData ()->nDataLength] == '\\0'";
    static constexpr const char* kNewTerminated = "m_pchData [nNewLength] == '\\0'";
    static constexpr const char* kAppended = "pData->nDataLength <= pData->nAllocLength";
};

template <>
struct Particular<char16_t> {
    using Header = WStringData;
    static constexpr const char* kSourceIsNil = "stringSrc.GetData () != WStringDataNil";
    static constexpr const char* kTerminated = "m_pchData [GetData ()->nDataLength] == L'\\0'";
    static constexpr const char* kNewTerminated = "m_pchData [nNewLength] == L'\\0'";
    static constexpr const char* kAppended = "GetData ()->nDataLength <= GetData ()->nAllocLength";
};

template <class Unit>
using Header = typename Particular<Unit>::Header;

template <class Unit>
struct EmptyBlock {
    Header<Unit> header;
    Unit units[4 / sizeof(Unit)];
};

/// What every value without text points at: never counted, never freed, never written to.
template <class Unit>
inline constinit EmptyBlock<Unit> nil = {{-1, 0, 0}, {}};

template <class Unit>
Header<Unit>* nil_header() noexcept {
    return &nil<Unit>.header;
}

template <class Unit>
Unit* nil_text() noexcept {
    return nil<Unit>.units;
}

template <class Unit>
Header<Unit>* header_of(Unit* text) noexcept {
    return reinterpret_cast<Header<Unit>*>(text) - 1;
}

/// At least acquire: whoever sees 1 goes on to write, and must not overtake the reads of the holder
/// whose decrement it saw.
template <class Header>
int refs(const Header* block) noexcept {
    return __atomic_load_n(&block->nRefs, __ATOMIC_ACQUIRE);
}

/// Whether one more value may share the block.
template <class Header>
bool can_share(const Header* block) noexcept {
    return static_cast<std::uint32_t>(refs(block)) - 1U < KelmMostRefs - 1U;
}

template <class Header>
void add_ref(Header* block) noexcept {
    __atomic_add_fetch(&block->nRefs, 1, __ATOMIC_SEQ_CST);
}

/// The count after giving up one reference. Below 0 for a locked block, which is freed like one at
/// 0.
template <class Header>
int drop_ref(Header* block) noexcept {
    return __atomic_sub_fetch(&block->nRefs, 1, __ATOMIC_SEQ_CST);
}

/// A sum of lengths as an `int`; what no block can hold is a failed allocation.
inline int checked_length(long long length) {
    if (length >= INT_MAX) {
        throw std::bad_alloc();
    }
    return static_cast<int>(length);
}

template <class Unit>
std::size_t bytes_of(int count) noexcept {
    return static_cast<std::size_t>(count) * sizeof(Unit);
}

/// A private block of this length and capacity, its units undefined. The byte count is 32 bits wide
/// and signed, which sets the largest capacity.
template <class Unit>
Header<Unit>* allocate(int length) {
    using Head = Header<Unit>;
    const std::int64_t bytes = static_cast<std::int64_t>(sizeof(Head)) +
                               (std::int64_t{length} + 1) * static_cast<std::int64_t>(sizeof(Unit));
    if (bytes > INT32_MAX) {
        throw std::bad_alloc();
    }
    const std::size_t size = static_cast<std::size_t>(bytes);
    void* memory = ::operator new[](size);
    // A client's own operator may give null instead of throwing.
    if (memory == nullptr) {
        memory = ::operator new[](size);
    }
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    Head* block = static_cast<Head*>(memory);
    block->nRefs = 1;
    block->nDataLength = length;
    block->nAllocLength = length;
    reinterpret_cast<Unit*>(block + 1)[length] = Unit{};
    return block;
}

/// Not inlined: next to the static empty block the compiler takes that for the one to be freed.
__attribute__((noinline)) inline void give_back(void* block) noexcept {
    ::operator delete[](block);
}

/// Gives up one reference to a block that no value points at any more.
template <class Unit>
void release(Header<Unit>* block) noexcept {
    if (block == nil_header<Unit>()) {
        return;
    }
    platform::require(refs(block) != 0, "pData->nRefs != 0");
    if (drop_ref(block) <= 0) {
        give_back(block);
    }
}

/// Whether `p` points into [first, first + count], which need not be part of the same array.
template <class Unit>
bool points_into(const Unit* p, const Unit* first, int count) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    return address >= begin && address <= begin + bytes_of<Unit>(count);
}

}  // namespace blocks
