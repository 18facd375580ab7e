#ifndef KELM_H
#define KELM_H

/// @file
/// The three classes of text and the operators between them.

/// @mainpage Manual
/// Text values that are cheap to copy: `Kelm` for narrow text in the process's multi-byte code
/// page, `WString` for 16-bit text, and `Kelm::Token`, which walks a narrow text word by word.
///
/// ## A text
///
/// A value is one pointer wide and never null. It converts to a terminated text for free.
///
///     Kelm name("Ada");
///     std::puts(name);                       // the conversion costs nothing
///
/// Narrow and wide text do the same under the same names; `WString` has no formatting of its own in
/// its public part, no tokens, no character classes and no similarity.
///
///     WString wide(name);                    // decoded from the process's code page
///     Kelm back = wide.ToKelm();             // and encoded again
///
/// ## Sharing
///
/// A copy takes a reference to the same block: one atomic increment, no character moved. Whoever
/// writes first leaves the block with a copy of its own.
///
///     Kelm a("text"), b(a);                  // one block
///     b.Append('!');                         // b moves; a still reads "text"
///
/// ## Length, capacity and NUL
///
/// Lengths, capacities and indexes are `int`, count storage units (bytes in `Kelm`, 16-bit units in
/// `WString`) and start at 0. The length is kept, so a text may hold NUL; operations that take a
/// terminated pointer end at its first NUL, and each member says which kind it is.
///
///     Kelm bytes("a\0b", 3);                 // length 3
///     Kelm upToNul("a\0b");                  // length 1
///
/// A block has exactly the capacity that was asked for. Appending beyond it makes a new block of
/// exactly the new length, so reserve room first where the size is known, and give it back after.
///
///     Kelm line;
///     line.GetBuffer(200);                   // capacity 200, length 0
///     line.Append("built without a new block for each piece");
///     line.FreeExtra();                      // capacity equals the length
///
/// The largest capacity is 2147483634 bytes in `Kelm` and 1073741816 units in `WString`. More than
/// that, like exhausted memory, is `std::bad_alloc`.
///
/// ## Formatting
///
/// `Format` replaces the text, `AppendFormat` continues it, `FromFormat` makes a new value. The
/// language is that of `printf` with its own size prefixes: `I64` for 64-bit integers, `h` and `l`
/// for narrow and wide text. A value must be passed as a pointer: write `text.constBuffer()`.
///
///     Kelm report = Kelm::FromFormat("%-8s %5.1f %%", name.constBuffer(), 99.5);
///     report.AppendFormat(" of %I64d", 5000000000LL);
///
/// ## Code pages
///
/// Narrow text means what the codeset of the current locale says; in the C and POSIX locales that
/// is UTF-8. Other code pages are named by number, 0 being the process's own. The library reads the
/// locale and never sets it.
///
///     WString sign = WString::FromCodePage("\x83\x4a", 932);  // one unit, U+30AB
///     Kelm utf8 = sign.ToKelm(65001);                         // three bytes
///
/// ## Threads
///
/// Two values may be used on two threads even while they share a block. One value may be read, and
/// copied from, by several threads as long as none modifies it.
///
/// ## Failure
///
/// Searches that find nothing give -1, numbers that cannot be read give 0. A broken precondition is
/// a failed assertion: in every build it prints the expression, file and line to stderr and aborts.
/// Exhausted memory is `std::bad_alloc` and leaves the value as its member says; where nothing is
/// said, the value is unchanged.
///
/// ## Read on
///
/// The chapters beside this one, in the tree of the sources: [in short](README.md), with how to
/// build and link; [coming from elsewhere](docs/coming-from.md), from `std::string`, `printf` or
/// 16-bit `wchar_t`; [sharing, capacity and threads](docs/sharing.md);
/// [code pages](docs/code-pages.md); [debuggers](docs/debugging.md); and two whole programs,
/// [table](docs/table.md) and [recode](docs/recode.md).

#include <cstdarg>
#include <cstdint>
#include <type_traits>
#if defined(__cpp_impl_three_way_comparison) && defined(__has_include)
#if __has_include(<compare>)
#define KELM_THREE_WAY
#include <compare>
#endif
#endif

/// @name Version
/// @{

/// The version of this header, in three numbers and in one that grows.
#define KELM_VERSION_MAJOR 1
#define KELM_VERSION_MINOR 0
#define KELM_VERSION_PATCH 0
#define KELM_VERSION (KELM_VERSION_MAJOR * 10000 + KELM_VERSION_MINOR * 100 + KELM_VERSION_PATCH)
/// @}

/// Marks what the library exports.
#define KELM_API __attribute__((visibility("default")))
/// Marks what an exported class keeps to itself.
#define KELM_LOCAL __attribute__((visibility("hidden")))

#ifndef KELM_INLINE
/// Marks a member that is defined here and that the library exports all the same.
#define KELM_INLINE KELM_API
#endif

/// Says of a parameter, or behind a member of its value, that the result lives no longer than it.
/// clang++ warns of a result that is kept longer.
#if defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::lifetimebound)
#define KELM_LIFETIMEBOUND [[clang::lifetimebound]]
#endif
#endif
#ifndef KELM_LIFETIMEBOUND
#define KELM_LIFETIMEBOUND
#endif

/// Marks what does nothing but give its result.
#if __cplusplus >= 201703L
#define KELM_NODISCARD [[nodiscard]]
#else
#define KELM_NODISCARD
#endif

/// @cond
/// `type` where one of the arguments is an object, which the print could not read.
template <class... Arguments>
struct KelmIfObject {};

template <class First, class... Rest>
struct KelmIfObject<First, Rest...>
    : std::conditional<std::is_class<First>::value || std::is_union<First>::value,
                       std::enable_if<true>, KelmIfObject<Rest...>>::type {};
/// @endcond

/// How many values share a block at most. A copy beyond that has a block of its own.
static constexpr std::uint32_t KelmMostRefs = 1U << 30;

/// Header of a narrow block; the characters lie directly behind it.
struct KelmData {
    std::int32_t nRefs;         ///< holders; -1 in a locked block and in the static empty one
    std::int32_t nDataLength;   ///< length in bytes, terminator not counted
    std::int32_t nAllocLength;  ///< capacity in bytes, terminator not counted
};

/// Header of a wide block; the units lie directly behind it.
struct WStringData {
    std::int32_t nRefs;         ///< holders; -1 in the static empty block
    std::int32_t nDataLength;   ///< length in units, terminator not counted
    std::int32_t nAllocLength;  ///< capacity in units, terminator not counted
};

/// Narrow text in the process's multi-byte code page.
class KELM_API Kelm {
public:
    class Token;

    /// @name Constructors
    /// @{

    /// The empty text. No allocation.
    Kelm() noexcept;

