#include <algorithm>
#include <cstring>

#include "Kelm.h"
#include "assertion.h"
#include "blocks.h"
#include "fields.h"
#include "formatting.h"
#include "numbers.h"
#include "order.h"
#include "pages/pages.h"
#include "print/print.h"
#include "replacing.h"
#include "search/search.h"
#include "searching.h"
#include "storage.h"
#include "wide/wide.h"

using storage::Argument;
using storage::copy_units;
using storage::distance;
using storage::length_of;

namespace {

/// A narrow value that a result is written into.
struct NarrowResult : Kelm {
    using Kelm::m_pchData;
};

/// `text`, which is new, becomes what the conversion gives.
template <class Unit, class Conversion>
void convert(Unit*& text, const Conversion& conversion) {
    storage::alloc(text, blocks::checked_length(conversion.Size()));
    conversion.Write(text);
}

int remove_folded(char16_t*& text, int nUpper, const char16_t* pchUpper) {
    const std::size_t nSize = static_cast<std::size_t>(nUpper);
    return replacing::remove_all(
        text, nUpper, [=](const char16_t* pchFirst, const char16_t* pchLast) {
            return platform::find_folded(pchFirst, pchLast, pchUpper, nSize);
        });
}

/// Index of the first place that folds to `upper`.
int find_upper(const WString& text, int nLen, const char16_t* pchUpper) {
    const char16_t* pchText = text;
    const std::size_t nUpper = static_cast<std::size_t>(nLen);
    const auto find = [&](const char16_t* pchFirst, const char16_t* pchLast) {
        return platform::find_folded(pchFirst, pchLast, pchUpper, nUpper);
    };
    return searching::index(pchText,
                            searching::wide(pchText, pchText + text.GetLength(), nUpper, find));
}

int count_hits(const char16_t* pchFirst, const char16_t* pchLast, int nLen,
               const char16_t* pchText) {
    return static_cast<int>(
        platform::count_text(pchFirst, pchLast, pchText, static_cast<std::size_t>(nLen)));
}

/// The place behind what is left of a text of this length when the run in front of its first NUL
/// that passes the test is cut off.
template <class Test>
const char16_t* trimmed_end(const char16_t* pchText, int nLen, Test test) {
    const char16_t* pchNul = pchText + platform::wcslen(pchText);
    const char16_t* pchRun = pchNul;
    while (pchRun != pchText && test(pchRun[-1])) {
        --pchRun;
    }
    return pchRun != pchNul ? pchRun : pchText + nLen;
}

/// The first unit that does not pass the test.
template <class Test>
const char16_t* trimmed_start(const char16_t* pchText, const char16_t* pchEnd, Test test) {
    while (pchText < pchEnd && test(*pchText)) {
        ++pchText;
    }
    return pchText;
}

auto is_in(const char16_t* pchSet) {
    return [pchSet, pchEnd = pchSet + platform::wcslen(pchSet)](char16_t ch) {
        return platform::wcschr(pchSet, pchEnd, ch) != nullptr;
    };
}

/// White space. The C library is asked once for a run of one unit, as margins mostly are.
auto is_space() {
    return [chLast = u'\0', isLast = false](char16_t ch) mutable {
        if (ch != chLast) {
            chLast = ch;
            isLast = platform::iswspace(ch);
        }
        return isLast;
    };
}

int read_int(const char16_t* pchText) {
    const int nValue = platform::_wtoi(pchText);
    return nValue != 0 ? nValue : platform::wcstol(pchText);
}

bool equals_word(const char16_t* pchText, const char16_t* pchWord) {
    for (; *pchWord != u'\0'; ++pchText, ++pchWord) {
        if (platform::towlower(*pchText) != *pchWord) {
            return false;
        }
    }
    while (*pchText != u'\0' && platform::iswspace(*pchText)) {
        ++pchText;
    }
    return *pchText == u'\0';
}

/// `nLen` counts what lies behind an embedded NUL as well.
bool read_bool(const char16_t* pchText, int nLen) {
    if (std::any_of(pchText, pchText + nLen, platform::iswdigit)) {
        return read_int(pchText) != 0;
    }
    while (*pchText != u'\0' && platform::iswspace(*pchText)) {
        ++pchText;
    }
    return equals_word(pchText, u"true") || equals_word(pchText, u"on") ||
           equals_word(pchText, u"yes");
}

/// The order of two values, which know their lengths.
int compare(const WString& string1, const WString& string2) {
    return order::compare<char16_t>(string1, string1.GetLength(), string2, string2.GetLength(),
                                    [&] { return string1.Compare(string2.constBuffer()); });
}

}  // namespace

