#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bench {

/// Texts of exactly the size in bytes, always the same for the same size; what does not fill a
/// whole word at the end is full stops.
std::string Words(int size);  ///< Lower-case English words, one space between two of them.
std::string Prose(int size);  ///< The same with capitals, punctuation and lines.
std::string Latin(int size);  ///< UTF-8, western European, about every tenth letter not ASCII.
std::string Cjk(int size);    ///< UTF-8, Japanese.
std::string Mixed(int size);  ///< UTF-8, a sixth of each and half of it English.

/// Words with the text in the place of what stood at every `every`-th byte. The vocabulary has
/// neither "needle" nor a capital letter nor a digit.
std::string WithHits(int size, std::string_view hit, int every = 100);

std::u16string Wide(std::string_view utf8);

/// The text in another character set, which must have every character of it.
std::string Encoded(std::string_view utf8, const char* charset);

inline int Count(std::size_t size) {
    return static_cast<int>(size);
}

}  // namespace bench