    /// Shares the block of `stringSrc`: one atomic increment. A locked source is copied up to its
    /// first NUL instead, one that 2^30 values share already as a whole.
    KELM_INLINE Kelm(const Kelm& stringSrc) {
        KelmData* pData = stringSrc.GetData();
        // In one comparison: neither locked or empty nor held so often that the count could end.
        const std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (static_cast<std::uint32_t>(nRefs) - 1U < KelmMostRefs - 1U) {
            __atomic_add_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST);
            m_pchData = stringSrc.m_pchData;
            return;
        }
        CopyUnshared(stringSrc);
    }

    /// Takes over the block of the source, which is empty afterwards. A lock moves along.
    Kelm(Kelm&& stringSrc) noexcept;

    /// Copies the text up to its first NUL. A null pointer gives the empty text.
    Kelm(const char* pchText);

    /// Copies `nLength` bytes, NULs included. 0 or less gives the empty text without reading the
    /// pointer.
    Kelm(const char* pchText, int nLength);

    /// Copies the text up to its first NUL. The pointer must not be null.
    Kelm(const unsigned char* pchText);

    /// Gives up the block; the last holder frees it.
    KELM_INLINE ~Kelm() {
        KelmData* pData = GetData();
        std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (nRefs <= 0) {
            DestroyUnshared();
        } else if (nRefs == 1 || __atomic_sub_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST) <= 0) {
            FreeData(pData);
        }
    }

    /// @}
    /// @name Assignment and clearing
    /// @{

    /// Shares the block of `stringSrc`. If either side is locked, or the source has no block, the
    /// whole text is copied instead: into this value's block where it is not shared and has room,
    /// so that a lock and the address stay. Without memory for the copy the text is empty.
    Kelm& operator=(const Kelm& stringSrc) KELM_LIFETIMEBOUND;

    /// Takes over the block of the source, which is empty afterwards. Moving a value onto itself
    /// leaves it empty.
    Kelm& operator=(Kelm&& stringSrc) noexcept KELM_LIFETIMEBOUND;

    /// One byte becomes the text; NUL gives a text of length 1. Uses the present block where it is
    /// not shared and has room. Without memory the text is empty.
    Kelm& operator=(char ch) KELM_LIFETIMEBOUND;

    /// Copies the text up to its first NUL; it may be part of this value's own. The pointer must
    /// not be null. Uses the present block where it is not shared and has room. Without memory the
    /// text is empty.
    Kelm& operator=(const char* pchText) KELM_LIFETIMEBOUND;

    /// As for `const char*`.
    Kelm& operator=(const unsigned char* pchText) KELM_LIFETIMEBOUND;

    /// Makes the text empty and gives up the block. A locked block stays, locked, and so does a
    /// block without text.
    void Empty();

    /// Gives up the block in every case; a lock ends.
    void Release();

    /// @}
    /// @name Reading
    /// @{

    /// Length in bytes, terminator not counted.
    KELM_NODISCARD KELM_INLINE int GetLength() const noexcept { return GetData()->nDataLength; }

    /// Capacity in bytes, terminator not counted.
    KELM_NODISCARD KELM_INLINE int GetAllocLength() const noexcept {
        return GetData()->nAllocLength;
    }

    /// Bytes of the text without its terminator.
    KELM_NODISCARD KELM_INLINE int GetByteLength() const noexcept { return GetData()->nDataLength; }

    /// Whether the length is 0.
    KELM_NODISCARD KELM_INLINE bool IsEmpty() const noexcept { return GetData()->nDataLength == 0; }

    /// The terminated text, never null. Good until the value is modified or destroyed.
    KELM_NODISCARD KELM_INLINE const char* constBuffer() const noexcept KELM_LIFETIMEBOUND {
        return m_pchData;
    }

    /// The same as `constBuffer`. What C++ does with a pointer compiles for a value as well:
    /// `*text`, `text - 1`, and `if (text)`, which is always true.
    KELM_NODISCARD KELM_INLINE operator const char*() const noexcept KELM_LIFETIMEBOUND {
        return m_pchData;
    }

    /// The byte at an index from 0 to the length, where the terminator stands. Not tested.
    KELM_NODISCARD KELM_INLINE char GetAt(int nIndex) const noexcept { return m_pchData[nIndex]; }

    /// The same as `GetAt`; a value, not a reference. An index of type `long` is ambiguous.
    KELM_NODISCARD KELM_INLINE char operator[](int nIndex) const noexcept { return GetAt(nIndex); }

    /// The first byte, NUL in an empty text.
    KELM_NODISCARD KELM_INLINE char Char() const noexcept { return *m_pchData; }

    /// Stores one byte. Asserts that the index is within the text. A shared block is left first.
    void SetAt(int nIndex, char ch);

    /// @}
    /// @name Direct access to the buffer
    /// @{

    /// A writable pointer to the text with room for at least `nMinBufLength` bytes and a
    /// terminator; asserts that this is not negative. A shared block is left, one that is too small
    /// is replaced (a lock ends then), any other is kept. Text and length stay. Call
    /// `ReleaseBuffer` when the writing is done, and nothing else in between.
    char* GetBuffer(int nMinBufLength) KELM_LIFETIMEBOUND;

    /// Sets the length after writing; -1 measures up to the first NUL. Asserts that the length is
    /// within the capacity, which stays.
    void ReleaseBuffer(int nNewLength = -1);

    /// `GetBuffer` and the length in one. Bytes between the old length and the new one are
    /// undefined.
    char* GetBufferSetLength(int nNewLength) KELM_LIFETIMEBOUND;

    /// Gives spare capacity back by moving to a block of exactly the length; a lock ends then. Does
    /// nothing without spare capacity.
    void FreeExtra();

    /// A writable pointer to a block that is not shared from now on: copies of the value are made
    /// by copying the text. The pointer stays good until the lock ends: by `UnlockBuffer`,
    /// `Release`, a move, or an operation that needs more capacity. Locks are not counted.
    char* LockBuffer() KELM_LIFETIMEBOUND;

    /// Ends the lock. Asserts that the value is locked or has no block.
    void UnlockBuffer();

    /// @}
    /// @name Concatenation
    /// Appends in place where the block is not shared and has room; otherwise moves to a block of
    /// exactly the new length. The argument may be the value itself or part of it. A pointer must
    /// not be null and counts up to its first NUL; values and characters count whole, NULs
    /// included.
    /// @{

    Kelm& Append(const Kelm& string) KELM_LIFETIMEBOUND;  ///< Appends the text.
    /// Appends one byte, NUL included.
    KELM_INLINE Kelm& Append(char ch) KELM_LIFETIMEBOUND {
        KelmData* pData = GetData();
        const int nLength = pData->nDataLength;
        if (nLength < pData->nAllocLength && __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE) < 2) {
            pData->nDataLength = nLength + 1;
            m_pchData[nLength] = ch;
            m_pchData[nLength + 1] = '\0';
        } else {
            ConcatInPlace(1, &ch);
        }
        return *this;
    }
    Kelm& Append(const char* pchText) KELM_LIFETIMEBOUND;  ///< Appends up to the first NUL.
    /// The same as `Append`.
    KELM_INLINE Kelm& operator+=(const Kelm& string) KELM_LIFETIMEBOUND { return Append(string); }
    /// The same as `Append`.
    KELM_INLINE Kelm& operator+=(char ch) KELM_LIFETIMEBOUND { return Append(ch); }
    /// The same as `Append`.
    KELM_INLINE Kelm& operator+=(const char* pchText) KELM_LIFETIMEBOUND { return Append(pchText); }
    /// The same as `Append`.
    KELM_INLINE Kelm& operator<<(const Kelm& string) KELM_LIFETIMEBOUND { return Append(string); }
    /// The same as `Append`.
    KELM_INLINE Kelm& operator<<(char ch) KELM_LIFETIMEBOUND { return Append(ch); }
    /// The same as `Append`.
    KELM_INLINE Kelm& operator<<(const char* pchText) KELM_LIFETIMEBOUND { return Append(pchText); }

    /// @}
    /// @name Searching
    /// Positions are byte indexes from 0; -1 means not found. Searches walk by character, so a byte
    /// inside a longer character is not found by itself, and end at the first NUL at or behind
    /// their start. A null text finds nothing, a null set is empty. Linear; no allocation but in
    /// `NCFind`.
    /// @{

    /// First character that is this byte, at or behind `nStart`. NUL is found at the end of a text
    /// that is not empty. A negative start counts as 0.
    KELM_NODISCARD int Find(char ch, int nStart) const noexcept;
    /// The same from 0.
    KELM_NODISCARD KELM_INLINE int Find(char ch) const noexcept { return Find(ch, 0); }

    /// First occurrence of the text at or behind `nStart`. An empty text is found at the start, up
    /// to the length. A negative start counts as 0.
    KELM_NODISCARD int Find(const char* pchText, int nStart) const noexcept;
    /// The same from 0.
    KELM_NODISCARD KELM_INLINE int Find(const char* pchText) const noexcept {
        return Find(pchText, 0);
    }

    /// Last character that is this byte; NUL is found at the end.
    KELM_NODISCARD int ReverseFind(char ch) const noexcept;

    /// First character that occurs in the set.
    KELM_NODISCARD int FindOneOf(const char* pchSet) const noexcept;

    /// First character that is this byte, both upper-cased.
    KELM_NODISCARD int NCFind(char ch) const;

    /// First occurrence of the text, both sides upper-cased; null counts as empty. May copy both
    /// sides.
    KELM_NODISCARD int NCFind(const char* pchText) const;

    /// Bytes equal to `ch` in the whole text, those inside longer characters and NULs included.
    KELM_NODISCARD int Count(char ch) const noexcept;

    /// Occurrences of the text that do not overlap, from the left; 0 for an empty text.
    KELM_NODISCARD int Count(const char* pchText) const;

    /// @}
    /// @name Extraction
    /// Bounds are clamped. The whole text comes out shared, at the cost of a copy; a piece has a
    /// block of exactly its length. Counts are bytes, and a piece may cut a character.
    /// @{

    /// `nCount` bytes from `nFirst`. A negative `nFirst` counts as 0 and does not shorten the
    /// count.
    KELM_NODISCARD Kelm Mid(int nFirst, int nCount) const;
    KELM_NODISCARD Kelm Mid(int nFirst) const;    ///< Everything from `nFirst`.
    KELM_NODISCARD Kelm Left(int nCount) const;   ///< The first bytes.
    KELM_NODISCARD Kelm Right(int nCount) const;  ///< The last bytes.

    /// The beginning made only of characters of the set, up to the first NUL. A null set is empty.
    KELM_NODISCARD Kelm SpanIncluding(const char* pchSet) const;

    /// The beginning that holds no character of the set, up to the first NUL. A null set is empty.
    KELM_NODISCARD Kelm SpanExcluding(const char* pchSet) const;

    /// @}
    /// @name Case, reversal and trimming
    /// In place, in a block that is private afterwards even where nothing changed; the capacity
    /// stays. They work up to the first NUL and by the process's locale. A set may be part of the
    /// value's own text; a null one is empty.
    /// @{

    void MakeUpper();    ///< Upper-cases every character whose width that keeps.
    void MakeLower();    ///< Lower-cases every character whose width that keeps.
    void MakeReverse();  ///< Reverses the order of the characters, which stay whole.

    void TrimRight();                    ///< Drops white space at the end.
    void TrimRight(char ch);             ///< Drops the run of this character at the end.
    void TrimRight(const char* pchSet);  ///< Drops characters of the set at the end.
    void TrimLeft();                     ///< Drops white space at the start.
    void TrimLeft(char ch);              ///< Drops the run of this character at the start.
    /// Drops characters of the set at the start. An empty set changes nothing, a shared block
    /// included.
    void TrimLeft(const char* pchSet);

    /// A copy without white space at both ends, in a block of its own.
    KELM_NODISCARD Kelm Trim() const;

    /// @}
    /// @name Replacement
    /// @{

    /// Puts one byte in the place of every character that is `chOld`; the result is their number.
    /// The block is private afterwards unless both are equal.
    int Replace(char chOld, char chNew);

    /// Replaces every occurrence, from the left and without overlap, in front of and behind NULs. A
    /// null replacement is an empty one; an empty or null search text finds nothing. The result is
    /// the number of occurrences; 0 leaves the value untouched. Works in place where the block is
    /// not shared and the result fits, else in a new block: of the result's length or, for a
    /// shorter result of a shared text, the old one. Both texts may be part of the value's own.
    /// Linear.
    int Replace(const char* pchOld, const char* pchNew);

    /// Replaces every occurrence, case ignored, one exact form of it at a time and that form
    /// everywhere, inserted text included: the result is the sum of those replacements and can
    /// exceed the number of occurrences. Replacing "&" by "&amp;" would so go on for ever: where
    /// the lengths of the text in all steps together would exceed 64 times (its length + 65,536),
    /// every occurrence that the text had at the call is replaced once instead, in a block of
    /// exactly the length unless the value is locked and has room, and the result is their number.
    /// Without memory what is replaced by then stays replaced. Both texts may be part of the
    /// value's own.
    int NCReplace(const char* pchOld, const char* pchNew);

    /// @}
    /// @name Removal
    /// The result is the number removed. The class and character forms work on every byte, also
    /// inside longer characters, in place in a block that is private afterwards.
    /// @{

    /// Removes every occurrence, as `Replace` finds them.
    KELM_INLINE int Remove(const char* pchText) { return Replace(pchText, nullptr); }
    int Remove(char ch);      ///< Removes every byte equal to `ch`.
    int RemoveSpace();        ///< Removes every byte of white space.
    int RemovePunctuation();  ///< Removes every byte of punctuation.
    int RemoveControl();      ///< Removes every control byte, NUL included.

    /// Removes every occurrence, case ignored, until none is left: those that a removal forms as
    /// well. Ends at the first NUL. With a hit the value moves to a block of exactly its length,
    /// unless it is locked or nothing is left. Linear.
    int NCRemove(const char* pchText);
    int NCRemove(char ch);  ///< The same for one character; NUL removes nothing.

    /// @}
    /// @name Structural edits
    /// Indexes and counts are bytes. In place where the block is not shared and has room.
    /// @{

    /// Inserts one byte and gives the new length. The index is clamped to the text.
    int Insert(int nIndex, char ch);

    /// Inserts a text, which may be part of the value's own, and gives the new length. The index is
    /// clamped to the text. An empty text changes nothing.
    int Insert(int nIndex, const char* pchText);

    /// Deletes up to `nCount` bytes and gives the length before that. A negative index counts as 0.
    int Delete(int nIndex, int nCount);

    /// Replaces the text by `nCount` times this byte; 0 or less makes it empty.
    void Repeat(char ch, int nCount);

    /// Appends `nCount` times the text, which may be part of the value's own. Asserts that the
    /// count is not negative, unless the text is empty. Without memory the value is unchanged.
    void Repeat(const char* pchText, int nCount);

    /// A new value of `nCount` times this byte; 0 or less gives the empty text.
    KELM_NODISCARD static Kelm FromRepeat(char ch, int nCount);

    Kelm operator--();     ///< Drops the last byte; the result is the value after that.
    Kelm operator--(int);  ///< Drops the last byte; the result is the value before that.

    /// Replaces each tab up to the first NUL by spaces up to the next multiple of `nWidth`, counted
    /// from the start of the text and not of the line; the result is the number of tabs. A width of
    /// 0 or less removes them. With a tab the value moves to a block of exactly its length.
    int ReplaceTabs(int nWidth);

    /// @}
    /// @name Formatting
    /// The format must be terminated and not null; neither it nor a text argument may lie in the
    /// value's own block. Conversions: `d i u o x X`, `e f g G`, `p`, `c s` (narrow; wide with
    /// `l`), `C S` (wide; narrow with `h`), `n` (writes nothing), with the flags, widths and
    /// precisions of `printf`, `*` among them. An integer is an `int`, also with `l` or `I32`; `h`
    /// cuts it to 16 bits, and `I64` reads 64 bits, so a `long` goes with `I64`. The prefixes `F`,
    /// `L` and `N` do nothing. Anything else fails an assertion, and so do a negative width and
    /// precision. Numbers are rounded to nearest, ties to even, in every rounding mode; a width
    /// counts bytes, also those of a decimal point of several. The capacity afterwards is an
    /// estimate, often larger than the text; `FreeExtra` gives the rest back.
    /// @{

