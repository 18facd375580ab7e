#pragma once

/// Decimal digits of doubles by 128-bit arithmetic: exact, a tie rounded to even, and several times
/// faster than the general way. It covers the magnitudes and precisions of everyday.
namespace platform {

constexpr int kEverydayPrecision = 17;

/// A finite magnitude up to `kEverydayPrecision` digits behind the point.
struct FixedDigits {
    unsigned long long integer;
    unsigned long long fraction;  ///< as many digits as the precision, leading zeros included
};

/// False, and nothing set, for magnitudes that it does not cover.
bool everyday_fixed(double magnitude, int precision, FixedDigits& result) noexcept;

/// The first 1 to `kEverydayPrecision` digits of a magnitude.
struct LeadingDigits {
    unsigned long long digits;
    int tens;  ///< the power of ten that the first of them counts
};

bool everyday_leading(double magnitude, int count, LeadingDigits& result) noexcept;

}  // namespace platform
