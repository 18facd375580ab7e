#pragma once

#include <algorithm>
#include <cstdarg>

#include "print/print.h"
#include "search/search.h"
#include "storage.h"

/// The print into a value, for both classes.
namespace formatting {

inline void print(char* destination, int capacity, const char* format, va_list arguments) {
    platform::vsprintf(destination, capacity, format, arguments);
}

inline void print(char16_t* destination, int capacity, const char16_t* format, va_list arguments) {
    platform::_vswprintf(destination, capacity, format, arguments);
}

/// Prints what was printed before, which takes memory only where each conversion opens a converter.
/// Without it, what stood in front stays.
template <class Unit>
void print_again(Unit* text, int index, const Unit* format, va_list arguments) {
    try {
        print(text + index, storage::header_of(text)->nAllocLength - index, format, arguments);
    } catch (...) {
        storage::set_length(text, index);
        throw;
    }
}

/// `text`, which is new, becomes the digits, with the room that the format "%d" has for them.
template <class Unit, class Integer>
void integer(Unit*& text, Integer value) {
    Unit digits[platform::kIntegerRoom];
    const int length = platform::print_integer(digits, value);
    storage::with_capacity<Unit>(text, digits, length, platform::kIntegerRoom);
}

/// Does that for the format "%g".
template <class Unit>
void general(Unit*& text, double value) {
    Unit digits[platform::kGeneralRoom];
    const int length = platform::print_general(digits, value);
    storage::with_capacity<Unit>(text, digits, length, platform::kGeneralRoom);
}

/// Prints behind the first `index` units: first beside the value, which a short text has to be only
/// once. A text that the allowance does not cover gets exactly its room.
template <class Unit>
void print_at(Unit*& text, int index, const Unit* format, va_list arguments) {
    Unit brief[512];
    const int briefRoom = sizeof(brief) / sizeof(Unit) - 1;
    platform::Rehearsal rehearsal;
    platform::rehearse(brief, briefRoom, format, arguments, rehearsal);
    const int room = std::max(rehearsal.allowance, rehearsal.length);
    storage::get_buffer(text, storage::checked_length(static_cast<long long>(index) + room));
    if (rehearsal.length > briefRoom) {
        print_again(text, index, format, arguments);
    } else if (rehearsal.length > 0) {
        storage::copy_units(text + index, brief, rehearsal.length + 1);
    }
    const Unit* front = text;
    // A NUL ends the text, also one that stands in front of what was printed.
    const Unit* end = platform::find_unit(front, front + index, Unit{});
    storage::set_length(
        text, end != front + index ? storage::distance(front, end) : index + rehearsal.ending);
}

}  // namespace formatting
