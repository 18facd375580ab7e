#include "Kelm.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "assertion.h"
#include "blocks.h"
#include "fields.h"
#include "formatting.h"
#include "multibyte/multibyte.h"
#include "numbers.h"
#include "order.h"
#include "pages/pages.h"
#include "print/print.h"
#include "replacing.h"
#include "search/search.h"
#include "searching.h"
#include "similarity.h"
#include "storage.h"
#include "system_errors.h"

using blocks::checked_length;
using blocks::refs;
using platform::CodePage;
using platform::Grouping;
using platform::require;
using storage::Argument;
using storage::carry;
using storage::distance;
using storage::length_of;

namespace {

constexpr KelmData* KelmDataNil = &blocks::nil<char>.header;

/// Bytes of a character within a text of known length, where NUL is a character like any other.
std::size_t step(const CodePage& page, const char* pch) {
    return *pch == '\0' ? 1 : platform::_mbclen(page, pch);
}

int count_hits(const CodePage& page, const char* pchFirst, const char* pchLast, int nLen,
               const char* pchText) {
    return static_cast<int>(
        platform::count_text(page, pchFirst, pchLast, pchText, static_cast<std::size_t>(nLen)));
}

/// Whether the last byte is a character by itself in every code page, as ASCII is in front of which
/// there is nothing or ASCII too.
bool ends_plainly(const char* pchFirst, const char* pchEnd) {
    return pchEnd != pchFirst && (pchEnd[-1] & 0x80) == 0 &&
           (pchEnd - 1 == pchFirst || (pchEnd[-2] & 0x80) == 0);
}

/// The place behind what is left of a text of this length when the run of characters in front of
/// its first NUL that pass the test is cut off.
template <class Test>
const char* trimmed_end(const char* pchText, int nLen, Test test) {
    const char* pchNul = pchText + std::strlen(pchText);
    const char* pchRun = pchNul;
    while (ends_plainly(pchText, pchRun) && test(pchRun[-1])) {
        --pchRun;
    }
    if (pchRun != pchText && !ends_plainly(pchText, pchRun)) {
        bool aTest[256];
        for (int n = 0; n < 256; ++n) {
            aTest[n] = test(static_cast<char>(n));
        }
        pchRun = platform::trailing_run(*platform::process_code_page(), pchText, pchRun, aTest);
    }
    return pchRun != pchNul ? pchRun : pchText + nLen;
}

/// The first character that does not pass the test.
template <class Test>
const char* trimmed_start(const char* pchText, const char* pchEnd, Test test) {
    while (pchText < pchEnd && (*pchText & 0x80) == 0 && test(*pchText)) {
        ++pchText;
    }
    if (pchText >= pchEnd || !test(*pchText)) {
        return pchText;
    }
    const CodePage& page = *platform::process_code_page();
    while (pchText < pchEnd && test(*pchText)) {
        pchText += step(page, pchText);
    }
    return pchText;
}

template <class Set>
auto is_in(const Set& set) {
    return [&set](char ch) { return set.Has(ch); };
}

int read_int(const char* pchText) {
    const int nValue = platform::atoi(pchText);
    return nValue != 0 ? nValue : platform::strtol(pchText);
}

bool equals_word(const CodePage& page, const char* pchText, const char* pchWord) {
    for (; *pchWord != '\0'; ++pchText, ++pchWord) {
        if (platform::tolower(*pchText) != *pchWord) {
            return false;
        }
    }
    while (*pchText != '\0' && platform::_ismbcspace(static_cast<unsigned char>(*pchText))) {
        pchText = platform::_mbsinc(page, pchText);
    }
    return *pchText == '\0';
}

/// `nLen` counts what lies behind an embedded NUL as well.
bool read_bool(const char* pchText, int nLen) {
    if (std::any_of(pchText, pchText + nLen, [](char ch) { return ch >= '0' && ch <= '9'; })) {
        return read_int(pchText) != 0;
    }
    const CodePage& page = *platform::process_code_page();
    while (*pchText != '\0' && platform::_ismbcspace(static_cast<unsigned char>(*pchText))) {
        pchText = platform::_mbsinc(page, pchText);
    }
    return equals_word(page, pchText, "true") || equals_word(page, pchText, "on") ||
           equals_word(page, pchText, "yes");
}

/// Where the text goes on behind a tab at this column; there are no stops at a width of 0 or less.
long long tab_stop(long long nColumn, int nWidth) {
    return nWidth <= 0 ? nColumn : nColumn + nWidth - nColumn % nWidth;
}

float score(const char* pchText, int nLen, const char* pchOther, int nOther) {
    if (nLen == 0 || nOther == 0) {
        return 0.0F;
    }
    return static_cast<float>(platform::common_length(pchText, nLen, pchOther, nOther)) /
           static_cast<float>(nLen);
}

/// Number of the first element that passes the test, which is given its range.
template <class Test>
int index_of_element(const char* pchFirst, const char* pchLast, char chDelimiter, Test test) {
    for (int nIndex = 0;; ++nIndex) {
        const char* pchEnd = platform::find_unit(pchFirst, pchLast, chDelimiter);
        if (test(pchFirst, pchEnd)) {
            return nIndex;
        }
        if (pchEnd == pchLast) {
            return -1;
        }
        pchFirst = pchEnd + 1;
    }
}

/// Number of the first element that equals the text up to its own first NUL, found by the text
/// instead of by the delimiters; -1 if there is none.
int index_of_text(const char* pchFirst, const char* pchLast, const char* pchText, std::size_t nLen,
                  char chDelimiter) {
    if (platform::find_unit(pchText, pchText + nLen, chDelimiter) != pchText + nLen) {
        return -1;
    }
    platform::TextSearch<char> search(pchFirst, pchLast, pchText, nLen);
    while (const char* pchHit = search.Next()) {
        const bool bBegins = pchHit == pchFirst || pchHit[-1] == chDelimiter;
        if (bBegins && (pchHit[nLen] == chDelimiter || pchHit[nLen] == '\0')) {
            return static_cast<int>(platform::count_unit(pchFirst, pchHit, chDelimiter));
        }
    }
    return -1;
}

/// Elements as terminated texts, one at a time. At most one allocation, for the first long one.
class ElementText {
public:
    explicit ElementText(int nTextLength) : m_nTextLength(nTextLength) {}

