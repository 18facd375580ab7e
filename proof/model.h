#pragma once

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "oracle.h"

/// A text as the manual tells it: a plain string, a capacity, a lock and a block that copies share,
/// under the names of the classes, so that one program runs on both. Each operation is done in the
/// simplest way; blocks and lengths are what a caller of the class would see.
template <class Unit>
class Model {
    struct NoText {};  // in the place of narrow text in a narrow model
    using Narrow = std::conditional_t<sizeof(Unit) == 1, NoText, Model<char>>;

public:
    using String = std::basic_string<Unit>;

    struct Block {
        std::vector<Unit> units;  // the capacity and a terminator
        int nLength;
        long nNumber;
        bool bLocked = false;
    };

    Model() = default;
    Model(const Model& source) { source.Refs() < 0 ? New(source.UntilNul()) : Share(source); }
    Model(Model&& source) noexcept : block_(std::move(source.block_)) {}
    Model(const Unit* pch) { New(Text(pch)); }
    Model(const Unit* pch, int nLength) {
        New(nLength <= 0 ? String() : String(pch, static_cast<std::size_t>(nLength)));
    }
    Model(const unsigned char* pch) : Model(reinterpret_cast<const Unit*>(pch)) {}

    Model& operator=(const Model& source) {
        if (block_ == source.block_) {
            return *this;
        }
        if (IsLocked() || source.Refs() < 0) {
            return Assign(source.Whole());
        }
        Share(source);
        return *this;
    }
    Model& operator=(Model&& source) noexcept {
        const auto block = std::exchange(source.block_, nullptr);
        block_ = this == &source ? nullptr : block;
        return *this;
    }
    Model& operator=(const auto& text) { return Assign(Text(text)); }
    void Empty() {
        if (!IsEmpty()) {
            IsLocked() ? static_cast<void>(Assign({})) : Release();
        }
    }
    void Release() { block_.reset(); }

    int GetLength() const { return block_ == nullptr ? 0 : block_->nLength; }
    int GetAllocLength() const {
        return block_ == nullptr ? 0 : static_cast<int>(block_->units.size()) - 1;
    }
    int GetByteLength() const { return GetLength() * static_cast<int>(sizeof(Unit)); }
    bool IsEmpty() const { return GetLength() == 0; }
    const Unit* constBuffer() const {
        static const Unit nul = 0;
        return block_ == nullptr ? &nul : block_->units.data();
    }
    Unit GetAt(int n) const { return constBuffer()[n]; }
    Unit operator[](int n) const { return GetAt(n); }
    Unit Char() const { return GetAt(0); }
    void SetAt(int n, Unit ch) {
        CopyBeforeWrite();
        block_->units[static_cast<std::size_t>(n)] = ch;
    }

    Unit* GetBuffer(int nRoom) {
        if (IsShared() || nRoom > GetAllocLength()) {
            New(Whole(), std::max(nRoom, GetLength()));
        }
        return block_ == nullptr ? nullptr : block_->units.data();
    }
    void ReleaseBuffer(int nLength = -1) {
        CopyBeforeWrite();
        SetLength(nLength < 0 ? static_cast<int>(String(constBuffer()).size()) : nLength);
    }
    Unit* GetBufferSetLength(int nLength) {
        Unit* const pch = GetBuffer(nLength);
        SetLength(nLength);
        return pch;
    }
    void FreeExtra() {
        if (GetLength() != GetAllocLength()) {
            New(Whole());
        }
    }
    Unit* LockBuffer() {
        Unit* const pch = GetBuffer(0);
        if (block_ != nullptr) {
            block_->bLocked = true;
        }
        return pch;
    }
    void UnlockBuffer() {
        if (block_ != nullptr) {
            block_->bLocked = false;
        }
    }

