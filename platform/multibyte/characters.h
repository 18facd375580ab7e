#pragma once

#include <cstddef>

#include "pages/code_pages.h"
#include "search/text_search.h"

/// Narrow text walked character by character in the process's code page.
///
/// The range functions take [first, last) with `first` on a character boundary. NUL is a character
/// of one byte like any other and always stands on a boundary, so a caller whose text ends at its
/// first NUL passes that end, or looks for a NUL in front of the hit. `*last` is a terminator that
/// may be read. Arguments named `page` come from `process_code_page`, asked once per operation.
namespace platform {

/// Whether the byte is a character wherever it stands, NUL included, so that a search for it needs
/// no look at its neighbours.
inline bool stands_alone(const CodePage& page, unsigned char byte) noexcept {
    return byte == 0 || page.grouping == Grouping::SingleByte ||
           (page.grouping == Grouping::Utf8 && byte < 0x80);
}

/// First character that is the single byte `byte`, or null. A byte inside a longer character is
/// no character.
const char* _mbschr(const CodePage& page, const char* first, const char* last,
                    unsigned char byte) noexcept;

/// Last character that is the single byte `byte`, or null.
const char* _mbsrchr(const CodePage& page, const char* first, const char* last,
                     unsigned char byte) noexcept;

/// First occurrence of the `count` bytes at `text` (free of NUL) that starts on a character
/// boundary, or null. An empty text is found at `first`.
const char* _mbsstr(const CodePage& page, const char* first, const char* last, const char* text,
                    std::size_t count) noexcept;

/// Tells of one place after the other, in rising order, whether a character starts there. All of
/// them together cost one walk at most.
class Boundaries {
public:
    /// `first` is a boundary.
    Boundaries(const CodePage& page, const char* first, const char* last) noexcept
        : page_(page), first_(first), last_(last), known_(first) {}

    bool Has(const char* p) noexcept;

    /// Counts `p` as a boundary, and nothing in front of it is read any more.
    void RestartAt(const char* p) noexcept { first_ = known_ = p; }

private:
    const CodePage& page_;
    const char* first_;
    const char* last_;
    const char* known_;  // a boundary
};

/// The occurrences of a text that do not overlap, each looked for from the end of the one before,
/// which counts as a boundary. What lies in front of that end may have changed meanwhile.
class TextHits {
public:
    /// Looks for the `count` bytes at `text` (free of NUL, at least 1).
    TextHits(const CodePage& page, const char* first, const char* last, const char* text,
             std::size_t count) noexcept;

    /// The next one, or null.
    const char* Next() noexcept;

private:
    TextSearch<char> search_;
    Boundaries boundaries_;
    std::size_t count_;
    bool isAnywhere_;  // every hit is on a boundary
};

/// Number of the occurrences that `TextHits` finds. 0 for an empty text.
std::size_t count_text(const CodePage& page, const char* first, const char* last, const char* text,
                       std::size_t count) noexcept;

/// First character of the range that occurs in the terminated `set`, or null.
const char* _mbspbrk(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept;

/// Bytes of the first run of characters that all occur in the terminated `set`.
std::size_t _mbsspn(const CodePage& page, const char* first, const char* last,
                    const char* set) noexcept;

/// Bytes of the first run of characters none of which occurs in the terminated `set`.
std::size_t _mbscspn(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept;

/// Bytes of the character at `p`, at least 1 and never past a NUL behind it: 1 at a NUL. Reads no
/// further than the first NUL.
std::size_t _mbclen(const CodePage& page, const char* p) noexcept;

/// The character behind the one at `p`. Stays on a NUL that terminates the text.
const char* _mbsinc(const CodePage& page, const char* p) noexcept;

/// Whether the value is one byte of white space in the process's locale.
bool _ismbcspace(unsigned int value) noexcept;

/// Which single bytes are characters of a terminated set.
struct ByteSet {
    ByteSet(const CodePage& page, const char* set) noexcept;
    bool Has(char byte) const { return has[static_cast<unsigned char>(byte)]; }
    bool has[256];
};

/// The last boundary of a walk from `first` that is not above `p`: the start of the character that
/// holds the byte at `p`. Looks back only as far as the code page makes necessary, so it is not for
/// the pages in which nothing but the walk tells.
const char* character_start(const CodePage& page, const char* first, const char* p,
                            const char* last) noexcept;

/// Start of the run of characters at the end of [first, last) whose first byte passes `test`, a
/// table of 256; `last` if there is no such run. Cuts where a walk from `first` would cut.
const char* trailing_run(const CodePage& page, const char* first, const char* last,
                         const bool* test) noexcept;

}  // namespace platform