    const char* Take(const char* pchFirst, const char* pchLast) {
        const int nLen = distance(pchFirst, pchLast);
        char* pchDest = m_szShort;
        if (nLen >= static_cast<int>(sizeof(m_szShort))) {
            pchDest = m_strLong.GetBuffer(m_nTextLength);
        }
        std::memcpy(pchDest, pchFirst, static_cast<std::size_t>(nLen));
        pchDest[nLen] = '\0';
        return pchDest;
    }

private:
    int m_nTextLength;
    char m_szShort[128];
    Kelm m_strLong;
};

/// The order of two values, which know their lengths.
int compare(const Kelm& string1, const Kelm& string2) {
    return order::compare<char>(string1, string1.GetLength(), string2, string2.GetLength(),
                                [&] { return string1.Compare(string2.constBuffer()); });
}

}  // namespace

Kelm::Kelm() noexcept {
    Init();
}

void Kelm::CopyUnshared(const Kelm& stringSrc) {
    storage::copy_construct(m_pchData, stringSrc.m_pchData);
}

Kelm::Kelm(Kelm&& stringSrc) noexcept {
    Init();
    MoveAssign(stringSrc);
}

Kelm::Kelm(const char* pchText) {
    Init();
    if (pchText == nullptr) {
        return;
    }
    const int nLen = length_of(pchText);
    if (nLen > 0) {
        AllocBuffer(nLen);
        std::memcpy(m_pchData, pchText, static_cast<std::size_t>(nLen));
    }
}

Kelm::Kelm(const char* pchText, int nLength) {
    Init();
    if (nLength <= 0) {
        return;
    }
    AllocBuffer(nLength);
    std::memcpy(m_pchData, pchText, static_cast<std::size_t>(nLength));
}

Kelm::Kelm(const unsigned char* pchText) {
    Init();
    *this = reinterpret_cast<const char*>(pchText);
}

void Kelm::DestroyUnshared() {
    storage::release(m_pchData);
}

Kelm& Kelm::operator=(const Kelm& stringSrc) {
    storage::assign(m_pchData, stringSrc.m_pchData);
    return *this;
}

Kelm& Kelm::operator=(Kelm&& stringSrc) noexcept {
    MoveAssign(stringSrc);
    return *this;
}

Kelm& Kelm::operator=(char ch) {
    AssignCopy(1, &ch);
    return *this;
}