    Model& Append(const auto& text) { return Add(Text(text)); }
    Model& operator+=(const auto& text) { return Add(Text(text)); }
    Model& operator<<(const auto& text) { return Add(Text(text)); }
    friend Model operator+(const Model& a, const auto& b) { return Made(a.Whole() + Text(b)); }
    friend Model operator+(Unit ch, const Model& b) { return Made(ch + b.Whole()); }
    friend Model operator+(const Unit* pch, const Model& b) { return Made(pch + b.Whole()); }

    int Find(Unit ch, int nStart = 0) const {
        const int nFirst = std::max(nStart, 0);
        return nFirst >= GetLength() ? -1 : Place(nFirst, IsText(ch), ch == 0);
    }
    int Find(const Unit* pch, int nStart = 0) const {
        const int nFirst = std::max(nStart, 0);
        if (pch == nullptr || nFirst > GetLength()) {
            return -1;
        }
        const std::size_t nHit = oracle::find(Behind(nFirst), String(pch));
        return nHit == String::npos ? -1 : nFirst + static_cast<int>(nHit);
    }
    int ReverseFind(Unit ch) const {
        int nLast = ch == 0 ? static_cast<int>(Behind(0).size()) : -1;
        int at = 0;
        for (const String& one : oracle::split(Behind(0))) {
            nLast = one == String(1, ch) ? at : nLast;
            at += static_cast<int>(one.size());
        }
        return nLast;
    }
    int FindOneOf(const Unit* pchSet) const { return Place(0, In(pchSet), false); }
    int NCFind(Unit ch) const {
        Model upper(*this);
        upper.MakeUpper();
        return upper.Find(UpperOf(ch));
    }
    int NCFind(const Unit* pch) const {
        Model upper(*this);
        upper.MakeUpper();
        Model wanted(pch);
        wanted.MakeUpper();
        return upper.Find(wanted.constBuffer());
    }
    int Count(Unit ch) const {
        const String text = Whole();
        return static_cast<int>(std::count(text.begin(), text.end(), ch));
    }
    int Count(const Unit* pch) const {
        String text = Behind(0);
        return pch == nullptr ? 0 : oracle::replace_all(text, String(pch), String());
    }

    Model Mid(int nFirst) const { return Mid(nFirst, INT_MAX); }
    Model Mid(int nFirst, int nCount) const {
        const int nAt = std::clamp(nFirst, 0, GetLength());
        const int nLength = std::clamp(nCount, 0, GetLength() - nAt);
        return nAt == 0 && nFirst <= 0 && nLength == GetLength() ? *this : Piece(nAt, nLength);
    }
    Model Left(int nCount) const { return Mid(0, nCount); }
    Model Right(int nCount) const { return Mid(GetLength() - std::clamp(nCount, 0, GetLength())); }
    Model SpanIncluding(const Unit* pchSet) const {
        const auto isIn = In(pchSet);
        const int n = Place(
            0, [&](const String& one) { return !isIn(one); }, true);
        return Left(n);
    }
    Model SpanExcluding(const Unit* pchSet) const { return Left(Place(0, In(pchSet), true)); }

    void MakeUpper() { Change(folded(UntilNul(), oracle::kUpper)); }
    void MakeLower() { Change(folded(UntilNul(), oracle::kLower)); }
    void MakeReverse() {
        auto characters = oracle::split(UntilNul());
        std::reverse(characters.begin(), characters.end());
        Change(oracle::join(characters));
    }
    void TrimRight() { TrimEnd(IsSpaceUnit); }
    void TrimRight(Unit ch) { TrimEnd(IsUnit(ch)); }
    void TrimRight(const Unit* pchSet) { TrimEnd(FirstIn(pchSet)); }
    void TrimLeft() { TrimStart(IsSpaceUnit); }
    void TrimLeft(Unit ch) { TrimStart(IsUnit(ch)); }
    void TrimLeft(const Unit* pchSet) {
        if (pchSet != nullptr && *pchSet != 0) {
            TrimStart(FirstIn(pchSet));
        }
    }
    Model Trim() const {
        Model copy(*this);
        copy.TrimRight();
        copy.TrimLeft();
        return copy;
    }

