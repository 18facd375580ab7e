#pragma once

#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

#include "guarded.h"
#include "model.h"
#include "open.h"

/// Every operation of a class, written once for the class and for its model.
namespace operations {

/// What a failed allocation may leave of the object: Never stands for an operation that must not
/// allocate at all.
enum class Leaves { Never, Text, TextOrEmpty, TextOfSteps };

/// What one step works with. Numbers have their range by name.
template <class Unit>
struct Arguments {
    static constexpr Unit kLiteral[] = {'<', '>', 0};
    Unit ch;
    Unit ch2;
    int n;          // any
    int n2;         // any
    int nCount;     // small, also negative
    int nRoom;      // small, not negative
    int nIndex;     // within the text or at its end
    const Unit* f;  // this and the null ones may lie in the target's own text
    const Unit* g;  // elsewhere
    const Unit* fOrNull;
    const Unit* gOrNull;
    const char* narrow;
    unsigned int nPage;
    double d;
    bool bEnds;  // whether replacing f by g without case comes to an end

    /// A format at one end of its pages.
    const Unit* Pattern(const char* pchFormat) const {
        static GuardedPages<Unit> pages;
        return pages.At(nRoom % 2 == 0, {pchFormat, pchFormat + std::strlen(pchFormat)});
    }
};

/// The target, another value or the same, the place of a result, and a narrow value.
template <class Unit, class Value, class PlainValue, class Narrow>
struct Step : Arguments<Unit> {
    using Plain = PlainValue;

    Value& t;
    const Value& o;
    Value& r;
    Narrow& k;
    long double result = 0;

    const Plain& O() const { return o; }
    template <class... Sources>
    static Plain Make(Sources&&... sources) {
        return Plain(std::forward<Sources>(sources)...);
    }
    /// The sign of a comparison; what null gives is told.
    int Sign(int nOrder) const { return this->fOrNull == nullptr ? nOrder : oracle::sign(nOrder); }
    template <class Other>
    bool Is(const Other& returned) const {
        return static_cast<const Plain*>(&returned) == static_cast<const Plain*>(&t);
    }
};

template <class Text>
using RealStep = Step<typename Twin<Text>::Unit, Open<Text>, Text, Open<Kelm>>;
template <class Text, class Unit = typename Twin<Text>::Unit>
using ModelStep = Step<Unit, Model<Unit>, Model<Unit>, Model<char>>;

/// Keeps the result: a text in its place, anything else as a number.
template <class AnyStep, class Operation>
void perform(AnyStep& step, Operation operation) {
    using Result = decltype(operation(step));
    if constexpr (std::is_void_v<Result>) {
        operation(step);
    } else if constexpr (std::is_arithmetic_v<Result>) {
        // Kept in memory: some processors hand over more bits than the type has.
        const volatile Result result = operation(step);
        step.result = static_cast<long double>(result);
    } else if constexpr (std::is_same_v<Result, typename AnyStep::Plain>) {
        static_cast<Result&>(step.r) = operation(step);
    } else {
        static_cast<Result&>(step.k) = operation(step);
    }
}

/// `name` is the exported name without its class, T and C standing for the class and its unit.
template <class Text>
struct Row {
    const char* name;
    Leaves leaves;
    std::function<void(RealStep<Text>&)> run;
    std::function<void(ModelStep<Text>&)> expect;

    template <class Operation>
    Row(const char* pchName, Leaves what, Operation operation)
        : name(pchName),
          leaves(what),
          run([=](RealStep<Text>& step) { perform(step, operation); }),
          expect([=](ModelStep<Text>& step) { perform(step, operation); }) {}

