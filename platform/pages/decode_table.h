#pragma once

#include <cstddef>

#include "pages/code_pages.h"
#include "pages/utf16_walk.h"

namespace platform {

/// Decodes a page by look-ups. Immutable once published.
///
/// A row has an entry for every value of one byte; the first row is for the first byte of a
/// character. No page decodes to surrogates, so entries with those values lead on.
struct DecodeTable {
    using Row = char16_t[256];

    static constexpr char16_t kUndefined = kReplacement;
    static constexpr char16_t kNextRow = 0xD800;  ///< and up: the row of the next byte
    static constexpr char16_t kAstral = 0xDC00;   ///< and up: an index into `astral`
    static constexpr char16_t kFour = 0xDFFF;     ///< a sequence of four bytes begins
    static constexpr std::size_t kMaxRows = kAstral - kNextRow;
    static constexpr std::size_t kMaxAstral = 16;

    bool isStreamed;  ///< does not fit the form of a table: the converter does every text
    bool isAscii;     ///< bytes below 0x80 are ASCII
    bool isSingle;    ///< every byte is a unit
    Row* rows;
    char16_t* fours;  ///< by linear index, 0 where undefined; null unless the page is GB18030
    std::size_t astralCount;
    char32_t astral[kMaxAstral];  ///< code points of sequences of two bytes
};

/// Builds and publishes the page's table at its first use.
const DecodeTable* first_decode_table(const CodePage& page);

/// The page's table; null where the system has no converter. Throws `std::bad_alloc`.
inline const DecodeTable* decode_table(const CodePage& page) {
    const DecodeTable* known = page.tables->decode.load(std::memory_order_acquire);
    return known != nullptr ? known : first_decode_table(page);
}

/// Units and conversion of a text by a table that is not streamed.
std::size_t table_decoded_size(const DecodeTable& table, const char* source,
                               std::size_t length) noexcept;
void table_decode(const DecodeTable& table, const char* source, std::size_t length,
                  char16_t* destination, std::size_t size) noexcept;

/// Bytes of the first sequence of a terminated text that is not empty, by a table that is not
/// streamed. Nothing behind it is read.
std::size_t table_first_sequence(const DecodeTable& table, const char* text) noexcept;

}  // namespace platform