WString::WString() noexcept {
    Init();
}

void WString::CopyUnshared(const WString& stringSrc) {
    storage::copy_construct(m_pchData, stringSrc.m_pchData);
}

WString::WString(WString&& stringSrc) noexcept {
    Init();
    MoveAssign(stringSrc);
}

WString::WString(const char16_t* pchText) {
    Init();
    if (pchText == nullptr) {
        return;
    }
    const int nLen = length_of(pchText);
    if (nLen > 0) {
        AllocBuffer(nLen);
        copy_units(m_pchData, pchText, nLen);
    }
}

WString::WString(char16_t* pchText) : WString(static_cast<const char16_t*>(pchText)) {}

WString::WString(const Kelm& string) : WString(FromCodePage(string, 0)) {}

WString::WString(const char* pchText)
    : WString(pchText == nullptr ? WString() : FromCodePage(pchText, 0)) {}

void WString::DestroyUnshared() {
    storage::release(m_pchData);
}

WString& WString::operator=(const WString& stringSrc) {
    storage::assign(m_pchData, stringSrc.m_pchData);
    return *this;
}

WString& WString::operator=(WString&& stringSrc) noexcept {
    MoveAssign(stringSrc);
    return *this;
}

WString& WString::operator=(char16_t ch) {
    AssignCopy(1, &ch);
    return *this;
}

WString& WString::operator=(const char16_t* pchText) {
    AssignCopy(length_of(pchText), pchText);
    return *this;
}

WString& WString::operator=(const Kelm& string) {
    const WString text(string);
    return *this = text;
}

void WString::Empty() {
    storage::empty(m_pchData);
}

void WString::Release() {
    storage::release(m_pchData);
}

void WString::SetAt(int nIndex, char16_t ch) {
    storage::set_at(m_pchData, nIndex, ch);
}

char16_t* WString::GetBuffer(int nMinBufLength) {
    return storage::get_buffer(m_pchData, nMinBufLength);
}

void WString::ReleaseBuffer(int nNewLength) {
    storage::release_buffer(m_pchData, nNewLength);
}

char16_t* WString::GetBufferSetLength(int nNewLength) {
    return storage::get_buffer_set_length(m_pchData, nNewLength);
}

void WString::FreeExtra() {
    storage::free_extra(m_pchData);
}

WString& WString::Append(const WString& string) {
    ConcatInPlace(string.GetLength(), string.m_pchData);
    return *this;
}

WString& WString::Append(const char16_t* pchText) {
    ConcatInPlace(length_of(pchText), pchText);
    return *this;
}

WString& WString::Append(const Kelm& string) {
    return Append(WString(string));
}

WString& WString::operator<<(const char* pchText) {
    return Append(WString(pchText));
}

// Not by way of the other: where `long` has 32 bits the upper half would come out negative.
WString& WString::operator<<(unsigned int nValue) {
    char16_t szDigits[platform::kIntegerRoom];
    ConcatInPlace(platform::print_integer(szDigits, static_cast<unsigned long long>(nValue)),
                  szDigits);
    return *this;
}

WString& WString::operator<<(long nValue) {
    char16_t szDigits[platform::kIntegerRoom];
    ConcatInPlace(platform::print_integer(szDigits, static_cast<long long>(nValue)), szDigits);
    return *this;
}

int WString::Find(char16_t ch, int nStart) const noexcept {
    nStart = std::max(nStart, 0);
    if (nStart >= GetLength()) {
        return -1;
    }
    const char16_t* pchStart = m_pchData + nStart;
    const char16_t* pchEnd = m_pchData + GetLength();
    if (ch == u'\0') {
        return distance(m_pchData, platform::find_unit(pchStart, pchEnd, ch));
    }
    const auto find = [=](const char16_t* pchFirst, const char16_t* pchLast) {
        return platform::wcschr(pchFirst, pchLast, ch);
    };
    return searching::index<char16_t>(m_pchData, searching::wide(pchStart, pchEnd, 1, find));
}

int WString::Find(const char16_t* pchText, int nStart) const noexcept {
    nStart = std::max(nStart, 0);
    if (nStart > GetLength() || pchText == nullptr) {
        return -1;
    }
    const char16_t* pchStart = m_pchData + nStart;
    const std::size_t nLen = platform::wcslen(pchText);
    const auto find = [=](const char16_t* pchFirst, const char16_t* pchLast) {
        return platform::wcsstr(pchFirst, pchLast, pchText, nLen);
    };
    return searching::index<char16_t>(
        m_pchData, searching::wide(pchStart, m_pchData + GetLength(), nLen, find));
}

