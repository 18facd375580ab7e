// Every allocation of every exported operation is made to fail, alone and with all that follow.
// What comes out is std::bad_alloc, the object is as promised, its neighbour is untouched, nothing
// leaks.

#include <atomic>
#include <cctype>
#include <clocale>
#include <cstdarg>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <new>
#include <set>
#include <utility>
#include <vector>

#include "twins.h"

namespace {

struct Allocator {
    std::atomic<long> nLive{0};
    bool bArmed = false;
    bool bAndOn = false;
    long nCalls = 0;
    long nFail = 0;
} allocator;

void* allocate(std::size_t nSize) {
    if (allocator.bArmed) {
        ++allocator.nCalls;
        if (allocator.nFail != 0 && (allocator.bAndOn ? allocator.nCalls >= allocator.nFail
                                                      : allocator.nCalls == allocator.nFail)) {
            throw std::bad_alloc();
        }
    }
    void* p = std::malloc(nSize == 0 ? 1 : nSize);
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    ++allocator.nLive;
    return p;
}

void release(void* p) noexcept {
    allocator.nLive -= p != nullptr ? 1 : 0;
    std::free(p);
}

}  // namespace

void* operator new(std::size_t nSize) {
    return allocate(nSize);
}
void* operator new[](std::size_t nSize) {
    return allocate(nSize);
}
void operator delete(void* p) noexcept {
    release(p);
}
void operator delete[](void* p) noexcept {
    release(p);
}
void operator delete(void* p, std::size_t) noexcept {
    release(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    release(p);
}

namespace {

/// What a failed allocation may leave of the object's text.
enum class Leaves { Nothing, Text, TextOrEmpty, TextOfSteps };

/// `name` is the exported name without its class, T and C standing for the class and its unit.
template <class Text>
struct Row {
    const char* name;
    Leaves leaves;  // Nothing: the operation must not allocate at all on a private block
    std::function<void(Open<Text>&, const Open<Text>&)> run;
};

template <class TypeParam>
std::vector<Row<TypeParam>> common_rows() {
    using T = Open<TypeParam>;
    using O = const T;
    using C = typename Twin<TypeParam>::Unit;
    const auto never = Leaves::Nothing;
    const auto text = Leaves::Text;
    const auto empty = Leaves::TextOrEmpty;
    const C x = 'x';
    return {
        {"T()", never, [](T&, O&) { TypeParam(); }},
        {"T(T&&)", never, [](T& s, O&) { s = TypeParam(std::move(s)); }},
        {"T(C const*)", text, [](T&, O&) { TypeParam(T_("constructed")); }},
        {"T(T const&)", text, [](T& s, O&) { TypeParam copy(s); }},
        {"CopyUnshared(T const&)", text, [](T& s, O&) { TypeParam copy(s); }},
        {"DestroyUnshared()", never, [](T&, O&) { TypeParam(); }},
        {"operator=(T const&)", empty, [](T& s, O& o) { s = static_cast<const TypeParam&>(o); }},
        {"operator=(T&&)", text, [](T& s, O& o) { s = o + o; }},
        {"operator=(C)", empty, [](T& s, O&) { s = C('q'); }},
        {"operator=(C const*)", empty,
         [](T& s, O&) { s = T_("a text that is longer than any block before it"); }},
        {"Empty()", text, [](T& s, O&) { s.Empty(); }},
        {"Release()", text, [](T& s, O&) { static_cast<TypeParam&>(s).Release(); }},
        {"SetAt(int, C)", text, [=](T& s, O&) { s.SetAt(0, x); }},
        {"GetBuffer(int)", text, [](T& s, O&) { s.GetBuffer(99); }},
        {"ReleaseBuffer(int)", text, [](T& s, O&) { s.ReleaseBuffer(); }},
        {"GetBufferSetLength(int)", text, [](T& s, O&) { s.GetBufferSetLength(3); }},
        {"FreeExtra()", text, [](T& s, O&) { s.FreeExtra(); }},
        {"Append(T const&)", text, [](T& s, O& o) { s.Append(o); }},
        {"Append(C)", text, [=](T& s, O&) { s.Append(x); }},
        {"Append(C const*)", text, [](T& s, O&) { s.Append(T_("more")); }},
        {"operator+=(T const&)", text, [](T& s, O&) { s += s; }},
        {"operator+=(C)", text, [=](T& s, O&) { s += x; }},
        {"operator+=(C const*)", text, [](T& s, O&) { s += T_("more"); }},
        {"operator<<(T const&)", text, [](T& s, O& o) { s << o; }},
        {"operator<<(C)", text, [=](T& s, O&) { s << x; }},
        {"operator<<(C const*)", text, [](T& s, O&) { s << T_("more"); }},
        {"Find(C)", never, [=](T& s, O&) { s.Find(x); }},
        {"Find(C, int)", never, [=](T& s, O&) { s.Find(x, 2); }},
        {"Find(C const*)", never, [](T& s, O&) { s.Find(T_("wo")); }},
        {"Find(C const*, int)", never, [](T& s, O&) { s.Find(T_("wo"), 2); }},
        {"ReverseFind(C)", never, [=](T& s, O&) { s.ReverseFind(x); }},
        {"FindOneOf(C const*)", never, [](T& s, O&) { s.FindOneOf(T_("xyz")); }},
        {"NCFind(C)", never, [=](T& s, O&) { s.NCFind(x); }},
        {"NCFind(C const*)", text, [](T& s, O&) { s.NCFind(T_("WORLD")); }},
        {"Count(C)", never, [=](T& s, O&) { s.Count(x); }},
        {"Count(C const*)", never, [](T& s, O&) { s.Count(T_("o")); }},
        {"Mid(int)", text, [](T& s, O&) { s.Mid(2); }},
        {"Mid(int, int)", text, [](T& s, O&) { s.Mid(2, 3); }},
        {"Left(int)", text, [](T& s, O&) { s.Left(2); }},
        {"Right(int)", text, [](T& s, O&) { s.Right(2); }},
        {"MakeUpper()", text, [](T& s, O&) { s.MakeUpper(); }},
        {"MakeLower()", text, [](T& s, O&) { s.MakeLower(); }},
        {"MakeReverse()", text, [](T& s, O&) { s.MakeReverse(); }},
        {"TrimRight()", text, [](T& s, O&) { s.TrimRight(); }},
        {"TrimRight(C)", text, [=](T& s, O&) { s.TrimRight(x); }},
        {"TrimRight(C const*)", text, [](T& s, O&) { s.TrimRight(T_("x\t")); }},
        {"TrimLeft()", text, [](T& s, O&) { s.TrimLeft(); }},
        {"TrimLeft(C)", text, [](T& s, O&) { s.TrimLeft(C('h')); }},
        {"TrimLeft(C const*)", text, [](T& s, O&) { s.TrimLeft(T_("h")); }},
        {"Trim()", text, [](T& s, O&) { s.Trim(); }},
        {"Replace(C, C)", text, [=](T& s, O&) { s.Replace(C('o'), x); }},
        {"Replace(C const*, C const*)", text, [](T& s, O&) { s.Replace(T_("o"), T_("longer")); }},
        {"Remove(C const*)", text, [](T& s, O&) { s.Remove(T_("o")); }},
        {"Remove(C)", text, [](T& s, O&) { s.Remove(C('o')); }},
        {"RemoveSpace()", text, [](T& s, O&) { s.RemoveSpace(); }},
        {"RemovePunctuation()", text, [](T& s, O&) { s.RemovePunctuation(); }},
        {"RemoveControl()", text, [](T& s, O&) { s.RemoveControl(); }},
        {"NCRemove(C const*)", text, [](T& s, O&) { s.NCRemove(T_("O")); }},
        {"NCRemove(C)", text, [](T& s, O&) { s.NCRemove(C('O')); }},
        {"FromRepeat(C, int)", text, [=](T&, O&) { TypeParam::FromRepeat(x, 3); }},
        {"Format(C const*, ...)", text, [](T& s, O&) { s.Format(T_("%d %400f"), 1, 1.5); }},
        {"AppendFormat(C const*, ...)", text, [](T& s, O&) { s.AppendFormat(T_("%d"), 7); }},
        {"FromFormat(C const*, ...)", text, [](T&, O&) { T::FromFormat(T_("%d"), 7); }},
        {"Bool()", never, [](T& s, O&) { s.Bool(); }},
        {"Int()", never, [](T& s, O&) { s.Int(); }},
        {"Long()", never, [](T& s, O&) { s.Long(); }},
        {"Int64()", never, [](T& s, O&) { s.Int64(); }},
        {"Double()", never, [](T& s, O&) { s.Double(); }},
        {"From(int)", text, [](T&, O&) { TypeParam::From(1); }},
        {"From(long)", text, [](T&, O&) { TypeParam::From(1L); }},
        {"From(unsigned int)", text, [](T&, O&) { TypeParam::From(1U); }},
        {"From(unsigned long)", text, [](T&, O&) { TypeParam::From(1UL); }},
        {"From(long long)", text, [](T&, O&) { TypeParam::From(1LL); }},
        {"From(unsigned long long)", text, [](T&, O&) { TypeParam::From(1ULL); }},
        {"From(double)", text, [](T&, O&) { TypeParam::From(1.5); }},
        {"Compare(C const*)", never, [](T& s, O& o) { s.Compare(o); }},
        {"CompareNoCase(C const*)", never, [](T& s, O& o) { s.CompareNoCase(o); }},
        {"Elements(int, int, C)", text, [](T& s, O&) { s.Elements(0, 3, C(' ')); }},
        {"Element(int, C)", text, [](T& s, O&) { s.Element(1, C(' ')); }},
        {"operator+(T const&, T const&)", text, [](T& s, O& o) { s + o; }},
        {"operator+(T const&, C)", text, [=](T& s, O&) { s + x; }},
        {"operator+(C, T const&)", text, [=](T& s, O&) { x + s; }},
        {"operator+(T const&, C const*)", text, [](T& s, O&) { s + T_("more"); }},
        {"operator+(C const*, T const&)", text, [](T& s, O&) { T_("more") + s; }},
    };
}

std::vector<Row<Kelm>> rows(const Kelm*) {
    using T = Open<Kelm>;
    using O = const T;
    const auto never = Leaves::Nothing;
    const auto text = Leaves::Text;
    const auto empty = Leaves::TextOrEmpty;
    std::vector<Row<Kelm>> result = common_rows<Kelm>();
    const std::vector<Row<Kelm>> own = {
        {"T(C const*, int)", text, [](T&, O&) { Kelm("abc", 2); }},
        {"T(unsigned C const*)", text,
         [](T&, O& o) { Kelm(reinterpret_cast<const unsigned char*>(o.constBuffer())); }},
        {"operator=(unsigned C const*)", empty,
         [](T& s, O& o) { s = reinterpret_cast<const unsigned char*>(o.constBuffer()); }},
        {"LockBuffer()", text, [](T& s, O&) { s.LockBuffer(); }},
        {"UnlockBuffer()", text, [](T& s, O&) { s.LockBuffer(), s.UnlockBuffer(); }},
        {"SpanIncluding(C const*)", text, [](T& s, O&) { s.SpanIncluding("hel"); }},
        {"SpanExcluding(C const*)", text, [](T& s, O&) { s.SpanExcluding(" "); }},
        {"NCReplace(C const*, C const*)", Leaves::TextOfSteps,
         [](T& s, O&) { s.NCReplace("O", "--"); }},
        {"Insert(int, C)", text, [](T& s, O&) { s.Insert(1, 'x'); }},
        {"Insert(int, C const*)", text, [](T& s, O&) { s.Insert(1, "more"); }},
        {"Delete(int, int)", text, [](T& s, O&) { s.Delete(1, 2); }},
        {"Repeat(C, int)", empty, [](T& s, O&) { s.Repeat('x', 70); }},
        {"Repeat(C const*, int)", text, [](T& s, O&) { s.Repeat("xy", 30); }},
        {"operator--()", text, [](T& s, O&) { --s; }},
        {"operator--(int)", text, [](T& s, O&) { s--; }},
        {"ReplaceTabs(int)", text, [](T& s, O&) { s.ReplaceTabs(8); }},
        {"FormatMsg(unsigned int, C const*, ...)", Leaves::TextOfSteps,
         [](T& s, O&) { s.FormatMsg(5, "%d", 1); }},
        {"int T::To<int>()", never, [](T& s, O&) { s.To<int>(); }},
        {"unsigned int T::To<unsigned int>()", never, [](T& s, O&) { s.To<unsigned>(); }},
        {"long T::To<long>()", never, [](T& s, O&) { s.To<long>(); }},
        {"unsigned long T::To<unsigned long>()", never, [](T& s, O&) { s.To<unsigned long>(); }},
        {"long long T::To<long long>()", never, [](T& s, O&) { s.To<long long>(); }},
        {"unsigned long long T::To<unsigned long long>()", never,
         [](T& s, O&) { s.To<unsigned long long>(); }},
        {"double T::To<double>()", never, [](T& s, O&) { s.To<double>(); }},
        {"float T::To<float>()", never, [](T& s, O&) { s.To<float>(); }},
        {"bool T::To<bool>()", never, [](T& s, O&) { s.To<bool>(); }},
        {"IsDigit()", never, [](T& s, O&) { s.IsDigit(); }},
        {"IsDigit(int)", never, [](T& s, O&) { s.IsDigit(0); }},
        {"IsAlNum()", never, [](T& s, O&) { s.IsAlNum(); }},
        {"IsAlNum(int)", never, [](T& s, O&) { s.IsAlNum(0); }},
        {"IsAlpha()", never, [](T& s, O&) { s.IsAlpha(); }},
        {"IsAlpha(int)", never, [](T& s, O&) { s.IsAlpha(0); }},
        {"IsUpper()", never, [](T& s, O&) { s.IsUpper(); }},
        {"IsUpper(int)", never, [](T& s, O&) { s.IsUpper(0); }},
        {"IsLower()", never, [](T& s, O&) { s.IsLower(); }},
        {"IsLower(int)", never, [](T& s, O&) { s.IsLower(0); }},
        {"IsSpace()", never, [](T& s, O&) { s.IsSpace(); }},
        {"IsSpace(int)", never, [](T& s, O&) { s.IsSpace(0); }},
        {"Collate(C const*)", never, [](T& s, O& o) { s.Collate(o); }},
        {"CollateNoCase(C const*)", text,
         [](T& s, O&) { s.CollateNoCase(Kelm::FromRepeat('h', 5000)); }},
        {"Similar(C const*)", text, [](T& s, O&) { s.Similar("xyz"); }},
        {"Similar(T const&)", text,
         [](T& s, O&) { (s + Kelm::FromRepeat('h', 999)).Similar(Kelm::FromRepeat('o', 9999)); }},
        {"IndexOfElement(C const*, C)", never, [](T& s, O&) { s.IndexOfElement("42", ' '); }},
        {"IndexOfElement(double, C)", text,
         [](T& s, O&) { (s + Kelm::FromRepeat('h', 999)).IndexOfElement(42.5, ' '); }},
        {"IndexOfElement(int, C)", never, [](T& s, O&) { s.IndexOfElement(42, ' '); }},
        {"IndexOfElement(C, C)", never, [](T& s, O&) { s.IndexOfElement('4', ' '); }},
        {"IndexOfElement(bool, C)", never, [](T& s, O&) { s.IndexOfElement(true, ' '); }},
        {"ToCharacterSet(unsigned int)", text, [](T& s, O&) { s.ToCharacterSet(1252); }},
        {"FromCharacterSet(unsigned int)", text, [](T& s, O&) { s.FromCharacterSet(500); }},
        {"Token::Token(T const&, bool)", never, [](T& s, O&) { Kelm::Token token(s); }},
        {"Token::Current()", text, [](T& s, O&) { Kelm::Token(s).Current(); }},
        {"Token::operator()()", text, [](T& s, O&) { Kelm::Token{s}(); }},
        {"Token::operator T()", text, [](T& s, O&) { Kelm copy = Kelm::Token(s); }},
        {"Token::Next()", never, [](T& s, O&) { Kelm::Token(s).Next(); }},
        {"Token::Next(C)", never, [](T& s, O&) { Kelm::Token(s).Next(','); }},
        {"Token::NextLine()", never, [](T& s, O&) { Kelm::Token(s).NextLine(); }},
        {"Token::operator++()", never, [](T& s, O&) { ++Kelm::Token(s); }},
        {"Token::operator++(int)", never, [](T& s, O&) { Kelm::Token(s)++; }},
        {"Token::operator bool()", never, [](T& s, O&) { (void)!Kelm::Token(s); }},
        {"Token::IsValid()", never, [](T& s, O&) { Kelm::Token(s).IsValid(); }},
        {"Token::SkipPunctuation(bool)", never,
         [](T& s, O&) { Kelm::Token(s).SkipPunctuation(true); }},
        {"Token::Restart()", never, [](T& s, O&) { Kelm::Token(s).Restart(); }},
        {"Token::Clear()", never, [](T& s, O&) { Kelm::Token(s).Clear(); }},
    };
    result.insert(result.end(), own.begin(), own.end());
    return result;
}

std::vector<Row<WString>> rows(const WString*) {
    using T = Open<WString>;
    using O = const T;
    const auto text = Leaves::Text;
    std::vector<Row<WString>> result = common_rows<WString>();
    const std::vector<Row<WString>> own = {
        {"T(C*)", text, [](T&, O& o) { WString copy(const_cast<char16_t*>(o.constBuffer())); }},
        {"T(char const*)", text, [](T&, O&) { WString("narrow"); }},
        {"T(Kelm const&)", text, [](T&, O&) { WString(Kelm("narrow")); }},
        {"operator=(Kelm const&)", text, [](T& s, O&) { s = Kelm("narrow"); }},
        {"Append(Kelm const&)", text, [](T& s, O&) { s.Append(Kelm("narrow")); }},
        {"operator+=(Kelm const&)", text, [](T& s, O&) { s += Kelm("narrow"); }},
        {"operator<<(Kelm const&)", text, [](T& s, O&) { s << Kelm("narrow"); }},
        {"operator<<(char const*)", text, [](T& s, O&) { s << "narrow"; }},
        {"operator<<(short)", text, [](T& s, O&) { s << short{1}; }},
        {"operator<<(unsigned short)", text, [](T& s, O&) { s << static_cast<unsigned short>(1); }},
        {"operator<<(int)", text, [](T& s, O&) { s << 1; }},
        {"operator<<(unsigned int)", text, [](T& s, O&) { s << 1U; }},
        {"operator<<(long)", text, [](T& s, O&) { s << 1L; }},
        {"operator+(T const&, char const*)", text, [](T& s, O&) { s + "narrow"; }},
        {"operator+(T const&, Kelm const&)", text, [](T& s, O&) { s + Kelm("narrow"); }},
        {"FromCodePage(Kelm const&, unsigned int)", text,
         [](T&, O&) { WString::FromCodePage(Kelm("narrow"), 28591); }},
        {"FromCodePage(char const*, unsigned int)", text,
         [](T&, O&) { WString::FromCodePage("narrow", 65001); }},
        {"ToKelm()", text, [](T& s, O&) { s.ToKelm(); }},
        {"ToKelm(unsigned int)", text, [](T& s, O&) { s.ToKelm(28591); }},
    };
    result.insert(result.end(), own.begin(), own.end());
    return result;
}

enum class State { Private, Room, Shared, Locked };

void lock(Open<Kelm>& text) {
    text.LockBuffer();
}
void lock(Open<WString>&) {}

/// One object in a state with a neighbour that may share its block, and one run of an operation.
template <class TypeParam>
struct Attempt {
    Open<TypeParam> text{T_("hello world, 42 xx\t")};
    Open<TypeParam> neighbour{T_("neighbour")};
    Open<TypeParam> other{T_(" and some other text")};

    explicit Attempt(State state) {
        if (state == State::Room) {
            text.GetBuffer(60);
        } else if (state == State::Shared) {
            neighbour = static_cast<const TypeParam&>(text);
        } else if (state == State::Locked) {
            lock(text);
        }
    }

    /// Whether an allocation failed.
    bool Run(const Row<TypeParam>& row, long nFail, bool bAndOn) {
        const auto before = whole(text);
        const auto beside = whole(neighbour);
        bool bFailed = false;
        allocator.nCalls = 0;
        allocator.nFail = nFail;
        allocator.bAndOn = bAndOn;
        allocator.bArmed = true;
        try {
            row.run(text, other);
        } catch (const std::bad_alloc&) {
            bFailed = true;
        }
        allocator.bArmed = false;
        EXPECT_EQ(whole(neighbour), beside) << row.name;
        EXPECT_EQ(text[text.GetLength()], 0) << row.name;
        if (bFailed) {
            const bool bEmpty = row.leaves == Leaves::TextOrEmpty && text.IsEmpty();
            const bool bSteps = row.leaves == Leaves::TextOfSteps;
            EXPECT_TRUE(bEmpty || bSteps || whole(text) == before) << row.name;
            EXPECT_NE(row.leaves, Leaves::Nothing) << row.name;
            row.run(text, other);
        }
        return bFailed;
    }
};

template <class TypeParam>
class Allocation : public ::testing::Test {};
TYPED_TEST_SUITE(Allocation, Twins);

/// The name with each word that is this letter alone replaced.
std::string with_word(const std::string& name, char letter, const std::string& word) {
    const auto is_part = [](char ch) { return std::isalnum(static_cast<unsigned char>(ch)) != 0; };
    std::string result;
    for (std::size_t n = 0; n < name.size(); ++n) {
        const bool bAlone =
            (n == 0 || !is_part(name[n - 1])) && (n + 1 == name.size() || !is_part(name[n + 1]));
        if (name[n] == letter && bAlone) {
            result += word;
        } else {
            result += name[n];
        }
    }
    return result;
}

/// The row's name as the list of exports has it, qualified or not.
std::vector<std::string> export_names(const std::string& name, const std::string& text,
                                      const std::string& unit) {
    const std::string full = with_word(with_word(name, 'C', unit), 'T', text);
    return {full, text + "::" + full};
}

/// What the rows reach through other members, and what only reads.
bool is_covered_by_others(const std::string& name) {
    static const std::set<std::string> kNames = {"Init",
                                                 "AllocBuffer",
                                                 "FreeData",
                                                 "Release",
                                                 "CopyBeforeWrite",
                                                 "AssignCopy",
                                                 "AllocCopy",
                                                 "AllocBeforeWrite",
                                                 "MoveAssign",
                                                 "ConcatCopy",
                                                 "ConcatInPlace",
                                                 "FormatV",
                                                 "GetFormattedLength",
                                                 "VFormat",
                                                 "AppendFormatV",
                                                 "FindChar",
                                                 "_FromCodePage",
                                                 "FindWhitespace",
                                                 "operator==",
                                                 "operator!=",
                                                 "operator<",
                                                 "operator<=",
                                                 "operator>",
                                                 "operator>=",
                                                 "~Kelm",
                                                 "~WString",
                                                 "GetData",
                                                 "GetLength",
                                                 "GetAllocLength",
                                                 "GetByteLength",
                                                 "IsEmpty",
                                                 "constBuffer",
                                                 "operator char const*",
                                                 "operator char16_t const*",
                                                 "GetAt",
                                                 "operator[]",
                                                 "Char"};
    const std::string head = name.substr(0, name.find('('));
    const auto colon = head.rfind(':');
    return kNames.count(colon == std::string::npos ? head : head.substr(colon + 1)) != 0;
}

template <class TypeParam>
void drop_covered(std::set<std::string>& names, const char* text, const char* unit) {
    for (const auto& row : rows(static_cast<const TypeParam*>(nullptr))) {
        std::size_t nDropped = 0;
        for (const std::string& name : export_names(row.name, text, unit)) {
            nDropped += names.erase(name);
        }
        EXPECT_EQ(nDropped, 1U) << row.name << " is no export of " << text;
    }
}

}  // namespace

TYPED_TEST(Allocation, FailsWithoutHarm) {
    for (const auto& row : rows(static_cast<const TypeParam*>(nullptr))) {
        for (const State state : {State::Private, State::Room, State::Shared, State::Locked}) {
            for (const bool bAndOn : {false, true}) {
                long nFail = 1;
                bool bFailed = true;
                const long nLive = allocator.nLive;
                for (; bFailed && nFail < 50; ++nFail) {
                    bFailed = Attempt<TypeParam>(state).Run(row, nFail, bAndOn);
                }
                EXPECT_FALSE(bFailed) << row.name << " never succeeds";
                EXPECT_EQ(allocator.nLive, nLive) << row.name << " leaks";
            }
        }
    }
}

TEST(NarrowText, IsDecodedToWhereItStays) {
    const auto allocations = [](auto make) {
        allocator.nCalls = allocator.nFail = 0;
        allocator.bArmed = true;
        const WString made = make();
        allocator.bArmed = false;
        EXPECT_EQ(made.GetAllocLength(), made.GetLength());
        return allocator.nCalls;
    };
    const WString text(u"wide");
    EXPECT_EQ(allocations([] { return WString("narrow"); }), 1);
    EXPECT_EQ(allocations([&] { return text + "narrow"; }), 1);
    EXPECT_EQ(allocations([&] { return text + static_cast<const char*>(nullptr); }), 1);
}

TEST(AllocationRows, CoverEveryExport) {
    std::set<std::string> names;
    std::ifstream list(KELM_EXPORTS);
    for (std::string line; std::getline(list, line);) {
        if (line.ends_with(" const")) {
            line.resize(line.size() - 6);
        }
        names.insert(line);
    }
    ASSERT_GT(names.size(), 200U);
    drop_covered<Kelm>(names, "Kelm", "char");
    drop_covered<WString>(names, "WString", "char16_t");
    for (const std::string& name : names) {
        EXPECT_TRUE(is_covered_by_others(name)) << name << " is not tried";
    }
}
