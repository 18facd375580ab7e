#pragma once

#include <atomic>
#include <cstddef>

namespace platform {

struct DecodeTable;
struct EncodeTable;

/// What conversion built for a page on first use; stays for ever.
struct PageTables {
    std::atomic<const DecodeTable*> decode;
    std::atomic<const EncodeTable*> encode;
};

/// The first table to come stays, and is given; a later one of another thread goes. A null one is
/// no table.
template <class Table, class Owner>
const Table* publish(std::atomic<const Table*>& place, Owner table) noexcept {
    const Table* known = nullptr;
    const bool isFirst = table == nullptr || place.compare_exchange_strong(
                                                 known, table.get(), std::memory_order_acq_rel,
                                                 std::memory_order_acquire);
    return isFirst ? table.release() : known;
}

/// How the bytes of a code page group into characters.
enum class Grouping : unsigned char {
    SingleByte,  ///< every byte is a character
    Utf8,        ///< well-formed sequences of 1 to 4 bytes; any other byte stands alone
    DoubleByte,  ///< a lead byte takes the next byte, whatever it is, unless that is NUL
    Other,       ///< `mbrlen` from the initial state; an error counts as one byte
};

/// One row per code page: the only place where numbers, names and lead bytes meet.
struct CodePage {
    unsigned int number;  ///< 0 in the row of a codeset without a number
    Grouping grouping;
    const char* converter;  ///< name for iconv; null where there was no memory for it
    const bool* leadBytes;  ///< 256 entries when DoubleByte, null otherwise
    PageTables* tables;

    bool IsLead(unsigned char byte) const { return leadBytes[byte]; }
};

/// The row of a number other than 0; null if the number is unknown.
const CodePage* find_code_page(unsigned int number) noexcept;

/// The row for the codeset of the calling thread's current locale, never null. The C and POSIX
/// locales count as UTF-8. Costs a look-up: ask once per operation, never inside a loop.
const CodePage* process_code_page() noexcept;

}  // namespace platform
