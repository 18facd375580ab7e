// Runs a program of operations, taken from the input, on both classes. Whatever the texts, numbers
// and states, a value keeps its invariants and its sharers keep their text.

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <iterator>
#include <new>
#include <string>

#include "Kelm.h"

namespace {

/// The input, read piece by piece; zeros behind its end.
class Input {
public:
    Input(const unsigned char* data, std::size_t size) : at_(data), end_(data + size) {}

    bool IsEmpty() const { return at_ == end_; }
    unsigned char Byte() { return at_ == end_ ? 0 : *at_++; }

    /// Mostly small, sometimes an end of the type.
    int Number() {
        static const int kEnds[] = {INT_MIN, INT_MIN + 1, -1, INT_MAX - 1, INT_MAX};
        const int n = Byte();
        return n >= 250 ? kEnds[n - 250 < 5 ? n - 250 : 4] : n - 3;
    }

    int Room() { return Byte() % 64; }

    template <class Unit>
    std::basic_string<Unit> Text() {
        std::basic_string<Unit> text;
        for (int n = Byte() % 12; n > 0; --n) {
            const int high = sizeof(Unit) > 1 && Byte() % 4 == 0 ? Byte() : 0;
            text += static_cast<Unit>(high * 256 + Byte());
        }
        return text;
    }

private:
    const unsigned char* at_;
    const unsigned char* end_;
};

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

template <class Text>
void check_invariants(const Text& text) {
    check(text.GetLength() >= 0 && text.GetLength() <= text.GetAllocLength());
    check(text.GetAt(text.GetLength()) == 0 && text.IsEmpty() == (text.GetLength() == 0));
    check(text.GetByteLength() == text.GetLength() * static_cast<int>(sizeof(text[0])));
}

void check_index(int n, int nLength) {
    check(n >= -1 && n <= nLength);
}

template <class Text, class Unit>
void search(Input& in, const Text& text) {
    const std::basic_string<Unit> find = in.Text<Unit>();
    const Unit ch = static_cast<Unit>(in.Byte());
    const int n = in.Number();
    const int nLength = text.GetLength();
    for (const int nFound :
         {text.Find(find.c_str()), text.Find(find.c_str(), n), text.Find(ch), text.Find(ch, n),
          text.ReverseFind(ch), text.FindOneOf(find.c_str()), text.NCFind(find.c_str()),
          text.NCFind(ch), text.Count(ch), text.Count(find.c_str())}) {
        check_index(nFound, nLength);
    }
    check_invariants(text.Mid(n, in.Number()));
    check_invariants(text.Mid(n));
    check_invariants(text.Left(n));
    check_invariants(text.Right(n));
    check_invariants(text.Trim());
    check_invariants(text.Element(n % 1000, ch));
    check_invariants(text.Elements(n % 1000, in.Number() % 1000, ch));
    const std::basic_string<Unit> other = in.Text<Unit>();
    check((text.Compare(other.c_str()) < 0) == (text < other.c_str()));
    check((text.CompareNoCase(text.constBuffer()) == 0) && text == text && !(text != text));
    check((text > other.c_str()) != (text <= other.c_str()) && text >= text.Left(n / 2));
    check(text.Int() == text.Long() || text.Int() == INT_MAX || text.Int() == INT_MIN);
    check(!text.Bool() || text.Int64() != 1 || text.Double() >= 1);
    check(Text::From(n).Int() == n && Text::From(1.5).Char() == '1');
    check_invariants(text + ch + find.c_str() + text);
}

template <class Text, class Unit>
void edit(Input& in, Text& text, const Text& other) {
    const std::basic_string<Unit> find = in.Text<Unit>();
    const std::basic_string<Unit> put = in.Text<Unit>();
    const Unit ch = static_cast<Unit>(in.Byte());
    switch (in.Byte() % 30) {
        case 0:
            text = other;
            break;
        case 1:
            text = find.c_str();
            break;
        case 2:
            text = ch;
            break;
        case 3:
            text = Text(other);
            break;
        case 4:
            text.Empty();
            break;
        case 5:
            text.Release();
            break;
        case 6:
            text.Append(other);
            break;
        case 7:
            text += ch;
            break;
        case 8:
            text << find.c_str();
            break;
        case 9:
            text.GetBuffer(in.Room());
            break;
        case 10:
            text.GetBufferSetLength(std::min(in.Room(), text.GetLength()));
            break;
        case 11:
            text.ReleaseBuffer();
            break;
        case 12:
            text.FreeExtra();
            break;
        case 13:
            text.MakeUpper();
            break;
        case 14:
            text.MakeLower();
            break;
        case 15:
            text.MakeReverse();
            break;
        case 16:
            text.TrimRight();
            break;
        case 17:
            text.TrimRight(ch);
            break;
        case 18:
            text.TrimRight(find.c_str());
            break;
        case 19:
            text.TrimLeft();
            break;
        case 20:
            text.TrimLeft(ch);
            break;
        case 21:
            text.TrimLeft(find.c_str());
            break;
        case 22:
            text.Replace(ch, static_cast<Unit>(in.Byte()));
            break;
        case 23:
            text.Replace(find.c_str(), put.c_str());
            break;
        case 24:
            text.Remove(find.c_str()), text.Remove(ch);
            break;
        case 25:
            text.RemoveSpace();
            break;
        case 26:
            text.RemovePunctuation();
            break;
        case 27:
            text.RemoveControl();
            break;
        case 28:
            text.NCRemove(find.c_str()), text.NCRemove(ch);
            break;
        default:
            if (!text.IsEmpty()) {
                text.SetAt(text.GetLength() - 1, ch);
            }
            text = Text::FromRepeat(ch, in.Room()) + text.Left(200);
    }
}

void edit_narrow(Input& in, Kelm& text) {
    const std::string find = in.Text<char>();
    const std::string put = in.Text<char>();
    const char ch = static_cast<char>(in.Byte());
    const int n = in.Number();
    switch (in.Byte() % 12) {
        case 0:
            text.Insert(n, ch);
            break;
        case 1:
            text.Insert(n, find.c_str());
            break;
        case 2:
            text.Delete(n, in.Number());
            break;
        case 3:
            text.Repeat(ch, in.Room());
            break;
        case 4:
            text.Repeat(find.c_str(), in.Room());
            break;
        case 5:
            text--, --text;
            break;
        case 6:
            text.ReplaceTabs(in.Room() - 2);
            break;
        case 7:
            if (text.GetLength() < 100) {
                text.NCReplace(find.c_str(), put.substr(0, find.size()).c_str());
            }
            break;
        case 8:
            text.LockBuffer();
            break;
        case 9:
            text.LockBuffer(), text.UnlockBuffer();
            break;
        case 10:
            text.ToCharacterSet(in.Byte() % 2 ? 932 : 1252);
            break;
        default:
            text.FromCharacterSet(in.Byte() % 2 ? 936 : 65001);
    }
    text.FormatMsg(static_cast<std::uint32_t>(n), "%.100s", Kelm(text).constBuffer());
    text.AppendFormat("%d", Kelm::FromFormat("%d", n).To<int>());
    check(text.IsAlNum() || !text.IsDigit() || !text.IsAlpha());
    check(!text.IsUpper() || !text.IsLower() || text.IsSpace(0));
    check_invariants(text.SpanIncluding(find.c_str()));
    check_invariants(text.SpanExcluding(find.c_str()));
    check_index(text.IndexOfElement(find.c_str(), ch), text.GetLength());
    check_index(text.IndexOfElement(n, ch), text.GetLength());
    const float score = text.Similar(find.c_str());
    check(score >= 0 && score <= 1 && text.Similar(text) == 1);
    check(text.Collate(text) == 0 && text.CollateNoCase(text) == 0);
}

template <class Text>
std::basic_string<std::decay_t<decltype(Text().Char())>> whole(const Text& text) {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}

template <class Text, class Unit>
void step(Input& in, Text& text, Text& other) {
    const Text sharer(text);
    const auto before = whole(sharer);
    search<Text, Unit>(in, text);
    edit<Text, Unit>(in, text, other);
    check_invariants(text);
    check(whole(sharer) == before);
    std::swap(text, other);
    if (text.GetLength() > 5000) {
        text.Empty();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Input in(data, size);
    static const char* const kLocales[] = {"C", "en_US.UTF-8", "ja_JP.SHIFT_JIS",
                                           "de_DE.ISO-8859-1", "ja_JP.EUC-JP"};
    std::setlocale(LC_ALL, kLocales[in.Byte() % std::size(kLocales)]);
    Kelm narrow[2];
    WString wide[2];
    try {
        while (!in.IsEmpty()) {
            step<Kelm, char>(in, narrow[0], narrow[1]);
            step<WString, char16_t>(in, wide[0], wide[1]);
            if (in.Byte() % 2 == 0) {
                edit_narrow(in, narrow[0]);
                check_invariants(narrow[0]);
            }
            wide[0] << narrow[0].Left(50) << in.Number();
            narrow[1] = wide[1].ToKelm();
        }
    } catch (const std::bad_alloc&) {
        return 0;  // a width or count beyond what a block can hold
    }
    return 0;
}
