#pragma once

#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

#include "blocks.h"
#include "search/search.h"
#include "wide/wide.h"

/// The rules of storage, once for both classes: how a value shares a block, leaves it, writes to it
/// and grows. A value is known here by its pointer, the class's one data member, which is `text`
/// where it changes.
///
/// Names in the files that both classes share are those of the platform: functions in small letters
/// with underscores, types in capitals, no prefixes of types. The Hungarian names stand in the two
/// classes, whose interface has them.
namespace storage {

using blocks::bytes_of;
using blocks::checked_length;
using blocks::Header;
using blocks::header_of;
using blocks::nil_header;
using blocks::nil_text;
using blocks::Particular;
using blocks::refs;
using platform::require;

template <class Unit>
int distance(const Unit* first, const Unit* last) noexcept {
    return static_cast<int>(last - first);
}

template <class Unit>
void copy_units(Unit* destination, const Unit* source, int count) noexcept {
    std::memcpy(destination, source, bytes_of<Unit>(count));
}

template <class Unit>
void move_units(Unit* destination, const Unit* source, int count) noexcept {
    std::memmove(destination, source, bytes_of<Unit>(count));
}

/// Moves [first, last) to `destination`, which may be the same place or in front of it, and gives
/// the place behind it there.
template <class Unit>
Unit* carry(Unit* destination, const Unit* first, const Unit* last) noexcept {
    const int count = distance(first, last);
    if (destination != first) {
        move_units(destination, first, count);
    }
    return destination + count;
}

/// The length of a terminated text.
inline int length_of(const char* text) {
    return checked_length(static_cast<long long>(std::strlen(text)));
}

inline int length_of(const char16_t* text) {
    return checked_length(static_cast<long long>(platform::wcslen(text)));
}

template <class Unit>
int length(const Unit* text) noexcept {
    return header_of(const_cast<Unit*>(text))->nDataLength;
}

/// In a debug build each way out of a change passes here.
template <class Unit>
void check([[maybe_unused]] Unit* text) noexcept {
#ifndef NDEBUG
    const Header<Unit>* block = header_of(text);
    require(refs(block) != 0 && refs(block) >= -1, "a block in use has a holder");
    require(block->nDataLength >= 0 && block->nDataLength <= block->nAllocLength,
            "a length is within the capacity");
    require(text[block->nDataLength] == Unit{}, "a text is terminated");
    require(block != nil_header<Unit>() || (refs(block) == -1 && block->nAllocLength == 0),
            "the empty block is never changed");
#endif
}

template <class Unit>
void init(Unit*& text) noexcept {
    text = nil_text<Unit>();
}

/// A new private block of this length and capacity; what was held is dropped.
template <class Unit>
void alloc(Unit*& text, int length) {
    require(length >= 0, "nLen >= 0");
    require(length <= INT_MAX - 1, "nLen <= INT_MAX-1");
    text = length == 0 ? nil_text<Unit>()
                       : reinterpret_cast<Unit*>(blocks::allocate<Unit>(length) + 1);
}

/// The static empty block holds length 0 and a NUL already; a store would race with other threads.
template <class Unit>
void set_length(Unit* text, int length) noexcept {
    Header<Unit>* block = header_of(text);
    if (block != nil_header<Unit>()) {
        block->nDataLength = length;
        text[length] = Unit{};
    }
    check(text);
}

/// The end of the text becomes `end`; the result is what it lost.
template <class Unit>
int cut_right(Unit* text, const Unit* end) noexcept {
    const int kept = distance<Unit>(text, end);
    const int lost = length(text) - kept;
    set_length(text, kept);
    return lost;
}

/// Gives up the block in every case.
template <class Unit>
void release(Unit*& text) noexcept {
    Header<Unit>* block = header_of(text);
    if (block == nil_header<Unit>()) {
        return;
    }
    require(refs(block) != 0, "GetData ()->nRefs != 0");
    if (blocks::drop_ref(block) <= 0) {
        blocks::give_back(block);
    }
    init(text);
}

/// A block of one's own while a value is being made, or one that is held until a change is over.
template <class Unit>
class Owner {
public:
    Owner() noexcept { init(text); }
    ~Owner() { release(text); }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    /// Takes another reference to a block that can be shared.
    void Hold(Unit* held) noexcept {
        text = held;
        blocks::add_ref(header_of(held));
    }

