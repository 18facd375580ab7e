#include "everyday_float.h"

#include <array>
#include <bit>
#include <cstdint>

#include "print_integer.h"

namespace platform {

namespace {

__extension__ using Product = unsigned __int128;

constexpr double kMaxInteger = 0x1p63;

constexpr std::array<std::uint64_t, 28> kPowersOfFive = [] {
    std::array<std::uint64_t, 28> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 5;
    }
    return powers;
}();

/// A normal number as mantissa * 2 ** exponent, with a mantissa of 53 bits.
struct Binary {
    explicit Binary(double magnitude) {
        constexpr int kMantissaBits = 52;
        const auto bits = std::bit_cast<std::uint64_t>(magnitude);
        const std::uint64_t hidden = std::uint64_t{1} << kMantissaBits;
        mantissa = (bits & (hidden - 1)) | hidden;
        exponent = static_cast<int>(bits >> kMantissaBits) - 1075;
    }

    std::uint64_t mantissa;
    int exponent;
};

/// product / 2 ** shift. `isOdd`: a tie at 0 is one of an odd number.
unsigned long long divide_rounded(Product product, int shift, bool isOdd) {
    const Product half = Product{1} << (shift - 1);
    const Product rest = product & (2 * half - 1);
    const auto result = static_cast<unsigned long long>(product >> shift);
    const bool isUp = rest > half || (rest == half && (isOdd || result % 2 != 0));
    return result + (isUp ? 1 : 0);
}

/// magnitude * 10 ** scale, which must be below 2 ** 63.
bool scale_up(double magnitude, int scale, unsigned long long& result) {
    if (scale >= static_cast<int>(kPowersOfFive.size())) {
        return false;
    }
    const Binary binary(magnitude);
    const Product product =
        Product{binary.mantissa} * kPowersOfFive[static_cast<std::size_t>(scale)];
    const int shift = -(binary.exponent + scale);
    result = shift > 0 ? divide_rounded(product, shift, false)
                       : static_cast<unsigned long long>(product << -shift);
    return true;
}

/// magnitude / 10 ** scale.
bool scale_down(double magnitude, int scale, unsigned long long& result) {
    if (magnitude >= kMaxInteger) {
        return false;
    }
    const auto integer = static_cast<unsigned long long>(magnitude);
    const bool hasMore = static_cast<double>(integer) != magnitude;
    const unsigned long long power = kPowersOfTen[static_cast<std::size_t>(scale)];
    result = integer / power;
    const unsigned long long twice = 2 * (integer % power);
    const bool isUp = twice > power || (twice == power && (hasMore || result % 2 != 0));
    result += isUp ? 1 : 0;
    return true;
}

/// The power of ten at or below a normal number, or the one below that.
int lower_power(double magnitude) {
    constexpr int kBias = 1023;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    return tens_of_bits(static_cast<int>(bits >> 52) - kBias);
}

}  // namespace

bool everyday_fixed(double magnitude, int precision, FixedDigits& result) noexcept {
    if (magnitude >= kMaxInteger || precision > kEverydayPrecision) {
        return false;
    }
    result.integer = static_cast<unsigned long long>(magnitude);
    result.fraction = 0;
    const unsigned long long power = kPowersOfTen[static_cast<std::size_t>(precision)];
    const Binary rest(magnitude - static_cast<double>(result.integer));
    // Below 2 ** -75 nothing is left of the rest, nor does it round up.
    if (-rest.exponent < 128) {
        const bool isOdd = precision == 0 && result.integer % 2 != 0;
        result.fraction = divide_rounded(Product{rest.mantissa} * power, -rest.exponent, isOdd);
    }
    if (result.fraction == power) {
        result.fraction = 0;
        ++result.integer;
    }
    return true;
}

bool everyday_leading(double magnitude, int count, LeadingDigits& result) noexcept {
    // What is smaller needs more than 128 bits, and what is larger is rare.
    if (magnitude < 1e-26 || magnitude >= kMaxInteger) {
        return false;
    }
    int tens = lower_power(magnitude);
    unsigned long long digits = 0;
    // Again with the next power if the number, or its rounding, has turned out to be above.
    for (;; ++tens) {
        const int scale = count - 1 - tens;
        const bool isDone =
            scale >= 0 ? scale_up(magnitude, scale, digits) : scale_down(magnitude, -scale, digits);
        if (!isDone) {
            return false;
        }
        if (digits < kPowersOfTen[static_cast<std::size_t>(count)]) {
            break;
        }
    }
    result = {digits, tens};
    return true;
}

}  // namespace platform
