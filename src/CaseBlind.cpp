// Finding, replacing and removing narrow text with case ignored. What is searched is the
// upper-cased text: without a copy where the code page folds each byte or sequence by itself and
// the search text is ASCII, else in a folded copy that runs in parallel to the text.

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include "Kelm.h"
#include "multibyte/multibyte.h"
#include "replacing.h"
#include "search/search.h"
#include "searching.h"
#include "storage.h"

using platform::CodePage;
using platform::Grouping;
using storage::Argument;
using storage::length_of;

namespace {

bool is_ascii(const char* pchText, int nLen) {
    return std::all_of(pchText, pchText + nLen, [](char ch) { return (ch & 0x80) == 0; });
}

/// Whether an upper-cased text can be searched for without folding a copy.
bool folds_in_place(const CodePage& page, const char* pchUpper, int nUpper) {
    return (page.grouping == Grouping::SingleByte || page.grouping == Grouping::Utf8) &&
           is_ascii(pchUpper, nUpper);
}

/// Index of the first place that folds to the upper-cased text, at or behind `nStart`, or -1. It
/// must fold in place.
int find_upper(const CodePage& page, const Kelm& text, int nStart, const char* pchUpper,
               int nUpper) {
    const char* pchText = text;
    const std::size_t nSize = static_cast<std::size_t>(nUpper);
    const auto find = [&](const char* pchFirst, const char* pchLast) {
        return platform::find_folded(page, pchFirst, pchLast, pchUpper, nSize);
    };
    return searching::index(pchText, searching::narrow(page, pchText + nStart,
                                                       pchText + text.GetLength(), nSize, find));
}

/// Upper-cases each segment between NULs.
void fold_segments(const CodePage& page, char* pchText, int nLen) {
    for (char* pch = pchText; pch < pchText + nLen; pch += std::strlen(pch) + 1) {
        platform::_mbsupr(page, pch);
    }
}

/// Whether the bytes of each character are all that is needed to tell where it ends, so that the
/// fold of a text is good for its tails too.
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

/// For each length of a beginning of the text, its longest proper beginning that is its ending too.
std::unique_ptr<int[]> borders_of(const Kelm& text) {
    const int nLen = text.GetLength();
    std::unique_ptr<int[]> owner(new int[static_cast<std::size_t>(nLen) + 1]());
    int* borders = owner.get();
    for (int n = 1, nBorder = 0; n < nLen; ++n) {
        while (nBorder > 0 && text[n] != text[nBorder]) {
            nBorder = borders[nBorder];
        }
        nBorder += text[n] == text[nBorder] ? 1 : 0;
        borders[n + 1] = nBorder;
    }
    return owner;
}

/// Index of the last occurrence of bytes, or -1.
int last_of(const char* pchText, int nLen, const Kelm& find) {
    const std::size_t nSize = static_cast<std::size_t>(find.GetLength());
    platform::TextSearch<char> search(pchText, pchText + nLen, find, nSize);
    int nLast = -1;
    while (const char* pchHit = search.Next()) {
        nLast = static_cast<int>(pchHit - pchText);
    }
    return nLast;
}

/// Searches one text again and again for a folded one. Where the text must be copied for folding,
/// the copy serves until the text changes.
class UpperSearch {
public:
    UpperSearch(const CodePage& page, const char* pchText) : m_page(page), m_upper(pchText) {
        m_upper.MakeUpper();
        m_bInPlace = folds_in_place(page, m_upper, m_upper.GetLength());
        m_bReuse = is_well_formed(page, m_upper);
    }

    const Kelm& Upper() const { return m_upper; }

