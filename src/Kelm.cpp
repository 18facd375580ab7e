#include "Kelm.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "assertion.h"
#include "blocks.h"
#include "fields.h"
#include "growth.h"
#include "multibyte/case.h"
#include "multibyte/multibyte.h"
#include "multibyte/single_bytes.h"
#include "numbers.h"
#include "pages/code_pages.h"
#include "pages/conversion.h"
#include "print/print.h"
#include "search/scan.h"
#include "search/text_search.h"
#include "similarity.h"
#include "system_errors.h"

using blocks::checked_length;
using blocks::refs;
using platform::CodePage;
using platform::Grouping;
using platform::require;

namespace {

struct NilBlock {
    KelmData header;
    char text[4];
};

constinit NilBlock nil = {{-1, 0, 0}, {}};
constexpr KelmData* KelmDataNil = &nil.header;
constexpr char* KelmPchNil = nil.text;

int text_length(const char* pchText) {
    return checked_length(static_cast<long long>(std::strlen(pchText)));
}

int distance(const char* pchFirst, const char* pchLast) {
    return static_cast<int>(pchLast - pchFirst);
}

/// A search that began at `pchStart` ends at the first NUL: a hit behind one is none.
int hit_index(const char* pchText, const char* pchStart, const char* pchHit) {
    if (pchHit == nullptr) {
        return -1;
    }
    const std::size_t nSearched = static_cast<std::size_t>(pchHit - pchStart);
    return std::memchr(pchStart, 0, nSearched) != nullptr ? -1 : distance(pchText, pchHit);
}

bool is_ascii(const char* pchText, int nLen) {
    return std::all_of(pchText, pchText + nLen, [](char ch) { return (ch & 0x80) == 0; });
}

/// Whether folding can be searched in place for an upper-cased ASCII text.
bool folds_in_place(const CodePage& page) {
    return page.grouping == Grouping::SingleByte || page.grouping == Grouping::Utf8;
}

/// Index of the first place from `nStart` that folds to `upper`, which is ASCII, in a code page
/// that folds in place.
int find_upper(const CodePage& page, const Kelm& text, int nStart, const Kelm& upper) {
    const char* pchText = text;
    const char* pchStart = pchText + nStart;
    return hit_index(pchText, pchStart,
                     platform::find_folded(page, pchStart, pchText + text.GetLength(), upper,
                                           static_cast<std::size_t>(upper.GetLength())));
}

/// Bytes of a character within a text of known length, where NUL is a character like any other.
std::size_t step(const CodePage& page, const char* pch) {
    return *pch == '\0' ? 1 : platform::_mbclen(page, pch);
}

int count_hits(const CodePage& page, const char* pchFirst, const char* pchLast, int nLen,
               const char* pchText) {
    return static_cast<int>(
        platform::count_text(page, pchFirst, pchLast, pchText, static_cast<std::size_t>(nLen)));
}

/// Moves [pchRead, pchEnd) to `pchWrite`, which may be the same place or in front of it, and gives
/// the place behind it there.
char* carry(char* pchWrite, const char* pchRead, const char* pchEnd) {
    const std::size_t nSize = static_cast<std::size_t>(pchEnd - pchRead);
    if (pchWrite != pchRead) {
        std::memmove(pchWrite, pchRead, nSize);
    }
    return pchWrite + nSize;
}

/// Removes joined or not, always the leftmost, whatever matches in `pchKey`, which runs in parallel
/// to `pchText` and is the same or the folded text; gives the number and moves the end.
struct JoiningRemoval {
    const CodePage& page;
    char* pchText;
    char* pchKey;
    char* pchEnd;
    const char* pchUpper;
    std::size_t nUpper;
    bool bFold;
    std::size_t nBoundary = 0;

    const char* Search(const char* first, const char* last) const {
        return bFold ? platform::find_folded(page, first, last, pchUpper, nUpper)
                     : platform::_mbsstr(page, first, last, pchUpper, nUpper);
    }

    /// Closes the gap in front of [nRead, nRead + nSize) and gives the place behind it.
    std::size_t Move(std::size_t nWrite, std::size_t nRead, std::size_t nSize) const {
        std::memmove(pchText + nWrite, pchText + nRead, nSize);
        if (pchKey != pchText) {
            std::memmove(pchKey + nWrite, pchKey + nRead, nSize);
        }
        return nWrite + nSize;
    }

    /// The character at `pch`, walked to from the last one asked for, unless a removal has gone
    /// back behind that. In UTF-8 a look at the neighbours is enough.
    const char* StartOf(const char* pch, const char* pchLast) {
        if (pchKey + nBoundary > pch) {
            nBoundary = 0;
        }
        const char* pchStart = platform::character_start(page, pchKey + nBoundary, pch, pchLast);
        if (page.grouping != Grouping::Utf8) {
            nBoundary = static_cast<std::size_t>(pchStart - pchKey);
        }
        return pchStart;
    }

    /// What is done lies in front of nWrite, what is to do from nRead on. A hit that a removal has
    /// formed spans both and is shorter than the text on either side of the gap that it needs.
    bool FindAcross(std::size_t& nWrite, std::size_t& nRead, std::size_t nEnd) {
        const std::size_t nHead = std::min(nUpper - 1, nEnd - nRead);
        const std::size_t nTail = std::min(nUpper - 1, nWrite);
        if (nHead + nTail < nUpper) {
            return false;
        }
        const std::size_t nJoined = Move(nWrite, nRead, nHead);
        const char* first = StartOf(pchKey + nWrite - nTail, pchKey + nJoined);
        const char* hit = Search(first, pchKey + nJoined);
        if (hit == nullptr) {
            return false;
        }
        const std::size_t nHit = static_cast<std::size_t>(hit - pchKey);
        nRead += nHit + nUpper - nWrite;
        nWrite = nHit;
        return true;
    }

