#include "harness.h"
#include "texts.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};
constexpr const char* kPiece = "inserted";
constexpr std::size_t kPieceLength = 8;

/// Near the front, so that most of the text moves.
int EditIndex(int size) {
    return size / 4;
}

auto FreshRaw(const std::string& text, std::size_t extra) {
    return [text, extra] {
        RawBlock<char> block(text.size() + extra);
        std::memcpy(block.Data(), text.data(), text.size());
        block.SetLength(text.size());
        return block;
    };
}

void InsertRoom(Workload& work) {
    std::string text = Words(work.Size());
    int index = EditIndex(work.Size());
    auto at = static_cast<std::size_t>(index);
    work.AddInPlace("kelm", FreshKelm(text, kPieceLength),
                    [index](Kelm& value) { value.Insert(index, kPiece); });
    work.AddInPlace("memmove", FreshRaw(text, kPieceLength), [at](RawBlock<char>& value) {
        std::size_t length = value.View().size();
        char* gap = value.Data() + at;
        std::memmove(gap + kPieceLength, gap, length - at);
        std::memcpy(gap, kPiece, kPieceLength);
        value.SetLength(length + kPieceLength);
    });
    work.AddInPlace("std_string", FreshStd(text, kPieceLength),
                    [at](std::string& value) { value.insert(at, kPiece); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text, kPieceLength),
                    [index](QByteArray& value) { value.insert(index, kPiece); });
#endif
}

void InsertGrow(Workload& work) {
    std::string text = Words(work.Size());
    int index = EditIndex(work.Size());
    auto at = static_cast<std::size_t>(index);
    work.AddInPlace("kelm", FreshKelm(text), [index](Kelm& value) { value.Insert(index, kPiece); });
    work.AddInPlace("new_memcpy", FreshRaw(text, 0), [at](RawBlock<char>& value) {
        std::string_view old = value.View();
        RawBlock<char> block(old.size() + kPieceLength);
        std::memcpy(block.Data(), old.data(), at);
        std::memcpy(block.Data() + at, kPiece, kPieceLength);
        std::memcpy(block.Data() + at + kPieceLength, old.data() + at, old.size() - at);
        value.Swap(block);
    });
    work.AddInPlace("std_string", FreshStd(text),
                    [at](std::string& value) { value.insert(at, kPiece); });
}

void InsertChar(Workload& work) {
    std::string text = Words(work.Size());
    int index = EditIndex(work.Size());
    auto at = static_cast<std::size_t>(index);
    work.AddInPlace("kelm", FreshKelm(text, 1), [index](Kelm& value) { value.Insert(index, '#'); });
    work.AddInPlace("memmove", FreshRaw(text, 1), [at](RawBlock<char>& value) {
        std::size_t length = value.View().size();
        char* gap = value.Data() + at;
        std::memmove(gap + 1, gap, length - at);
        *gap = '#';
        value.SetLength(length + 1);
    });
    work.AddInPlace("std_string", FreshStd(text, 1),
                    [at](std::string& value) { value.insert(at, 1, '#'); });
}

void DeletePiece(Workload& work) {
    std::string text = Words(work.Size());
    int index = EditIndex(work.Size());
    auto at = static_cast<std::size_t>(index);
    work.AddInPlace("kelm", FreshKelm(text), [index](Kelm& value) { value.Delete(index, 5); });
    work.AddInPlace("memmove", FreshRaw(text, 0), [at](RawBlock<char>& value) {
        std::size_t length = value.View().size();
        char* gap = value.Data() + at;
        std::memmove(gap, gap + 5, length - at - 5);
        value.SetLength(length - 5);
    });
    work.AddInPlace("std_string", FreshStd(text), [at](std::string& value) { value.erase(at, 5); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text),
                    [index](QByteArray& value) { value.remove(index, 5); });
#endif
}

void DropLast(Workload& work) {
    std::string text = Words(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { --value; });
    work.AddInPlace("std_string", FreshStd(text), [](std::string& value) { value.pop_back(); });
}

void FromRepeat(Workload& work) {
    int size = work.Size();
    work.Add("kelm", [size] { return Kelm::FromRepeat('-', size); });
    work.Add("std_string", [size] { return std::string(static_cast<std::size_t>(size), '-'); });
#ifdef BENCH_QT
    work.Add("qt", [size] { return QByteArray(size, '-'); });
#endif
}

void FromRepeatWide(Workload& work) {
    int size = work.Size();
    work.Add("kelm", [size] { return WString::FromRepeat(u'-', size); });
    work.Add("std_u16string",
             [size] { return std::u16string(static_cast<std::size_t>(size), u'-'); });
#ifdef BENCH_QT
    work.Add("qt", [size] { return QString(size, QChar(u'-')); });
#endif
}

void RepeatText(Workload& work) {
    int count = work.Size() / 4;
    work.Add("kelm", [count] {
        Kelm text;
        text.Repeat("-=+=", count);
        return text;
    });
    work.Add("std_string", [count] {
        std::string text;
        text.reserve(static_cast<std::size_t>(4 * count));
        for (int i = 0; i < count; i++)
            text.append("-=+=");
        return text;
    });
#ifdef BENCH_QT
    work.Add("qt", [count, piece = QtBytes("-=+=")] { return piece.repeated(count); });
#endif
}

std::string ExpandTabs(const std::string& text, std::size_t width) {
    std::string result;
    for (char ch : text) {
        if (ch == '\t')
            result.append(width - result.size() % width, ' ');
        else
            result += ch;
    }
    return result;
}

void ReplaceTabs(Workload& work) {
    std::string text = WithHits(work.Size(), "\t", 20);
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.ReplaceTabs(8); });
    work.AddInPlace("std_string", FreshStd(text),
                    [](std::string& value) { value = ExpandTabs(value, 8); });
}

}  // namespace

void AddEdit(Suite& suite) {
    suite.Add("insert_room", kSizes, InsertRoom);
    suite.Add("insert_grow", kSizes, InsertGrow);
    suite.Add("insert_char", kSizes, InsertChar);
    suite.Add("delete", kSizes, DeletePiece);
    suite.Add("drop_last", {kSmall, kMedium}, DropLast);
    suite.Add("from_repeat", kSizes, FromRepeat);
    suite.Add("from_repeat_wide", kSizes, FromRepeatWide);
    suite.Add("repeat_text", kSizes, RepeatText);
    suite.Add("replace_tabs", {kMedium, kLarge}, ReplaceTabs);
}

}  // namespace bench