    int Replace(Unit chOld, Unit chNew) {
        if (chOld == chNew) {
            return 0;
        }
        String text = Whole();
        int nHits = 0;
        for (std::size_t at = 0; at < text.size();) {
            nHits += text[at] == chOld;
            text[at] = text[at] == chOld ? chNew : text[at];
            at += oracle::split(text.substr(at, 4)).front().size();
        }
        Write(text);
        return nHits;
    }
    int Replace(const Unit* pchOld, const Unit* pchNew) {
        String text = Whole();
        const int nHits =
            pchOld == nullptr
                ? 0
                : oracle::replace_all(text, String(pchOld), pchNew ? String(pchNew) : String());
        if (nHits > 0) {
            Write(text);
        }
        return nHits;
    }
    int NCReplace(const Unit* pchOld, const Unit* pchNew) {
        const int nOld = static_cast<int>(Text(pchOld).size());
        int nResult = 0;
        for (int at = 0; nOld > 0;) {
            const Model tail = Mid(at);
            const int nHit = tail.NCFind(pchOld);
            if (nHit < 0) {
                break;
            }
            const Model form = tail.Mid(nHit, nOld);
            nResult += Replace(form.constBuffer(), pchNew);
            at += nHit + static_cast<int>(Text(pchNew).size());
        }
        return nResult;
    }

    int Remove(const Unit* pch) { return Replace(pch, nullptr); }
    int Remove(Unit ch) { return Lose(IsUnit(ch)); }
    int RemoveSpace() { return Lose(IsSpaceUnit); }
    int RemovePunctuation() {
        return Lose([](Unit ch) { return IsIn(ch, std::iswpunct, std::ispunct); });
    }
    int RemoveControl() {
        return Lose([](Unit ch) { return IsIn(ch, std::iswcntrl, std::iscntrl); });
    }
    int NCRemove(const Unit* pch) {
        const int nLength = static_cast<int>(Text(pch).size());
        return nLength == 0 ? 0 : LoseHits(nLength, [&] { return NCFind(pch); });
    }
    int NCRemove(Unit ch) {
        return ch == 0 ? 0 : LoseHits(1, [&] { return NCFind(ch); });
    }

    int Insert(int nIndex, Unit ch) { return Put(nIndex, String(1, ch)); }
    int Insert(int nIndex, const Unit* pch) { return *pch == 0 ? GetLength() : Put(nIndex, pch); }
    int Delete(int nIndex, int nCount) {
        const int nLength = GetLength();
        const int nAt = std::max(nIndex, 0);
        if (nCount > 0 && nAt < nLength) {
            Write(Whole().erase(static_cast<std::size_t>(nAt), static_cast<std::size_t>(nCount)));
        }
        return nLength;
    }
    static Model FromRepeat(Unit ch, int nCount) {
        return Made(String(static_cast<std::size_t>(std::max(nCount, 0)), ch));
    }
    void Repeat(Unit ch, int nCount) {
        const Model repeated = FromRepeat(ch, nCount);
        *this = repeated;
    }
    void Repeat(const Unit* pch, int nCount) {
        GetBuffer(static_cast<int>(Text(pch).size()) * nCount);
        for (; nCount > 0 && *pch != 0; --nCount) {
            Append(pch);
        }
    }
    Model operator--() {
        Drop();
        return *this;
    }
    Model operator--(int) {
        Model before(*this);
        Drop();
        return before;
    }
    int ReplaceTabs(int nWidth) {
        int nTabs = 0;
        for (int at = Find(Unit('\t')); at >= 0; at = Find(Unit('\t'))) {
            const int nFill = nWidth > 0 ? nWidth - at % nWidth : 0;
            *this = Left(at) + FromRepeat(Unit(' '), nFill) + Mid(at + 1);
            ++nTabs;
        }
        return nTabs;
    }

