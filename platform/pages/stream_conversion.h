#pragma once

#include <cstddef>

/// Conversion by opening the C library's converter for every text: the slow way, for pages that
/// shift between states, compose characters or have more of them than a table holds. Rare enough
/// that nothing is kept between calls.
namespace platform {

/// Units of the text, which are written unless `destination` is null. Throws `std::bad_alloc`.
std::size_t stream_decode(const char* page, const char* source, std::size_t length,
                          char16_t* destination);

/// The same in the other direction, in bytes.
std::size_t stream_encode(const char* page, const char16_t* source, std::size_t length,
                          char* destination);

}  // namespace platform