Kelm& Kelm::operator=(const char* pchText) {
    AssignCopy(length_of(pchText), pchText);
    return *this;
}

Kelm& Kelm::operator=(const unsigned char* pchText) {
    return *this = reinterpret_cast<const char*>(pchText);
}

void Kelm::Empty() {
    storage::empty(m_pchData);
}

void Kelm::Release() {
    storage::release(m_pchData);
}

void Kelm::SetAt(int nIndex, char ch) {
    storage::set_at(m_pchData, nIndex, ch);
}

char* Kelm::GetBuffer(int nMinBufLength) {
    return storage::get_buffer(m_pchData, nMinBufLength);
}

void Kelm::ReleaseBuffer(int nNewLength) {
    storage::release_buffer(m_pchData, nNewLength);
}

char* Kelm::GetBufferSetLength(int nNewLength) {
    return storage::get_buffer_set_length(m_pchData, nNewLength);
}

void Kelm::FreeExtra() {
    storage::free_extra(m_pchData);
}

char* Kelm::LockBuffer() {
    GetBuffer(0);
    if (GetData() != KelmDataNil) {
        __atomic_store_n(&GetData()->nRefs, -1, __ATOMIC_RELAXED);
    }
    return m_pchData;
}

void Kelm::UnlockBuffer() {
    require(refs(GetData()) == -1, "GetData ()->nRefs == -1");
    if (GetData() != KelmDataNil) {
        __atomic_store_n(&GetData()->nRefs, 1, __ATOMIC_RELAXED);
    }
}

Kelm& Kelm::Append(const Kelm& string) {
    ConcatInPlace(string.GetLength(), string.m_pchData);
    return *this;
}

Kelm& Kelm::Append(const char* pchText) {
    ConcatInPlace(length_of(pchText), pchText);
    return *this;
}

int Kelm::Find(char ch, int nStart) const noexcept {
    nStart = std::max(nStart, 0);
    if (nStart >= GetLength()) {
        return -1;
    }
    const char* pchStart = m_pchData + nStart;
    const CodePage& page = *platform::process_code_page();
    if (platform::stands_alone(page, static_cast<unsigned char>(ch))) {
        const char* pchHit = std::strchr(pchStart, ch);
        return pchHit == nullptr ? -1 : distance(m_pchData, pchHit);
    }
    const auto find = [&](const char* pchFirst, const char* pchLast) {
        return platform::_mbschr(page, pchFirst, pchLast, static_cast<unsigned char>(ch));
    };
    return searching::index<char>(
        m_pchData, searching::narrow(page, pchStart, m_pchData + GetLength(), 1, find));
}

int Kelm::Find(const char* pchText, int nStart) const noexcept {
    nStart = std::max(nStart, 0);
    if (nStart > GetLength() || pchText == nullptr) {
        return -1;
    }
    const char* pchStart = m_pchData + nStart;
    const CodePage& page = *platform::process_code_page();
    const std::size_t nLen = std::strlen(pchText);
    const auto find = [&](const char* pchFirst, const char* pchLast) {
        return platform::_mbsstr(page, pchFirst, pchLast, pchText, nLen);
    };
    return searching::index<char>(
        m_pchData, searching::narrow(page, pchStart, m_pchData + GetLength(), nLen, find));
}

int Kelm::ReverseFind(char ch) const noexcept {
    const CodePage& page = *platform::process_code_page();
    const char* pchHit =
        platform::stands_alone(page, static_cast<unsigned char>(ch))
            ? std::strrchr(m_pchData, ch)
            : platform::_mbsrchr(page, m_pchData, m_pchData + std::strlen(m_pchData),
                                 static_cast<unsigned char>(ch));
    return pchHit == nullptr ? -1 : distance(m_pchData, pchHit);
}

int Kelm::FindOneOf(const char* pchSet) const noexcept {
    if (pchSet == nullptr) {
        return -1;
    }
    const CodePage& page = *platform::process_code_page();
    const auto find = [&](const char* pchFirst, const char* pchLast) {
        return platform::_mbspbrk(page, pchFirst, pchLast, pchSet);
    };
    return searching::index<char>(
        m_pchData, searching::narrow(page, m_pchData, m_pchData + GetLength(), 1, find));
}

int Kelm::Count(char ch) const noexcept {
    return static_cast<int>(platform::count_unit<char>(m_pchData, m_pchData + GetLength(), ch));
}