    /// Arrays of its own, where texts are long, that no one looks at for null.
    bool TakesOtherArrays() const {
        const std::string_view text = name;
        return text.starts_with("Similar") || text.starts_with("NCRe") ||
               text.starts_with("IndexOf") || text.starts_with("Collate") ||
               text.ends_with("CharacterSet(unsigned int)");
    }
};

/// The six operators as bits.
template <class A, class B>
int orders(const A& a, const B& b) {
    return (a == b) | (a != b) << 1 | (a < b) << 2 | (a <= b) << 3 | (a > b) << 4 | (a >= b) << 5;
}
template <class Unit>
int orders(const Model<Unit>& a, const Unit* pch) {
    return orders(a.Compare(pch), 0);
}
template <class Unit>
int orders(const Unit* pch, const Model<Unit>& a) {
    return orders(0, a.Compare(pch));
}
template <class Unit>
int orders(const Model<Unit>& a, const Model<Unit>& b) {
    return orders(a, b.constBuffer());
}

template <class Text>
std::vector<Row<Text>> common_rows() {
    const auto never = Leaves::Never;
    const auto text = Leaves::Text;
    const auto empty = Leaves::TextOrEmpty;
    return {
        {"T()", never, [](auto& s) { return s.Make(); }},
        {"T(T const&)", text, [](auto& s) { return s.Make(s.O()); }},
        {"T(T&&)", never, [](auto& s) { s.r = s.Make(std::move(s.t)); }},
        {"T(C const*)", text, [](auto& s) { return s.Make(s.fOrNull); }},
        {"~T()", never, [](auto& s) { std::decay_t<decltype(s.t)> moved(std::move(s.t)); }},
        {"operator=(T const&)", empty, [](auto& s) { return s.Is(s.t = s.O()); }},
        {"operator=(T&&)", never, [](auto& s) { s.t = std::move(s.r); }},
        {"operator=(C)", empty, [](auto& s) { return s.Is(s.t = s.ch); }},
        {"operator=(C const*)", empty, [](auto& s) { return s.Is(s.t = s.f); }},
        {"Empty()", never, [](auto& s) { s.t.Empty(); }},
        {"Release()", never, [](auto& s) { s.t.Release(); }},
        {"SetAt(int, C)", text,
         [](auto& s) {
             if (s.nIndex < s.t.GetLength())
                 s.t.SetAt(s.nIndex, s.ch);
         }},
        {"GetAt(int)", never, [](auto& s) { return s.t.GetAt(s.nIndex) == s.t[s.nIndex]; }},
        {"operator[](int)", never, [](auto& s) { return s.t[s.nIndex]; }},
        {"Char()", never, [](auto& s) { return s.t.Char(); }},
        {"IsEmpty()", never, [](auto& s) { return s.t.IsEmpty(); }},
        {"GetByteLength()", never, [](auto& s) { return s.t.GetByteLength(); }},
        {"GetBuffer(int)", text,
         [](auto& s) {
             const int nLength = s.t.GetLength();
             auto* const p = s.t.GetBuffer(s.nRoom);
             std::fill(p + nLength, p + std::max(nLength, s.nRoom), s.ch);
             s.t.ReleaseBuffer(s.n % 2 == 0 ? s.nRoom : nLength);
         }},
        {"ReleaseBuffer(int)", text,
         [](auto& s) { s.t.ReleaseBuffer(s.n % 2 == 0 ? s.nIndex : -1); }},
        {"GetBufferSetLength(int)", text,
         [](auto& s) {
             const int nLength = s.t.GetLength();
             auto* const p = s.t.GetBufferSetLength(s.nRoom);
             std::fill(p + std::min(nLength, s.nRoom), p + s.nRoom, s.ch);
         }},
        {"FreeExtra()", text, [](auto& s) { s.t.FreeExtra(); }},
        {"Append(T const&)", text, [](auto& s) { return s.Is(s.t.Append(s.O())); }},
        {"Append(C)", text, [](auto& s) { return s.Is(s.t.Append(s.ch)); }},
        {"Append(C const*)", text, [](auto& s) { return s.Is(s.t.Append(s.f)); }},
        {"operator+=(T const&)", text, [](auto& s) { return s.Is(s.t += s.O()); }},
        {"operator+=(C)", text, [](auto& s) { return s.Is(s.t += s.ch); }},
        {"operator+=(C const*)", text, [](auto& s) { return s.Is(s.t += s.f); }},
        {"operator<<(T const&)", text, [](auto& s) { return s.Is(s.t << s.O()); }},
        {"operator<<(C)", text, [](auto& s) { return s.Is(s.t << s.ch); }},
        {"operator<<(C const*)", text, [](auto& s) { return s.Is(s.t << s.f); }},
        {"operator+(T const&, T const&)", text, [](auto& s) { return s.t + s.O(); }},
        {"operator+(T const&, C)", text, [](auto& s) { return s.O() + s.ch; }},
        {"operator+(C, T const&)", text, [](auto& s) { return s.ch + s.O(); }},
        {"operator+(T const&, C const*)", text, [](auto& s) { return s.O() + s.f; }},
        {"operator+(C const*, T const&)", text, [](auto& s) { return s.f + s.O(); }},
        {"Find(C)", never, [](auto& s) { return s.t.Find(s.ch); }},
        {"Find(C, int)", never, [](auto& s) { return s.t.Find(s.ch, s.n); }},
        {"Find(C const*)", never, [](auto& s) { return s.t.Find(s.fOrNull); }},
        {"Find(C const*, int)", never, [](auto& s) { return s.t.Find(s.fOrNull, s.n); }},
        {"ReverseFind(C)", never, [](auto& s) { return s.t.ReverseFind(s.ch); }},
        {"FindOneOf(C const*)", never, [](auto& s) { return s.t.FindOneOf(s.fOrNull); }},
        {"NCFind(C)", std::is_same_v<Text, Kelm> ? text : never,
         [](auto& s) { return s.t.NCFind(s.ch); }},
        {"NCFind(C const*)", text, [](auto& s) { return s.t.NCFind(s.fOrNull); }},
        {"Count(C)", never, [](auto& s) { return s.t.Count(s.ch); }},
        {"Count(C const*)", never, [](auto& s) { return s.t.Count(s.fOrNull); }},
        {"Mid(int)", text, [](auto& s) { return s.t.Mid(s.n); }},
        {"Mid(int, int)", text, [](auto& s) { return s.t.Mid(s.n, s.n2); }},
        {"Left(int)", text, [](auto& s) { return s.t.Left(s.n); }},
        {"Right(int)", text, [](auto& s) { return s.t.Right(s.n); }},
        {"MakeUpper()", text, [](auto& s) { s.t.MakeUpper(); }},
        {"MakeLower()", text, [](auto& s) { s.t.MakeLower(); }},
        {"MakeReverse()", text, [](auto& s) { s.t.MakeReverse(); }},
        {"TrimRight()", text, [](auto& s) { s.t.TrimRight(); }},
        {"TrimRight(C)", text, [](auto& s) { s.t.TrimRight(s.ch); }},
        {"TrimRight(C const*)", text, [](auto& s) { s.t.TrimRight(s.fOrNull); }},
        {"TrimLeft()", text, [](auto& s) { s.t.TrimLeft(); }},
        {"TrimLeft(C)", text, [](auto& s) { s.t.TrimLeft(s.ch); }},
        {"TrimLeft(C const*)", text, [](auto& s) { s.t.TrimLeft(s.fOrNull); }},
        {"Trim()", text, [](auto& s) { return s.t.Trim(); }},
        {"Replace(C, C)", text, [](auto& s) { return s.t.Replace(s.ch, s.ch2); }},
        {"Replace(C const*, C const*)", text,
         [](auto& s) { return s.t.Replace(s.fOrNull, s.gOrNull); }},
        {"Remove(C const*)", text, [](auto& s) { return s.t.Remove(s.fOrNull); }},
        {"Remove(C)", text, [](auto& s) { return s.t.Remove(s.ch); }},
        {"RemoveSpace()", text, [](auto& s) { return s.t.RemoveSpace(); }},
        {"RemovePunctuation()", text, [](auto& s) { return s.t.RemovePunctuation(); }},
        {"RemoveControl()", text, [](auto& s) { return s.t.RemoveControl(); }},
        {"NCRemove(C const*)", text, [](auto& s) { return s.t.NCRemove(s.fOrNull); }},
        {"NCRemove(C)", text, [](auto& s) { return s.t.NCRemove(s.ch); }},
        {"FromRepeat(C, int)", text, [](auto& s) { return s.t.FromRepeat(s.ch, s.nCount); }},
        {"Format(C const*, ...)", text,
         [](auto& s) {
             s.nCount < 0        ? s.t.Format(s.kLiteral)
             : s.nCount % 4 == 0 ? s.t.Format(s.Pattern("%d"), s.n)
             : s.nCount % 4 == 1 ? s.t.Format(s.Pattern("%s"), s.g)
             : s.nCount % 4 == 2 ? s.t.Format(s.Pattern("%c"), s.nRoom % 128)
                                 : s.t.Format(s.Pattern("%400f"), s.d);
         }},
        {"AppendFormat(C const*, ...)", text,
         [](auto& s) {
             s.nCount % 4 == 0   ? s.t.AppendFormat(s.Pattern("%d"), s.n)
             : s.nCount % 4 == 1 ? s.t.AppendFormat(s.Pattern("%s"), s.g)
             : s.nCount % 4 == 2 ? s.t.AppendFormat(s.Pattern("%c"), s.nRoom % 128)
                                 : s.t.AppendFormat(s.Pattern("%400f"), s.d);
         }},
        {"FromFormat(C const*, ...)", text,
         [](auto& s) {
             return s.nCount % 4 == 0   ? s.t.FromFormat(s.Pattern("%d"), s.n)
                    : s.nCount % 4 == 1 ? s.t.FromFormat(s.Pattern("%s"), s.g)
                    : s.nCount % 4 == 2 ? s.t.FromFormat(s.Pattern("%c"), s.nRoom % 3)
                                        : s.t.FromFormat(s.Pattern("%400f"), s.d);
         }},
        {"Bool()", never, [](auto& s) { return s.t.Bool(); }},
        {"Int()", never, [](auto& s) { return s.t.Int(); }},
        {"Long()", never, [](auto& s) { return s.t.Long(); }},
        {"Int64()", never, [](auto& s) { return s.t.Int64(); }},
        {"Double()", never, [](auto& s) { return s.t.Double(); }},
        {"From(int)", text, [](auto& s) { return s.t.From(s.n); }},
        {"From(long)", text, [](auto& s) { return s.t.From(long{s.n} * s.n2); }},
        {"From(unsigned int)", text,
         [](auto& s) { return s.t.From(static_cast<unsigned int>(s.n)); }},
        {"From(unsigned long)", text,
         [](auto& s) { return s.t.From(static_cast<unsigned long>(s.n)); }},
        {"From(long long)", text, [](auto& s) { return s.t.From(-1LL * s.n * s.n2); }},
        {"From(unsigned long long)", text,
         [](auto& s) { return s.t.From(static_cast<unsigned long long>(s.n2)); }},
        {"From(double)", text, [](auto& s) { return s.t.From(s.d); }},
        {"Compare(C const*)", never, [](auto& s) { return s.Sign(s.t.Compare(s.fOrNull)); }},
        {"CompareNoCase(C const*)", never,
         [](auto& s) { return s.Sign(s.t.CompareNoCase(s.fOrNull)); }},
        {"operator==(T const&, T const&)", never, [](auto& s) { return orders(s.O(), s.t); }},
        {"operator==(T const&, C const*)", never, [](auto& s) { return orders(s.O(), s.fOrNull); }},
        {"operator==(C const*, T const&)", never, [](auto& s) { return orders(s.fOrNull, s.O()); }},
        {"Elements(int, int, C)", text,
         [](auto& s) { return s.t.Elements(s.nCount, s.nRoom - 2, s.ch); }},
        {"Element(int, C)", text, [](auto& s) { return s.t.Element(s.nCount, s.ch); }},
    };
}

inline std::vector<Row<Kelm>> own_rows(const Kelm*) {
    const auto never = Leaves::Never;
    const auto text = Leaves::Text;
    const auto empty = Leaves::TextOrEmpty;
    return {
        {"T(C const*, int)", text,
         [](auto& s) {
             return s.Make(s.f, std::min(s.nCount, static_cast<int>(std::strlen(s.f)) + 1));
         }},
        {"T(unsigned C const*)", text,
         [](auto& s) { return s.Make(reinterpret_cast<const unsigned char*>(s.f)); }},
        {"operator=(unsigned C const*)", empty,
         [](auto& s) { return s.Is(s.t = reinterpret_cast<const unsigned char*>(s.f)); }},
        {"LockBuffer()", text, [](auto& s) { s.t.LockBuffer(); }},
        {"UnlockBuffer()", never,
         [](auto& s) {
             if (s.t.Refs() < 0)
                 s.t.UnlockBuffer();
         }},
        {"SpanIncluding(C const*)", text, [](auto& s) { return s.t.SpanIncluding(s.fOrNull); }},
        {"SpanExcluding(C const*)", text, [](auto& s) { return s.t.SpanExcluding(s.fOrNull); }},
        {"NCReplace(C const*, C const*)", Leaves::TextOfSteps,
         [](auto& s) { return s.bEnds ? s.t.NCReplace(s.fOrNull, s.gOrNull) : 0; }},
        {"Insert(int, C)", text, [](auto& s) { return s.t.Insert(s.n, s.ch); }},
        {"Insert(int, C const*)", text, [](auto& s) { return s.t.Insert(s.n, s.f); }},
        {"Delete(int, int)", text, [](auto& s) { return s.t.Delete(s.n, s.n2); }},
        {"Repeat(C, int)", empty, [](auto& s) { s.t.Repeat(s.ch, s.nCount); }},
        {"Repeat(C const*, int)", text,
         [](auto& s) { s.t.Repeat(s.f, *s.f == 0 ? s.n : s.nRoom % 8); }},
        {"operator--()", text, [](auto& s) { return --s.t; }},
        {"operator--(int)", text, [](auto& s) { return s.t--; }},
        {"ReplaceTabs(int)", text, [](auto& s) { return s.t.ReplaceTabs(s.nCount); }},
        {"FormatMsg(unsigned int, C const*, ...)", Leaves::TextOfSteps,
         [](auto& s) {
             s.t.FormatMsg(static_cast<unsigned int>(s.nRoom) + 1, s.Pattern("%d"), s.n);
         }},
        {"int T::To<int>()", never, [](auto& s) { return s.t.template To<int>(); }},
        {"unsigned int T::To<unsigned int>()", never,
         [](auto& s) { return s.t.template To<unsigned int>(); }},
        {"long T::To<long>()", never, [](auto& s) { return s.t.template To<long>(); }},
        {"unsigned long T::To<unsigned long>()", never,
         [](auto& s) { return s.t.template To<unsigned long>(); }},
        {"long long T::To<long long>()", never,
         [](auto& s) { return s.t.template To<long long>(); }},
        {"unsigned long long T::To<unsigned long long>()", never,
         [](auto& s) { return s.t.template To<unsigned long long>(); }},
        {"double T::To<double>()", never, [](auto& s) { return s.t.template To<double>(); }},
        {"float T::To<float>()", never, [](auto& s) { return s.t.template To<float>(); }},
        {"bool T::To<bool>()", never, [](auto& s) { return s.t.template To<bool>(); }},
        {"IsDigit()", never, [](auto& s) { return s.t.IsDigit(); }},
        {"IsDigit(int)", never, [](auto& s) { return s.t.IsDigit(s.nIndex); }},
        {"IsAlNum()", never, [](auto& s) { return s.t.IsAlNum(); }},
        {"IsAlNum(int)", never, [](auto& s) { return s.t.IsAlNum(s.nIndex); }},
        {"IsAlpha()", never, [](auto& s) { return s.t.IsAlpha(); }},
        {"IsAlpha(int)", never, [](auto& s) { return s.t.IsAlpha(s.nIndex); }},
        {"IsUpper()", never, [](auto& s) { return s.t.IsUpper(); }},
        {"IsUpper(int)", never, [](auto& s) { return s.t.IsUpper(s.nIndex); }},
        {"IsLower()", never, [](auto& s) { return s.t.IsLower(); }},
        {"IsLower(int)", never, [](auto& s) { return s.t.IsLower(s.nIndex); }},
        {"IsSpace()", never, [](auto& s) { return s.t.IsSpace(); }},
        {"IsSpace(int)", never, [](auto& s) { return s.t.IsSpace(s.nIndex); }},
        {"Collate(C const*)", never, [](auto& s) { return oracle::sign(s.t.Collate(s.f)); }},
        {"CollateNoCase(C const*)", text,
         [](auto& s) { return oracle::sign(s.t.CollateNoCase(s.f)); }},
        {"Similar(C const*)", text, [](auto& s) { return s.t.Similar(s.f); }},
        {"Similar(T const&)", text, [](auto& s) { return s.t.Similar(s.O()); }},
        {"IndexOfElement(C const*, C)", text,
         [](auto& s) { return s.t.IndexOfElement(s.fOrNull, s.ch); }},
        {"IndexOfElement(double, C)", text, [](auto& s) { return s.t.IndexOfElement(s.d, s.ch); }},
        {"IndexOfElement(int, C)", text,
         [](auto& s) { return s.t.IndexOfElement(s.nCount, s.ch); }},
        {"IndexOfElement(C, C)", text, [](auto& s) { return s.t.IndexOfElement(s.ch2, s.ch); }},
        {"IndexOfElement(bool, C)", text,
         [](auto& s) { return s.t.IndexOfElement(s.n % 2 == 0, s.ch); }},
        {"ToCharacterSet(unsigned int)", text, [](auto& s) { return s.t.ToCharacterSet(s.nPage); }},
        {"FromCharacterSet(unsigned int)", text,
         [](auto& s) { return s.t.FromCharacterSet(s.nPage); }},
    };
}

inline std::vector<Row<WString>> own_rows(const WString*) {
    const auto text = Leaves::Text;
    return {
        {"T(C*)", text, [](auto& s) { return s.Make(const_cast<char16_t*>(s.f)); }},
        {"T(char const*)", text, [](auto& s) { return s.Make(s.narrow); }},
        {"T(Kelm const&)", text, [](auto& s) { return s.Make(s.k); }},
        {"operator=(Kelm const&)", text, [](auto& s) { return s.Is(s.t = s.k); }},
        {"Append(Kelm const&)", text, [](auto& s) { return s.Is(s.t.Append(s.k)); }},
        {"operator+=(Kelm const&)", text, [](auto& s) { return s.Is(s.t += s.k); }},
        {"operator<<(Kelm const&)", text, [](auto& s) { return s.Is(s.t << s.k); }},
        {"operator<<(char const*)", text, [](auto& s) { return s.Is(s.t << s.narrow); }},
        {"operator<<(short)", text, [](auto& s) { return s.Is(s.t << static_cast<short>(s.n)); }},
        {"operator<<(unsigned short)", text,
         [](auto& s) { return s.Is(s.t << static_cast<unsigned short>(s.n)); }},
        {"operator<<(int)", text, [](auto& s) { return s.Is(s.t << s.n); }},
        {"operator<<(unsigned int)", text,
         [](auto& s) { return s.Is(s.t << static_cast<unsigned int>(s.n)); }},
        {"operator<<(long)", text, [](auto& s) { return s.Is(s.t << long{s.n} * s.n2); }},
        {"operator+(T const&, char const*)", text, [](auto& s) { return s.O() + s.narrow; }},
        {"operator+(T const&, Kelm const&)", text, [](auto& s) { return s.O() + s.k; }},
        {"FromCodePage(Kelm const&, unsigned int)", text,
         [](auto& s) { return s.t.FromCodePage(s.k, s.nPage); }},
        {"FromCodePage(char const*, unsigned int)", text,
         [](auto& s) { return s.t.FromCodePage(s.narrow == nullptr ? "" : s.narrow, s.nPage); }},
        {"ToKelm()", text, [](auto& s) { return s.t.ToKelm(); }},
        {"ToKelm(unsigned int)", text, [](auto& s) { return s.t.ToKelm(s.nPage); }},
    };
}

template <class Text>
const std::vector<Row<Text>>& rows() {
    static const std::vector<Row<Text>> all = [] {
        auto result = common_rows<Text>();
        const auto own = own_rows(static_cast<const Text*>(nullptr));
        result.insert(result.end(), own.begin(), own.end());
        return result;
    }();
    return all;
}

}  // namespace operations