    void Format(const Unit* pchFormat) {
        Print(0, pchFormat, sizeof(Unit) * Text(pchFormat).size());
    }
    void Format(const Unit* pchFormat, auto value) { PrintOne(0, pchFormat, value); }
    void AppendFormat(const Unit* pchFormat, auto value) {
        PrintOne(GetLength(), pchFormat, value);
    }
    static Model FromFormat(const Unit* pchFormat, auto value) {
        Model result;
        result.Format(pchFormat, value);
        return result;
    }
    void FormatMsg(std::uint32_t nError, const Unit*, int n) {
        const int nCode = static_cast<int>(nError);
        const std::string code = oracle::printed("%d (0x%x)", nCode, nCode);
        const std::string system = strerrordesc_np(nCode) ? std::strerror(nCode) : "";
        GetBuffer(2048);
        Write(std::to_string(n) + " <Error Code=" + code + ">, " + system);
    }

    bool Bool() const {
        const String text = Whole();
        if (std::any_of(text.begin(), text.end(), IsDigitUnit)) {
            return Int() != 0;
        }
        const std::string word = oracle::numeric(Trim().Lower());
        return word == "true" || word == "on" || word == "yes";
    }
    int Int() const { return static_cast<int>(oracle::integer(Numeric(), oracle::clamped)); }
    std::int32_t Long() const { return Int(); }
    long long Int64() const { return oracle::integer(Numeric(), oracle::whole); }
    double Double() const { return oracle::real(Numeric()); }
    template <class T>
    T To() const {
        if constexpr (std::is_same_v<T, bool>) {
            return Bool();
        } else if constexpr (std::is_floating_point_v<T>) {
            return static_cast<T>(Double());
        } else if constexpr (std::is_same_v<T, unsigned long>) {
            return static_cast<unsigned int>(Int());
        } else {
            return static_cast<T>(sizeof(T) == 8 && !std::is_same_v<T, long> ? Int64() : Int());
        }
    }
    template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
    static Model From(Number value) {
        return Made(Widened(std::to_string(value)), 32);
    }
    static Model From(double value) { return Made(Widened(oracle::printed("%g", value)), 128); }

    bool IsDigit() const { return All(std::isdigit); }
    bool IsDigit(int n) const { return Is(n, std::isdigit); }
    bool IsAlNum() const { return All(std::isalnum); }
    bool IsAlNum(int n) const { return Is(n, std::isalnum); }
    bool IsAlpha() const { return All(std::isalpha); }
    bool IsAlpha(int n) const { return Is(n, std::isalpha); }
    bool IsUpper() const { return All(std::isupper); }
    bool IsUpper(int n) const { return Is(n, std::isupper); }
    bool IsLower() const { return All(std::islower); }
    bool IsLower(int n) const { return Is(n, std::islower); }
    bool IsSpace() const { return All(std::isspace); }
    bool IsSpace(int n) const { return Is(n, std::isspace); }

    int Compare(const Unit* pch) const {
        return pch == nullptr ? 1 : oracle::order(UntilNul(), Text(pch));
    }
    int CompareNoCase(const Unit* pch) const {
        return pch == nullptr ? 1 : oracle::order(Lower(), folded(Text(pch), oracle::kLower));
    }
    int Collate(const Unit* pch) const { return std::strcoll(constBuffer(), pch); }
    int CollateNoCase(const Unit* pch) const {
        return std::strcoll(Lower().c_str(), folded(Text(pch), oracle::kLower).c_str());
    }
    float Similar(const Unit* pch) const { return Similar(Model(pch)); }
    float Similar(const Model& text) const {
        const int nCommon = oracle::common_length(Whole(), text.Whole());
        return nCommon == 0 ? 0 : static_cast<float>(nCommon) / static_cast<float>(GetLength());
    }