int WString::ReverseFind(char16_t ch) const noexcept {
    const char16_t* pchEnd = m_pchData + platform::wcslen(m_pchData);
    if (ch == u'\0') {
        return distance(m_pchData, pchEnd);
    }
    const char16_t* pchHit = platform::wcsrchr(m_pchData, pchEnd, ch);
    return pchHit == nullptr ? -1 : distance(m_pchData, pchHit);
}

int WString::FindOneOf(const char16_t* pchSet) const noexcept {
    if (pchSet == nullptr) {
        return -1;
    }
    const auto find = [=](const char16_t* pchFirst, const char16_t* pchLast) {
        return platform::wcspbrk(pchFirst, pchLast, pchSet);
    };
    return searching::index<char16_t>(m_pchData,
                                      searching::wide(m_pchData, m_pchData + GetLength(), 1, find));
}

int WString::NCFind(char16_t ch) const noexcept {
    const char16_t chUpper = platform::towupper(ch);
    if (chUpper == u'\0') {
        return Find(chUpper);
    }
    return find_upper(*this, 1, &chUpper);
}

int WString::NCFind(const char16_t* pchText) const {
    storage::Copy<char16_t> upper(pchText);
    platform::_wcsupr(upper.Text());
    return find_upper(*this, upper.Length(), upper.Text());
}

int WString::Count(char16_t ch) const noexcept {
    return static_cast<int>(platform::count_unit<char16_t>(m_pchData, m_pchData + GetLength(), ch));
}

int WString::Count(const char16_t* pchText) const {
    if (pchText == nullptr || *pchText == u'\0') {
        return 0;
    }
    const char16_t* pchEnd = m_pchData + platform::wcslen(m_pchData);
    return count_hits(m_pchData, pchEnd, length_of(pchText), pchText);
}

WString WString::Mid(int nFirst, int nCount) const {
    WString dest;
    storage::mid(dest.m_pchData, m_pchData, nFirst, nCount);
    return dest;
}

WString WString::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

WString WString::Left(int nCount) const {
    WString dest;
    storage::left(dest.m_pchData, m_pchData, nCount);
    return dest;
}

WString WString::Right(int nCount) const {
    WString dest;
    storage::right(dest.m_pchData, m_pchData, nCount);
    return dest;
}

void WString::MakeUpper() {
    CopyBeforeWrite();
    platform::_wcsupr(m_pchData);
}

void WString::MakeLower() {
    CopyBeforeWrite();
    platform::_wcslwr(m_pchData);
}

void WString::MakeReverse() {
    CopyBeforeWrite();
    platform::_wcsrev(m_pchData);
}

void WString::TrimRight() {
    storage::keep<char16_t>(m_pchData, m_pchData, trimmed_end(m_pchData, GetLength(), is_space()));
}

void WString::TrimRight(char16_t ch) {
    storage::keep<char16_t>(
        m_pchData, m_pchData,
        trimmed_end(m_pchData, GetLength(), [=](char16_t chText) { return chText == ch; }));
}

void WString::TrimRight(const char16_t* pchSet) {
    storage::keep<char16_t>(
        m_pchData, m_pchData,
        trimmed_end(m_pchData, GetLength(), is_in(pchSet == nullptr ? u"" : pchSet)));
}

void WString::TrimLeft() {
    const char16_t* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData, trimmed_start(m_pchData, pchEnd, is_space()), pchEnd);
}

void WString::TrimLeft(char16_t ch) {
    const char16_t* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData,
                  trimmed_start(m_pchData, pchEnd, [=](char16_t chText) { return chText == ch; }),
                  pchEnd);
}

void WString::TrimLeft(const char16_t* pchSet) {
    if (pchSet == nullptr || *pchSet == u'\0') {
        return;
    }
    const char16_t* pchEnd = m_pchData + GetLength();
    storage::keep(m_pchData, trimmed_start(m_pchData, pchEnd, is_in(pchSet)), pchEnd);
}

WString WString::Trim() const {
    const int nLen = storage::copied_length(m_pchData);
    const char16_t* pchEnd = trimmed_end(m_pchData, nLen, is_space());
    WString copy;
    copy.AllocBuffer(nLen);
    storage::keep(copy.m_pchData, trimmed_start(m_pchData, pchEnd, is_space()), pchEnd);
    return copy;
}

int WString::Replace(char16_t chOld, char16_t chNew) {
    if (chOld == chNew) {
        return 0;
    }
    CopyBeforeWrite();
    return static_cast<int>(
        platform::replace_unit(m_pchData, m_pchData + GetLength(), chOld, chNew));
}