    int Run() {
        int nHits = 0;
        std::size_t nWrite = 0;
        std::size_t nRead = 0;
        const std::size_t nEnd = static_cast<std::size_t>(pchEnd - pchText);
        while (const char* hit = Search(pchKey + nRead, pchKey + nEnd)) {
            const std::size_t nHit = static_cast<std::size_t>(hit - pchKey);
            nWrite = Move(nWrite, nRead, nHit - nRead);
            nRead = nHit + nUpper;
            ++nHits;
            while (FindAcross(nWrite, nRead, nEnd)) {
                ++nHits;
            }
        }
        pchEnd = pchText + Move(nWrite, nRead, nEnd - nRead);
        return nHits;
    }
};

/// Whether a removal can change what the bytes around it mean.
bool is_well_formed(const CodePage& page, const char* pchText) {
    while (*pchText != '\0') {
        const std::size_t nStep = platform::_mbclen(page, pchText);
        if (nStep == 1 && (*pchText & 0x80) != 0 && page.grouping != Grouping::SingleByte &&
            (page.grouping != Grouping::DoubleByte ||
             page.IsLead(static_cast<unsigned char>(*pchText)))) {
            return false;
        }
        pchText += nStep;
    }
    return true;
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

/// Both texts end at their first NUL, so in every code page they are equal when their bytes are.
bool equal_texts(const char* pchText, const char* pchOther) {
    return pchOther != nullptr && std::strcmp(pchText, pchOther) == 0;
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

/// Searches one text again and again for a folded one. Where the text must be copied for folding,
/// the copy serves until the text changes.
class UpperSearch {
public:
    UpperSearch(const CodePage& page, const char* pchText) : m_page(page), m_upper(pchText) {
        m_upper.MakeUpper();
        m_bInPlace = folds_in_place(page) && is_ascii(m_upper, m_upper.GetLength());
        m_bReuse = is_well_formed(page, m_upper);
    }

    int GetLength() const { return m_upper.GetLength(); }

    /// First hit in the tail of the text from `nStart`, as an index into the text, or -1.
    int Find(const Kelm& text, int nStart) {
        if (m_bInPlace) {
            return find_upper(m_page, text, nStart, m_upper);
        }
        if (m_nTail < 0 || !m_bReuse) {
            m_tail = text.Mid(nStart);
            m_tail.MakeUpper();
            m_nTail = nStart;
        }
        const int nFound = m_tail.Find(m_upper, nStart - m_nTail);
        return nFound < 0 ? -1 : m_nTail + nFound;
    }

    void Forget() { m_nTail = -1; }

private:
    const CodePage& m_page;
    Kelm m_upper;
    Kelm m_tail;
    int m_nTail = -1;  // where the folded tail begins, -1 if there is none
    bool m_bInPlace;
    bool m_bReuse;
};

}  // namespace

Kelm::Kelm() {
    Init();
}

void Kelm::CopyUnshared(const Kelm& stringSrc) {
    require(refs(stringSrc.GetData()) != 0, "stringSrc.GetData ()->nRefs != 0");
    Init();
    if (stringSrc.m_pchData != KelmPchNil) {
        *this = stringSrc.m_pchData;
    }
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
    const int nLen = text_length(pchText);
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
    KelmData* pData = GetData();
    if (pData != KelmDataNil && blocks::drop_ref(pData) <= 0) {
        FreeData(pData);
    }
}

Kelm& Kelm::operator=(const Kelm& stringSrc) {
    if (m_pchData == stringSrc.m_pchData) {
        return *this;
    }
    const bool bLocked = refs(GetData()) < 0 && GetData() != KelmDataNil;
    if (bLocked || refs(stringSrc.GetData()) < 0) {
        AssignCopy(stringSrc.GetLength(), stringSrc.m_pchData);
        return *this;
    }
    Release();
    require(stringSrc.GetData() != KelmDataNil, "stringSrc.GetData () != KelmDataNil");
    m_pchData = stringSrc.m_pchData;
    blocks::add_ref(GetData());
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
    AssignCopy(text_length(pchText), pchText);
    return *this;
}

Kelm& Kelm::operator=(const unsigned char* pchText) {
    return *this = reinterpret_cast<const char*>(pchText);
}

void Kelm::Empty() {
    if (GetLength() == 0) {
        return;
    }
    if (refs(GetData()) >= 0) {
        Release();
    } else {
        *this = "";
    }
    require(GetData()->nDataLength == 0, "GetData ()->nDataLength == 0");
    require(refs(GetData()) < 0 || GetData()->nAllocLength == 0,
            "GetData ()->nRefs < 0 || GetData ()->nAllocLength == 0");
}

void Kelm::Release() {
    KelmData* pData = GetData();
    if (pData == KelmDataNil) {
        return;
    }
    require(refs(pData) != 0, "GetData ()->nRefs != 0");
    if (blocks::drop_ref(pData) <= 0) {
        FreeData(pData);
    }
    Init();
}

void Kelm::SetAt(int nIndex, char ch) {
    require(nIndex >= 0, "nIndex >= 0");
    require(nIndex < GetData()->nDataLength, "nIndex < GetData ()->nDataLength");
    CopyBeforeWrite();
    m_pchData[nIndex] = ch;
}

char* Kelm::GetBuffer(int nMinBufLength) {
    require(nMinBufLength >= 0, "nMinBufLength >= 0");
    KelmData* pData = GetData();
    if (refs(pData) > 1 || nMinBufLength > pData->nAllocLength) {
        const char* pchOld = m_pchData;
        const int nOldLength = pData->nDataLength;
        AllocBuffer(std::max(nMinBufLength, nOldLength));
        std::memcpy(m_pchData, pchOld, static_cast<std::size_t>(nOldLength));
        SetLength(nOldLength);
        Release(pData);
    }
    require(refs(GetData()) <= 1, "GetData ()->nRefs <= 1");
    require(m_pchData != nullptr, "m_pchData != NULL");
    return m_pchData;
}

void Kelm::ReleaseBuffer(int nNewLength) {
    CopyBeforeWrite();
    if (nNewLength < 0) {
        nNewLength = static_cast<int>(std::strlen(m_pchData));
    }
    require(nNewLength <= GetData()->nAllocLength, "nNewLength <= GetData ()->nAllocLength");
    SetLength(nNewLength);
}

char* Kelm::GetBufferSetLength(int nNewLength) {
    require(nNewLength >= 0, "nNewLength >= 0");
    GetBuffer(nNewLength);
    SetLength(nNewLength);
    return m_pchData;
}

void Kelm::FreeExtra() {
    KelmData* pData = GetData();
    require(pData->nDataLength <= pData->nAllocLength,
            "GetData ()->nDataLength <= GetData ()->nAllocLength");
    if (pData->nDataLength != pData->nAllocLength) {
        const char* pchOld = m_pchData;
        AllocBuffer(pData->nDataLength);
        std::memcpy(m_pchData, pchOld, static_cast<std::size_t>(pData->nDataLength));
        require(m_pchData[GetData()->nDataLength] == '\0',
                "m_pchData [GetData ()->nDataLength] == '\\0'");
        Release(pData);
    }
    require(GetData() != nullptr, "GetData () != NULL");
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

Kelm& Kelm::Append(char ch) {
    ConcatInPlace(1, &ch);
    return *this;
}

Kelm& Kelm::Append(const char* pchText) {
    ConcatInPlace(text_length(pchText), pchText);
    return *this;
}

Kelm& Kelm::operator+=(const Kelm& string) {
    return Append(string);
}

Kelm& Kelm::operator+=(char ch) {
    return Append(ch);
}

Kelm& Kelm::operator+=(const char* pchText) {
    return Append(pchText);
}

Kelm& Kelm::operator<<(const Kelm& string) {
    return Append(string);
}

Kelm& Kelm::operator<<(char ch) {
    return Append(ch);
}

Kelm& Kelm::operator<<(const char* pchText) {
    return Append(pchText);
}

int Kelm::Find(char ch, int nStart) const {
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
    return hit_index(
        m_pchData, pchStart,
        platform::_mbschr(page, pchStart, m_pchData + GetLength(), static_cast<unsigned char>(ch)));
}

int Kelm::Find(char ch) const {
    return Find(ch, 0);
}

int Kelm::Find(const char* pchText, int nStart) const {
    nStart = std::max(nStart, 0);
    if (nStart > GetLength() || pchText == nullptr) {
        return -1;
    }
    const char* pchStart = m_pchData + nStart;
    const CodePage& page = *platform::process_code_page();
    return hit_index(
        m_pchData, pchStart,
        platform::_mbsstr(page, pchStart, m_pchData + GetLength(), pchText, std::strlen(pchText)));
}

int Kelm::Find(const char* pchText) const {
    return Find(pchText, 0);
}

int Kelm::ReverseFind(char ch) const {
    const CodePage& page = *platform::process_code_page();
    const char* pchHit =
        platform::stands_alone(page, static_cast<unsigned char>(ch))
            ? std::strrchr(m_pchData, ch)
            : platform::_mbsrchr(page, m_pchData, m_pchData + std::strlen(m_pchData),
                                 static_cast<unsigned char>(ch));
    return pchHit == nullptr ? -1 : distance(m_pchData, pchHit);
}

int Kelm::FindOneOf(const char* pchSet) const {
    if (pchSet == nullptr) {
        return -1;
    }
    const CodePage& page = *platform::process_code_page();
    return hit_index(m_pchData, m_pchData,
                     platform::_mbspbrk(page, m_pchData, m_pchData + GetLength(), pchSet));
}

int Kelm::NCFind(char ch) const {
    const CodePage& page = *platform::process_code_page();
    const char chUpper = platform::toupper(ch);
    if (chUpper == '\0') {
        // A copy of a locked value ends at its first NUL, and that decides here.
        return Kelm(*this).Find(chUpper);
    }
    if (folds_in_place(page) && is_ascii(&chUpper, 1)) {
        return hit_index(
            m_pchData, m_pchData,
            platform::find_folded(page, m_pchData, m_pchData + GetLength(), &chUpper, 1));
    }
    Kelm mycopy(*this);
    mycopy.MakeUpper();
    return mycopy.Find(chUpper);
}

int Kelm::NCFind(const char* pchText) const {
    Kelm scopy(pchText);
    scopy.MakeUpper();
    const CodePage& page = *platform::process_code_page();
    if (folds_in_place(page) && is_ascii(scopy, scopy.GetLength())) {
        return find_upper(page, *this, 0, scopy);
    }
    Kelm mycopy(*this);
    mycopy.MakeUpper();
    return mycopy.Find(scopy);
}

int Kelm::Count(char ch) const {
    return static_cast<int>(platform::count_unit<char>(m_pchData, m_pchData + GetLength(), ch));
}

int Kelm::Count(const char* pchText) const {
    if (pchText == nullptr || *pchText == '\0') {
        return 0;
    }
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    return count_hits(*platform::process_code_page(), m_pchData, pchEnd, text_length(pchText),
                      pchText);
}

Kelm Kelm::Mid(int nFirst, int nCount) const {
    const int nLength = GetLength();
    nFirst = std::max(nFirst, 0);
    nCount = std::max(nCount, 0);
    if (nCount > nLength - nFirst) {
        nCount = std::max(nLength - nFirst, 0);
    }
    if (nFirst > nLength) {
        return Kelm();
    }
    require(nFirst >= 0, "nFirst >= 0");
    require(nCount <= nLength - nFirst, "nFirst + nCount <= GetData ()->nDataLength");
    if (nFirst == 0 && nCount == nLength) {
        return *this;
    }
    Kelm dest;
    AllocCopy(dest, nCount, nFirst, 0);
    return dest;
}

Kelm Kelm::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

Kelm Kelm::Left(int nCount) const {
    nCount = std::max(nCount, 0);
    if (nCount >= GetLength()) {
        return *this;
    }
    Kelm dest;
    AllocCopy(dest, nCount, 0, 0);
    return dest;
}

Kelm Kelm::Right(int nCount) const {
    nCount = std::max(nCount, 0);
    if (nCount >= GetLength()) {
        return *this;
    }
    Kelm dest;
    AllocCopy(dest, nCount, GetLength() - nCount, 0);
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
    CopyBeforeWrite();
    const platform::ByteClass space = platform::ByteClass::Space();
    bool aTest[256];
    for (int n = 0; n < 256; ++n) {
        aTest[n] = space.Has(static_cast<char>(n));
    }
    TrimRightWhere(aTest);
}

void Kelm::TrimRight(char ch) {
    CopyBeforeWrite();
    bool aTest[256] = {};
    aTest[static_cast<unsigned char>(ch)] = true;
    TrimRightWhere(aTest);
}

void Kelm::TrimRight(const char* pchSet) {
    CopyBeforeWrite();
    TrimRightWhere(platform::ByteSet(*platform::process_code_page(), pchSet).has);
}

void Kelm::TrimRightWhere(const bool* pTest) {
    const char* pchEnd = m_pchData + std::strlen(m_pchData);
    const char* pchRun =
        platform::trailing_run(*platform::process_code_page(), m_pchData, pchEnd, pTest);
    if (pchRun != pchEnd) {
        SetLength(distance(m_pchData, pchRun));
    }
}

void Kelm::TrimLeft() {
    CopyBeforeWrite();
    const CodePage& page = *platform::process_code_page();
    const platform::ByteClass space = platform::ByteClass::Space();
    const char* pch = m_pchData;
    while (space.Has(*pch)) {
        pch = platform::_mbsinc(page, pch);
    }
    CutLeft(pch);
}

void Kelm::TrimLeft(char ch) {
    CopyBeforeWrite();
    const CodePage& page = *platform::process_code_page();
    const char* pch = m_pchData;
    const char* pchEnd = m_pchData + GetLength();
    while (pch < pchEnd && *pch == ch) {
        pch += step(page, pch);
    }
    CutLeft(pch);
}

void Kelm::TrimLeft(const char* pchSet) {
    if (*pchSet == '\0') {
        return;
    }
    CopyBeforeWrite();
    const CodePage& page = *platform::process_code_page();
    const platform::ByteSet set(page, pchSet);
    const char* pch = m_pchData;
    while (*pch != '\0' && set.Has(*pch)) {
        pch = platform::_mbsinc(page, pch);
    }
    CutLeft(pch);
}

void Kelm::CutLeft(const char* pchFirst) {
    if (pchFirst == m_pchData) {
        return;
    }
    const int nLength = GetLength() - distance(m_pchData, pchFirst);
    std::memmove(m_pchData, pchFirst, static_cast<std::size_t>(nLength));
    SetLength(nLength);
}

Kelm Kelm::Trim() const {
    Kelm copy(*this);
    copy.TrimRight();
    copy.TrimLeft();
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
    return ReplaceHits(text_length(pchOld), pchOld, pchNew == nullptr ? 0 : text_length(pchNew),
                       pchNew);
}

int Kelm::ReplaceHits(int nOld, const char* pchOld, int nNew, const char* pchNew) {
    return nNew > nOld ? ReplaceByLonger(nOld, pchOld, nNew, pchNew)
                       : ReplaceByShorter(nOld, pchOld, nNew, pchNew);
}

/// Writes [pchRead, pchEnd) to the front of the block with up to `nMost` hits replaced; the result
/// is their number.
template <class Hits>
int Kelm::Merge(Hits hits, const char* pchRead, const char* pchEnd, int nOld, int nNew,
                const char* pchNew, int nMost) {
    char* pchWrite = m_pchData;
    int nHits = 0;
    for (; nHits < nMost; ++nHits) {
        const char* pchHit = hits.Next();
        if (pchHit == nullptr) {
            break;
        }
        pchWrite = carry(pchWrite, pchRead, pchHit);
        pchWrite = std::copy_n(pchNew, nNew, pchWrite);
        pchRead = pchHit + nOld;
    }
    pchWrite = carry(pchWrite, pchRead, pchEnd);
    SetLength(distance(m_pchData, pchWrite));
    return nHits;
}

/// In one pass: the room for a result that is not longer is known beforehand.
int Kelm::ReplaceByShorter(int nOld, const char* pchOld, int nNew, const char* pchNew) {
    const CodePage& page = *platform::process_code_page();
    KelmData* pData = GetData();
    const char* pchText = m_pchData;
    const char* pchEnd = pchText + pData->nDataLength;
    const char* pchHit =
        platform::_mbsstr(page, pchText, pchEnd, pchOld, static_cast<std::size_t>(nOld));
    if (pchHit == nullptr) {
        return 0;
    }
    const bool bMove = refs(pData) > 1;
    if (bMove) {
        AllocBuffer(pData->nDataLength);
    }
    platform::TextHits hits(page, pchHit, pchEnd, pchOld, static_cast<std::size_t>(nOld));
    const int nHits = Merge(hits, pchText, pchEnd, nOld, nNew, pchNew, INT_MAX);
    if (bMove) {
        Release(pData);
    }
    return nHits;
}

int Kelm::ReplaceByLonger(int nOld, const char* pchOld, int nNew, const char* pchNew) {
    const CodePage& page = *platform::process_code_page();
    KelmData* pData = GetData();
    const int nLength = pData->nDataLength;
    const char* pchText = m_pchData;
    const char* pchHit =
        platform::_mbsstr(page, pchText, pchText + nLength, pchOld, static_cast<std::size_t>(nOld));
    if (pchHit == nullptr) {
        return 0;
    }
    const auto search = [&](const char* pchFirst, const char* pchLast) {
        return platform::TextHits(page, pchFirst, pchLast, pchOld, static_cast<std::size_t>(nOld));
    };
    growth::Replacement growth(m_pchData, nLength, search);
    const int nHits = growth.Count(pchHit);
    const int nNewLength = checked_length(nLength + (static_cast<long long>(nNew) - nOld) * nHits);
    const int nGrowth = nNewLength - nLength;
    if (refs(pData) > 1 || pData->nAllocLength < nNewLength) {
        AllocBuffer(nNewLength);
        if (nHits <= growth::kNoted) {
            growth.CopyTo(m_pchData, nHits, nOld, pchNew, nNew);
        } else {
            Merge(search(pchText, pchText + nLength), pchText, pchText + nLength, nOld, nNew,
                  pchNew, nHits);
        }
        Release(pData);
    } else if (nHits <= growth::kMost) {
        growth.Replace(nHits, nOld, pchNew, nNew);
        SetLength(nNewLength);
    } else {
        // To the end of its room, so that the merge forward never overtakes what it reads.
        std::memmove(m_pchData + nGrowth, m_pchData, static_cast<std::size_t>(nLength) + 1);
        pchText += nGrowth;
        Merge(search(pchText, pchText + nLength), pchText, pchText + nLength, nOld, nNew, pchNew,
              nHits);
    }
    require(m_pchData[nNewLength] == '\0', "m_pchData [nNewLength] == '\\0'");
    return nHits;
}

int Kelm::NCReplace(const char* pchOld, const char* pchNew) {
    if (pchOld == nullptr || *pchOld == '\0') {
        return 0;
    }
    const int nNew = pchNew == nullptr ? 0 : text_length(pchNew);
    const long long nReplaced = static_cast<long long>(GetLength()) * nNew;
    const long long nLimit = std::max(65536LL, 16 * std::min(nReplaced, LLONG_MAX / 16));
    UpperSearch search(*platform::process_code_page(), pchOld);
    const int nOld = search.GetLength();
    long long nPosition = 0;
    long long nResult = 0;
    int nSame = 0;  // hits of the replacement itself, while the text stays as it is
    while (nPosition <= GetLength()) {
        const int nFound = search.Find(*this, static_cast<int>(nPosition));
        if (nFound < 0) {
            break;
        }
        const long long nNext = static_cast<long long>(nFound) + nNew;
        const bool bSame = nNew == nOld && std::memcmp(m_pchData + nFound, pchNew,
                                                       static_cast<std::size_t>(nNew)) == 0;
        if (!bSame || nSame == 0) {
            const Kelm sub(m_pchData + nFound, nOld);
            const int nHits = ReplaceForm(sub, nNew, pchNew, nPosition == 0, nLimit);
            if (nHits < 0 || (nHits == 0 && nNext == nPosition)) {
                break;
            }
            nSame = bSame ? nHits : 0;
            nResult += nHits;
            if (!bSame) {
                search.Forget();
            }
        } else {
            nResult += nSame;
        }
        nPosition = nNext;
    }
    return static_cast<int>(std::min<long long>(nResult, INT_MAX));
}

/// One step of `NCReplace`: every occurrence of one exact form. -1 if that would go beyond the
/// limit.
int Kelm::ReplaceForm(const Kelm& sub, int nNew, const char* pchNew, bool bFromStart,
                      long long nLimit) {
    const int nOld = sub.GetLength();
    const long long nGrowth = static_cast<long long>(nNew) - nOld;
    if (GetLength() + nGrowth * (GetLength() / nOld) > nLimit) {
        const int nHits = count_hits(*platform::process_code_page(), m_pchData,
                                     m_pchData + GetLength(), nOld, sub);
        if (nGrowth > 0 && GetLength() + nGrowth * nHits > nLimit) {
            return -1;
        }
    }
    // The tail searched from position 0 is the whole text and so holds the block: it is left.
    Kelm tail;
    if (bFromStart && refs(GetData()) > 0) {
        tail = *this;
    }
    return ReplaceHits(nOld, sub, nNew, pchNew);
}

int Kelm::Remove(const char* pchText) {
    return Replace(pchText, nullptr);
}

int Kelm::Remove(char ch) {
    CopyBeforeWrite();
    return CutRight(platform::remove_unit(m_pchData, m_pchData + GetLength(), ch));
}

int Kelm::RemoveSpace() {
    CopyBeforeWrite();
    return CutRight(
        platform::remove_class(platform::ByteClass::Space(), m_pchData, m_pchData + GetLength()));
}

int Kelm::RemovePunctuation() {
    CopyBeforeWrite();
    return CutRight(platform::remove_class(platform::ByteClass::Punctuation(), m_pchData,
                                           m_pchData + GetLength()));
}

int Kelm::RemoveControl() {
    CopyBeforeWrite();
    return CutRight(
        platform::remove_class(platform::ByteClass::Control(), m_pchData, m_pchData + GetLength()));
}

/// Ends the text there; the result is what it lost.
int Kelm::CutRight(const char* pchEnd) {
    const int nLost = GetLength() - distance(m_pchData, pchEnd);
    SetLength(GetLength() - nLost);
    return nLost;
}

int Kelm::NCRemove(const char* pchText) {
    if (pchText == nullptr || *pchText == '\0') {
        return 0;
    }
    const CodePage& page = *platform::process_code_page();
    Kelm upper(pchText);
    upper.MakeUpper();
    const int nLen = upper.GetLength();
    const bool bInPlace = folds_in_place(page) && is_ascii(upper, nLen);
    if (bInPlace || (is_well_formed(page, upper) && is_well_formed(page, m_pchData))) {
        return RemoveJoining(upper, bInPlace);
    }
    return RemoveEach(nLen, [&] { return NCFind(pchText); });
}

int Kelm::NCRemove(char ch) {
    const CodePage& page = *platform::process_code_page();
    if (page.grouping == Grouping::SingleByte || is_ascii(&ch, 1)) {
        const char szText[] = {ch, '\0'};
        return NCRemove(szText);
    }
    return RemoveEach(1, [&] { return NCFind(ch); });
}

/// Hit by hit, for text in which a removal can change what the bytes around it mean.
template <class FindNext>
int Kelm::RemoveEach(int nLen, FindNext find) {
    int nHits = 0;
    for (int nFound = find(); nFound >= 0; nFound = find()) {
        const Kelm copy = Left(nFound) + Mid(nFound + nLen);
        *this = copy;
        ++nHits;
    }
    return nHits;
}

/// All hits in one pass over a copy; `upper` is the folded search text.
int Kelm::RemoveJoining(const Kelm& upper, bool bFoldInPlace) {
    const CodePage& page = *platform::process_code_page();
    if (bFoldInPlace && find_upper(page, *this, 0, upper) < 0) {
        return 0;
    }
    Kelm work(m_pchData, GetLength());
    Kelm folded;
    if (!bFoldInPlace) {
        folded = Kelm(m_pchData, GetLength());
        folded.MakeUpper();
    }
    const std::size_t nSegment = std::strlen(work);
    JoiningRemoval removal = {page,
                              work.m_pchData,
                              bFoldInPlace ? work.m_pchData : folded.m_pchData,
                              work.m_pchData + nSegment,
                              upper,
                              static_cast<std::size_t>(upper.GetLength()),
                              bFoldInPlace};
    const int nHits = removal.Run();
    if (nHits == 0) {
        return 0;
    }
    // What stands behind an embedded NUL comes along.
    const char* pchEnd = carry(removal.pchEnd, m_pchData + nSegment, m_pchData + GetLength());
    TakeRest(nHits, upper.GetLength(), distance(work, pchEnd), work);
    return nHits;
}

/// The state that removing one hit at a time leaves: the lock and its block, or else a block of
/// exactly the length. A last removal that leaves nothing stays in the block of the one before.
void Kelm::TakeRest(int nHits, int nHit, int nRest, const char* pchRest) {
    if (refs(GetData()) < 0 || (nRest == 0 && nHits == 1)) {
        AssignCopy(nRest, pchRest);
        return;
    }
    Kelm copy;
    copy.AllocBuffer(nRest == 0 ? nHit : nRest);
    std::memcpy(copy.m_pchData, pchRest, static_cast<std::size_t>(nRest));
    copy.SetLength(nRest);
    MoveAssign(copy);
}

int Kelm::Insert(int nIndex, char ch) {
    nIndex = std::clamp(nIndex, 0, GetLength());
    OpenGap(nIndex, 1);
    m_pchData[nIndex] = ch;
    return GetLength();
}

int Kelm::Insert(int nIndex, const char* pchText) {
    const int nLen = text_length(pchText);
    if (nLen == 0) {
        return GetLength();
    }
    nIndex = std::clamp(nIndex, 0, GetLength());
    OpenGap(nIndex, nLen);
    std::memcpy(m_pchData + nIndex, pchText, static_cast<std::size_t>(nLen));
    return GetLength();
}

/// Room for `nCount` bytes at an index within the text, in place or in a block of exactly the new
/// length.
void Kelm::OpenGap(int nIndex, int nCount) {
    KelmData* pData = GetData();
    const char* pchOld = m_pchData;
    const int nNewLength = checked_length(static_cast<long long>(pData->nDataLength) + nCount);
    const std::size_t nTail = static_cast<std::size_t>(pData->nDataLength - nIndex);
    if (refs(pData) > 1 || pData->nAllocLength < nNewLength) {
        AllocBuffer(nNewLength);
        std::memcpy(m_pchData, pchOld, static_cast<std::size_t>(nIndex));
        std::memcpy(m_pchData + nIndex + nCount, pchOld + nIndex, nTail);
        Release(pData);
        return;
    }
    std::memmove(m_pchData + nIndex + nCount, m_pchData + nIndex, nTail);
    SetLength(nNewLength);
}

int Kelm::Delete(int nIndex, int nCount) {
    nIndex = std::max(nIndex, 0);
    const int nLength = GetLength();
    if (nCount > 0 && nIndex < nLength) {
        CopyBeforeWrite();
        const int nBehind = nIndex + std::min(nCount, nLength - nIndex);
        SetLength(distance(m_pchData,
                           carry(m_pchData + nIndex, m_pchData + nBehind, m_pchData + nLength)));
    }
    return nLength;
}

void Kelm::Repeat(char ch, int nCount) {
    const Kelm rc = FromRepeat(ch, nCount);
    *this = rc;
}

void Kelm::Repeat(const char* pchText, int nCount) {
    const int nLen = text_length(pchText);
    require(nLen == 0 || nCount >= 0, "nMinBufLength >= 0");
    const int nOldLength = GetLength();
    const int nAdded = checked_length(static_cast<long long>(nLen) * nCount);
    GetBuffer(checked_length(static_cast<long long>(nOldLength) + nAdded));
    char* pchFirst = m_pchData + nOldLength;
    // Each round doubles what is there.
    int nDone = std::min(nLen, nAdded);
    std::memcpy(pchFirst, pchText, static_cast<std::size_t>(nDone));
    while (nDone < nAdded) {
        const int nNext = std::min(nDone, nAdded - nDone);
        std::memcpy(pchFirst + nDone, pchFirst, static_cast<std::size_t>(nNext));
        nDone += nNext;
    }
    SetLength(nOldLength + nAdded);
}

Kelm Kelm::FromRepeat(char ch, int nCount) {
    Kelm rc;
    if (nCount >= 1) {
        rc.AllocBuffer(nCount);
        std::memset(rc.m_pchData, static_cast<unsigned char>(ch), static_cast<std::size_t>(nCount));
    }
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

void Kelm::FormatV(const char* pchFormat, va_list argList) {
    FormatAt(0, pchFormat, argList);
}

void Kelm::AppendFormat(const char* pchFormat, ...) {
    va_list argList;
    va_start(argList, pchFormat);
    AppendFormatV(pchFormat, argList);
    va_end(argList);
}

void Kelm::AppendFormatV(const char* pchFormat, va_list argList) {
    FormatAt(GetLength(), pchFormat, argList);
}

/// Prints behind the first `nIndex` bytes: first beside the object, which a short text has to be
/// only once. A text that the allowance does not cover gets exactly its room.
void Kelm::FormatAt(int nIndex, const char* pchFormat, va_list argList) {
    char szShort[512];
    const int nShort = sizeof(szShort) / sizeof(char) - 1;
    platform::Rehearsal print;
    platform::rehearse(szShort, nShort, pchFormat, argList, print);
    const int nLen = std::max(print.allowance, print.length);
    GetBuffer(checked_length(static_cast<long long>(nIndex) + nLen));
    if (print.length > nShort) {
        platform::vsprintf(m_pchData + nIndex, GetAllocLength() - nIndex, pchFormat, argList);
    } else if (print.length > 0) {
        std::memcpy(m_pchData + nIndex, szShort, static_cast<std::size_t>(print.length) + 1);
    }
    const char* pchFront = m_pchData;
    const char* pchPrint = m_pchData + nIndex;
    // A NUL ends the text, also one that stands in front of what was printed.
    const char* pchEnd = platform::find_unit(pchFront, pchPrint, '\0');
    SetLength(pchEnd != pchPrint ? distance(pchFront, pchEnd) : nIndex + print.ending);
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

bool Kelm::Bool() const {
    return read_bool(m_pchData, GetLength());
}

int Kelm::Int() const {
    return read_int(m_pchData);
}

std::int32_t Kelm::Long() const {
    const std::int32_t nValue = platform::atol(m_pchData);
    return nValue != 0 ? nValue : platform::strtol(m_pchData);
}

long long Kelm::Int64() const {
    const long long nValue = platform::_atoi64(m_pchData);
    return nValue != 0 ? nValue : platform::_strtoi64(m_pchData);
}

double Kelm::Double() const {
    return platform::atof(m_pchData);
}

template <>
int Kelm::To<int>() const {
    return Int();
}

template <>
unsigned int Kelm::To<unsigned int>() const {
    return static_cast<unsigned int>(Int());
}

template <>
long Kelm::To<long>() const {
    return Long();
}

template <>
unsigned long Kelm::To<unsigned long>() const {
    return static_cast<std::uint32_t>(Long());
}

template <>
long long Kelm::To<long long>() const {
    return Int64();
}

template <>
unsigned long long Kelm::To<unsigned long long>() const {
    return static_cast<unsigned long long>(Int64());
}

template <>
double Kelm::To<double>() const {
    return Double();
}

template <>
float Kelm::To<float>() const {
    return static_cast<float>(Double());
}

template <>
bool Kelm::To<bool>() const {
    return Bool();
}

/// The capacities of numbers are those of the formats "%d" and "%g".
Kelm Kelm::FromDigits(int nLen, const char* pchDigits, int nCapacity) {
    Kelm text;
    text.AllocBuffer(nCapacity);
    std::memcpy(text.m_pchData, pchDigits, static_cast<std::size_t>(nLen));
    text.SetLength(nLen);
    return text;
}

Kelm Kelm::From(int nValue) {
    return From(static_cast<long long>(nValue));
}

Kelm Kelm::From(long nValue) {
    return From(static_cast<long long>(nValue));
}

Kelm Kelm::From(unsigned int nValue) {
    return From(static_cast<unsigned long long>(nValue));
}

Kelm Kelm::From(unsigned long nValue) {
    return From(static_cast<unsigned long long>(nValue));
}

Kelm Kelm::From(long long nValue) {
    char szDigits[20];
    return FromDigits(platform::print_integer(szDigits, nValue), szDigits, 32);
}

Kelm Kelm::From(unsigned long long nValue) {
    char szDigits[20];
    return FromDigits(platform::print_integer(szDigits, nValue), szDigits, 32);
}

Kelm Kelm::From(double dValue) {
    char szDigits[128];
    return FromDigits(platform::print_general(szDigits, dValue), szDigits, 128);
}

bool Kelm::IsDigit() const {
    return platform::all_in_class(platform::ByteClass::Digit(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsDigit(int nIndex) const {
    return platform::isdigit(m_pchData[nIndex]);
}

bool Kelm::IsAlNum() const {
    return platform::all_in_class(platform::ByteClass::AlNum(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsAlNum(int nIndex) const {
    return platform::isalnum(m_pchData[nIndex]);
}

bool Kelm::IsAlpha() const {
    return platform::all_in_class(platform::ByteClass::Alpha(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsAlpha(int nIndex) const {
    return platform::isalpha(m_pchData[nIndex]);
}

bool Kelm::IsUpper() const {
    return platform::all_in_class(platform::ByteClass::Upper(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsUpper(int nIndex) const {
    return platform::isupper(m_pchData[nIndex]);
}

bool Kelm::IsLower() const {
    return platform::all_in_class(platform::ByteClass::Lower(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsLower(int nIndex) const {
    return platform::islower(m_pchData[nIndex]);
}

bool Kelm::IsSpace() const {
    return platform::all_in_class(platform::ByteClass::Space(), m_pchData, m_pchData + GetLength());
}

bool Kelm::IsSpace(int nIndex) const {
    return platform::isspace(m_pchData[nIndex]);
}

int Kelm::Compare(const char* pchText) const {
    if (pchText == nullptr) {
        return 1;
    }
    // Equal bytes are equal in every code page, and the answer most often wanted.
    if (std::strcmp(m_pchData, pchText) == 0) {
        return 0;
    }
    return platform::_mbscmp(*platform::process_code_page(), m_pchData, pchText);
}

int Kelm::CompareNoCase(const char* pchText) const {
    if (pchText == nullptr) {
        return 1;
    }
    return platform::_mbsicmp(*platform::process_code_page(), m_pchData, pchText);
}

int Kelm::Collate(const char* pchText) const {
    return platform::_mbscoll(*platform::process_code_page(), m_pchData, pchText);
}

int Kelm::CollateNoCase(const char* pchText) const {
    return platform::_mbsicoll(*platform::process_code_page(), m_pchData, pchText);
}

float Kelm::Similar(const char* pchText) const {
    return score(m_pchData, GetLength(), pchText, text_length(pchText));
}

float Kelm::Similar(const Kelm& string) const {
    return score(m_pchData, GetLength(), string, string.GetLength());
}

Kelm Kelm::Elements(int nFirst, int nLast, char chDelimiter) const {
    const fields::Run<char> run =
        fields::find<char>(m_pchData, m_pchData + GetLength(), nFirst, nLast, chDelimiter);
    const int nText = distance(run.first, run.last);
    Kelm erg;
    erg.AllocBuffer(checked_length(nText + run.padding));
    std::memcpy(erg.m_pchData, run.first, static_cast<std::size_t>(nText));
    std::memset(erg.m_pchData + nText, static_cast<unsigned char>(chDelimiter),
                static_cast<std::size_t>(run.padding));
    return erg;
}

Kelm Kelm::Element(int nElement, char chDelimiter) const {
    return nElement < 0 ? Kelm() : Elements(nElement, nElement, chDelimiter);
}

int Kelm::IndexOfElement(const char* pchText, char chDelimiter) const {
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

int Kelm::IndexOfElement(char ch, char chDelimiter) const {
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
    const int nNarrow = encoding.Write(narrow.get());
    if (nNarrow == 0) {
        return false;
    }
    narrow[static_cast<std::size_t>(nNarrow)] = '\0';
    // An assignment that needs a new block gives up the old one first; memory may be short, so the
    // new one is made before that.
    if (refs(GetData()) > 1 || GetAllocLength() < text_length(narrow.get())) {
        Kelm copy(narrow.get());
        MoveAssign(copy);
    } else {
        *this = narrow.get();
    }
    return true;
}

void Kelm::Init() {
    m_pchData = KelmPchNil;
}

void Kelm::AllocBuffer(int nLen) {
    require(nLen >= 0, "nLen >= 0");
    require(nLen <= INT_MAX - 1, "nLen <= INT_MAX-1");
    if (nLen == 0) {
        Init();
        return;
    }
    KelmData* pData = blocks::allocate<KelmData, char>(nLen);
    pData->nRefs = 1;
    pData->nDataLength = nLen;
    pData->nAllocLength = nLen;
    m_pchData = reinterpret_cast<char*>(pData + 1);
    m_pchData[nLen] = '\0';
}

/// Not inlined: next to `Init` the compiler takes the static empty block for one to be freed.
__attribute__((noinline)) void Kelm::FreeData(KelmData* pData) {
    ::operator delete[](pData);
}

void Kelm::Release(KelmData* pData) {
    if (pData == KelmDataNil) {
        return;
    }
    require(refs(pData) != 0, "pData->nRefs != 0");
    if (blocks::drop_ref(pData) <= 0) {
        FreeData(pData);
    }
}

void Kelm::CopyBeforeWrite() {
    KelmData* pData = GetData();
    if (refs(pData) > 1) {
        const char* pchOld = m_pchData;
        AllocBuffer(pData->nDataLength);
        std::memcpy(m_pchData, pchOld, static_cast<std::size_t>(pData->nDataLength));
        Release(pData);
    }
    require(refs(GetData()) <= 1, "GetData ()->nRefs <= 1");
}

void Kelm::AllocBeforeWrite(int nLen) {
    if (refs(GetData()) > 1 || nLen > GetAllocLength()) {
        Release();
        AllocBuffer(nLen);
    }
    require(refs(GetData()) <= 1, "GetData ()->nRefs <= 1");
}

void Kelm::AssignCopy(int nLen, const char* pchText) {
    // Part of the value's own text has to outlive the reference that is given up first.
    Kelm hold;
    if (refs(GetData()) > 1 && blocks::points_into(pchText, m_pchData, GetLength())) {
        hold = *this;
    }
    AllocBeforeWrite(nLen);
    std::memmove(m_pchData, pchText, static_cast<std::size_t>(nLen));
    SetLength(nLen);
}

void Kelm::AllocCopy(Kelm& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const {
    const int nLen = checked_length(static_cast<long long>(nCopyLen) + nExtraLen);
    if (nLen == 0) {
        dest.Init();
        return;
    }
    dest.AllocBuffer(nLen);
    std::memcpy(dest.m_pchData, m_pchData + nCopyIndex, static_cast<std::size_t>(nCopyLen));
}

void Kelm::MoveAssign(Kelm& stringSrc) {
    Release();
    m_pchData = stringSrc.m_pchData;
    stringSrc.Init();
}

void Kelm::ConcatCopy(int nLen1, const char* pch1, int nLen2, const char* pch2) {
    const int nLen = checked_length(static_cast<long long>(nLen1) + nLen2);
    if (nLen == 0) {
        return;
    }
    AllocBuffer(nLen);
    std::memcpy(m_pchData, pch1, static_cast<std::size_t>(nLen1));
    std::memcpy(m_pchData + nLen1, pch2, static_cast<std::size_t>(nLen2));
}

void Kelm::ConcatInPlace(int nLen, const char* pchText) {
    if (nLen == 0) {
        return;
    }
    KelmData* pData = GetData();
    if (refs(pData) > 1 || nLen > pData->nAllocLength - pData->nDataLength) {
        ConcatCopy(pData->nDataLength, m_pchData, nLen, pchText);
        require(pData != nullptr, "pData != NULL");
        Release(pData);
        return;
    }
    char* pchEnd = m_pchData + pData->nDataLength;
    if (nLen == 1) {
        pchEnd[0] = pchText[0];
    } else if (nLen == 2) {
        pchEnd[0] = pchText[0];
        pchEnd[1] = pchText[1];
    } else {
        std::memcpy(pchEnd, pchText, static_cast<std::size_t>(nLen));
    }
    pData->nDataLength += nLen;
    require(pData->nDataLength <= pData->nAllocLength, "pData->nDataLength <= pData->nAllocLength");
    m_pchData[pData->nDataLength] = '\0';
}

int Kelm::GetFormattedLength(const char* pchFormat, va_list argList) {
    return platform::estimate(pchFormat, argList);
}

int Kelm::VFormat(char* pchDest, const char* pchFormat, va_list argList) {
    return platform::vsprintf(pchDest, INT_MAX, pchFormat, argList);
}

/// The static empty block holds length 0 and a NUL already; a store would race with other threads.
void Kelm::SetLength(int nLen) {
    KelmData* pData = GetData();
    if (pData == KelmDataNil) {
        return;
    }
    pData->nDataLength = nLen;
    m_pchData[nLen] = '\0';
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
    return Kelm::Join(string.GetLength(), string, text_length(pchText), pchText);
}

Kelm operator+(const char* pchText, const Kelm& string) {
    return Kelm::Join(text_length(pchText), pchText, string.GetLength(), string);
}

bool operator==(const Kelm& string1, const Kelm& string2) {
    return equal_texts(string1, string2);
}

bool operator==(const Kelm& string, const char* pchText) {
    return equal_texts(string, pchText);
}

bool operator==(const char* pchText, const Kelm& string) {
    return equal_texts(string, pchText);
}

bool operator!=(const Kelm& string1, const Kelm& string2) {
    return !equal_texts(string1, string2);
}

bool operator!=(const Kelm& string, const char* pchText) {
    return !equal_texts(string, pchText);
}

bool operator!=(const char* pchText, const Kelm& string) {
    return !equal_texts(string, pchText);
}

bool operator<(const Kelm& string1, const Kelm& string2) {
    return string1.Compare(string2) < 0;
}

bool operator<(const Kelm& string, const char* pchText) {
    return string.Compare(pchText) < 0;
}

bool operator<(const char* pchText, const Kelm& string) {
    return string.Compare(pchText) > 0;
}

bool operator<=(const Kelm& string1, const Kelm& string2) {
    return string1.Compare(string2) <= 0;
}

bool operator<=(const Kelm& string, const char* pchText) {
    return string.Compare(pchText) <= 0;
}

bool operator<=(const char* pchText, const Kelm& string) {
    return string.Compare(pchText) >= 0;
}

bool operator>(const Kelm& string1, const Kelm& string2) {
    return string1.Compare(string2) > 0;
}

bool operator>(const Kelm& string, const char* pchText) {
    return string.Compare(pchText) > 0;
}

bool operator>(const char* pchText, const Kelm& string) {
    return string.Compare(pchText) < 0;
}

bool operator>=(const Kelm& string1, const Kelm& string2) {
    return string1.Compare(string2) >= 0;
}

bool operator>=(const Kelm& string, const char* pchText) {
    return string.Compare(pchText) >= 0;
}

bool operator>=(const char* pchText, const Kelm& string) {
    return string.Compare(pchText) <= 0;
}

/// The classes of a byte as a walk by tokens asks them, taken once per step.
class Kelm::Token::Classes {
public:
    bool IsSpace(char ch) const { return IsAscii(ch) && m_space.Has(ch); }

    bool IsPunctuation(char ch) const { return IsAscii(ch) && ch != '_' && m_punctuation.Has(ch); }

    /// By punctuation, or by the delimiter instead where one is given.
    bool EndsWord(char ch, const char* pchDelimiter) const {
        if (pchDelimiter == nullptr && IsAscii(ch) && ch != '\0' && !m_stop.Has(ch)) {
            return false;
        }
        if (ch == '\0' || IsHigh(ch) || IsSpace(ch)) {
            return true;
        }
        return pchDelimiter != nullptr ? ch == *pchDelimiter : IsPunctuation(ch);
    }

private:
    // The classifiers are asked about these alone. Of the others, 0xFF widens to -1, which is in no
    // class, and the rest end a word by themselves.
    static bool IsAscii(char ch) { return static_cast<signed char>(ch) >= 0; }
    static bool IsHigh(char ch) { return static_cast<signed char>(ch) < -1; }

    platform::ByteClass m_space = platform::ByteClass::Space();
    platform::ByteClass m_punctuation = platform::ByteClass::Punctuation();
    platform::ByteClass m_stop = m_space | m_punctuation;
};

Kelm::Token::Token(const Kelm& strSource, bool bSkipPunctuation)
    : m_strSource(strSource), m_bSkipPunctuation(bSkipPunctuation) {
    Restart();
}

bool Kelm::Token::Next() {
    const Classes classes;
    do {
        if (!NextToken(classes, nullptr)) {
            return false;
        }
    } while (m_bSkipPunctuation && classes.IsPunctuation(m_pchText[m_nStart]));
    return true;
}

bool Kelm::Token::Next(char chDelimiter) {
    return NextToken(Classes(), &chDelimiter);
}

bool Kelm::Token::NextToken(const Classes& classes, const char* pchDelimiter) {
    int p = m_nNext < 0 ? -1 : SkipWhitespace(classes, m_nNext);
    if (p < 0) {
        m_nStart = m_nEnd = m_nNext = -1;
        m_bMore = false;
        return false;
    }
    const char ch = m_pchText[p];
    if (ch == '"' || ch == '\'') {
        m_nStart = p + 1;
        const int q = FindChar(m_nStart, ch);
        p = q >= 0 ? q : m_nStart + static_cast<int>(std::strlen(m_pchText + m_nStart));
        m_nEnd = p - 1;
        p += q >= 0 ? 1 : 0;
    } else {
        m_nStart = p;
        // Every byte that does not end a word is a character by itself, whatever the code page.
        const char* pch = m_pchText + p;
        while (!classes.EndsWord(*pch, pchDelimiter)) {
            ++pch;
        }
        p = distance(m_pchText, pch);
        p += p == m_nStart ? 1 : 0;
        m_nEnd = p - 1;
    }
    m_nNext = m_pchText[p] == '\0' ? p : p + 1;
    return true;
}

bool Kelm::Token::NextLine() {
    if (!m_bMore) {
        return false;
    }
    const auto is_line_end = [](char ch) { return ch == '\r' || ch == '\n'; };
    int p = m_nNext;
    while (is_line_end(m_pchText[p])) {
        m_nStart = ++p;
    }
    while (m_pchText[p] != '\0' && !is_line_end(m_pchText[p])) {
        ++p;
    }
    m_bMore = m_pchText[p] != '\0';
    m_nEnd = p - 1;
    m_nNext = p;
    return true;
}

Kelm Kelm::Token::Current() const {
    if (!IsValid()) {
        return Kelm();
    }
    const int nLen = m_nEnd - m_nStart + (m_nEnd < m_nLength ? 1 : 0);
    return Kelm(m_pchText + m_nStart, nLen);
}

Kelm::Token::operator Kelm() const {
    return Current();
}

Kelm Kelm::Token::operator()() const {
    return Current();
}

Kelm::Token::operator bool() const {
    return m_bMore;
}

bool Kelm::Token::IsValid() const {
    return m_nStart >= 0 && m_nStart <= m_nEnd;
}

void Kelm::Token::operator++() {
    Next();
}

void Kelm::Token::operator++(int) {
    Next();
}

bool Kelm::Token::SkipPunctuation(bool bSkip) {
    return std::exchange(m_bSkipPunctuation, bSkip);
}

void Kelm::Token::Restart() {
    m_pchText = m_strSource;
    Clear();
    m_nLength = static_cast<int>(std::strlen(m_pchText));
    Next();
}

void Kelm::Token::Clear() {
    m_nStart = 0;
    m_nEnd = -1;
    m_nNext = 0;
    m_bMore = true;
    m_nLength = 0;
}

int Kelm::Token::FindWhitespace(int nStart) const {
    return SkipWhitespace(Classes(), nStart);
}

int Kelm::Token::SkipWhitespace(const Classes& classes, int nStart) const {
    const char* pch = m_pchText + nStart;
    while (classes.IsSpace(*pch)) {
        ++pch;
    }
    return *pch == '\0' ? -1 : distance(m_pchText, pch);
}

int Kelm::Token::FindChar(int nStart, char ch) const {
    while (m_pchText[nStart] != '\0' && m_pchText[nStart] != ch) {
        ++nStart;
    }
    return m_pchText[nStart] == '\0' ? -1 : nStart;
}
