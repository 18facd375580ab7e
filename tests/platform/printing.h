#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "print/print.h"

/// The print and its estimate called as the classes call them.
namespace printing {

inline std::u16string widen(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

template <class Unit>
struct Printed {
    int estimate;
    int length;
    std::basic_string<Unit> text;
};

inline int print(char* destination, int capacity, const char* format, va_list arguments) {
    return platform::vsprintf(destination, capacity, format, arguments);
}

inline int print(char16_t* destination, int capacity, const char16_t* format, va_list arguments) {
    return platform::_vswprintf(destination, capacity, format, arguments);
}

/// Estimates, counts, prints, and does all at once, with one list, which has to stand at the first
/// argument each time.
template <class Unit>
Printed<Unit> call(const Unit* format, ...) {
    Printed<Unit> result;
    va_list arguments;
    va_start(arguments, format);
    result.estimate = platform::estimate(format, arguments);
    result.length = print(static_cast<Unit*>(nullptr), 0, format, arguments);
    std::basic_string<Unit> room(static_cast<std::size_t>(result.length) + 1, Unit{'#'});
    print(room.data(), result.length, format, arguments);
    std::basic_string<Unit> again(room.size(), Unit{'#'});
    platform::Rehearsal rehearsal;
    platform::rehearse(again.data(), result.length, format, arguments, rehearsal);
    va_end(arguments);
    EXPECT_EQ(again, room);
    EXPECT_EQ(rehearsal.allowance, result.estimate);
    EXPECT_EQ(rehearsal.length, result.length);
    EXPECT_EQ(static_cast<std::size_t>(rehearsal.ending), room.find(Unit{}));
    result.text = room.substr(0, static_cast<std::size_t>(result.length));
    return result;
}

/// Prints into a room of `capacity` units; the result is all of memory, with a guard behind it.
template <class Unit>
std::basic_string<Unit> call_bounded(int capacity, const Unit* format, ...) {
    std::basic_string<Unit> room(static_cast<std::size_t>(capacity) + 3, Unit{'#'});
    va_list arguments;
    va_start(arguments, format);
    print(room.data(), capacity, format, arguments);
    va_end(arguments);
    return room;
}

}  // namespace printing