int WString::Replace(const char16_t* pchOld, const char16_t* pchNew) {
    if (pchOld == nullptr || *pchOld == u'\0') {
        return 0;
    }
    const Argument<char16_t> old(pchOld, m_pchData);
    const Argument<char16_t> replacement(pchNew, m_pchData);
    const int nOld = length_of(old);
    const replacing::WideSearch search = {old, static_cast<std::size_t>(nOld)};
    return replacing::replace<char16_t>(m_pchData, nOld, replacement,
                                        pchNew == nullptr ? 0 : length_of(replacement), search);
}

int WString::Remove(char16_t ch) {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_unit(m_pchData, m_pchData + GetLength(), ch));
}

int WString::RemoveSpace() {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_space(m_pchData, m_pchData + GetLength()));
}

int WString::RemovePunctuation() {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_punctuation(m_pchData, m_pchData + GetLength()));
}

int WString::RemoveControl() {
    CopyBeforeWrite();
    return storage::cut_right(m_pchData,
                              platform::remove_control(m_pchData, m_pchData + GetLength()));
}

int WString::NCRemove(const char16_t* pchText) {
    if (pchText == nullptr || *pchText == u'\0') {
        return 0;
    }
    WString upper(pchText);
    upper.MakeUpper();
    return remove_folded(m_pchData, upper.GetLength(), upper);
}

int WString::NCRemove(char16_t ch) {
    const char16_t chUpper = platform::towupper(ch);
    return chUpper == u'\0' ? 0 : remove_folded(m_pchData, 1, &chUpper);
}

WString WString::FromRepeat(char16_t ch, int nCount) {
    WString rc;
    storage::repeat(rc.m_pchData, ch, nCount);
    return rc;
}

void WString::Format(const char16_t* pchFormat, ...) {
    va_list argList;
    va_start(argList, pchFormat);
    FormatV(pchFormat, argList);
    va_end(argList);
}

void WString::AppendFormat(const char16_t* pchFormat, ...) {
    va_list argList;
    va_start(argList, pchFormat);
    AppendFormatV(pchFormat, argList);
    va_end(argList);
}

WString WString::FromFormat(const char16_t* pchFormat, ...) {
    WString text;
    va_list argList;
    va_start(argList, pchFormat);
    text.FormatV(pchFormat, argList);
    va_end(argList);
    return text;
}

void WString::FormatV(const char16_t* pchFormat, va_list argList) {
    formatting::print_at(m_pchData, 0, pchFormat, argList);
}

void WString::AppendFormatV(const char16_t* pchFormat, va_list argList) {
    formatting::print_at(m_pchData, GetLength(), pchFormat, argList);
}

bool WString::Bool() const noexcept {
    return read_bool(m_pchData, GetLength());
}

int WString::Int() const noexcept {
    return read_int(m_pchData);
}

std::int32_t WString::Long() const noexcept {
    const std::int32_t nValue = platform::_wtol(m_pchData);
    return nValue != 0 ? nValue : platform::wcstol(m_pchData);
}

long long WString::Int64() const noexcept {
    const long long nValue = platform::_wtoi64(m_pchData);
    return nValue != 0 ? nValue : platform::_wcstoi64(m_pchData);
}

double WString::Double() const noexcept {
    return platform::_wtof(m_pchData);
}

WString WString::From(long long nValue) {
    WString text;
    formatting::integer(text.m_pchData, nValue);
    return text;
}

WString WString::From(unsigned long long nValue) {
    WString text;
    formatting::integer(text.m_pchData, nValue);
    return text;
}

WString WString::From(double dValue) {
    WString text;
    formatting::general(text.m_pchData, dValue);
    return text;
}

int WString::Compare(const char16_t* pchText) const noexcept {
    if (pchText == nullptr) {
        return 1;
    }
    return pchText == m_pchData ? 0 : platform::wcscmp(m_pchData, pchText);
}

int WString::CompareNoCase(const char16_t* pchText) const noexcept {
    if (pchText == nullptr) {
        return 1;
    }
    if (pchText == m_pchData) {
        return 0;
    }
    return platform::_wcsicmp(m_pchData, pchText);
}

WString WString::Elements(int nFirst, int nLast, char16_t chDelimiter) const {
    WString erg;
    fields::take(erg.m_pchData, m_pchData, nFirst, nLast, chDelimiter);
    return erg;
}

WString WString::Element(int nElement, char16_t chDelimiter) const {
    return nElement < 0 ? WString() : Elements(nElement, nElement, chDelimiter);
}

WString WString::FromCodePage(const Kelm& string, unsigned int nCodePage) {
    return _FromCodePage(string, string.GetLength(), nCodePage);
}

