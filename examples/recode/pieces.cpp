#include "pieces.h"

#include <unistd.h>

#include <cerrno>

#include "failure.h"

namespace {

constexpr int kPieceLength = 1 << 16;
constexpr int kLongestCharacter = 4;

/// Appends what the file has until the length is reached. False if the file ends before.
bool ReadUpTo(int descriptor, int length, Kelm& bytes) {
    int end = bytes.GetLength();
    char* buffer = bytes.GetBuffer(length);
    ssize_t count = 1;
    while (end < length && count != 0) {
        CheckInterrupt();
        count = read(descriptor, buffer + end, static_cast<size_t>(length - end));
        if (count < 0 && errno != EINTR) {
            throw SystemFailure("cannot be read");
        }
        end += count > 0 ? static_cast<int>(count) : 0;
    }
    bytes.ReleaseBuffer(end);
    return end == length;
}

/// Decodes the bytes without those at the end that are the beginning of a character. The cut inside
/// a character shows as one U+FFFD more than the cut in front of it has, in every code page.
Piece WholeCharacters(const Kelm& bytes, unsigned int codePage) {
    Piece best{bytes, WString::FromCodePage(bytes, codePage)};
    int fewest = best.text.Count(u'\uFFFD');
    for (int cut = 1; cut < kLongestCharacter && fewest > 0; ++cut) {
        Piece shorter{bytes.Left(bytes.GetLength() - cut), WString()};
        shorter.text = WString::FromCodePage(shorter.bytes, codePage);
        const int count = shorter.text.Count(u'\uFFFD');
        if (count < fewest) {
            fewest = count;
            best = shorter;
        }
    }
    return best;
}

}  // namespace

PieceReader::PieceReader(int descriptor, unsigned int codePage)
    : m_descriptor(descriptor), m_codePage(codePage) {
    if (lseek(descriptor, 0, SEEK_SET) != 0) {
        throw SystemFailure("cannot be read");
    }
}

bool PieceReader::Next(Piece& piece) {
    Kelm bytes = m_rest;
    if (ReadUpTo(m_descriptor, kPieceLength, bytes)) {
        piece = WholeCharacters(bytes, m_codePage);
    } else {
        piece = {bytes, WString::FromCodePage(bytes, m_codePage)};
    }
    m_rest = bytes.Mid(piece.bytes.GetLength());
    return !bytes.IsEmpty();
}