    Unit* text;
};

/// A terminated argument as it is at the call, which a part of the value's own text would not stay:
/// such a one is copied. Null stays null.
template <class Unit>
class Argument {
public:
    Argument(const Unit* argument, const Unit* text) : units_(argument) {
        if (blocks::points_into(argument, text, length(text))) {
            const int count = length_of(argument);
            alloc(copy_, count);
            copy_units(copy_, argument, count);
            units_ = copy_;
        }
    }
    ~Argument() {
        if (copy_ != nullptr) {
            release(copy_);
        }
    }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    operator const Unit*() const noexcept { return units_; }

private:
    const Unit* units_;
    Unit* copy_ = nullptr;
};

/// A copy of a terminated text that may be changed, of null as of an empty one. A short one takes
/// no memory.
template <class Unit>
class Copy {
public:
    explicit Copy(const Unit* text) : length_(text == nullptr ? 0 : length_of(text)) {
        if (length_ >= kBrief) {
            alloc(long_.text, length_);
            units_ = long_.text;
        }
        std::copy_n(text, length_, units_);
        units_[length_] = Unit{};
    }

    Unit* Text() { return units_; }
    int Length() const { return length_; }

private:
    static constexpr int kBrief = 64;

    int length_;
    Owner<Unit> long_;
    Unit brief_[kBrief];
    Unit* units_ = brief_;
};

/// What was held is given up and the block of `source` taken over.
template <class Unit>
void move_assign(Unit*& text, Unit*& source) noexcept {
    release(text);
    text = source;
    init(source);
    check(text);
}

/// Moves to a block of this capacity with the text in it. The old block is given up when the copy
/// is complete: another holder may free it, or write to it, from then on.
template <class Unit>
void move_to_new_block(Unit*& text, int capacity) {
    Unit* old = text;
    const int kept = length(old);
    alloc(text, capacity);
    copy_units(text, old, kept);
    set_length(text, kept);
    blocks::release<Unit>(header_of(old));
}

/// Leaves a shared block, text retained.
template <class Unit>
void copy_before_write(Unit*& text) {
    if (refs(header_of(text)) > 1) {
        move_to_new_block(text, length(text));
    }
    require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
}

/// The text becomes its part [first, last), in a block of its own of the old length where it was
/// shared.
template <class Unit>
void keep(Unit*& text, const Unit* first, const Unit* last) {
    Header<Unit>* block = header_of(text);
    const bool moves = refs(block) > 1;
    if (moves) {
        alloc(text, block->nDataLength);
    }
    set_length(text, distance<Unit>(text, carry<Unit>(text, first, last)));
    if (moves) {
        blocks::release<Unit>(block);
    }
    require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
}

/// A private block with this room, text not retained. Without memory the value is empty.
template <class Unit>
void alloc_before_write(Unit*& text, int length) {
    const Header<Unit>* block = header_of(text);
    if (refs(block) > 1 || length > block->nAllocLength) {
        release(text);
        alloc(text, length);
    }
    require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
}

/// Replaces the text by `count` units, which may be part of the value's own.
template <class Unit>
void assign_copy(Unit*& text, int count, const Unit* source) {
    // Part of the value's own text has to outlive the reference that is given up first.
    Owner<Unit> hold;
    if (refs(header_of(text)) > 1 && blocks::points_into<Unit>(source, text, length(text))) {
        hold.Hold(text);
    }
    alloc_before_write(text, count);
    move_units(text, source, count);
    set_length(text, count);
}

/// `text`, which is dropped, becomes `count` units from `source` and `extra` undefined ones.
template <class Unit>
void alloc_copy(Unit*& text, const Unit* source, int count, int extra = 0) {
    alloc(text, checked_length(static_cast<long long>(count) + extra));
    copy_units(text, source, count);
}

/// `text`, which is dropped, becomes the two runs in a row.
template <class Unit>
void concat_copy(Unit*& text, int count1, const Unit* units1, int count2, const Unit* units2) {
    const int count = checked_length(static_cast<long long>(count1) + count2);
    if (count == 0) {
        return;
    }
    alloc(text, count);
    copy_units(text, units1, count1);
    copy_units(text + count1, units2, count2);
}

/// Appends the run, which may be part of the value's own text.
template <class Unit>
void concat_in_place(Unit*& text, int count, const Unit* units) {
    if (count == 0) {
        return;
    }
    Header<Unit>* block = header_of(text);
    if (refs(block) > 1 || count > block->nAllocLength - block->nDataLength) {
        concat_copy<Unit>(text, block->nDataLength, text, count, units);
        require(block != nullptr, "pData != NULL");
        blocks::release<Unit>(block);
        return;
    }
    Unit* end = text + block->nDataLength;
    if (count == 1) {
        end[0] = units[0];
    } else if (count == 2) {
        end[0] = units[0];
        end[1] = units[1];
    } else {
        copy_units(end, units, count);
    }
    block->nDataLength += count;
    require(block->nDataLength <= block->nAllocLength,
            count > 2 ? Particular<Unit>::kAppended : Particular<char>::kAppended);
    text[block->nDataLength] = Unit{};
}

/// How much of a value a copy of it has: of a locked one, the text up to the first NUL.
template <class Unit>
int copied_length(Unit* text) {
    return refs(header_of(text)) < 0 ? length_of(text) : length(text);
}

/// A copy of a value: shares what can be shared, else copies.
template <class Unit>
void copy_construct(Unit*& text, Unit* source) {
    Header<Unit>* block = header_of(source);
    require(refs(block) != 0, "stringSrc.GetData ()->nRefs != 0");
    if (blocks::can_share(block)) {
        blocks::add_ref(block);
        text = source;
        return;
    }
    init(text);
    if (source != nil_text<Unit>()) {
        assign_copy<Unit>(text, copied_length(source), source);
    }
}

/// Assigns a value: shares its block, unless this one is locked or that one cannot be shared.
template <class Unit>
void assign(Unit*& text, Unit* source) {
    if (text == source) {
        return;
    }
    Header<Unit>* block = header_of(text);
    const bool is_locked = refs(block) < 0 && block != nil_header<Unit>();
    if (is_locked || !blocks::can_share(header_of(source))) {
        assign_copy<Unit>(text, length(source), source);
        return;
    }
    release(text);
    require(header_of(source) != nil_header<Unit>(), Particular<Unit>::kSourceIsNil);
    text = source;
    blocks::add_ref(header_of(text));
}

/// Makes the text empty; a block that cannot be counted stays.
template <class Unit>
void empty(Unit*& text) {
    if (length(text) == 0) {
        return;
    }
    if (refs(header_of(text)) >= 0) {
        release(text);
    } else {
        assign_copy<Unit>(text, 0, text);
    }
    const Header<Unit>* block = header_of(text);
    require(block->nDataLength == 0, "GetData ()->nDataLength == 0");
    require(refs(block) < 0 || block->nAllocLength == 0,
            "GetData ()->nRefs < 0 || GetData ()->nAllocLength == 0");
}

template <class Unit>
void set_at(Unit*& text, int index, Unit unit) {
    require(index >= 0, "nIndex >= 0");
    require(index < length(text), "nIndex < GetData ()->nDataLength");
    copy_before_write(text);
    text[index] = unit;
}

/// A writable text with room for `capacity` units.
template <class Unit>
Unit* get_buffer(Unit*& text, int capacity) {
    require(capacity >= 0, "nMinBufLength >= 0");
    const Header<Unit>* block = header_of(text);
    if (refs(block) > 1 || capacity > block->nAllocLength) {
        move_to_new_block(text, std::max(capacity, block->nDataLength));
    }
    require(refs(header_of(text)) <= 1, "GetData ()->nRefs <= 1");
    require(text != nullptr, "m_pchData != NULL");
    return text;
}

/// The length after a caller has written; a negative one is measured.
template <class Unit>
void release_buffer(Unit*& text, int length) {
    copy_before_write(text);
    if (length < 0) {
        length = length_of(text);
    }
    require(length <= header_of(text)->nAllocLength, "nNewLength <= GetData ()->nAllocLength");
    set_length(text, length);
}

template <class Unit>
Unit* get_buffer_set_length(Unit*& text, int length) {
    require(length >= 0, "nNewLength >= 0");
    get_buffer(text, length);
    set_length(text, length);
    return text;
}

/// Moves to a block of exactly the length where there is spare room.
template <class Unit>
void free_extra(Unit*& text) {
    const Header<Unit>* block = header_of(text);
    require(block->nDataLength <= block->nAllocLength,
            "GetData ()->nDataLength <= GetData ()->nAllocLength");
    if (block->nDataLength != block->nAllocLength) {
        move_to_new_block(text, block->nDataLength);
        require(text[length(text)] == Unit{}, Particular<Unit>::kTerminated);
    }
    require(header_of(text) != nullptr, "GetData () != NULL");
}

/// `text`, which is new, becomes a piece of `source`: the block itself where that is all of it.
template <class Unit>
void piece(Unit*& text, Unit* source, int first, int count) {
    if (first == 0 && count == length(source)) {
        copy_construct(text, source);
    } else {
        alloc_copy<Unit>(text, source + first, count);
    }
}

/// `count` units from `first`, both clamped to the text.
template <class Unit>
void mid(Unit*& text, Unit* source, int first, int count) {
    const int all = length(source);
    first = std::max(first, 0);
    if (first > all) {
        return;
    }
    count = std::min(std::max(count, 0), all - first);
    require(first >= 0, "nFirst >= 0");
    require(count <= all - first, "nFirst + nCount <= GetData ()->nDataLength");
    piece(text, source, first, count);
}

template <class Unit>
void left(Unit*& text, Unit* source, int count) {
    piece(text, source, 0, std::clamp(count, 0, length(source)));
}

template <class Unit>
void right(Unit*& text, Unit* source, int count) {
    const int all = length(source);
    count = std::clamp(count, 0, all);
    piece(text, source, all - count, count);
}

/// `text`, which is new, becomes `count` times this unit.
template <class Unit>
void repeat(Unit*& text, Unit unit, int count) {
    if (count >= 1) {
        alloc(text, count);
        std::fill_n(text, count, unit);
    }
}

/// `text`, which is new, becomes these units in a block of more room.
template <class Unit>
void with_capacity(Unit*& text, const Unit* units, int count, int capacity) {
    alloc(text, capacity);
    copy_units(text, units, count);
    set_length(text, count);
}

/// Room for `count` units at an index within the text, in place or in a block of exactly the new
/// length.
template <class Unit>
void open_gap(Unit*& text, int index, int count) {
    Header<Unit>* block = header_of(text);
    Unit* old = text;
    const int all = block->nDataLength;
    const int grown = checked_length(static_cast<long long>(all) + count);
    if (refs(block) > 1 || block->nAllocLength < grown) {
        alloc(text, grown);
        copy_units(text, old, index);
        copy_units(text + index + count, old + index, all - index);
        blocks::release<Unit>(block);
        return;
    }
    move_units(text + index + count, text + index, all - index);
    set_length(text, grown);
}

}  // namespace storage
