#pragma once

#include <cstdint>

/// Reading numbers from terminated text: leading white space of the locale, a sign, then digits up
/// to the first other character; 0 when there are none. A value out of range gives the nearer limit
/// of the result's type. `errno` is left alone.
namespace platform {

std::int32_t atoi(const char* text) noexcept;
std::int32_t atol(const char* text) noexcept;
std::int64_t _atoi64(const char* text) noexcept;
std::int32_t _wtoi(const char16_t* text) noexcept;
std::int32_t _wtol(const char16_t* text) noexcept;
std::int64_t _wtoi64(const char16_t* text) noexcept;

/// Radix 16, with an optional "0x" or "0X" in front of the digits.
std::int32_t strtol(const char* text) noexcept;
std::int64_t _strtoi64(const char* text) noexcept;
std::int32_t wcstol(const char16_t* text) noexcept;
std::int64_t _wcstoi64(const char16_t* text) noexcept;

/// Decimal floating point with the locale's decimal point: no hexadecimal, no "inf" or "nan".
double atof(const char* text) noexcept;
double _wtof(const char16_t* text) noexcept;

/// The locale's decimal point in 16-bit text, for reading and for printing.
char16_t wide_decimal_point() noexcept;

}  // namespace platform
