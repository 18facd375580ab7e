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

/// Prints into a room of `capacity` units; the result is all of memory, with a guard behind it.
template <class Unit>
std::basic_string<Unit> call_bounded(int capacity, const Unit* format, va_list arguments) {
    std::basic_string<Unit> room(static_cast<std::size_t>(capacity) + 3, Unit{'#'});
    print(room.data(), capacity, format, arguments);
    return room;
}

/// Estimates, counts, prints into every room that is too small or just large enough, and does all
/// at once, with one list, which has to stand at the first argument each time.
template <class Unit>
Printed<Unit> call(const Unit* format, ...) {
    Printed<Unit> result;
    va_list arguments;
    va_start(arguments, format);
    result.estimate = platform::estimate(format, arguments);
    result.length = print(static_cast<Unit*>(nullptr), 0, format, arguments);
    const auto whole = call_bounded(result.length, format, arguments);
    result.text = whole.substr(0, static_cast<std::size_t>(result.length));
    for (int capacity = result.length; capacity >= 0 && result.length < 80; --capacity) {
        const Unit behind[] = {0, '#', '#'};
        const auto room = call_bounded(capacity, format, arguments);
        EXPECT_EQ(room.substr(static_cast<std::size_t>(capacity)),
                  std::basic_string<Unit>(behind, 3));
    }
    std::basic_string<Unit> again(whole.size(), Unit{'#'});
    platform::Rehearsal rehearsal;
    platform::rehearse(again.data(), result.length, format, arguments, rehearsal);
    va_end(arguments);
    EXPECT_EQ(again, whole);
    EXPECT_EQ(rehearsal.allowance, result.estimate);
    EXPECT_EQ(rehearsal.length, result.length);
    EXPECT_EQ(static_cast<std::size_t>(rehearsal.ending), whole.find(Unit{}));
    return result;
}

}  // namespace printing
