#pragma once

#include <cstddef>

/// UTF-8 and UTF-16 into each other. What is ill-formed becomes U+FFFD, one for each maximal part
/// of a sequence on the one side and for each unpaired surrogate on the other.
namespace platform {

/// What measuring a text found, handed to the decoding so that it need not check again.
struct Utf8Measure {
    std::size_t units;
    bool isWellFormed;
};

/// The first `ascii` bytes are known to be that.
Utf8Measure utf8_measure(const char* source, std::size_t length, std::size_t ascii) noexcept;

/// Writes the units that the measure of the same text counts.
void utf8_decode(const char* source, std::size_t length, Utf8Measure measure,
                 char16_t* destination) noexcept;

/// The two in one for a short text: writes at most `length` units and gives their number.
std::size_t utf8_decode_once(const char* source, std::size_t length,
                             char16_t* destination) noexcept;

/// How many surrogate pairs the text holds.
std::size_t count_surrogate_pairs(const char16_t* source, std::size_t length) noexcept;

/// Bytes that the text takes in UTF-8. The first `ascii` units are known to take one.
std::size_t utf8_size(const char16_t* source, std::size_t length, std::size_t ascii) noexcept;

/// The two in one for a short text: writes at most three bytes a unit and gives their number.
std::size_t utf8_encode_once(const char16_t* source, std::size_t length,
                             char* destination) noexcept;

/// Writes `size` bytes, as `utf8_size` counts them for the same text.
void utf8_encode(const char16_t* source, std::size_t length, char* destination,
                 std::size_t size) noexcept;

}  // namespace platform