#ifdef KELM_CHECKED_FORMATS  // from `KelmCheck.h`: the same members, with their arguments checked
    KELM_CHECKED_FORMATS(Kelm, char)
    KELM_CHECKED_MESSAGE
#else
    /// Replaces the text.
    void Format(const char* pchFormat, ...);
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    void Format(const char* pchFormat,
                const Arguments&...) = delete;  ///< An object is no argument.

    /// Appends to the text. One that holds a NUL ends there afterwards, without what was appended.
    void AppendFormat(const char* pchFormat, ...);
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    void AppendFormat(const char* pchFormat, const Arguments&...) = delete;  ///< As for `Format`.

    /// A new value.
    KELM_NODISCARD static Kelm FromFormat(const char* pchFormat, ...);
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    static Kelm FromFormat(const char* pchFormat,
                           const Arguments&...) = delete;  ///< As for `Format`.

    /// The formatted text, a tag with the error code in decimal and hexadecimal, and the system's
    /// text for the code in the language of the thread's locale, if it has one and that fits into
    /// 2048 bytes with the rest. Code 0 stands for `errno`.
    void FormatMsg(std::uint32_t nError, const char* pchFormat, ...);
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    void FormatMsg(std::uint32_t nError, const char* pchFormat,
                   const Arguments&...) = delete;  ///< As for `Format`.
