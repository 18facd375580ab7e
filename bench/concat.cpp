#include "data.h"
#include "harness.h"

namespace bench {

namespace {

void PlusTwo(Workload& work) {
    std::string a = Words(work.Size());
    std::string b = Prose(work.Size());
    work.Add("kelm", [a = Kelm(a.c_str()), b = Kelm(b.c_str())] { return a + b; });
    work.Add("std_string", [a, b] { return a + b; });
#ifdef BENCH_QT
    work.Add("qt", [a = QtBytes(a), b = QtBytes(b)] { return QByteArray(a + b); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [a, b] { return GText(g_strconcat(a.c_str(), b.c_str(), nullptr)); });
#endif
}

void PlusTwoWide(Workload& work) {
    std::u16string a = Wide(Words(work.Size()));
    std::u16string b = Wide(Prose(work.Size()));
    work.Add("kelm", [a = WString(a.c_str()), b = WString(b.c_str())] { return a + b; });
    work.Add("std_u16string", [a, b] { return a + b; });
#ifdef BENCH_QT
    work.Add("qt", [a = QtText(a), b = QtText(b)] { return QString(a + b); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [a = IcuText(a), b = IcuText(b)] { return icu::UnicodeString(a + b); });
#endif
}

void PlusText(Workload& work) {
    std::string a = Words(work.Size());
    std::string b = Prose(work.Size());
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return a + b.c_str(); });
    work.Add("std_string", [a, b] { return a + b.c_str(); });
}

void PlusChar(Workload& work) {
    std::string a = Words(work.Size());
    work.Add("kelm", [a = Kelm(a.c_str())] { return a + '!'; });
    work.Add("std_string", [a] { return a + '!'; });
}

/// As many characters as the size says, one at a time, into room that is there.
void AppendChar(Workload& work) {
    int size = work.Size();
    work.Add("kelm", [size, room = Kelm()]() mutable {
        room.GetBuffer(size);
        room.ReleaseBuffer(0);
        for (int i = 0; i < size; i++)
            room.Append(static_cast<char>('a' + (i & 15)));
        return room[size - 1];
    });
    std::string text;
    text.reserve(static_cast<std::size_t>(size));
    work.Add("std_string", [text, size]() mutable {
        text.clear();
        for (int i = 0; i < size; i++)
            text += static_cast<char>('a' + (i & 15));
        return text[static_cast<std::size_t>(size - 1)];
    });
#ifdef BENCH_QT
    QByteArray bytes;
    bytes.reserve(size);
    work.Add("qt", [bytes, size]() mutable {
        bytes.resize(0);
        for (int i = 0; i < size; i++)
            bytes.append(static_cast<char>('a' + (i & 15)));
        return bytes.at(size - 1);
    });
#endif
}

void AppendCharWide(Workload& work) {
    int size = work.Size();
    work.Add("kelm", [size, room = WString()]() mutable {
        room.GetBuffer(size);
        room.ReleaseBuffer(0);
        for (int i = 0; i < size; i++)
            room.Append(static_cast<char16_t>(u'a' + (i & 15)));
        return room[size - 1];
    });
    std::u16string text;
    text.reserve(static_cast<std::size_t>(size));
    work.Add("std_u16string", [text, size]() mutable {
        text.clear();
        for (int i = 0; i < size; i++)
            text += static_cast<char16_t>(u'a' + (i & 15));
        return text[static_cast<std::size_t>(size - 1)];
    });
}

/// Pieces of twelve bytes into room that is there.
void AppendText(Workload& work) {
    int pieces = work.Size() / 12;
    std::string piece = Words(12);
    work.Add("kelm", [piece, pieces, room = Kelm()]() mutable {
        room.GetBuffer(12 * pieces);
        room.ReleaseBuffer(0);
        for (int i = 0; i < pieces; i++)
            room += piece.c_str();
        return room.GetLength();
    });
    std::string text;
    text.reserve(static_cast<std::size_t>(12 * pieces));
    work.Add("std_string", [text, piece, pieces]() mutable {
        text.clear();
        for (int i = 0; i < pieces; i++)
            text += piece.c_str();
        return text.size();
    });
}

/// Every append makes a new block of exactly the new length, where the peers grow by factors.
void AppendGrow(Workload& work) {
    int pieces = work.Size() / 12;
    std::string piece = Words(12);
    work.Add("kelm", [piece, pieces] {
        Kelm text;
        for (int i = 0; i < pieces; i++)
            text << piece.c_str();
        return text;
    });
    work.Add("std_string", [piece, pieces] {
        std::string text;
        for (int i = 0; i < pieces; i++)
            text += piece;
        return text;
    });
}

void WidePlusNarrow(Workload& work) {
    std::string narrow = Latin(work.Size());
    std::u16string wide = Wide(Words(work.Size()));
    work.Add("kelm", [a = WString(wide.c_str()), b = Kelm(narrow.c_str())] { return a + b; });
#ifdef BENCH_QT
    work.Add("qt", [a = QtText(wide), narrow] {
        return QString(a + QString::fromUtf8(narrow.data(), Count(narrow.size())));
    });
#endif
}

void WideAppendNumber(Workload& work) {
    int number = 12345678;
    work.Add("kelm", [number] {
        WString text(u"n=");
        text << number;
        return text;
    });
#ifdef BENCH_QT
    work.Add("qt", [number] {
        QString text(QStringLiteral("n="));
        text += QString::number(number);
        return text;
    });
#endif
    work.Add("std_to_string", [number] {
        std::u16string text(u"n=");
        for (char ch : std::to_string(number))
            text += static_cast<char16_t>(ch);
        return text;
    });
}

}  // namespace

void AddConcat(Suite& suite) {
    const std::vector<int> sizes = {kSmall, kMedium, kLarge};
    suite.Add("plus", sizes, PlusTwo);
    suite.Add("plus_wide", sizes, PlusTwoWide);
    suite.Add("plus_text", sizes, PlusText);
    suite.Add("plus_char", sizes, PlusChar);
    suite.Add("append_char", {kMedium, kLarge}, AppendChar);
    suite.Add("append_char_wide", {kMedium, kLarge}, AppendCharWide);
    suite.Add("append_text", {kMedium, kLarge}, AppendText);
    suite.Add("append_grow", {kMedium}, AppendGrow);
    suite.Add("wide_plus_narrow", sizes, WidePlusNarrow);
    suite.Add("wide_append_number", {kSmall}, WideAppendNumber);
}

}  // namespace bench
