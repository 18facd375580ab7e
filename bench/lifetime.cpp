#include "data.h"
#include "harness.h"

namespace bench {

namespace {

void CopyDestroy(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [a = Kelm(text.c_str())] { return Kelm(a); });
    auto block = std::make_shared<BareCount::Block>(1, text);
    work.Add("atomic_pair", [block] { return BareCount(block.get()); });
    work.Add("std_string", [a = text] { return std::string(a); });
    work.Add("shared_ptr",
             [a = std::make_shared<const std::string>(text)] { return SharedText(a); });
#ifdef BENCH_QT
    work.Add("qt", [a = QtBytes(text)] { return QByteArray(a); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [a = GSharedText(text)] { return GSharedText(a); });
#endif
}

void CopyDestroyWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.Add("kelm", [a = WString(text.c_str())] { return WString(a); });
    auto block = std::make_shared<BareCount::Block>(1, Words(work.Size()));
    work.Add("atomic_pair", [block] { return BareCount(block.get()); });
    work.Add("std_u16string", [a = text] { return std::u16string(a); });
#ifdef BENCH_QT
    work.Add("qt", [a = QtText(text)] { return QString(a); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [a = IcuText(text)] { return icu::UnicodeString(a); });
#endif
}

void ConstructDestroy(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [text] { return Kelm(text.c_str()); });
    work.Add("new_memcpy", [text] { return RawBlock<char>(text.c_str(), text.size()); });
    work.Add("strlen_new_memcpy",
             [text] { return RawBlock<char>(text.c_str(), std::strlen(text.c_str())); });
    work.Add("std_string", [text] { return std::string(text.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [text] { return QByteArray(text.c_str()); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text] { return GText(g_strdup(text.c_str())); });
#endif
}

void ConstructLength(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [text] { return Kelm(text.data(), Count(text.size())); });
    work.Add("new_memcpy", [text] { return RawBlock<char>(text.data(), text.size()); });
    work.Add("std_string", [text] { return std::string(text.data(), text.size()); });
#ifdef BENCH_QT
    work.Add("qt", [text] { return QByteArray(text.data(), Count(text.size())); });
#endif
}

void ConstructDestroyWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.Add("kelm", [text] { return WString(text.c_str()); });
    work.Add("new_memcpy", [text] { return RawBlock<char16_t>(text.c_str(), text.size()); });
    work.Add("std_u16string", [text] { return std::u16string(text.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [text] { return QString::fromUtf16(text.c_str()); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [text] { return icu::UnicodeString(text.c_str()); });
#endif
}

/// There and back, so that the source has its text again.
template <class Text>
auto MoveBack(Text source) {
    return [source]() mutable {
        Text taken(std::move(source));
        source = std::move(taken);
        return source[0];
    };
}

void Move(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", MoveBack(Kelm(text.c_str())));
    work.Add("std_string", MoveBack(text));
}

void MoveWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.Add("kelm", MoveBack(WString(text.c_str())));
    work.Add("std_u16string", MoveBack(text));
}

/// Into a block that has the room already.
template <class Text, class Source>
auto AssignFrom(Source source) {
    return [source, target = Text(source.c_str())]() mutable {
        target = source.c_str();
        return target[0];
    };
}

void AssignText(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", AssignFrom<Kelm>(text));
    work.Add("std_string", AssignFrom<std::string>(text));
}

void AssignTextWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.Add("kelm", AssignFrom<WString>(text));
    work.Add("std_u16string", AssignFrom<std::u16string>(text));
}

template <class Text>
auto AssignShared(Text source) {
    return [source, target = Text()]() mutable {
        target = source;
        return target[0];
    };
}

void AssignCopy(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", AssignShared(Kelm(text.c_str())));
    work.Add("std_string", AssignShared(text));
}

void SetAt(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [a = Kelm(text.data(), Count(text.size()))]() mutable {
        for (int i = 0; i < a.GetLength(); i++)
            a.SetAt(i, 'x');
        return a[5];
    });
    work.Add("std_string", [a = text]() mutable {
        for (char& ch : a)
            ch = 'x';
        return a[5];
    });
}

void WriteShared(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [a = Kelm(text.c_str())] {
        Kelm b(a);
        b.SetAt(3, 'x');
        return b;
    });
    work.Add("std_string", [text] {
        std::string b(text);
        b[3] = 'x';
        return b;
    });
#ifdef BENCH_QT
    work.Add("qt", [a = QtBytes(text)] {
        QByteArray b(a);
        b[3] = 'x';
        return b;
    });
#endif
}

/// A buffer of the caller's size, filled from outside, cut to the text and then to its size.
void FillBuffer(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [text] {
        Kelm a;
        std::memcpy(a.GetBuffer(Count(2 * text.size())), text.data(), text.size());
        a.ReleaseBuffer(Count(text.size()));
        a.FreeExtra();
        return a;
    });
    work.Add("std_string", [text] {
        std::string a;
        a.resize(2 * text.size());
        std::memcpy(a.data(), text.data(), text.size());
        a.resize(text.size());
        a.shrink_to_fit();
        return a;
    });
}

void LockUnlock(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [a = Kelm(text.c_str())]() mutable {
        char first = *a.LockBuffer();
        a.UnlockBuffer();
        return first;
    });
    work.Add("std_string", [a = text]() mutable { return *a.data(); });
}

}  // namespace

void AddLifetime(Suite& suite) {
    const std::vector<int> sizes = {kSmall, kMedium, kLarge};
    suite.Add("copy_destroy", sizes, CopyDestroy);
    suite.Add("copy_destroy_wide", sizes, CopyDestroyWide);
    suite.Add("construct_destroy", sizes, ConstructDestroy);
    suite.Add("construct_destroy_length", sizes, ConstructLength);
    suite.Add("construct_destroy_wide", sizes, ConstructDestroyWide);
    suite.Add("move", {kMedium}, Move);
    suite.Add("move_wide", {kMedium}, MoveWide);
    suite.Add("assign_text", sizes, AssignText);
    suite.Add("assign_text_wide", sizes, AssignTextWide);
    suite.Add("assign_copy", sizes, AssignCopy);
    suite.Add("set_at", {kMedium}, SetAt);
    suite.Add("write_shared", sizes, WriteShared);
    suite.Add("fill_buffer", sizes, FillBuffer);
    suite.Add("lock_unlock", {kMedium}, LockUnlock);
}

}  // namespace bench