#endif
    void FormatV(const char* pchFormat, va_list argList);        ///< As `Format`.
    void AppendFormatV(const char* pchFormat, va_list argList);  ///< As `AppendFormat`.

    /// @}
    /// @name Values
    /// Reading never fails: what is no number gives 0. Numbers end at the first character that does
    /// not belong to them.
    /// @{

    /// With a decimal digit anywhere in the text: whether `Int` is not 0. Without one: whether the
    /// trimmed text is "true", "on" or "yes" in any case.
    KELM_NODISCARD bool Bool() const noexcept;

    /// The decimal number at the start; where that is 0, the hexadecimal one, with or without "0x".
    /// Beyond the type's range: its limit.
    KELM_NODISCARD int Int() const noexcept;
    KELM_NODISCARD std::int32_t Long() const noexcept;  ///< As `Int`.
    KELM_NODISCARD long long Int64() const noexcept;    ///< As `Int`, with 64 bits.

    /// The decimal floating-point number at the start, with the locale's decimal point.
    KELM_NODISCARD double Double() const noexcept;

    /// The reading member for the type: `int`, `unsigned int`, `long`, `unsigned long`, `long
    /// long`, `unsigned long long`, `double`, `float`, `bool`. Unsigned types take the same bits,
    /// so -1 gives their largest value; `unsigned long` takes 32 of them. `std::int64_t` is `long`
    /// on 64-bit Linux and so reads 32 bits: write `To<long long>`.
    template <class T>
    T To() const noexcept = delete;

    /// The digits of the number. Capacity 32.
    KELM_NODISCARD KELM_INLINE static Kelm From(int nValue) {
        return From(static_cast<long long>(nValue));
    }
    /// As for `int`, every digit.
    KELM_NODISCARD KELM_INLINE static Kelm From(long nValue) {
        return From(static_cast<long long>(nValue));
    }
    /// As for `int`.
    KELM_NODISCARD KELM_INLINE static Kelm From(unsigned int nValue) {
        return From(static_cast<unsigned long long>(nValue));
    }
    /// As for `int`, every digit.
    KELM_NODISCARD KELM_INLINE static Kelm From(unsigned long nValue) {
        return From(static_cast<unsigned long long>(nValue));
    }
    KELM_NODISCARD static Kelm From(long long nValue);           ///< As for `int`.
    KELM_NODISCARD static Kelm From(unsigned long long nValue);  ///< As for `int`.

    /// The number with six significant digits, as "%g" prints it. Capacity 128.
    KELM_NODISCARD static Kelm From(double dValue);

    /// @}
    /// @name Character classes
    /// Byte by byte by the process's locale, without multi-byte walking. Of an empty text all are
    /// true. The index must lie from 0 to the length, where the terminator gives false.
    /// @{

    KELM_NODISCARD bool IsDigit() const noexcept;  ///< Whether all bytes are decimal digits.
    KELM_NODISCARD bool IsDigit(int nIndex) const noexcept;  ///< The same of one byte.
    KELM_NODISCARD bool IsAlNum() const noexcept;  ///< Whether all bytes are letters or digits.
    KELM_NODISCARD bool IsAlNum(int nIndex) const noexcept;  ///< The same of one byte.
    KELM_NODISCARD bool IsAlpha() const noexcept;            ///< Whether all bytes are letters.
    KELM_NODISCARD bool IsAlpha(int nIndex) const noexcept;  ///< The same of one byte.
    KELM_NODISCARD bool IsUpper() const noexcept;  ///< Whether all bytes are upper-case letters.
    KELM_NODISCARD bool IsUpper(int nIndex) const noexcept;  ///< The same of one byte.
    KELM_NODISCARD bool IsLower() const noexcept;  ///< Whether all bytes are lower-case letters.
    KELM_NODISCARD bool IsLower(int nIndex) const noexcept;  ///< The same of one byte.
    KELM_NODISCARD bool IsSpace() const noexcept;            ///< Whether all bytes are white space.
    KELM_NODISCARD bool IsSpace(int nIndex) const noexcept;  ///< The same of one byte.

    /// @}
    /// @name Comparison
    /// Negative, 0 or positive as this text sorts before, with or behind the other. Both end at
    /// their first NUL. No allocation but in `CollateNoCase`.
    /// @{

    /// By character value: bytes as unsigned numbers, longer characters above single bytes. A null
    /// pointer gives 1.
    KELM_NODISCARD int Compare(const char* pchText) const noexcept;
    /// The same with letters in lower case.
    KELM_NODISCARD int CompareNoCase(const char* pchText) const noexcept;

    /// By the collation of the process's locale. The pointer must not be null.
    KELM_NODISCARD int Collate(const char* pchText) const noexcept;
    KELM_NODISCARD int CollateNoCase(const char* pchText) const;  ///< The same with case ignored.

    /// @}
    /// @name Similarity
    /// @{

    /// How much of this text occurs in the other in the same order: the length of their longest
    /// common subsequence of bytes divided by the length of this text, from 0 to 1. 0 if either is
    /// empty. The pointer must not be null and counts up to its first NUL. Time is the product of
    /// the lengths, 64 steps at once; memory is linear.
    KELM_NODISCARD float Similar(const char* pchText) const;
    KELM_NODISCARD float Similar(
        const Kelm& string) const;  ///< The same over the whole of both texts.

    /// @}
    /// @name Delimited fields
    /// A text with k delimiters has k + 1 elements, numbered from 0. Every byte equal to the
    /// delimiter separates, also inside a longer character; there is no quoting.
    /// @{

    /// The elements `nFirst` to `nLast` with the delimiters between them. A negative `nLast` stands
    /// for the last element of the text. Elements beyond the text are empty, so their delimiters
    /// show. A negative `nFirst`, or one above `nLast`, gives the empty text.
    KELM_NODISCARD Kelm Elements(int nFirst, int nLast, char chDelimiter) const;

    /// One element; empty where the text has none of that number. Walks from the start: to visit
    /// every element, walk with `Find` and `Mid`.
    KELM_NODISCARD Kelm Element(int nElement, char chDelimiter) const;

    /// Number of the first element with this text, or -1. Null is found nowhere.
    KELM_NODISCARD int IndexOfElement(const char* pchText, char chDelimiter) const noexcept;
    /// The same by `Double`.
    KELM_NODISCARD int IndexOfElement(double dValue, char chDelimiter) const;
    /// The same by `Int`.
    KELM_NODISCARD int IndexOfElement(int nValue, char chDelimiter) const;
    /// The same by `Char`.
    KELM_NODISCARD int IndexOfElement(char ch, char chDelimiter) const noexcept;
    /// The same by `Bool`.
    KELM_NODISCARD int IndexOfElement(bool bValue, char chDelimiter) const;

    /// @}
    /// @name Character sets
    /// @{

    /// Re-encodes the text in place from the process's code page to another. False, and nothing
    /// changed, for an empty text and an unknown code page. What cannot be expressed is replaced.
    /// The text ends at its first NUL.
    bool ToCharacterSet(unsigned int nCodePage);
    bool FromCharacterSet(unsigned int nCodePage);  ///< The same in the other direction.

    /// @}

protected:
    /// @name Block primitives
    /// @{

    /// Points at the static empty block; what was held is dropped, not released.
    void Init() noexcept;

    /// The header of the block.
    KELM_INLINE KelmData* GetData() const noexcept {
        return reinterpret_cast<KelmData*>(m_pchData) - 1;
    }

    /// A new private block of this length and capacity, its bytes undefined; the empty block for 0.
    /// What was held is dropped, not released. Asserts 0 <= `nLen` < INT_MAX.
    void AllocBuffer(int nLen);

    static void FreeData(KelmData* pData);  ///< Gives a block back to the allocator.

    /// Gives up one reference to a block that no value points at any more.
    static void Release(KelmData* pData);

    void CopyBeforeWrite();           ///< Leaves a shared block, text retained.
    void AllocBeforeWrite(int nLen);  ///< A private block with this room, text not retained.

    /// Replaces the text by `nLen` bytes, which may be part of the value's own.
    void AssignCopy(int nLen, const char* pchText);

    /// Makes `dest`, which is dropped and not released, a copy of `nCopyLen` bytes from
    /// `nCopyIndex` with `nExtraLen` undefined bytes behind them.
    void AllocCopy(Kelm& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const;

    void MoveAssign(Kelm& stringSrc);  ///< Takes over the block; the source is empty afterwards.

    /// Makes this value, which is dropped and not released, the two runs in a row.
    void ConcatCopy(int nLen1, const char* pch1, int nLen2, const char* pch2);

    void ConcatInPlace(int nLen, const char* pchText);  ///< Appends the run.

    /// @}
    /// @name Formatting
    /// @{

    /// The allowance for the formatted text in bytes, terminator not counted. For most conversions
    /// a fixed number; not a bound.
    static int GetFormattedLength(const char* pchFormat, va_list argList);

    /// Prints the whole text and a terminator; the result is its length.
    static int VFormat(char* pchDest, const char* pchFormat, va_list argList);

    /// @}

    char* m_pchData;  ///< First character of the text, never null.

private:
    friend KELM_API Kelm operator+(const Kelm& string1, const Kelm& string2);
    friend KELM_API Kelm operator+(const Kelm& string, char ch);
    friend KELM_API Kelm operator+(char ch, const Kelm& string);
    friend KELM_API Kelm operator+(const Kelm& string, const char* pchText);
    friend KELM_API Kelm operator+(const char* pchText, const Kelm& string);

    void CopyUnshared(const Kelm& stringSrc);
    void DestroyUnshared();
    template <class Search>
    KELM_LOCAL int ReplaceForms(Search& search, int nNew, const char* pchNew);
    KELM_LOCAL int ReplaceForm(const Kelm& sub, int nNew, const char* pchNew, bool bFromStart,
                               long long nMost);
    KELM_LOCAL int ReplaceOnce(const Kelm& upper, int nNew, const char* pchNew);
    KELM_LOCAL int RemoveFolded(const Kelm& upper, bool bAlone);
    KELM_LOCAL bool Recode(unsigned int nFrom, unsigned int nTo);
    KELM_LOCAL static Kelm Join(int nLen1, const char* pch1, int nLen2, const char* pch2);
};