int Kelm::Count(const char* pchText) const {
    if (pchText == nullptr || *pchText == '\0') {
        return 0;
    }
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    return count_hits(*platform::process_code_page(), m_pchData, pchEnd, length_of(pchText),
                      pchText);
}

Kelm Kelm::Mid(int nFirst, int nCount) const {
    Kelm dest;
    storage::mid(dest.m_pchData, m_pchData, nFirst, nCount);
    return dest;
}

Kelm Kelm::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

Kelm Kelm::Left(int nCount) const {
    Kelm dest;
    storage::left(dest.m_pchData, m_pchData, nCount);
    return dest;
}

Kelm Kelm::Right(int nCount) const {
    Kelm dest;
    storage::right(dest.m_pchData, m_pchData, nCount);
    return dest;
}

Kelm Kelm::SpanIncluding(const char* pchSet) const {
    const CodePage& page = *platform::process_code_page();
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    return Left(static_cast<int>(
        platform::_mbsspn(page, m_pchData, pchEnd, pchSet == nullptr ? "" : pchSet)));
}

Kelm Kelm::SpanExcluding(const char* pchSet) const {
    const CodePage& page = *platform::process_code_page();
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    return Left(static_cast<int>(
        platform::_mbscspn(page, m_pchData, pchEnd, pchSet == nullptr ? "" : pchSet)));
}

void Kelm::MakeUpper() {
    CopyBeforeWrite();
    platform::_mbsupr(*platform::process_code_page(), m_pchData);
}

void Kelm::MakeLower() {
    CopyBeforeWrite();
    platform::_mbslwr(*platform::process_code_page(), m_pchData);
}

void Kelm::MakeReverse() {
    CopyBeforeWrite();
    platform::_mbsrev(*platform::process_code_page(), m_pchData);
}

void Kelm::TrimRight() {
    const platform::ByteClass space = platform::ByteClass::Space();
    storage::keep<char>(m_pchData, m_pchData, trimmed_end(m_pchData, GetLength(), is_in(space)));
}

void Kelm::TrimRight(char ch) {
    storage::keep<char>(m_pchData, m_pchData, trimmed_end(m_pchData, GetLength(), [=](char chText) {
                            return chText == ch;
                        }));
}

void Kelm::TrimRight(const char* pchSet) {
    const platform::ByteSet set(*platform::process_code_page(), pchSet == nullptr ? "" : pchSet);
    storage::keep<char>(m_pchData, m_pchData, trimmed_end(m_pchData, GetLength(), is_in(set)));
}

void Kelm::TrimLeft() {
    const platform::ByteClass space = platform::ByteClass::Space();
    const char* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData, trimmed_start(m_pchData, pchEnd, is_in(space)), pchEnd);
}

void Kelm::TrimLeft(char ch) {
    const char* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData,
                  trimmed_start(m_pchData, pchEnd, [=](char chText) { return chText == ch; }),
                  pchEnd);
}

void Kelm::TrimLeft(const char* pchSet) {
    if (pchSet == nullptr || *pchSet == '\0') {
        return;
    }
    const platform::ByteSet set(*platform::process_code_page(), pchSet);
    const char* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData, trimmed_start(m_pchData, pchEnd, is_in(set)), pchEnd);
}

Kelm Kelm::Trim() const {
    const platform::ByteClass space = platform::ByteClass::Space();
    const int nLen = storage::copied_length(m_pchData);
    const char* pchEnd = trimmed_end(m_pchData, nLen, is_in(space));
    const char* pchStart = trimmed_start(m_pchData, pchEnd, is_in(space));
    Kelm copy;
    copy.AllocBuffer(nLen);
    storage::keep(copy.m_pchData, pchStart, pchEnd);
    return copy;
}

int Kelm::Replace(char chOld, char chNew) {
    if (chOld == chNew) {
        return 0;
    }
    CopyBeforeWrite();
    const CodePage& page = *platform::process_code_page();
    char* pch = m_pchData;
    char* pchEnd = m_pchData + GetLength();
    const bool bAscii = ((chOld | chNew) & 0x80) == 0;
    if (page.grouping == Grouping::SingleByte || (page.grouping == Grouping::Utf8 && bAscii)) {
        return static_cast<int>(platform::replace_unit(pch, pchEnd, chOld, chNew));
    }
    int nHits = 0;
    while (pch < pchEnd) {
        if (*pch == chOld) {
            *pch = chNew;
            ++nHits;
        }
        // By the byte that stands there now: it may lead another character than the old one.
        pch += step(page, pch);
    }
    return nHits;
}

