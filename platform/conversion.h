#pragma once

namespace platform {

/// Decodes `length` bytes of the code page (0: the process's) into 16-bit units. With a
/// `destinationSize` of 0 nothing is written and the result is the number of units needed;
/// otherwise they are written and the result is their number. 0 for an unknown code page, a length
/// of 0 or less, a destination that is too small, or without memory for the page's table. What the
/// page does not define becomes U+FFFD. No terminator is read, written or counted.
int MultiByteToWideChar(unsigned int codePage, const char* source, int length,
                        char16_t* destination, int destinationSize) noexcept;

/// The same in the other direction, in bytes. What cannot be expressed becomes `?`; an unpaired
/// surrogate becomes EF BF BD in UTF-8.
int WideCharToMultiByte(unsigned int codePage, const char16_t* source, int length,
                        char* destination, int destinationSize) noexcept;

}  // namespace platform
