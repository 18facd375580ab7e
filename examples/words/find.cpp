#include <unistd.h>

#include <algorithm>

#include "../shared/terminal.h"
#include "report.h"

namespace {

constexpr int kContext = 30;  // units shown on each side of a hit

/// A piece of a line for the terminal, without the halves of surrogate pairs that a cut leaves.
Kelm Piece(WString piece) {
    if ((piece.Char() & 0xFC00) == 0xDC00) {
        piece = piece.Mid(1);
    }
    const int last = piece.GetLength() - 1;
    if (last >= 0 && (piece[last] & 0xFC00) == 0xD800) {
        piece = piece.Left(last);
    }
    return Printable(piece.ToKelm());
}

void PrintHit(const WString& line, int number, int hit, int length) {
    static const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    const int from = std::max(0, hit - kContext);
    const Kelm before = (from > 0 ? "..." : "") + Piece(line.Mid(from, hit - from));
    const int behind = hit + length;
    const bool isCut = behind + kContext < line.GetLength();
    Kelm shown = Kelm::FromFormat("%7d  ", number) + PadLeft(before, kContext + 3);
    shown += isTerminal ? "\033[7m" : "[";
    shown += Piece(line.Mid(hit, length));
    shown += isTerminal ? "\033[m" : "]";
    shown += Piece(line.Mid(behind, kContext)) + (isCut ? "..." : "");
    Print(shown);
}

/// The number of hits in one line. Both sides are upper-cased once: positions stay.
int FindInLine(const WString& line, int number, const WString& text) {
    if (line.NCFind(text) < 0) {
        return 0;
    }
    WString upperLine(line), upperText(text);
    upperLine.MakeUpper();
    upperText.MakeUpper();
    int hits = 0;
    for (int hit = 0; (hit = upperLine.Find(upperText, hit)) >= 0; hit += text.GetLength()) {
        PrintHit(line, number, hit, text.GetLength());
        ++hits;
    }
    return hits;
}

}  // namespace

void PrintHits(const Text& text, const Kelm& find) {
    PrintHeading(
        Kelm::FromFormat("\"%s\" in %s", find.constBuffer(), text.source.path.constBuffer()));
    const WString wideFind(find);
    int hits = 0;
    int number = 0;
    for (int start = 0; start < text.wide.GetLength();) {
        const int newline = text.wide.Find(u'\n', start);
        const int end = newline < 0 ? text.wide.GetLength() : newline;
        hits += FindInLine(text.wide.Mid(start, end - start), ++number, wideFind);
        start = end + 1;
    }
    Print(Kelm::FromFormat("%7d  hit%s in %d line%s", hits, hits == 1 ? "" : "s", number,
                           number == 1 ? "" : "s"));
}
