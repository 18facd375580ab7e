#include "data.h"
#include "harness.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};

/// A piece of the work's size, from a text that has a little more at both ends.
constexpr int kMargin = 5;

void MidPiece(Workload& work) {
    std::string text = Words(work.Size() + 2 * kMargin);
    int size = work.Size();
    auto length = static_cast<std::size_t>(size);
    work.Add("kelm", [text = Kelm(text.c_str()), size] { return text.Mid(kMargin, size); });
    work.Add("new_memcpy", [text, length] { return RawBlock<char>(&text[kMargin], length); });
    work.Add("std_string", [text, length] { return text.substr(kMargin, length); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text), size] { return text.mid(kMargin, size); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text, length] { return GText(g_strndup(&text[kMargin], length)); });
#endif
}

void LeftPiece(Workload& work) {
    std::string text = Words(work.Size() + kMargin);
    int size = work.Size();
    auto length = static_cast<std::size_t>(size);
    work.Add("kelm", [text = Kelm(text.c_str()), size] { return text.Left(size); });
    work.Add("new_memcpy", [text, length] { return RawBlock<char>(text.data(), length); });
    work.Add("std_string", [text, length] { return text.substr(0, length); });
}

void RightPiece(Workload& work) {
    std::string text = Words(work.Size() + kMargin);
    int size = work.Size();
    auto length = static_cast<std::size_t>(size);
    work.Add("kelm", [text = Kelm(text.c_str()), size] { return text.Right(size); });
    work.Add("new_memcpy", [text, length] { return RawBlock<char>(&text[kMargin], length); });
    work.Add("std_string", [text, length] { return text.substr(kMargin, length); });
}

void MidPieceWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size() + 2 * kMargin));
    int size = work.Size();
    auto length = static_cast<std::size_t>(size);
    work.Add("kelm", [text = WString(text.c_str()), size] { return text.Mid(kMargin, size); });
    work.Add("new_memcpy", [text, length] { return RawBlock<char16_t>(&text[kMargin], length); });
    work.Add("std_u16string", [text, length] { return text.substr(kMargin, length); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text), size] { return text.mid(kMargin, size); });
#endif
}

void Whole(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.Mid(0); });
    work.Add("kelm_left", [text = Kelm(text.c_str())] { return text.Left(1 << 30); });
    work.Add("kelm_copy", [text = Kelm(text.c_str())] { return Kelm(text); });
    work.Add("std_string", [text] { return text.substr(0); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] { return text.mid(0); });
#endif
}

void SpanIncluding(Workload& work) {
    std::string text = Words(work.Size());
    text.back() = '#';
    std::string set = "abcdefghijklmnopqrstuvwxyz .";
    work.Add("kelm", [text = Kelm(text.c_str()), set] { return text.SpanIncluding(set.c_str()); });
    work.Add("strspn", [text, set] {
        return RawBlock<char>(text.data(), std::strspn(text.c_str(), set.c_str()));
    });
    work.Add("std_string", [text, set] { return text.substr(0, text.find_first_not_of(set)); });
}

void SpanExcluding(Workload& work) {
    std::string text = Words(work.Size());
    text.back() = '#';
    std::string set = "#$%@";
    work.Add("kelm", [text = Kelm(text.c_str()), set] { return text.SpanExcluding(set.c_str()); });
    work.Add("strcspn", [text, set] {
        return RawBlock<char>(text.data(), std::strcspn(text.c_str(), set.c_str()));
    });
    work.Add("std_string", [text, set] { return text.substr(0, text.find_first_of(set)); });
}

}  // namespace

void AddExtract(Suite& suite) {
    suite.Add("mid", kSizes, MidPiece);
    suite.Add("mid_wide", kSizes, MidPieceWide);
    suite.Add("left", kSizes, LeftPiece);
    suite.Add("right", kSizes, RightPiece);
    suite.Add("mid_whole", kSizes, Whole);
    suite.Add("span_including", kSizes, SpanIncluding);
    suite.Add("span_excluding", kSizes, SpanExcluding);
}

}  // namespace bench