    Model Elements(int nFirst, int nLast, Unit chDelimiter) const {
        std::vector<String> fields = Fields(chDelimiter);
        if (nLast >= 0) {
            fields.resize(static_cast<std::size_t>(nLast) + 1);
        }
        String result;
        for (auto n = static_cast<std::size_t>(nFirst); nFirst >= 0 && n < fields.size(); ++n) {
            result += n == static_cast<std::size_t>(nFirst) ? String() : String(1, chDelimiter);
            result += fields[n];
        }
        return Made(result);
    }
    Model Element(int n, Unit chDelimiter) const {
        return n < 0 ? Model() : Elements(n, n, chDelimiter);
    }
    int IndexOfElement(auto value, Unit chDelimiter) const {
        const auto fields = Fields(chDelimiter);
        const auto hit = std::find_if(fields.begin(), fields.end(), [&](const String& field) {
            return Made(field).Reads(value);
        });
        return hit == fields.end() ? -1 : static_cast<int>(hit - fields.begin());
    }

    bool ToCharacterSet(unsigned int nPage) { return Recode(0, nPage); }
    bool FromCharacterSet(unsigned int nPage) { return Recode(nPage, 0); }

    // Of wide texts alone.
    Model(const Narrow& text) : Model(FromCodePage(text, 0)) {}
    Model& operator=(const Narrow& text) {
        const Model decoded(text);
        return *this = decoded;
    }
    static Model FromCodePage(const Narrow& text, unsigned int nPage) {
        return Made(Model<char>::Decoded(text.Whole(), nPage));
    }
    Model<char> ToKelm(unsigned int nPage = 0) const {
        return Model<char>::Made(Model<char>::Encoded(Whole(), nPage));
    }

    String Whole() const { return {constBuffer(), static_cast<std::size_t>(GetLength())}; }
    /// Another one for each block, 0 without.
    long BlockNumber() const { return block_ == nullptr ? 0 : block_->nNumber; }
    bool IsLocked() const { return block_ != nullptr && block_->bLocked; }
    int Refs() const {
        return block_ == nullptr || block_->bLocked ? -1 : static_cast<int>(block_.use_count());
    }

    static std::u16string Decoded(const std::string& bytes, unsigned int nPage) {
        const std::string name = Converter(nPage);
        if (name.empty() || name == "UTF-8") {
            return name.empty() ? u"" : oracle::decode_utf8(bytes);
        }
        oracle::Iconv iconv(oracle::kUtf16, name.c_str());
        return oracle::decode(
            iconv, name == "GBK" ? 936 : 0,
            [&](char byte) { return oracle::is_lead(oracle::lead_ranges(name), byte); }, bytes);
    }
    static std::string Encoded(const std::u16string& text, unsigned int nPage) {
        const std::string name = Converter(nPage);
        if (name.empty() || name == "UTF-8") {
            return name.empty() ? "" : oracle::encode_utf8(text);
        }
        oracle::Iconv iconv(name.c_str(), oracle::kUtf16);
        return oracle::encode(iconv, name == "GBK" ? 936 : 0, text);
    }
    static Model Made(const String& text, int nCapacity = 0) {
        Model result;
        result.New(text, nCapacity);
        return result;
    }

private:
    static String Text(const Model& text) { return text.Whole(); }
    static String Text(Unit ch) { return String(1, ch); }
    static String Text(const Unit* pch) { return pch == nullptr ? String() : String(pch); }
    static String Text(const unsigned char* pch) {
        return Text(reinterpret_cast<const Unit*>(pch));
    }
    template <class Other>
    static String Text(const Other& other) {
        if constexpr (std::is_integral_v<Other>) {
            return From(other).Whole();
        } else {
            return Model(other).Whole();
        }
    }
    static String Widened(const std::string& text) { return {text.begin(), text.end()}; }
    static std::string Converter(unsigned int nPage) {
        const std::string own = oracle::codeset();
        return nPage == 0       ? own == "SHIFT_JIS" ? "CP932" : own
               : nPage == 65001 ? "UTF-8"
               : nPage == 28591 ? "ISO-8859-1"
                                : "";
    }
    static bool IsIn(Unit ch, int (*wide)(wint_t), int (*byte)(int)) {
        return sizeof(Unit) == 1 ? byte(static_cast<unsigned char>(ch)) != 0
                                 : wide(static_cast<wint_t>(ch)) != 0;
    }
    static bool IsSpaceUnit(Unit ch) { return IsIn(ch, std::iswspace, std::isspace); }
    static bool IsDigitUnit(Unit ch) { return ch >= '0' && ch <= '9'; }
    static auto In(const Unit* pchSet) {
        return [members = oracle::split(Text(pchSet))](const String& one) {
            return std::find(members.begin(), members.end(), one) != members.end();
        };
    }
    static auto FirstIn(const Unit* pchSet) {
        return [isIn = In(pchSet)](Unit ch) { return isIn(String(1, ch)); };
    }
    static auto IsUnit(Unit ch) {
        return [ch](Unit one) { return one == ch; };
    }
    static auto IsText(Unit ch) {
        return [ch](const String& one) { return one == String(1, ch); };
    }
    static Unit UpperOf(Unit ch) {
        return sizeof(Unit) == 1 ? static_cast<Unit>(std::toupper(static_cast<unsigned char>(ch)))
                                 : oracle::fold_one(String(1, ch), oracle::kUpper)[0];
    }