/// @cond
template <>
KELM_NODISCARD inline KELM_INLINE int Kelm::To<int>() const noexcept {
    return Int();
}
template <>
KELM_NODISCARD inline KELM_INLINE unsigned int Kelm::To<unsigned int>() const noexcept {
    return static_cast<unsigned int>(Int());
}
template <>
KELM_NODISCARD inline KELM_INLINE long Kelm::To<long>() const noexcept {
    return Long();
}
template <>
KELM_NODISCARD inline KELM_INLINE unsigned long Kelm::To<unsigned long>() const noexcept {
    return static_cast<std::uint32_t>(Long());
}
template <>
KELM_NODISCARD inline KELM_INLINE long long Kelm::To<long long>() const noexcept {
    return Int64();
}
template <>
KELM_NODISCARD inline KELM_INLINE unsigned long long Kelm::To<unsigned long long>() const noexcept {
    return static_cast<unsigned long long>(Int64());
}
template <>
KELM_NODISCARD inline KELM_INLINE double Kelm::To<double>() const noexcept {
    return Double();
}
template <>
KELM_NODISCARD inline KELM_INLINE float Kelm::To<float>() const noexcept {
    return static_cast<float>(Double());
}
template <>
KELM_NODISCARD inline KELM_INLINE bool Kelm::To<bool>() const noexcept {
    return Bool();
}
/// @endcond

/// @name Joining narrow text
/// A new value with a block of exactly the sum of the lengths, never shared with an operand.
/// Pointers must not be null. A number is a character here: `text + 3` appends the byte 0x03.
/// @{

/// Both in a row. Without memory nothing has changed.
KELM_NODISCARD KELM_API Kelm operator+(const Kelm& string1, const Kelm& string2);
KELM_NODISCARD KELM_API Kelm operator+(const Kelm& string, char ch);
KELM_NODISCARD KELM_API Kelm operator+(char ch, const Kelm& string);
KELM_NODISCARD KELM_API Kelm operator+(const Kelm& string, const char* pchText);
KELM_NODISCARD KELM_API Kelm operator+(const char* pchText, const Kelm& string);
/// @}

/// @name Ordering narrow text
/// By `Kelm::Compare`: case counts, collation does not, and each side ends at its first NUL. A null
/// pointer sorts below every value.
/// @{

