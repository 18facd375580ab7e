#pragma once

#include <cstddef>
#include <cstdint>

#include <ctype.h>
#include <wctype.h>

#include "lanes/letters.h"
#include "multibyte/characters.h"
#include "pages/code_pages.h"
#include "pages/utf8_walk.h"

/// One direction of case, as the parts of the layer that fold narrow text share it.
namespace platform {

/// Taken once per operation; good until the locale changes.
class Fold {
public:
    static Fold Upper() noexcept { return {*__ctype_toupper_loc(), ::towupper, 'a'}; }
    static Fold Lower() noexcept { return {*__ctype_tolower_loc(), ::towlower, 'A'}; }

    /// A character of one byte. In multi-byte pages only bytes below 0x80 have a case.
    char Byte(char byte) const noexcept {
        return static_cast<char>(bytes_[static_cast<unsigned char>(byte)]);
    }

    wint_t Wide(wint_t value) const noexcept { return wide_(value); }

    /// Whether the 26 letters are all that folds below 0x80, each to its partner. It is not so in
    /// Turkish single-byte locales, where the partner of `i` is no ASCII letter.
    bool IsUsualForAscii() const noexcept;

    /// Whether some byte from 0x80 up folds to ASCII, as the dotless i does in ISO-8859-9.
    bool ReachesAscii() const noexcept;

    /// What `Byte` does where the fold is the usual one; bytes from 0x80 up stay.
    template <class Bytes>
    Bytes Ascii(Bytes bytes) const noexcept {
        return turn_letters(bytes, firstLetter_);
    }

private:
    Fold(const std::int32_t* bytes, wint_t (*wide)(wint_t), char firstLetter)
        : bytes_(bytes), wide_(wide), firstLetter_(firstLetter) {}

    const std::int32_t* bytes_;
    wint_t (*wide_)(wint_t);
    char firstLetter_;
};

/// Bytes of the character at `p` in a page of more than one byte a character; 1 at a NUL.
inline std::size_t character_length(const CodePage& page, const char* p) noexcept {
    return page.grouping == Grouping::Utf8 ? utf8_length(p) : _mbclen(page, p);
}

/// Folds in place the `length` bytes at `p`, which are one character of such a page. Drops a fold
/// of another width.
void fold_character(const CodePage& page, const Fold& fold, char* p, std::size_t length) noexcept;

}  // namespace platform
