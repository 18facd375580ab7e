#pragma once

#include <cstddef>
#include <cstdint>

#include "pages/code_pages.h"

namespace platform {

/// Encodes a page by look-ups. Immutable once published.
///
/// An entry holds the bytes of a character, the first one lowest; above them it is 0, and no page
/// has a character whose last byte of several is 0, so the entry tells its length.
struct EncodeTable {
    static constexpr std::size_t kBlock = 256;
    static constexpr std::size_t kMaxBytes = sizeof(std::uint32_t);

    bool isStreamed;  ///< as in DecodeTable
    bool isAscii;     ///< units below 0x80 are the same bytes
    bool isSingle;    ///< every unit is a byte
    bool isDouble;    ///< every unit is one or two bytes
    bool hasFours;    ///< GB18030: what stands above the BMP is counted through
    std::uint32_t replacement;
    std::uint16_t block[256];  ///< by the high byte of the unit
    std::size_t blockCount;
    std::uint32_t* entries;  ///< blocks by the low byte; block 0 is all replacements
    const DecodeTable* decode;
    std::uint32_t astral[16];  ///< bytes of `decode->astral`
};

/// Builds and publishes the page's table at its first use.
const EncodeTable* first_encode_table(const CodePage& page);

/// The page's table; null where the system has no converter. Throws `std::bad_alloc`.
inline const EncodeTable* encode_table(const CodePage& page) {
    const EncodeTable* known = page.tables->encode.load(std::memory_order_acquire);
    return known != nullptr ? known : first_encode_table(page);
}

/// Bytes and conversion of a text by a table that is not streamed.
std::size_t table_encoded_size(const EncodeTable& table, const char16_t* source,
                               std::size_t length) noexcept;
void table_encode(const EncodeTable& table, const char16_t* source, std::size_t length,
                  char* destination, std::size_t size) noexcept;

}  // namespace platform