/// The sign of `Kelm::Compare`, the pointer being the smaller where it is null.
KELM_NODISCARD KELM_API bool operator==(const Kelm& string1, const Kelm& string2) noexcept;
KELM_NODISCARD KELM_API bool operator==(const Kelm& string, const char* pchText) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator==(const char* pchText,
                                                  const Kelm& string) noexcept {
    return string == pchText;
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const Kelm& string1,
                                                  const Kelm& string2) noexcept {
    return !(string1 == string2);
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const Kelm& string,
                                                  const char* pchText) noexcept {
    return !(string == pchText);
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const char* pchText,
                                                  const Kelm& string) noexcept {
    return !(string == pchText);
}
KELM_NODISCARD KELM_API bool operator<(const Kelm& string1, const Kelm& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator<(const Kelm& string, const char* pchText) noexcept {
    return string.Compare(pchText) < 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator<(const char* pchText, const Kelm& string) noexcept {
    return string.Compare(pchText) > 0;
}
KELM_NODISCARD KELM_API bool operator<=(const Kelm& string1, const Kelm& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator<=(const Kelm& string,
                                                  const char* pchText) noexcept {
    return string.Compare(pchText) <= 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator<=(const char* pchText,
                                                  const Kelm& string) noexcept {
    return string.Compare(pchText) >= 0;
}
KELM_NODISCARD KELM_API bool operator>(const Kelm& string1, const Kelm& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator>(const Kelm& string, const char* pchText) noexcept {
    return string.Compare(pchText) > 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator>(const char* pchText, const Kelm& string) noexcept {
    return string.Compare(pchText) < 0;
}
KELM_NODISCARD KELM_API bool operator>=(const Kelm& string1, const Kelm& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator>=(const Kelm& string,
                                                  const char* pchText) noexcept {
    return string.Compare(pchText) >= 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator>=(const char* pchText,
                                                  const Kelm& string) noexcept {
    return string.Compare(pchText) <= 0;
}
#ifdef KELM_THREE_WAY
/// What composites are ordered by: without it `<=>` would compare the addresses of the texts.
KELM_NODISCARD inline std::weak_ordering operator<=>(const Kelm& string1,
                                                     const Kelm& string2) noexcept {
    return string1.Compare(string2) <=> 0;
}
KELM_NODISCARD inline std::weak_ordering operator<=>(const Kelm& string,
                                                     const char* pchText) noexcept {
    return string.Compare(pchText) <=> 0;
}
#endif
/// @}

/// Walks a narrow text and hands out its words, quoted strings, delimited fields or lines.
///
/// A cursor, not a container: the source must outlive it and stay unchanged, or `Restart` must be
/// called. It stands on the first token from the start, so read before you step:
///
///     for (Kelm::Token token(text); token; ++token) {
///         use(token.Current());
///     }
///
/// and by lines the other way about: `while (token.NextLine()) use(token.Current());`. Lines
/// without text are left out; this walk counts them:
///
///     int number = 0;
///     for (int start = 0, end; start < text.GetLength(); start = end + 1) {
///         end = text.Find('\n', start);
///         end = end < 0 ? text.GetLength() : end;
///         use(++number, text.Mid(start, end - start));
///     }
///
/// A token is a run of bytes without white space, punctuation (`_` is none) and bytes from 0x80 to
/// 0xFE; or one such punctuation mark or byte; or what stands between two equal quotes, single or
/// double. The byte behind a token is stepped over unseen. Positions are byte indexes, the text
/// ends at its first NUL. Walking allocates nothing.
class KELM_API Kelm::Token {
public:
    /// Stands on the first token of the source. With `bSkipPunctuation`, tokens that begin with
    /// punctuation are left out.
    Token(const Kelm& strSource KELM_LIFETIMEBOUND, bool bSkipPunctuation = false);

    /// Moves to the next token; false at the end of the text.
    bool Next() noexcept;

    /// The same, but only `chDelimiter`, white space and bytes from 0x80 to 0xFE end a word, and
    /// punctuation is never left out.
    bool Next(char chDelimiter) noexcept;

    /// Moves to the next line; runs of CR and LF are one separator, so lines without text are
    /// skipped. A line that directly follows a token begins where that token began. False once the
    /// last line was handed out.
    bool NextLine() noexcept;

    /// The token's text; empty if there is none. One allocation.
    KELM_NODISCARD Kelm Current() const;
    KELM_NODISCARD operator Kelm() const;    ///< The same as `Current`.
    KELM_NODISCARD Kelm operator()() const;  ///< The same as `Current`.

    /// Whether the end of the text has not been reached.
    KELM_NODISCARD operator bool() const noexcept;

    /// Whether a token of at least one byte is in hand.
    KELM_NODISCARD bool IsValid() const noexcept;

    void operator++() noexcept;     ///< The same as `Next`.
    void operator++(int) noexcept;  ///< The same as `Next`.

    /// Whether tokens that begin with punctuation are left out from the next `Next` on; the result
    /// is the old value.
    bool SkipPunctuation(bool bSkip) noexcept;

    /// Takes up the source afresh and moves to its first token.
    void Restart() noexcept;

    /// Forgets the position. `Restart` begins anew.
    void Clear() noexcept;

protected:
    /// First byte at or behind `nStart` that is no white space, or -1 at the end of the text.
    int FindWhitespace(int nStart) const noexcept;

    /// First byte at or behind `nStart` equal to `ch`, or -1 at the end of the text.
    int FindChar(int nStart, char ch) const noexcept;

private:
    class Classes;
    KELM_LOCAL bool NextToken(const Classes& classes, const char* pchDelimiter);
    KELM_LOCAL int SkipWhitespace(const Classes& classes, int nStart) const noexcept;

    const Kelm& m_strSource;
    const char* m_pchText;
    int m_nStart;
    int m_nEnd;
    int m_nNext;
    bool m_bMore;
    int m_nLength;
    bool m_bSkipPunctuation;
};

/// Wide text: 16-bit units. Its members are the mirror of `Kelm`'s; where a member says nothing
/// here, what is said there holds, with units in the place of bytes.
class KELM_API WString {
public:
    /// @name Constructors
    /// @{

    /// The empty text. No allocation.
    WString() noexcept;

    /// Shares the block of `stringSrc`: one atomic increment.
    KELM_INLINE WString(const WString& stringSrc) {
        WStringData* pData = stringSrc.GetData();
        // In one comparison: neither locked or empty nor held so often that the count could end.
        const std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (static_cast<std::uint32_t>(nRefs) - 1U < KelmMostRefs - 1U) {
            __atomic_add_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST);
            m_pchData = stringSrc.m_pchData;
            return;
        }
        CopyUnshared(stringSrc);
    }

    /// Takes over the block of the source, which is empty afterwards.
    WString(WString&& stringSrc) noexcept;

    /// Copies the text up to its first NUL. A null pointer gives the empty text.
    WString(const char16_t* pchText);
    WString(char16_t* pchText);  ///< As for `const char16_t*`.

    /// Decodes the whole text from the process's code page.
    WString(const Kelm& string);

    /// Decodes the text up to its first NUL from the process's code page. A null pointer gives the
    /// empty text.
    WString(const char* pchText);

    /// Gives up the block; the last holder frees it.
    KELM_INLINE ~WString() {
        WStringData* pData = GetData();
        std::int32_t nRefs = __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE);
        if (nRefs <= 0) {
            DestroyUnshared();
        } else if (nRefs == 1 || __atomic_sub_fetch(&pData->nRefs, 1, __ATOMIC_SEQ_CST) <= 0) {
            FreeData(pData);
        }
    }

    /// @}
    /// @name Assignment and clearing
    /// @{

    /// Shares the block of `stringSrc`. From a source without a block the text becomes empty, in
    /// this value's block where it is not shared.
    WString& operator=(const WString& stringSrc) KELM_LIFETIMEBOUND;

    /// Takes over the block of the source, which is empty afterwards. Moving a value onto itself
    /// leaves it empty.
    WString& operator=(WString&& stringSrc) noexcept KELM_LIFETIMEBOUND;

    /// One unit becomes the text; NUL gives a text of length 1. Without memory the text is empty.
    WString& operator=(char16_t ch) KELM_LIFETIMEBOUND;

    /// Copies the text up to its first NUL; it may be part of this value's own. The pointer must
    /// not be null. Uses the present block where it is not shared and has room. Without memory the
    /// text is empty.
    WString& operator=(const char16_t* pchText) KELM_LIFETIMEBOUND;

    /// Decodes the whole text from the process's code page; the value is unchanged without memory.
    WString& operator=(const Kelm& string) KELM_LIFETIMEBOUND;

    /// Makes the text empty and gives up the block. A block without text stays.
    void Empty();

    /// Gives up the block in every case.
    void Release();

    /// @}
    /// @name Reading
    /// @{

    /// Length in units, terminator not counted.
    KELM_NODISCARD KELM_INLINE int GetLength() const noexcept { return GetData()->nDataLength; }

    /// Capacity in units, terminator not counted.
    KELM_NODISCARD KELM_INLINE int GetAllocLength() const noexcept {
        return GetData()->nAllocLength;
    }

    /// Bytes of the text without its terminator: twice the length.
    KELM_NODISCARD KELM_INLINE int GetByteLength() const noexcept {
        return GetData()->nDataLength * static_cast<int>(sizeof(char16_t));
    }

    /// Whether the length is 0.
    KELM_NODISCARD KELM_INLINE bool IsEmpty() const noexcept { return GetData()->nDataLength == 0; }

    /// The terminated text, never null. Good until the value is modified or destroyed.
    KELM_NODISCARD KELM_INLINE const char16_t* constBuffer() const noexcept KELM_LIFETIMEBOUND {
        return m_pchData;
    }

    /// The same as `constBuffer`.
    KELM_NODISCARD KELM_INLINE operator const char16_t*() const noexcept KELM_LIFETIMEBOUND {
        return m_pchData;
    }

    /// The unit at an index from 0 to the length, where the terminator stands. Not tested.
    KELM_NODISCARD KELM_INLINE char16_t GetAt(int nIndex) const noexcept {
        return m_pchData[nIndex];
    }

    /// The same as `GetAt`; a value, not a reference.
    KELM_NODISCARD KELM_INLINE char16_t operator[](int nIndex) const noexcept {
        return GetAt(nIndex);
    }

    /// The first unit, NUL in an empty text.
    KELM_NODISCARD KELM_INLINE char16_t Char() const noexcept { return *m_pchData; }

    /// Stores one unit. Asserts that the index is within the text. A shared block is left first.
    void SetAt(int nIndex, char16_t ch);

    /// @}
    /// @name Direct access to the buffer
    /// @{

    /// A writable pointer to the text with room for at least `nMinBufLength` units and a
    /// terminator; asserts that this is not negative. A shared block is left, one that is too small
    /// is replaced, any other is kept. Text and length stay. Call `ReleaseBuffer` when the writing
    /// is done, and nothing else in between.
    char16_t* GetBuffer(int nMinBufLength) KELM_LIFETIMEBOUND;

    /// Sets the length after writing; -1 measures up to the first NUL. Asserts that the length is
    /// within the capacity, which stays.
    void ReleaseBuffer(int nNewLength = -1);

    /// `GetBuffer` and the length in one. Units between the old length and the new one are
    /// undefined.
    char16_t* GetBufferSetLength(int nNewLength) KELM_LIFETIMEBOUND;

    /// Gives spare capacity back by moving to a block of exactly the length. Does nothing without
    /// spare capacity.
    void FreeExtra();

    /// @}
    /// @name Concatenation
    /// Appends in place where the block is not shared and has room; otherwise moves to a block of
    /// exactly the new length. The argument may be the value itself or part of it. A wide pointer
    /// must not be null; pointers count up to their first NUL, values and characters whole.
    /// @{

    WString& Append(const WString& string) KELM_LIFETIMEBOUND;  ///< Appends the text.
    /// Appends one unit, NUL included.
    KELM_INLINE WString& Append(char16_t ch) KELM_LIFETIMEBOUND {
        WStringData* pData = GetData();
        const int nLength = pData->nDataLength;
        if (nLength < pData->nAllocLength && __atomic_load_n(&pData->nRefs, __ATOMIC_ACQUIRE) < 2) {
            pData->nDataLength = nLength + 1;
            m_pchData[nLength] = ch;
            m_pchData[nLength + 1] = u'\0';
        } else {
            ConcatInPlace(1, &ch);
        }
        return *this;
    }
    WString& Append(const char16_t* pchText) KELM_LIFETIMEBOUND;  ///< Appends up to the first NUL.
    /// The same as `Append`.
    KELM_INLINE WString& operator+=(const WString& string) KELM_LIFETIMEBOUND {
        return Append(string);
    }
    /// The same as `Append`.
    KELM_INLINE WString& operator+=(char16_t ch) KELM_LIFETIMEBOUND { return Append(ch); }
    /// The same as `Append`.
    KELM_INLINE WString& operator+=(const char16_t* pchText) KELM_LIFETIMEBOUND {
        return Append(pchText);
    }
    /// The same as `Append`.
    KELM_INLINE WString& operator<<(const WString& string) KELM_LIFETIMEBOUND {
        return Append(string);
    }
    /// The same as `Append`.
    KELM_INLINE WString& operator<<(char16_t ch) KELM_LIFETIMEBOUND { return Append(ch); }
    /// The same as `Append`.
    KELM_INLINE WString& operator<<(const char16_t* pchText) KELM_LIFETIMEBOUND {
        return Append(pchText);
    }

    /// @}
    /// @name Concatenation of narrow text and numbers
    /// The argument is decoded or written in digits first; without memory for that the value is
    /// unchanged.
    /// @{

    WString& Append(const Kelm& string) KELM_LIFETIMEBOUND;  ///< Appends the decoded text.
    /// Appends the decoded text.
    KELM_INLINE WString& operator+=(const Kelm& string) KELM_LIFETIMEBOUND {
        return Append(string);
    }
    /// Appends the decoded text.
    KELM_INLINE WString& operator<<(const Kelm& string) KELM_LIFETIMEBOUND {
        return Append(string);
    }
    /// Appends the decoded text; null appends nothing.
    WString& operator<<(const char* pchText) KELM_LIFETIMEBOUND;
    /// Appends the digits.
    KELM_INLINE WString& operator<<(short nValue) KELM_LIFETIMEBOUND {
        return *this << static_cast<long>(nValue);
    }
    /// Appends the digits.
    KELM_INLINE WString& operator<<(unsigned short nValue) KELM_LIFETIMEBOUND {
        return *this << static_cast<long>(nValue);
    }
    /// Appends the digits.
    KELM_INLINE WString& operator<<(int nValue) KELM_LIFETIMEBOUND {
        return *this << static_cast<long>(nValue);
    }
    WString& operator<<(unsigned int nValue) KELM_LIFETIMEBOUND;  ///< Appends the digits.
    WString& operator<<(long nValue) KELM_LIFETIMEBOUND;          ///< Appends the digits.

    /// @}
    /// @name Searching
    /// Positions are unit indexes from 0; -1 means not found. A surrogate pair is two units.
    /// Searches end at the first NUL at or behind their start. A null text finds nothing, a null
    /// set is empty. Linear.
    /// @{

    /// First unit equal to `ch` at or behind `nStart`. NUL is found at the end of a text that is
    /// not empty. A negative start counts as 0.
    KELM_NODISCARD int Find(char16_t ch, int nStart) const noexcept;
    /// The same from 0.
    KELM_NODISCARD KELM_INLINE int Find(char16_t ch) const noexcept { return Find(ch, 0); }

    /// First occurrence of the text at or behind `nStart`. An empty text is found at the start, up
    /// to the length. A negative start counts as 0.
    KELM_NODISCARD int Find(const char16_t* pchText, int nStart) const noexcept;
    /// The same from 0.
    KELM_NODISCARD KELM_INLINE int Find(const char16_t* pchText) const noexcept {
        return Find(pchText, 0);
    }

    /// Last unit equal to `ch`; NUL is found at the end.
    KELM_NODISCARD int ReverseFind(char16_t ch) const noexcept;

    /// First unit that occurs in the set.
    KELM_NODISCARD int FindOneOf(const char16_t* pchSet) const noexcept;

    /// First unit equal to `ch`, both upper-cased.
    KELM_NODISCARD int NCFind(char16_t ch) const noexcept;

    /// First occurrence of the text, both sides upper-cased; null counts as empty.
    KELM_NODISCARD int NCFind(const char16_t* pchText) const;

    /// Units equal to `ch` in the whole text, NULs included.
    KELM_NODISCARD int Count(char16_t ch) const noexcept;

    /// Occurrences of the text that do not overlap, from the left; 0 for an empty text.
    KELM_NODISCARD int Count(const char16_t* pchText) const;

    /// @}
    /// @name Extraction
    /// Bounds are clamped. The whole text comes out shared, at the cost of a copy; a piece has a
    /// block of exactly its length. Counts are units, and a piece may cut a surrogate pair.
    /// @{

    /// `nCount` units from `nFirst`. A negative `nFirst` counts as 0 and does not shorten the
    /// count.
    KELM_NODISCARD WString Mid(int nFirst, int nCount) const;
    KELM_NODISCARD WString Mid(int nFirst) const;    ///< Everything from `nFirst`.
    KELM_NODISCARD WString Left(int nCount) const;   ///< The first units.
    KELM_NODISCARD WString Right(int nCount) const;  ///< The last units.

    /// @}
    /// @name Case, reversal and trimming
    /// In place, in a block that is private afterwards even where nothing changed; the capacity
    /// stays. They work up to the first NUL and by the process's locale. A set may be part of the
    /// value's own text; a null one is empty.
    /// @{

    void MakeUpper();    ///< Upper-cases every unit.
    void MakeLower();    ///< Lower-cases every unit.
    void MakeReverse();  ///< Reverses the order of the units.

    void TrimRight();                        ///< Drops white space at the end.
    void TrimRight(char16_t ch);             ///< Drops the run of this unit at the end.
    void TrimRight(const char16_t* pchSet);  ///< Drops units of the set at the end.
    void TrimLeft();                         ///< Drops white space at the start.
    void TrimLeft(char16_t ch);              ///< Drops the run of this unit at the start.
    /// Drops units of the set at the start. An empty set changes nothing, a shared block included.
    void TrimLeft(const char16_t* pchSet);

    /// A copy without white space at both ends, in a block of its own.
    KELM_NODISCARD WString Trim() const;

    /// @}
    /// @name Replacement
    /// @{

    /// Puts one unit in the place of every unit equal to `chOld`; the result is their number. The
    /// block is private afterwards unless both are equal.
    int Replace(char16_t chOld, char16_t chNew);

    /// Replaces every occurrence, from the left and without overlap, in front of and behind NULs. A
    /// null replacement is an empty one; an empty or null search text finds nothing. The result is
    /// the number of occurrences; 0 leaves the value untouched. Works in place where the block is
    /// not shared and the result fits, else in a new block: of the result's length or, for a
    /// shorter result of a shared text, the old one. Both texts may be part of the value's own.
    /// Linear.
    int Replace(const char16_t* pchOld, const char16_t* pchNew);

    /// @}
    /// @name Removal
    /// The result is the number removed. The class and character forms work in place in a block
    /// that is private afterwards.
    /// @{

    /// Removes every occurrence, as `Replace` finds them.
    KELM_INLINE int Remove(const char16_t* pchText) { return Replace(pchText, nullptr); }
    int Remove(char16_t ch);  ///< Removes every unit equal to `ch`.
    int RemoveSpace();        ///< Removes every unit of white space.
    int RemovePunctuation();  ///< Removes every unit of punctuation.
    int RemoveControl();      ///< Removes every control unit, NUL included.

    /// Removes every occurrence, case ignored, until none is left: those that a removal forms as
    /// well. Ends at the first NUL. With a hit the value moves to a block of exactly its length,
    /// unless nothing is left.
    int NCRemove(const char16_t* pchText);
    int NCRemove(char16_t ch);  ///< The same for one unit; NUL removes nothing.

    /// @}
    /// @name Structural edits
    /// @{

    /// A new value of `nCount` times this unit; 0 or less gives the empty text.
    KELM_NODISCARD static WString FromRepeat(char16_t ch, int nCount);

    /// @}
    /// @name Values
    /// Reading never fails: what is no number gives 0. Numbers end at the first character that does
    /// not belong to them.
    /// @{

    /// With a decimal digit anywhere in the text: whether `Int` is not 0. Without one: whether the
    /// trimmed text is "true", "on" or "yes" in any case.
    KELM_NODISCARD bool Bool() const noexcept;

    /// The decimal number at the start; where that is 0, the hexadecimal one, with or without "0x".
    /// Beyond the type's range: its limit.
    KELM_NODISCARD int Int() const noexcept;
    KELM_NODISCARD std::int32_t Long() const noexcept;  ///< As `Int`.
    KELM_NODISCARD long long Int64() const noexcept;    ///< As `Int`, with 64 bits.

    /// The decimal floating-point number at the start, with the locale's decimal point.
    KELM_NODISCARD double Double() const noexcept;

    /// The digits of the number. Capacity 32.
    KELM_NODISCARD KELM_INLINE static WString From(int nValue) {
        return From(static_cast<long long>(nValue));
    }
    /// As for `int`, every digit.
    KELM_NODISCARD KELM_INLINE static WString From(long nValue) {
        return From(static_cast<long long>(nValue));
    }
    /// As for `int`.
    KELM_NODISCARD KELM_INLINE static WString From(unsigned int nValue) {
        return From(static_cast<unsigned long long>(nValue));
    }
    /// As for `int`, every digit.
    KELM_NODISCARD KELM_INLINE static WString From(unsigned long nValue) {
        return From(static_cast<unsigned long long>(nValue));
    }
    KELM_NODISCARD static WString From(long long nValue);           ///< As for `int`.
    KELM_NODISCARD static WString From(unsigned long long nValue);  ///< As for `int`.

    /// The number with six significant digits, as "%g" prints it. Capacity 128.
    KELM_NODISCARD static WString From(double dValue);

    /// @}
    /// @name Comparison
    /// Negative, 0 or positive as this text sorts before, with or behind the other. Both end at
    /// their first NUL; a null pointer gives 1. No allocation.
    /// @{

    /// By unsigned units.
    KELM_NODISCARD int Compare(const char16_t* pchText) const noexcept;
    /// By units in lower case.
    KELM_NODISCARD int CompareNoCase(const char16_t* pchText) const noexcept;

    /// @}
    /// @name Delimited fields
    /// A text with k delimiters has k + 1 elements, numbered from 0. There is no quoting.
    /// @{

    /// The elements `nFirst` to `nLast` with the delimiters between them. A negative `nLast` stands
    /// for the last element of the text. Elements beyond the text are empty, so their delimiters
    /// show. A negative `nFirst`, or one above `nLast`, gives the empty text.
    KELM_NODISCARD WString Elements(int nFirst, int nLast, char16_t chDelimiter) const;

    /// One element; empty where the text has none of that number.
    KELM_NODISCARD WString Element(int nElement, char16_t chDelimiter) const;

    /// @}
    /// @name Code pages
    /// Code page 0 is the process's own. A result has exactly its length as capacity; it is empty
    /// for an empty text and for an unknown code page. What a code page does not define decodes to
    /// U+FFFD; what it cannot express encodes to `?`, in UTF-8 to U+FFFD.
    /// @{

    /// Decodes the whole text.
    KELM_NODISCARD static WString FromCodePage(const Kelm& string, unsigned int nCodePage);

    /// Decodes the text up to its first NUL. The pointer must not be null.
    KELM_NODISCARD static WString FromCodePage(const char* pchText, unsigned int nCodePage);

    /// Encodes the whole text for the process.
    KELM_NODISCARD KELM_INLINE Kelm ToKelm() const { return ToKelm(0); }
    KELM_NODISCARD Kelm ToKelm(unsigned int nCodePage) const;  ///< Encodes the whole text.

    /// @}

protected:
    /// @name Block primitives
    /// @{

    /// Points at the static empty block; what was held is dropped, not released.
    void Init() noexcept;

    /// The header of the block.
    KELM_INLINE WStringData* GetData() const noexcept {
        return reinterpret_cast<WStringData*>(m_pchData) - 1;
    }

    /// A new private block of this length and capacity, its units undefined; the empty block for 0.
    /// What was held is dropped, not released. Asserts 0 <= `nLen` < INT_MAX.
    void AllocBuffer(int nLen);

    static void FreeData(WStringData* pData);  ///< Gives a block back to the allocator.

    /// Gives up one reference to a block that no value points at any more.
    static void Release(WStringData* pData);

    void CopyBeforeWrite();           ///< Leaves a shared block, text retained.
    void AllocBeforeWrite(int nLen);  ///< A private block with this room, text not retained.

    /// Replaces the text by `nLen` units, which may be part of the value's own.
    void AssignCopy(int nLen, const char16_t* pchText);

    /// Makes `dest`, which is dropped and not released, a copy of `nCopyLen` units from
    /// `nCopyIndex` with `nExtraLen` undefined units behind them.
    void AllocCopy(WString& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const;

    void MoveAssign(WString& stringSrc);  ///< Takes over the block; the source is empty afterwards.

    /// Makes this value, which is dropped and not released, the two runs in a row.
    void ConcatCopy(int nLen1, const char16_t* pch1, int nLen2, const char16_t* pch2);

    void ConcatInPlace(int nLen, const char16_t* pchText);  ///< Appends the run.

    /// @}
    /// @name Formatting
    /// As in `Kelm`, where `s` and `c` mean wide and `S` and `C` narrow text.
    /// @{

    /// The allowance for the formatted text in units, terminator not counted.
    static int GetFormattedLength(const char16_t* pchFormat, va_list argList);

    /// Prints the whole text and a terminator; the result is its length.
    static int VFormat(char16_t* pchDest, const char16_t* pchFormat, va_list argList);

#ifdef KELM_CHECKED_FORMATS
    KELM_CHECKED_FORMATS(WString, char16_t)
#else
    void Format(const char16_t* pchFormat, ...);   ///< Replaces the text.
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    void Format(const char16_t* pchFormat,
                const Arguments&...) = delete;          ///< An object is no argument.
    void AppendFormat(const char16_t* pchFormat, ...);  ///< Appends to the text.
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    void AppendFormat(const char16_t* pchFormat,
                      const Arguments&...) = delete;            ///< As for `Format`.
    static WString FromFormat(const char16_t* pchFormat, ...);  ///< A new value.
    template <class... Arguments, class = typename KelmIfObject<Arguments...>::type>
    static WString FromFormat(const char16_t* pchFormat,
                              const Arguments&...) = delete;  ///< As for `Format`.
#endif
    void FormatV(const char16_t* pchFormat, va_list argList);        ///< As `Format`.
    void AppendFormatV(const char16_t* pchFormat, va_list argList);  ///< As `AppendFormat`.

    /// @}

    /// Decodes `nLength` bytes.
    static WString _FromCodePage(const char* pchText, int nLength, unsigned int nCodePage);

    char16_t* m_pchData;  ///< First unit of the text, never null.

private:
    friend KELM_API WString operator+(const WString& string1, const WString& string2);
    friend KELM_API WString operator+(const WString& string, char16_t ch);
    friend KELM_API WString operator+(char16_t ch, const WString& string);
    friend KELM_API WString operator+(const WString& string, const char16_t* pchText);
    friend KELM_API WString operator+(const char16_t* pchText, const WString& string);
    friend KELM_API WString operator+(const WString& string, const char* pchText);
    friend KELM_API WString operator+(const WString& string1, const Kelm& string2);

    void CopyUnshared(const WString& stringSrc);
    void DestroyUnshared();
    KELM_LOCAL static WString Join(int nLen1, const char16_t* pch1, int nLen2,
                                   const char16_t* pch2);
    KELM_LOCAL static WString JoinNarrow(const WString& string, int nLen, const char* pchText);
};

/// @name Joining wide text
/// A new value with a block of exactly the sum of the lengths, never shared with an operand. Wide
/// pointers must not be null.
/// @{

/// Both in a row. Without memory nothing has changed.
KELM_NODISCARD KELM_API WString operator+(const WString& string1, const WString& string2);
KELM_NODISCARD KELM_API WString operator+(const WString& string, char16_t ch);
KELM_NODISCARD KELM_API WString operator+(char16_t ch, const WString& string);
KELM_NODISCARD KELM_API WString operator+(const WString& string, const char16_t* pchText);
KELM_NODISCARD KELM_API WString operator+(const char16_t* pchText, const WString& string);
/// @}

/// @name Joining narrow text to wide text
/// The right operand is decoded from the process's code page; a null pointer counts as empty. There
/// is no form with narrow text on the left.
/// @{

/// Both in a row, the right one decoded.
KELM_NODISCARD KELM_API WString operator+(const WString& string, const char* pchText);
KELM_NODISCARD KELM_API WString operator+(const WString& string1, const Kelm& string2);
WString operator+(const char* pchText, const WString& string) = delete;
WString operator+(const Kelm& string1, const WString& string2) = delete;
/// @}

/// @name Ordering wide text
/// By `WString::Compare`; each side ends at its first NUL. A null pointer sorts below every value.
/// @{

/// The sign of `WString::Compare`, the pointer being the smaller where it is null.
KELM_NODISCARD KELM_API bool operator==(const WString& string1, const WString& string2) noexcept;
KELM_NODISCARD KELM_API bool operator==(const WString& string, const char16_t* pchText) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator==(const char16_t* pchText,
                                                  const WString& string) noexcept {
    return string == pchText;
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const WString& string1,
                                                  const WString& string2) noexcept {
    return !(string1 == string2);
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const WString& string,
                                                  const char16_t* pchText) noexcept {
    return !(string == pchText);
}
KELM_NODISCARD inline KELM_INLINE bool operator!=(const char16_t* pchText,
                                                  const WString& string) noexcept {
    return !(string == pchText);
}
KELM_NODISCARD KELM_API bool operator<(const WString& string1, const WString& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator<(const WString& string,
                                                 const char16_t* pchText) noexcept {
    return string.Compare(pchText) < 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator<(const char16_t* pchText,
                                                 const WString& string) noexcept {
    return string.Compare(pchText) > 0;
}
KELM_NODISCARD KELM_API bool operator<=(const WString& string1, const WString& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator<=(const WString& string,
                                                  const char16_t* pchText) noexcept {
    return string.Compare(pchText) <= 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator<=(const char16_t* pchText,
                                                  const WString& string) noexcept {
    return string.Compare(pchText) >= 0;
}
KELM_NODISCARD KELM_API bool operator>(const WString& string1, const WString& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator>(const WString& string,
                                                 const char16_t* pchText) noexcept {
    return string.Compare(pchText) > 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator>(const char16_t* pchText,
                                                 const WString& string) noexcept {
    return string.Compare(pchText) < 0;
}
KELM_NODISCARD KELM_API bool operator>=(const WString& string1, const WString& string2) noexcept;
KELM_NODISCARD inline KELM_INLINE bool operator>=(const WString& string,
                                                  const char16_t* pchText) noexcept {
    return string.Compare(pchText) >= 0;
}
KELM_NODISCARD inline KELM_INLINE bool operator>=(const char16_t* pchText,
                                                  const WString& string) noexcept {
    return string.Compare(pchText) <= 0;
}
#ifdef KELM_THREE_WAY
/// What composites are ordered by: without it `<=>` would compare the addresses of the texts.
KELM_NODISCARD inline std::weak_ordering operator<=>(const WString& string1,
                                                     const WString& string2) noexcept {
    return string1.Compare(string2) <=> 0;
}
KELM_NODISCARD inline std::weak_ordering operator<=>(const WString& string,
                                                     const char16_t* pchText) noexcept {
    return string.Compare(pchText) <=> 0;
}
#endif
/// @}

#endif
