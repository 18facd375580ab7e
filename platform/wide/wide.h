#pragma once

#include <cstddef>

#include "search/text_search.h"

/// 16-bit text. The search functions take [first, last), where NUL is a unit like any other; the
/// others take terminated text and end at its first NUL. Units are numbers: a surrogate pair is
/// two of them. Classes and folds go by the locale of the calling thread.
namespace platform {

std::size_t wcslen(const char16_t* text) noexcept;

/// First unit equal to `unit`, or null.
const char16_t* wcschr(const char16_t* first, const char16_t* last, char16_t unit) noexcept;

/// Last unit equal to `unit`, or null.
const char16_t* wcsrchr(const char16_t* first, const char16_t* last, char16_t unit) noexcept;

/// First occurrence of the `count` units at `text`, or null. An empty text is found at `first`.
const char16_t* wcsstr(const char16_t* first, const char16_t* last, const char16_t* text,
                       std::size_t count) noexcept;

/// The occurrences of a text that do not overlap, each looked for from the end of the one before.
/// What lies in front of that end may have changed meanwhile.
class WideTextHits {
public:
    /// Looks for the `count` units at `text`, at least 1.
    WideTextHits(const char16_t* first, const char16_t* last, const char16_t* text,
                 std::size_t count) noexcept
        : search_(first, last, text, count) {}

    /// The next one, or null.
    const char16_t* Next() noexcept { return search_.NextApart(); }

private:
    TextSearch<char16_t> search_;
};

/// First unit of the range that occurs in the terminated `set`, or null.
const char16_t* wcspbrk(const char16_t* first, const char16_t* last, const char16_t* set) noexcept;

/// Order of unsigned units.
int wcscmp(const char16_t* left, const char16_t* right) noexcept;

/// Order of units folded to lower case.
int _wcsicmp(const char16_t* left, const char16_t* right) noexcept;

/// Fold in place, unit by unit; a fold that does not fit a unit is dropped.
void _wcsupr(char16_t* text) noexcept;
void _wcslwr(char16_t* text) noexcept;

/// Reverses the units in place.
void _wcsrev(char16_t* text) noexcept;

char16_t towupper(char16_t unit) noexcept;
char16_t towlower(char16_t unit) noexcept;
bool iswspace(char16_t unit) noexcept;
bool iswpunct(char16_t unit) noexcept;
bool iswcntrl(char16_t unit) noexcept;
bool iswdigit(char16_t unit) noexcept;

/// First place in [first, last) where the upper-cased text holds the `count` units at `upper`,
/// upper-cased already; null if there is none. Gives what folding the whole text and then searching
/// it gives, without a copy.
const char16_t* find_folded(const char16_t* first, const char16_t* last, const char16_t* upper,
                            std::size_t count) noexcept;

/// The removals: drop every unit of the class from [first, last), close the gaps, give the new end.
char16_t* remove_space(char16_t* first, char16_t* last) noexcept;
char16_t* remove_punctuation(char16_t* first, char16_t* last) noexcept;
char16_t* remove_control(char16_t* first, char16_t* last) noexcept;

}  // namespace platform
