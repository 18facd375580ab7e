#include "report.h"

#include <algorithm>
#include <cstdio>

#include "../shared/terminal.h"

namespace {

int WidthOf(const std::vector<Word>& words) {
    int width = Columns("Word");
    for (const Word& word : words) {
        width = std::max(width, Columns(word.text));
    }
    return width;
}

}  // namespace

void Print(const Kelm& line) {
    std::printf("%s\n", line.constBuffer());
}

void PrintHeading(const Kelm& line) {
    static bool isTop = true;
    Print(isTop ? line : "\n" + line);
    isTop = false;
}

void PrintFiles(const std::vector<Text>& texts) {
    int width = Columns("File");
    for (const Text& text : texts) {
        width = std::max(width, Columns(text.source.path));
    }
    PrintHeading(PadRight("File", width) +
                 "  Code page     Bytes    Narrow      Wide   Lines   Tokens    Words");
    for (const Text& text : texts) {
        Kelm line = PadRight(text.source.path, width);
        line.AppendFormat("  %9s", CodePageName(text.source.codePage).constBuffer());
        line.AppendFormat(" %9d %9d %9d", text.bytes, text.narrow, text.wide.GetLength());
        line.AppendFormat(" %7d %8d %8d", text.lines, text.tokens, text.words);
        Print(line);
    }
}

std::vector<Word> ByCount(const WordCounts& counts) {
    std::vector<Word> words;
    for (const auto& [text, count] : counts) {
        words.push_back({text, count});
    }
    std::stable_sort(words.begin(), words.end(),
                     [](const Word& left, const Word& right) { return left.count > right.count; });
    return words;
}

void PrintMostFrequent(std::vector<Word> words, int top) {
    int total = 0;
    for (const Word& word : words) {
        total += word.count;
    }
    const size_t distinct = words.size();
    words.resize(std::min(distinct, static_cast<size_t>(top)));
    const int width = WidthOf(words);
    PrintHeading(Kelm::FromFormat("%d words, %d different", total, static_cast<int>(distinct)));
    Print(PadRight("Word", width) + "    Count   Share");
    for (const Word& word : words) {
        Kelm line = PadRight(word.text, width);
        line.AppendFormat("  %7d %5.1f %%  ", word.count, 100.0 * word.count / total);
        line += Kelm::FromRepeat('#', static_cast<int>(30.0 * word.count / words[0].count + 0.5));
        line.TrimRight();
        Print(line);
    }
}