    bool IsShared() const { return Refs() > 1; }
    String UntilNul() const { return oracle::until_nul(Whole()); }
    String Lower() const { return folded(UntilNul(), oracle::kLower); }
    std::string Numeric() const { return oracle::numeric(Whole()); }

    void New(const String& text, int nCapacity = 0) {
        const int nLength = static_cast<int>(text.size());
        const int nMost = (INT_MAX - 12) / static_cast<int>(sizeof(Unit)) - 1;
        nCapacity = std::max(nCapacity, nLength);
        if (nCapacity > nMost) {
            throw std::bad_alloc();
        }
        block_ = nullptr;
        if (nCapacity > 0) {
            const std::size_t nUnits = static_cast<std::size_t>(nCapacity) + 1;
            static long nBlocks = 0;
            block_ = std::make_shared<Block>(
                Block{std::vector<Unit>(nUnits, Unit('#')), nLength, ++nBlocks});
            std::copy_n(text.c_str(), text.size() + 1, block_->units.begin());
        }
    }
    void Share(const Model& source) { block_ = source.block_; }
    void SetLength(int nLength) {
        if (block_ != nullptr) {
            block_->nLength = nLength;
            block_->units[static_cast<std::size_t>(nLength)] = 0;
        }
    }
    void CopyBeforeWrite() {
        if (IsShared()) {
            New(Whole());
        }
    }
    /// Into the block where it has room, else into one of exactly the length, without the lock.
    void Fill(const String& text) {
        if (static_cast<int>(text.size()) > GetAllocLength()) {
            New(text);
        } else if (block_ != nullptr) {
            std::copy_n(text.c_str(), text.size() + 1, block_->units.begin());
            block_->nLength = static_cast<int>(text.size());
        }
    }
    void Write(const String& text) {
        CopyBeforeWrite();
        Fill(text);
    }
    Model& Assign(const String& text) {
        if (IsShared()) {
            New(text);
        }
        Fill(text);
        return *this;
    }
    Model& Add(const String& text) {
        if (!text.empty()) {
            Write(Whole() + text);
        }
        return *this;
    }
    int Put(int nIndex, const String& text) {
        const auto at = static_cast<std::size_t>(std::clamp(nIndex, 0, GetLength()));
        Write(Whole().insert(at, text));
        return GetLength();
    }
    void Drop() {
        if (!IsEmpty()) {
            *this = Left(GetLength() - 1);
        }
    }

