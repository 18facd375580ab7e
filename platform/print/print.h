#pragma once

#include <cstdarg>

/// The format language: read once here, for the estimate and for the print, in both widths.
namespace platform {

/// The allowance for what a format prints, in units, terminator not counted: by fixed rules,
/// without converting any number, and no bound. `arguments` stands at the first argument; the
/// caller's list does not move. Asserts what the language does not accept.
int estimate(const char* format, va_list arguments);
int estimate(const char16_t* format, va_list arguments);

/// Prints at most `capacity` units and a terminator behind them; the result is the length of the
/// whole text. Where that is larger than `capacity`, what was written is of no use. With a null
/// destination nothing is written. Leaves `errno` as it found it. The caller's list does not move.
int vsprintf(char* destination, int capacity, const char* format, va_list arguments);
int _vswprintf(char16_t* destination, int capacity, const char16_t* format, va_list arguments);

/// What one walk over a format, that estimates and prints at once, finds out.
struct Rehearsal {
    int allowance;  ///< as `estimate` gives it
    int length;     ///< as the print gives it
    int ending;     ///< index of the first NUL among what was printed, else the length
};

/// `estimate` and the print in one walk. By reference: a result in registers would be put together
/// in memory, and slowly.
void rehearse(char* destination, int capacity, const char* format, va_list arguments,
              Rehearsal& result);
void rehearse(char16_t* destination, int capacity, const char16_t* format, va_list arguments,
              Rehearsal& result);

/// What the estimate allows for an integer and for a number in "%g": more than they take.
inline constexpr int kIntegerRoom = 32;
inline constexpr int kGeneralRoom = 128;

/// Digits of an integer without a terminator; `destination` has room for `kIntegerRoom` units. The
/// result is their number, the sign included.
int print_integer(char* destination, long long value) noexcept;
int print_integer(char* destination, unsigned long long value) noexcept;
int print_integer(char16_t* destination, long long value) noexcept;
int print_integer(char16_t* destination, unsigned long long value) noexcept;

/// The text of "%g" without a terminator, with the locale's decimal point; `destination` has room
/// for `kGeneralRoom` units. The result is its length.
int print_general(char* destination, double value) noexcept;
int print_general(char16_t* destination, double value) noexcept;

}  // namespace platform