int Kelm::Replace(const char* pchOld, const char* pchNew) {
    if (pchOld == nullptr || *pchOld == '\0') {
        return 0;
    }
    const Argument<char> old(pchOld, m_pchData);
    const Argument<char> replacement(pchNew, m_pchData);
    const CodePage& page = *platform::process_code_page();
    const int nOld = length_of(old);
    const replacing::NarrowSearch search = {page, old, static_cast<std::size_t>(nOld)};
    return replacing::replace<char>(m_pchData, nOld, replacement,
                                    pchNew == nullptr ? 0 : length_of(replacement), search);
}

int Kelm::Remove(char ch) {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_unit(m_pchData, m_pchData + GetLength(), ch));
}

int Kelm::RemoveSpace() {
    CopyBeforeWrite();
    return storage::cut_right(
        m_pchData,
        platform::remove_class(platform::ByteClass::Space(), m_pchData, m_pchData + GetLength()));
}

int Kelm::RemovePunctuation() {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_class(platform::ByteClass::Punctuation(), m_pchData,
                                                     m_pchData + GetLength()));
}

int Kelm::RemoveControl() {
    CopyBeforeWrite();
    return storage::cut_right(
        m_pchData,
        platform::remove_class(platform::ByteClass::Control(), m_pchData, m_pchData + GetLength()));
}

int Kelm::Insert(int nIndex, char ch) {
    nIndex = std::clamp(nIndex, 0, GetLength());
    storage::open_gap(m_pchData, nIndex, 1);
    m_pchData[nIndex] = ch;
    return GetLength();
}

int Kelm::Insert(int nIndex, const char* pchText) {
    const int nLen = length_of(pchText);
    if (nLen == 0) {
        return GetLength();
    }
    const Argument<char> text(pchText, m_pchData);
    nIndex = std::clamp(nIndex, 0, GetLength());
    storage::open_gap(m_pchData, nIndex, nLen);
    storage::copy_units<char>(m_pchData + nIndex, text, nLen);
    return GetLength();
}

int Kelm::Delete(int nIndex, int nCount) {
    nIndex = std::max(nIndex, 0);
    const int nLength = GetLength();
    if (nCount > 0 && nIndex < nLength) {
        CopyBeforeWrite();
        const int nBehind = nIndex + std::min(nCount, nLength - nIndex);
        storage::set_length(m_pchData,
                            distance(m_pchData, carry(m_pchData + nIndex, m_pchData + nBehind,
                                                      m_pchData + nLength)));
    }
    return nLength;
}

void Kelm::Repeat(char ch, int nCount) {
    const Kelm rc = FromRepeat(ch, nCount);
    *this = rc;
}

void Kelm::Repeat(const char* pchText, int nCount) {
    const int nLen = length_of(pchText);
    require(nLen == 0 || nCount >= 0, "nMinBufLength >= 0");
    const Argument<char> text(pchText, m_pchData);
    const int nOldLength = GetLength();
    const int nAdded = checked_length(static_cast<long long>(nLen) * nCount);
    GetBuffer(checked_length(static_cast<long long>(nOldLength) + nAdded));
    char* pchFirst = m_pchData + nOldLength;
    // Each round doubles what is there.
    int nDone = std::min(nLen, nAdded);
    std::memcpy(pchFirst, text, static_cast<std::size_t>(nDone));
    while (nDone < nAdded) {
        const int nNext = std::min(nDone, nAdded - nDone);
        std::memcpy(pchFirst + nDone, pchFirst, static_cast<std::size_t>(nNext));
        nDone += nNext;
    }
    storage::set_length(m_pchData, nOldLength + nAdded);
}

Kelm Kelm::FromRepeat(char ch, int nCount) {
    Kelm rc;
    storage::repeat(rc.m_pchData, ch, nCount);
    return rc;
}

Kelm Kelm::operator--() {
    if (GetLength() > 0) {
        *this = Left(GetLength() - 1);
    }
    return *this;
}

Kelm Kelm::operator--(int) {
    Kelm copy(*this);
    --*this;
    return copy;
}