    /// First hit in the tail of the text from `nStart`, as an index into the text, or -1.
    int Find(const Kelm& text, int nStart) {
        if (m_bInPlace) {
            return find_upper(m_page, text, nStart, m_upper, m_upper.GetLength());
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

    /// Whether replacing this form, which was found, goes on for ever. It is told where hits stand
    /// wherever their bytes do, in every tail, and never overlap, and the new text holds the form.
    /// Then every step that replaces the form pushes its last hit on by the growth of all others.
    /// If that is no less than the position gains, there is a hit behind the position in all steps;
    /// those of other forms push it on as far as they take the position.
    bool NeverEnds(const Kelm& text, const Kelm& form, int nNew, const char* pchNew) const {
        const int nOld = form.GetLength();
        if (!m_bReuse || nNew <= nOld ||
            (m_page.grouping != Grouping::SingleByte && m_page.grouping != Grouping::Utf8)) {
            return false;
        }
        const int nLast = last_of(pchNew, nNew, form);
        if (nLast < 0 || borders_of(m_upper).get()[nOld] != 0) {
            return false;
        }
        const char* pchText = text;
        const std::size_t nHits = platform::count_text(
            m_page, pchText, pchText + std::strlen(pchText), form, static_cast<std::size_t>(nOld));
        return (static_cast<long long>(nHits) - 1) * (nNew - nOld) + nLast >= nNew;
    }

private:
    const CodePage& m_page;
    Kelm m_upper;
    Kelm m_tail;
    int m_nTail = -1;  // where the folded tail begins, -1 if there is none
    bool m_bInPlace;
    bool m_bReuse;
};

/// Removes hits from a copy of a text, character by character, always the leftmost, also those that
/// a removal forms, until none is left. Whatever the bytes, each is looked at a few times at most,
/// though a removal may bring bytes together to other characters, up to the end of the text.
///
/// What is done lies in front of `m_nWrite`, what is to do from `m_nRead` on. It is measured and
/// folded beforehand; a length of 0 is where that does not hold, which is found out when the walk
/// gets there. The hits are found as Knuth, Morris and Pratt do, where they begin with a character.
/// In a few code pages a byte that stands alone makes a character with the fold of the next one:
/// one walk cannot follow that.
class FoldedRemoval {
public:
    /// `bAlone`: the hit is one byte and must be the whole character.
    FoldedRemoval(const CodePage& page, const char* pchText, int nLen, const Kelm& upper,
                  bool bAlone)
        : m_page(page),
          m_upper(upper),
          m_bAlone(bAlone),
          m_nEnd(nLen),
          m_text(pchText, nLen),
          m_folded(m_text) {
        m_folded.MakeUpper();
        m_pchFolded = m_folded.GetBuffer(0);
        m_pchText = m_text.GetBuffer(0);
    }

    bool HasHit() const {
        const char* pchEnd = m_pchFolded + m_nEnd;
        return (m_bAlone
                    ? platform::_mbschr(m_page, m_pchFolded, pchEnd,
                                        static_cast<unsigned char>(m_upper[0]))
                    : platform::_mbsstr(m_page, m_pchFolded, pchEnd, m_upper,
                                        static_cast<std::size_t>(m_upper.GetLength()))) != nullptr;
    }

    /// The number of hits; -1 where one walk cannot follow.
    int Run() {
        m_ownBorders = borders_of(m_upper);
        m_ownLengths.reset(new unsigned char[static_cast<std::size_t>(m_nEnd) + 1]());
        m_borders = m_ownBorders.get();
        m_lengths = m_ownLengths.get();
        for (int n = 0; n < m_nEnd;) {
            const unsigned char nLen = Measure(m_pchText + n);
            if (MayJoin(m_pchText + n, nLen) && Measure(m_pchFolded + n) != 1) {
                return -1;
            }
            m_lengths[n] = nLen;
            n += nLen;
        }
        int nHits = 0;
        while (m_nRead < m_nEnd) {
            Skip();
            if (m_nRead == m_nEnd) {
                break;
            }
            if (m_lengths[m_nRead] == 0 && !MeasureAnew()) {
                return -1;
            }
            nHits += TakeCharacter() ? 1 : 0;
        }
        return nHits;
    }

    const char* Rest() const { return m_pchText; }
    int GetLength() const { return m_nWrite; }

private:
    // No character of a locale's codeset has more bytes.
    static constexpr int kMostBytes = 4;

    unsigned char Measure(const char* pch) const {
        const std::size_t nLen = (*pch & 0x80) == 0 ? 1 : platform::_mbclen(m_page, pch);
        return static_cast<unsigned char>(nLen);
    }

    /// Whether the folds of the next bytes could make a longer character with this one.
    bool MayJoin(const char* pch, unsigned char nLen) const {
        return m_page.grouping == Grouping::Other && nLen == 1 && (*pch & 0x80) != 0;
    }

    void Move(int nTo, int nFrom, int nCount) {
        if (nTo != nFrom) {
            const std::size_t nBytes = static_cast<std::size_t>(nCount);
            std::memmove(m_pchText + nTo, m_pchText + nFrom, nBytes);
            std::memmove(m_pchFolded + nTo, m_pchFolded + nFrom, nBytes);
            std::memmove(&m_lengths[nTo], &m_lengths[nFrom], nBytes);
        }
    }

    /// Over what was measured beforehand and cannot begin a hit.
    void Skip() {
        const char chFirst = m_upper[0];
        if (m_nMatched != 0 || m_lengths[m_nRead] == 0 || m_pchFolded[m_nRead] == chFirst) {
            return;
        }
        const char* pchEnd = m_pchFolded + m_nEnd;
        int nTo = static_cast<int>(
            platform::find_unit<char>(m_pchFolded + m_nRead, pchEnd, chFirst) - m_pchFolded);
        while (nTo < m_nEnd && m_lengths[nTo] == 0) {
            --nTo;
        }
        Move(m_nWrite, m_nRead, nTo - m_nRead);
        m_nWrite += nTo - m_nRead;
        m_nRead = nTo;
    }

    /// Whether the character completed a hit, which is gone then.
    bool TakeCharacter() {
        const int nLen = m_lengths[m_nRead];
        Move(m_nWrite, m_nRead, nLen);
        m_nRead += nLen;
        for (const int nEnd = m_nWrite + nLen; m_nWrite < nEnd;) {
            m_nMatched = Extend(m_nMatched, m_nWrite++);
            if (m_nMatched == m_upper.GetLength()) {
                GiveBack(m_nWrite, nEnd - m_nWrite);
                RemoveHit();
                return true;
            }
        }
        return false;
    }

    /// False where one walk cannot follow.
    bool MeasureAnew() {
        const char* pch = m_pchText + m_nRead;
        const unsigned char nLen = Measure(pch);
        const bool bMayJoin = MayJoin(pch, nLen);
        // The folds of the next three bytes depend on so much.
        const int nAhead = bMayJoin ? std::min(2 * kMostBytes - 1, m_nEnd - m_nRead) : nLen;
        char szAhead[MB_LEN_MAX + 1] = {};
        std::memcpy(szAhead, pch, static_cast<std::size_t>(nAhead));
        platform::_mbsupr(m_page, szAhead);
        if (bMayJoin && Measure(szAhead) != 1) {
            return false;
        }
        std::memcpy(m_pchFolded + m_nRead, szAhead, nLen);
        std::fill_n(&m_lengths[m_nRead], nLen, static_cast<unsigned char>(0));
        m_lengths[m_nRead] = nLen;
        return true;
    }

    /// How much of the search text ends with the byte at `nAt`, where `nMatched` did in front of
    /// it.
    int Extend(int nMatched, int nAt) const {
        while (m_upper[nMatched] != m_pchFolded[nAt] || !Begins(nAt - nMatched)) {
            if (nMatched == 0) {
                return 0;
            }
            nMatched = m_borders[nMatched];
        }
        return nMatched + 1;
    }

    bool Begins(int nAt) const { return m_bAlone ? m_lengths[nAt] == 1 : m_lengths[nAt] != 0; }

    /// The end of what is done becomes something to do, to be measured again.
    void GiveBack(int nFrom, int nCount) {
        m_nRead -= nCount;
        std::memmove(m_pchText + m_nRead, m_pchText + nFrom, static_cast<std::size_t>(nCount));
        std::fill_n(&m_lengths[m_nRead], nCount, static_cast<unsigned char>(0));
    }

    /// With the bytes in front of it that may go together with what comes next: those that stand
    /// alone though they are not ASCII.
    void RemoveHit() {
        const int nHit = m_nWrite - m_upper.GetLength();
        m_nWrite = nHit;
        for (int n = nHit - 1; n >= 0 && n > nHit - kMostBytes; --n) {
            if (m_lengths[n] == 1 && (m_pchText[n] & 0x80) != 0) {
                m_nWrite = n;
            }
        }
        GiveBack(m_nWrite, nHit - m_nWrite);
        m_nMatched = 0;
        for (int n = std::max(m_nWrite - m_upper.GetLength() + 1, 0); n < m_nWrite; ++n) {
            m_nMatched = Extend(m_nMatched, n);
        }
    }

    const CodePage& m_page;
    const Kelm& m_upper;
    const bool m_bAlone;
    const int m_nEnd;
    Kelm m_text;
    Kelm m_folded;
    char* m_pchText;
    char* m_pchFolded;
    std::unique_ptr<int[]> m_ownBorders;
    std::unique_ptr<unsigned char[]> m_ownLengths;
    const int* m_borders = nullptr;
    unsigned char* m_lengths = nullptr;  // 0 inside a character
    int m_nWrite = 0;
    int m_nRead = 0;
    int m_nMatched = 0;
};

/// Removes hits in steps: after each the text is folded and searched anew.
int remove_by_steps(Kelm& text, const Kelm& upper, bool bAlone) {
    for (int nHits = 0;; ++nHits) {
        Kelm folded(text.constBuffer());
        folded.MakeUpper();
        const int nFound = bAlone ? folded.Find(upper[0]) : folded.Find(upper);
        if (nFound < 0) {
            return nHits;
        }
        text.Delete(nFound, upper.GetLength());
    }
}

}  // namespace

int Kelm::NCFind(char ch) const {
    const CodePage& page = *platform::process_code_page();
    const char chUpper = platform::toupper(ch);
    if (chUpper == '\0') {
        // A copy of a locked value ends at its first NUL, and that decides here.
        return Kelm(*this).Find(chUpper);
    }
    if (folds_in_place(page, &chUpper, 1)) {
        return find_upper(page, *this, 0, &chUpper, 1);
    }
    Kelm mycopy(m_pchData);  // no more than the search may see
    mycopy.MakeUpper();
    return mycopy.Find(chUpper);
}

int Kelm::NCFind(const char* pchText) const {
    const CodePage& page = *platform::process_code_page();
    storage::Copy<char> upper(pchText);
    platform::_mbsupr(page, upper.Text());
    if (folds_in_place(page, upper.Text(), upper.Length())) {
        return find_upper(page, *this, 0, upper.Text(), upper.Length());
    }
    Kelm mycopy(m_pchData);  // no more than the search may see
    mycopy.MakeUpper();
    return mycopy.Find(upper.Text());
}

int Kelm::NCReplace(const char* pchOld, const char* pchNew) {
    if (pchOld == nullptr || *pchOld == '\0') {
        return 0;
    }
    const Argument<char> old(pchOld, m_pchData);
    const Argument<char> replacement(pchNew, m_pchData);
    const int nNew = pchNew == nullptr ? 0 : length_of(replacement);
    UpperSearch search(*platform::process_code_page(), old);
    if (search.Find(*this, 0) < 0) {
        return 0;
    }
    // The steps give up what is locked where it becomes too small, so they are tried on a copy.
    if (storage::refs(GetData()) < 0) {
        search.Forget();
        if (Kelm(m_pchData, GetLength()).ReplaceForms(search, nNew, replacement) < 0) {
            return ReplaceOnce(search.Upper(), nNew, replacement);
        }
        search.Forget();
        return ReplaceForms(search, nNew, replacement);
    }
    const Kelm before(*this);
    const int nHits = ReplaceForms(search, nNew, replacement);
    if (nHits >= 0) {
        return nHits;
    }
    *this = before;
    return ReplaceOnce(search.Upper(), nNew, replacement);
}

/// The steps of `NCReplace`, one exact form after the other. -1 where they are too much work: steps
/// that make new hits may go on for ever, or nearly.
template <class Search>
int Kelm::ReplaceForms(Search& search, int nNew, const char* pchNew) {
    const int nOld = search.Upper().GetLength();
    const long long nMostWork = 64LL * (GetLength() + 65536LL);
    long long nWork = 0;
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
        int nHits = nSame;
        if (!bSame || nSame == 0) {
            const Kelm sub(m_pchData + nFound, nOld);
            if (search.NeverEnds(*this, sub, nNew, pchNew)) {
                return -1;
            }
            nHits = ReplaceForm(sub, nNew, pchNew, nPosition == 0, nMostWork - nWork);
            if (nHits < 0 || (nHits == 0 && nNext == nPosition)) {
                return -1;
            }
            nSame = bSame ? nHits : 0;
            if (!bSame) {
                search.Forget();
            }
        }
        nWork += GetLength();
        if (nWork > nMostWork) {
            return -1;
        }
        nResult += nHits;
        nPosition = nNext;
    }
    return static_cast<int>(std::min<long long>(nResult, INT_MAX));
}

/// One step of `NCReplace`: every occurrence of one exact form. -1 where the text would become
/// longer than `nMost`.
int Kelm::ReplaceForm(const Kelm& sub, int nNew, const char* pchNew, bool bFromStart,
                      long long nMost) {
    const CodePage& page = *platform::process_code_page();
    const int nOld = sub.GetLength();
    const replacing::NarrowSearch search = {page, sub, static_cast<std::size_t>(nOld)};
    const long long nGrowth = static_cast<long long>(nNew) - nOld;
    const auto length_with = [&](std::size_t nHits) {
        return GetLength() + nGrowth * static_cast<long long>(nHits);
    };
    // The number of hits is asked for only where so many as there is room for would be too many.
    if (nGrowth > 0 && length_with(static_cast<std::size_t>(GetLength() / nOld)) > nMost &&
        length_with(platform::count_text(page, m_pchData, m_pchData + GetLength(), sub,
                                         search.size)) > nMost) {
        return -1;
    }
    // The tail searched from position 0 is the whole text and so holds the block: it is left.
    Kelm tail;
    if (bFromStart && storage::refs(GetData()) > 0) {
        tail = *this;
    }
    return replacing::replace(m_pchData, nOld, pchNew, nNew, search);
}

/// Every hit that the text has, in one pass; the result is their number.
int Kelm::ReplaceOnce(const Kelm& upper, int nNew, const char* pchNew) {
    const CodePage& page = *platform::process_code_page();
    const int nOld = upper.GetLength();
    const int nLength = GetLength();
    Kelm folded(m_pchData, nLength);
    fold_segments(page, folded.GetBuffer(0), nLength);
    const char* pchLast = folded.m_pchData + nLength;
    const std::size_t nSize = static_cast<std::size_t>(nOld);
    const int nHits =
        static_cast<int>(platform::count_text(page, folded.m_pchData, pchLast, upper, nSize));
    Kelm text;
    text.AllocBuffer(
        storage::checked_length(nLength + (static_cast<long long>(nNew) - nOld) * nHits));
    char* pchWrite = text.m_pchData;
    const char* pchRead = m_pchData;
    platform::TextHits found(page, folded.m_pchData, pchLast, upper, nSize);
    while (const char* pchHit = found.Next()) {
        const char* pchOld = m_pchData + (pchHit - folded.m_pchData);
        pchWrite = storage::carry<char>(pchWrite, pchRead, pchOld);
        pchWrite = std::copy_n(pchNew, nNew, pchWrite);
        pchRead = pchOld + nOld;
    }
    storage::carry<char>(pchWrite, pchRead, m_pchData + nLength);
    if (storage::refs(GetData()) < 0 && text.GetLength() <= GetAllocLength()) {
        AssignCopy(text.GetLength(), text);
    } else {
        MoveAssign(text);
    }
    return nHits;
}

int Kelm::NCRemove(const char* pchText) {
    if (pchText == nullptr || *pchText == '\0') {
        return 0;
    }
    const CodePage& page = *platform::process_code_page();
    Kelm upper(pchText);
    upper.MakeUpper();
    if (!folds_in_place(page, upper, upper.GetLength())) {
        return RemoveFolded(upper, false);
    }
    const int nLen = upper.GetLength();
    return replacing::remove_all<char>(
        m_pchData, nLen, [&](const char* pchFirst, const char* pchLast) {
            return platform::find_folded(page, pchFirst, pchLast, upper,
                                         static_cast<std::size_t>(nLen));
        });
}

int Kelm::NCRemove(char ch) {
    const CodePage& page = *platform::process_code_page();
    const char szText[] = {ch, '\0'};
    if (page.grouping == Grouping::SingleByte || is_ascii(szText, 1)) {
        return NCRemove(szText);
    }
    // In the text form the byte would be found at the head of longer characters too.
    const char chUpper = platform::toupper(ch);
    return RemoveFolded(Kelm(&chUpper, 1), true);
}

int Kelm::RemoveFolded(const Kelm& upper, bool bAlone) {
    const int nSegment = static_cast<int>(std::strlen(m_pchData));
    FoldedRemoval removal(*platform::process_code_page(), m_pchData, nSegment, upper, bAlone);
    if (!removal.HasHit()) {
        return 0;
    }
    int nHits = removal.Run();
    Kelm rest(m_pchData, GetLength());
    if (nHits < 0) {
        nHits = remove_by_steps(rest, upper, bAlone);
    } else {
        char* pchEnd = std::copy_n(removal.Rest(), removal.GetLength(), rest.m_pchData);
        storage::cut_right(rest.m_pchData, storage::carry<char>(pchEnd, m_pchData + nSegment,
                                                                m_pchData + GetLength()));
    }
    replacing::take_rest<char>(m_pchData, nHits, upper.GetLength(), rest, rest.GetLength());
    return nHits;
}
