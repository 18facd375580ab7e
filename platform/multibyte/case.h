#pragma once

#include "pages/code_pages.h"

/// Case, reversal and order of multi-byte text. All texts are terminated and end at their first
/// NUL; `page` comes from `process_code_page`.
namespace platform {

/// Folds in place. Every character keeps its place and width; a fold of another width is dropped.
void _mbsupr(const CodePage& page, char* text) noexcept;
void _mbslwr(const CodePage& page, char* text) noexcept;

/// Reverses the characters in place; the bytes of a character keep their order.
void _mbsrev(const CodePage& page, char* text) noexcept;

/// Order of characters: a character counts as its bytes read as one number, first byte high. The
/// bytes differ, in the order `byteOrder` as `strcmp` gives it.
int _mbscmp(const CodePage& page, const char* left, const char* right, int byteOrder) noexcept;

/// The same order with letters folded to lower case.
int _mbsicmp(const CodePage& page, const char* left, const char* right) noexcept;

/// Order by the collation of the locale.
int _mbscoll(const CodePage& page, const char* left, const char* right);

/// The same collation of the lower-cased texts. Needs memory for them: throws `std::bad_alloc`.
int _mbsicoll(const CodePage& page, const char* left, const char* right);

/// First place in [first, last) where the upper-cased text holds the `count` bytes at `upper`,
/// which are ASCII and upper-cased already; null if there is none. Only for UTF-8 and single-byte
/// pages, where it gives what folding the whole text and then searching it gives.
const char* find_folded(const CodePage& page, const char* first, const char* last,
                        const char* upper, std::size_t count) noexcept;

}  // namespace platform