int Kelm::ReplaceTabs(int nWidth) {
    const CodePage& page = *platform::process_code_page();
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    const char* pchRead = m_pchData;
    long long nColumn = 0;
    int nTabs = 0;
    while (const char* pchTab = platform::_mbschr(page, pchRead, pchEnd, '\t')) {
        nColumn = checked_length(tab_stop(nColumn + (pchTab - pchRead), nWidth));
        pchRead = pchTab + 1;
        ++nTabs;
    }
    if (nTabs == 0) {
        return 0;
    }
    Kelm text;
    text.AllocBuffer(checked_length(nColumn + (m_pchData + GetLength() - pchRead)));
    char* pchWrite = text.m_pchData;
    pchRead = m_pchData;
    for (int n = 0; n < nTabs; ++n) {
        const char* pchTab = platform::_mbschr(page, pchRead, pchEnd, '\t');
        pchWrite = carry(pchWrite, pchRead, pchTab);
        char* pchStop = text.m_pchData + tab_stop(pchWrite - text.m_pchData, nWidth);
        std::memset(pchWrite, ' ', static_cast<std::size_t>(pchStop - pchWrite));
        pchWrite = pchStop;
        pchRead = pchTab + 1;
    }
    carry(pchWrite, pchRead, m_pchData + GetLength());
    MoveAssign(text);
    return nTabs;
}

void Kelm::Format(const char* pchFormat, ...) {
    va_list argList;
    va_start(argList, pchFormat);
    FormatV(pchFormat, argList);
    va_end(argList);
}

void Kelm::AppendFormat(const char* pchFormat, ...) {
    va_list argList;
    va_start(argList, pchFormat);
    AppendFormatV(pchFormat, argList);
    va_end(argList);
}

Kelm Kelm::FromFormat(const char* pchFormat, ...) {
    Kelm text;
    va_list argList;
    va_start(argList, pchFormat);
    text.FormatV(pchFormat, argList);
    va_end(argList);
    return text;
}

void Kelm::FormatMsg(std::uint32_t nError, const char* pchFormat, ...) {
    const int nRoom = 2048;
    GetBuffer(nRoom);
    va_list args;
    va_start(args, pchFormat);
    FormatV(pchFormat, args);
    va_end(args);
    if (nError == 0) {
        nError = platform::GetLastError();
    }
    AppendFormat(" <Error Code=%d (0x%0x)>, ", nError, nError);
    if (GetLength() < nRoom) {
        platform::FormatMessageA(nError, m_pchData + GetLength(), nRoom - GetLength());
    }
    ReleaseBuffer(-1);
}

void Kelm::FormatV(const char* pchFormat, va_list argList) {
    formatting::print_at(m_pchData, 0, pchFormat, argList);
}

void Kelm::AppendFormatV(const char* pchFormat, va_list argList) {
    formatting::print_at(m_pchData, GetLength(), pchFormat, argList);
}

bool Kelm::Bool() const noexcept {
    return read_bool(m_pchData, GetLength());
}

int Kelm::Int() const noexcept {
    return read_int(m_pchData);
}

std::int32_t Kelm::Long() const noexcept {
    const std::int32_t nValue = platform::atol(m_pchData);
    return nValue != 0 ? nValue : platform::strtol(m_pchData);
}

long long Kelm::Int64() const noexcept {
    const long long nValue = platform::_atoi64(m_pchData);
    return nValue != 0 ? nValue : platform::_strtoi64(m_pchData);
}

double Kelm::Double() const noexcept {
    return platform::atof(m_pchData);
}

Kelm Kelm::From(long long nValue) {
    Kelm text;
    formatting::integer(text.m_pchData, nValue);
    return text;
}

Kelm Kelm::From(unsigned long long nValue) {
    Kelm text;
    formatting::integer(text.m_pchData, nValue);
    return text;
}

Kelm Kelm::From(double dValue) {
    Kelm text;
    formatting::general(text.m_pchData, dValue);
    return text;
}