    String Behind(int nStart) const {
        return oracle::until_nul(Whole().substr(static_cast<std::size_t>(nStart)));
    }
    /// Where the first character passes the test; else the end, if that counts.
    template <class Test>
    int Place(int nStart, Test test, bool bEndCounts) const {
        int at = nStart;
        for (const String& one : oracle::split(Behind(nStart))) {
            if (test(one)) {
                return at;
            }
            at += static_cast<int>(one.size());
        }
        return bEndCounts ? at : -1;
    }
    Model Piece(int nFirst, int nCount) const {
        return Made(
            Whole().substr(static_cast<std::size_t>(nFirst), static_cast<std::size_t>(nCount)));
    }
    /// The text up to the first NUL by one as long.
    void Change(const String& text) { Write(text + Whole().substr(text.size())); }
    template <class Test>
    void TrimEnd(Test test) {
        String kept, text;
        for (const String& one : oracle::split(UntilNul())) {
            text += one;
            kept = test(one[0]) ? kept : text;
        }
        Write(kept == text ? Whole() : kept);
    }
    template <class Test>
    void TrimStart(Test test) {
        const String text = Whole();
        std::size_t at = 0;
        for (const String& one : oracle::split(text)) {
            if (!test(one[0])) {
                break;
            }
            at += one.size();
        }
        Write(text.substr(at));
    }
    template <class Test>
    int Lose(Test test) {
        String text = Whole();
        const auto nLost = std::erase_if(text, test);
        Write(text);
        return static_cast<int>(nLost);
    }
    template <class Search>
    int LoseHits(int nLength, Search search) {
        int nHits = 0;
        for (int at = search(); at >= 0; at = search(), ++nHits) {
            const Model copy = Left(at) + Mid(at + nLength);
            *this = copy;
        }
        return nHits;
    }

    void Print(int nAt, const String& text, std::size_t nEstimate) {
        const String whole = Whole().substr(0, static_cast<std::size_t>(nAt)) + text;
        GetBuffer(nAt + static_cast<int>(nEstimate));
        Write(whole);
        ReleaseBuffer();
    }
    void PrintOne(int nAt, const Unit* pchFormat, int n) {
        pchFormat[1] == 'c' ? Print(nAt, String(1, static_cast<Unit>(n)), 2)
                            : Print(nAt, Widened(std::to_string(n)), 32);
    }
    void PrintOne(int nAt, const Unit*, double d) {
        Print(nAt, Widened(oracle::printed("%400f", d)), 312);
    }
    void PrintOne(int nAt, const Unit*, const Unit* pch) {
        Print(nAt, pch, std::max<std::size_t>(1, String(pch).size()));
    }

    bool Is(int n, int (*test)(int)) const {
        return test(static_cast<unsigned char>(GetAt(n))) != 0;
    }
    bool All(int (*test)(int)) const {
        int n = 0;
        while (n < GetLength() && Is(n, test)) {
            ++n;
        }
        return n == GetLength();
    }
    std::vector<String> Fields(Unit chDelimiter) const {
        std::vector<String> fields(1);
        for (const Unit ch : Whole()) {
            if (ch == chDelimiter) {
                fields.emplace_back();
            } else {
                fields.back() += ch;
            }
        }
        return fields;
    }
    bool Reads(const Unit* pch) const { return Compare(pch) == 0; }
    bool Reads(double d) const { return Double() == d; }
    bool Reads(int n) const { return Int() == n; }
    bool Reads(Unit ch) const { return Char() == ch; }
    bool Reads(bool b) const { return Bool() == b; }
    bool Recode(unsigned int nFrom, unsigned int nTo) {
        const std::string bytes = Encoded(Decoded(Whole(), nFrom), nTo);
        if (!bytes.empty()) {
            Assign(oracle::until_nul(bytes));
        }
        return !bytes.empty();
    }

    std::shared_ptr<Block> block_;
};
