#pragma once

#include <cstddef>

namespace platform {

struct CodePage;

/// The page to convert with where `page` is the process's own: itself, or ASCII where the system
/// has no converter for it. Throws `std::bad_alloc`.
const CodePage& usable_page(const CodePage& page);

/// Decodes `length` bytes of the code page (0: the process's) into 16-bit units. With a
/// `destinationSize` of 0 nothing is written and the result is the number of units needed;
/// otherwise they are written and the result is their number. 0 for an unknown code page, a length
/// of 0 or less, or a destination that is too small. Throws `std::bad_alloc`, also for a result
/// longer than an `int` counts. What the page does not define becomes U+FFFD. No terminator is
/// read, written or counted. `errno` stays as it was.
int MultiByteToWideChar(unsigned int codePage, const char* source, int length,
                        char16_t* destination, int destinationSize);

/// The same in the other direction, in bytes. What cannot be expressed becomes `?`, one for a
/// surrogate pair; an unpaired surrogate becomes EF BF BD in UTF-8.
int WideCharToMultiByte(unsigned int codePage, const char16_t* source, int length,
                        char* destination, int destinationSize);

/// The two calls of MultiByteToWideChar, size and text, as one object, so that the page is looked
/// up and the text checked once. The source must stay unchanged until the text is written.
class Decoding {
public:
    Decoding(unsigned int codePage, const char* source, int length);

    /// By a page that is at hand, and null only where nothing is to be done.
    Decoding(const CodePage* page, const char* source, int length);

    /// What the first call returns.
    int Size() const { return size_; }

    /// Writes `Size()` units and returns their number.
    int Write(char16_t* destination) const;

private:
    static constexpr int kBrief = 32;

    void MeasureUtf8(std::size_t count);

    const CodePage* page_;
    const char* source_;
    int length_;
    int size_ = 0;
    bool isWellFormed_ = false;  // in UTF-8
    bool isPlain_ = false;       // each byte is its unit
    bool isBrief_ = false;
    char16_t brief_[kBrief];  // a short text, which is converted while it is measured
};

/// The same for WideCharToMultiByte.
class Encoding {
public:
    Encoding(unsigned int codePage, const char16_t* source, int length);
    Encoding(const CodePage* page, const char16_t* source, int length);

    int Size() const { return size_; }

    int Write(char* destination) const;

private:
    static constexpr int kBrief = 32;

    void MeasureUtf8(std::size_t count);

    const CodePage* page_;
    const char16_t* source_;
    int length_;
    int size_ = 0;
    bool isPlain_ = false;
    bool isBrief_ = false;
    char brief_[3 * kBrief];
};

}  // namespace platform