bool Kelm::IsDigit() const noexcept {
    return platform::all_in_class(platform::ByteClass::Digit(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsDigit(int nIndex) const noexcept {
    return platform::ByteClass::Digit().Has(m_pchData[nIndex]);
}

bool Kelm::IsAlNum() const noexcept {
    return platform::all_in_class(platform::ByteClass::AlNum(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsAlNum(int nIndex) const noexcept {
    return platform::ByteClass::AlNum().Has(m_pchData[nIndex]);
}

bool Kelm::IsAlpha() const noexcept {
    return platform::all_in_class(platform::ByteClass::Alpha(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsAlpha(int nIndex) const noexcept {
    return platform::ByteClass::Alpha().Has(m_pchData[nIndex]);
}

bool Kelm::IsUpper() const noexcept {
    return platform::all_in_class(platform::ByteClass::Upper(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsUpper(int nIndex) const noexcept {
    return platform::ByteClass::Upper().Has(m_pchData[nIndex]);
}

bool Kelm::IsLower() const noexcept {
    return platform::all_in_class(platform::ByteClass::Lower(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsLower(int nIndex) const noexcept {
    return platform::ByteClass::Lower().Has(m_pchData[nIndex]);
}

bool Kelm::IsSpace() const noexcept {
    return platform::all_in_class(platform::ByteClass::Space(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsSpace(int nIndex) const noexcept {
    return platform::ByteClass::Space().Has(m_pchData[nIndex]);
}

int Kelm::Compare(const char* pchText) const noexcept {
    if (pchText == nullptr) {
        return 1;
    }
    if (pchText == m_pchData) {
        return 0;
    }
    // Equal bytes are equal in every code page, so that it need not be asked for.
    const int nByteOrder = std::strcmp(m_pchData, pchText);
    return nByteOrder == 0
               ? 0
               : platform::_mbscmp(*platform::process_code_page(), m_pchData, pchText, nByteOrder);
}

int Kelm::CompareNoCase(const char* pchText) const noexcept {
    if (pchText == nullptr) {
        return 1;
    }
    if (pchText == m_pchData) {
        return 0;
    }
    return platform::_mbsicmp(*platform::process_code_page(), m_pchData, pchText);
}

int Kelm::Collate(const char* pchText) const noexcept {
    return platform::_mbscoll(*platform::process_code_page(), m_pchData, pchText);
}

int Kelm::CollateNoCase(const char* pchText) const {
    return platform::_mbsicoll(*platform::process_code_page(), m_pchData, pchText);
}

float Kelm::Similar(const char* pchText) const {
    return score(m_pchData, GetLength(), pchText, length_of(pchText));
}

float Kelm::Similar(const Kelm& string) const {
    return score(m_pchData, GetLength(), string, string.GetLength());
}

Kelm Kelm::Elements(int nFirst, int nLast, char chDelimiter) const {
    Kelm erg;
    fields::take(erg.m_pchData, m_pchData, nFirst, nLast, chDelimiter);
    return erg;
}

Kelm Kelm::Element(int nElement, char chDelimiter) const {
    return nElement < 0 ? Kelm() : Elements(nElement, nElement, chDelimiter);
}

int Kelm::IndexOfElement(const char* pchText, char chDelimiter) const noexcept {
    if (pchText == nullptr) {
        return -1;
    }
    if (*pchText == '\0') {
        return IndexOfElement('\0', chDelimiter);
    }
    return index_of_text(m_pchData, m_pchData + GetLength(), pchText, std::strlen(pchText),
                         chDelimiter);
}

int Kelm::IndexOfElement(double dValue, char chDelimiter) const {
    ElementText element(GetLength());
    return index_of_element(m_pchData, m_pchData + GetLength(), chDelimiter,
                            [&](const char* first, const char* last) {
                                return platform::atof(element.Take(first, last)) == dValue;
                            });
}

int Kelm::IndexOfElement(int nValue, char chDelimiter) const {
    ElementText element(GetLength());
    return index_of_element(m_pchData, m_pchData + GetLength(), chDelimiter,
                            [&](const char* first, const char* last) {
                                return read_int(element.Take(first, last)) == nValue;
                            });
}

int Kelm::IndexOfElement(char ch, char chDelimiter) const noexcept {
    return index_of_element(
        m_pchData, m_pchData + GetLength(), chDelimiter,
        [&](const char* first, const char* last) { return (first == last ? '\0' : *first) == ch; });
}

int Kelm::IndexOfElement(bool bValue, char chDelimiter) const {
    ElementText element(GetLength());
    return index_of_element(
        m_pchData, m_pchData + GetLength(), chDelimiter, [&](const char* first, const char* last) {
            return read_bool(element.Take(first, last), distance(first, last)) == bValue;
        });
}

bool Kelm::ToCharacterSet(unsigned int nCodePage) {
    return Recode(0, nCodePage);
}

bool Kelm::FromCharacterSet(unsigned int nCodePage) {
    return Recode(nCodePage, 0);
}

bool Kelm::Recode(unsigned int nFrom, unsigned int nTo) {
    const platform::Decoding decoding(nFrom, m_pchData, GetLength());
    if (decoding.Size() == 0) {
        return false;
    }
    const auto wide =
        std::make_unique_for_overwrite<char16_t[]>(static_cast<std::size_t>(decoding.Size()));
    const int nWide = decoding.Write(wide.get());
    const platform::Encoding encoding(nTo, wide.get(), nWide);
    if (encoding.Size() == 0) {
        return false;
    }
    const auto narrow =
        std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(encoding.Size()) + 1);
    narrow[static_cast<std::size_t>(encoding.Write(narrow.get()))] = '\0';
    // An assignment that needs a new block gives up the old one first; memory may be short, so the
    // new one is made before that.
    if (refs(GetData()) > 1 || GetAllocLength() < length_of(narrow.get())) {
        Kelm copy(narrow.get());
        MoveAssign(copy);
    } else {
        *this = narrow.get();
    }
    return true;
}

void Kelm::Init() noexcept {
    storage::init(m_pchData);
}

void Kelm::AllocBuffer(int nLen) {
    storage::alloc(m_pchData, nLen);
}

void Kelm::FreeData(KelmData* pData) {
    blocks::give_back(pData);
}

void Kelm::Release(KelmData* pData) {
    blocks::release<char>(pData);
}

void Kelm::CopyBeforeWrite() {
    storage::copy_before_write(m_pchData);
}

void Kelm::AllocBeforeWrite(int nLen) {
    storage::alloc_before_write(m_pchData, nLen);
}

void Kelm::AssignCopy(int nLen, const char* pchText) {
    storage::assign_copy(m_pchData, nLen, pchText);
}

void Kelm::AllocCopy(Kelm& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const {
    storage::alloc_copy<char>(dest.m_pchData, m_pchData + nCopyIndex, nCopyLen, nExtraLen);
}

void Kelm::MoveAssign(Kelm& stringSrc) {
    storage::move_assign(m_pchData, stringSrc.m_pchData);
}

void Kelm::ConcatCopy(int nLen1, const char* pch1, int nLen2, const char* pch2) {
    storage::concat_copy(m_pchData, nLen1, pch1, nLen2, pch2);
}

void Kelm::ConcatInPlace(int nLen, const char* pchText) {
    storage::concat_in_place(m_pchData, nLen, pchText);
}

int Kelm::GetFormattedLength(const char* pchFormat, va_list argList) {
    return platform::estimate(pchFormat, argList);
}

int Kelm::VFormat(char* pchDest, const char* pchFormat, va_list argList) {
    return platform::vsprintf(pchDest, INT_MAX, pchFormat, argList);
}

Kelm Kelm::Join(int nLen1, const char* pch1, int nLen2, const char* pch2) {
    Kelm text;
    text.ConcatCopy(nLen1, pch1, nLen2, pch2);
    return text;
}

Kelm operator+(const Kelm& string1, const Kelm& string2) {
    return Kelm::Join(string1.GetLength(), string1, string2.GetLength(), string2);
}

Kelm operator+(const Kelm& string, char ch) {
    return Kelm::Join(string.GetLength(), string, 1, &ch);
}

Kelm operator+(char ch, const Kelm& string) {
    return Kelm::Join(1, &ch, string.GetLength(), string);
}

Kelm operator+(const Kelm& string, const char* pchText) {
    return Kelm::Join(string.GetLength(), string, length_of(pchText), pchText);
}

Kelm operator+(const char* pchText, const Kelm& string) {
    return Kelm::Join(length_of(pchText), pchText, string.GetLength(), string);
}

bool operator==(const Kelm& string1, const Kelm& string2) noexcept {
    return order::equal<char>(string1, string1.GetLength(), string2, string2.GetLength());
}

bool operator==(const Kelm& string, const char* pchText) noexcept {
    return order::equal<char>(string, pchText);
}

bool operator<(const Kelm& string1, const Kelm& string2) noexcept {
    return compare(string1, string2) < 0;
}

bool operator<=(const Kelm& string1, const Kelm& string2) noexcept {
    return compare(string1, string2) <= 0;
}

bool operator>(const Kelm& string1, const Kelm& string2) noexcept {
    return compare(string1, string2) > 0;
}

bool operator>=(const Kelm& string1, const Kelm& string2) noexcept {
    return compare(string1, string2) >= 0;
}
