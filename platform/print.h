#pragma once

#include <cstdarg>

/// The format language: read once here, for the estimate and for the print, in both widths.
namespace platform {

/// What the walk over a format finds out before anything is printed.
struct Estimate {
    int length;    ///< allowance in units, terminator not counted
    bool isBound;  ///< whether the print is sure to keep within `length`
};

/// `arguments` stands at the first argument; the caller's list does not move. The allowance follows
/// fixed rules and does not convert any number. Asserts what the language does not accept.
Estimate estimate(const char* format, va_list arguments);
Estimate estimate(const char16_t* format, va_list arguments);

/// Prints at most `capacity` units and a terminator behind them; the result is the length of the
/// whole text, which is larger than `capacity` where the text was cut. With a null destination
/// nothing is written. Leaves `errno` as it found it. The caller's list does not move.
int vsprintf(char* destination, int capacity, const char* format, va_list arguments);
int _vswprintf(char16_t* destination, int capacity, const char16_t* format, va_list arguments);

/// Digits of an integer without a terminator; `destination` has room for 20 units. The result is
/// their number, the sign included.
int print_integer(char* destination, long long value) noexcept;
int print_integer(char* destination, unsigned long long value) noexcept;
int print_integer(char16_t* destination, long long value) noexcept;
int print_integer(char16_t* destination, unsigned long long value) noexcept;

/// The text of "%g" without a terminator, with the locale's decimal point; `destination` has room
/// for 128 units. The result is its length.
int print_general(char* destination, double value) noexcept;
int print_general(char16_t* destination, double value) noexcept;

}  // namespace platform
