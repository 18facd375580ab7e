#include <cstring>
#include <utility>

#include "Kelm.h"
#include "multibyte/multibyte.h"
#include "storage.h"

using storage::distance;

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

bool Kelm::Token::Next() noexcept {
    const Classes classes;
    do {
        if (!NextToken(classes, nullptr)) {
            return false;
        }
    } while (m_bSkipPunctuation && classes.IsPunctuation(m_pchText[m_nStart]));
    return true;
}

bool Kelm::Token::Next(char chDelimiter) noexcept {
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

bool Kelm::Token::NextLine() noexcept {
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

Kelm::Token::operator bool() const noexcept {
    return m_bMore;
}

bool Kelm::Token::IsValid() const noexcept {
    return m_nStart >= 0 && m_nStart <= m_nEnd;
}

void Kelm::Token::operator++() noexcept {
    Next();
}

void Kelm::Token::operator++(int) noexcept {
    Next();
}

bool Kelm::Token::SkipPunctuation(bool bSkip) noexcept {
    return std::exchange(m_bSkipPunctuation, bSkip);
}

void Kelm::Token::Restart() noexcept {
    m_pchText = m_strSource;
    Clear();
    m_nLength = static_cast<int>(std::strlen(m_pchText));
    Next();
}

void Kelm::Token::Clear() noexcept {
    m_nStart = 0;
    m_nEnd = -1;
    m_nNext = 0;
    m_bMore = true;
    m_nLength = 0;
}

int Kelm::Token::FindWhitespace(int nStart) const noexcept {
    return SkipWhitespace(Classes(), nStart);
}

int Kelm::Token::SkipWhitespace(const Classes& classes, int nStart) const noexcept {
    const char* pch = m_pchText + nStart;
    while (classes.IsSpace(*pch)) {
        ++pch;
    }
    return *pch == '\0' ? -1 : distance(m_pchText, pch);
}

int Kelm::Token::FindChar(int nStart, char ch) const noexcept {
    while (m_pchText[nStart] != '\0' && m_pchText[nStart] != ch) {
        ++nStart;
    }
    return m_pchText[nStart] == '\0' ? -1 : nStart;
}