WString WString::FromCodePage(const char* pchText, unsigned int nCodePage) {
    return _FromCodePage(
        pchText, blocks::checked_length(static_cast<long long>(std::strlen(pchText))), nCodePage);
}

Kelm WString::ToKelm(unsigned int nCodePage) const {
    const platform::Encoding encoding(nCodePage, m_pchData, GetLength());
    NarrowResult text;
    convert(text.m_pchData, encoding);
    return text;
}

void WString::Init() noexcept {
    storage::init(m_pchData);
}

void WString::AllocBuffer(int nLen) {
    storage::alloc(m_pchData, nLen);
}

void WString::FreeData(WStringData* pData) {
    blocks::give_back(pData);
}

void WString::Release(WStringData* pData) {
    blocks::release<char16_t>(pData);
}

void WString::CopyBeforeWrite() {
    storage::copy_before_write(m_pchData);
}

void WString::AllocBeforeWrite(int nLen) {
    storage::alloc_before_write(m_pchData, nLen);
}

void WString::AssignCopy(int nLen, const char16_t* pchText) {
    storage::assign_copy(m_pchData, nLen, pchText);
}

void WString::AllocCopy(WString& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const {
    storage::alloc_copy<char16_t>(dest.m_pchData, m_pchData + nCopyIndex, nCopyLen, nExtraLen);
}

void WString::MoveAssign(WString& stringSrc) {
    storage::move_assign(m_pchData, stringSrc.m_pchData);
}

void WString::ConcatCopy(int nLen1, const char16_t* pch1, int nLen2, const char16_t* pch2) {
    storage::concat_copy(m_pchData, nLen1, pch1, nLen2, pch2);
}

void WString::ConcatInPlace(int nLen, const char16_t* pchText) {
    storage::concat_in_place(m_pchData, nLen, pchText);
}

int WString::GetFormattedLength(const char16_t* pchFormat, va_list argList) {
    return platform::estimate(pchFormat, argList);
}

int WString::VFormat(char16_t* pchDest, const char16_t* pchFormat, va_list argList) {
    return platform::_vswprintf(pchDest, INT_MAX, pchFormat, argList);
}

WString WString::_FromCodePage(const char* pchText, int nLength, unsigned int nCodePage) {
    const platform::Decoding decoding(nCodePage, pchText, nLength);
    WString text;
    convert(text.m_pchData, decoding);
    return text;
}

WString WString::Join(int nLen1, const char16_t* pch1, int nLen2, const char16_t* pch2) {
    WString text;
    text.ConcatCopy(nLen1, pch1, nLen2, pch2);
    return text;
}

/// Decodes to the place where the units stay.
WString WString::JoinNarrow(const WString& string, int nLen, const char* pchText) {
    const platform::Decoding decoding(0U, pchText, nLen);
    WString text;
    string.AllocCopy(text, string.GetLength(), 0, decoding.Size());
    decoding.Write(text.m_pchData + string.GetLength());
    return text;
}

WString operator+(const WString& string1, const WString& string2) {
    return WString::Join(string1.GetLength(), string1, string2.GetLength(), string2);
}

WString operator+(const WString& string, char16_t ch) {
    return WString::Join(string.GetLength(), string, 1, &ch);
}

WString operator+(char16_t ch, const WString& string) {
    return WString::Join(1, &ch, string.GetLength(), string);
}

WString operator+(const WString& string, const char16_t* pchText) {
    return WString::Join(string.GetLength(), string, length_of(pchText), pchText);
}

WString operator+(const char16_t* pchText, const WString& string) {
    return WString::Join(length_of(pchText), pchText, string.GetLength(), string);
}

WString operator+(const WString& string, const char* pchText) {
    return WString::JoinNarrow(string, pchText == nullptr ? 0 : length_of(pchText), pchText);
}

WString operator+(const WString& string1, const Kelm& string2) {
    return WString::JoinNarrow(string1, string2.GetLength(), string2);
}

bool operator==(const WString& string1, const WString& string2) noexcept {
    return order::equal<char16_t>(string1, string1.GetLength(), string2, string2.GetLength());
}

bool operator==(const WString& string, const char16_t* pchText) noexcept {
    return order::equal<char16_t>(string, pchText);
}

bool operator<(const WString& string1, const WString& string2) noexcept {
    return compare(string1, string2) < 0;
}

bool operator<=(const WString& string1, const WString& string2) noexcept {
    return compare(string1, string2) <= 0;
}

bool operator>(const WString& string1, const WString& string2) noexcept {
    return compare(string1, string2) > 0;
}

bool operator>=(const WString& string1, const WString& string2) noexcept {
    return compare(string1, string2) >= 0;
}
