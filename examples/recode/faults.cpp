#include "faults.h"

#include <algorithm>

#include "../shared/source.h"

namespace {

constexpr int kLongestCharacter = 4;

/// The character at the beginning of the bytes. What begins with none gives the bytes that decode
/// to one U+FFFD together.
Piece FirstCharacter(const Kelm& bytes, unsigned int codePage) {
    const int most = std::min(kLongestCharacter, bytes.GetLength());
    Piece undefined{bytes.Left(1), WString(u"\uFFFD")};
    for (int length = 1; length <= most; ++length) {
        Piece piece{bytes.Left(length), WString()};
        piece.text = WString::FromCodePage(piece.bytes, codePage);
        if (piece.bytes.Char() == '\0' || IsDefined(piece, codePage)) {
            return piece;
        }
        if (piece.text.GetLength() == 1) {
            undefined = piece;
        }
    }
    return undefined;
}

Kelm Hexadecimal(const Kelm& bytes) {
    Kelm text("0x");
    for (int i = 0; i < bytes.GetLength(); ++i) {
        text.AppendFormat("%02x", static_cast<unsigned char>(bytes[i]));
    }
    return text;
}

int CodePoint(const WString& character) {
    if (character.GetLength() < 2) {
        return character.Char();
    }
    return 0x10000 + ((character[0] & 0x3FF) << 10) + (character[1] & 0x3FF);
}

/// What is wrong with the character; nothing if the text is empty.
Kelm FaultOf(const Piece& character, const Way& way) {
    if (character.bytes.Char() == '\0') {
        return "NUL, which is no text";
    }
    if (!IsDefined(character, way.from)) {
        return Hexadecimal(character.bytes) + " is not in code page " + CodePageName(way.from);
    }
    if (WString::FromCodePage(character.text.ToKelm(way.to), way.to) != character.text) {
        return Kelm::FromFormat("U+%04X is not in code page %s", CodePoint(character.text),
                                CodePageName(way.to).constBuffer());
    }
    return Kelm();
}

}  // namespace

bool IsDefined(const Piece& piece, unsigned int codePage) {
    if (piece.text.Count(u'\0') > 0) {
        return false;
    }
    // U+FFFD may stand in the file itself, where the code page has it.
    return piece.text.Count(u'\uFFFD') == 0 || piece.text.ToKelm(codePage) == piece.bytes;
}

void Advance(const Piece& piece, Place& place) {
    const WString& text = piece.text;
    const int lineEnd = text.ReverseFind(u'\n');
    if (lineEnd >= 0) {
        place.line += text.Count(u'\n');
        place.column = 1;
    }
    for (int i = lineEnd + 1; i < text.GetLength(); ++i) {
        place.column += (text[i] & 0xFC00) == 0xDC00 ? 0 : 1;
    }
    place.byte += piece.bytes.GetLength();
}

void FindFaults(const Piece& piece, const Way& way, std::size_t most, Place& place,
                std::vector<Fault>& faults) {
    const Fault whole{place, "does not come back from code page " + CodePageName(way.to)};
    const size_t before = faults.size();
    for (int at = 0; at < piece.bytes.GetLength() && faults.size() < most;) {
        const Piece character = FirstCharacter(piece.bytes.Mid(at, kLongestCharacter), way.from);
        const Kelm fault = FaultOf(character, way);
        if (!fault.IsEmpty()) {
            faults.push_back({place, fault});
        }
        Advance(character, place);
        at += character.bytes.GetLength();
    }
    if (faults.size() == before) {
        faults.push_back(whole);  // a piece with a fault must never pass as one without
    }
}
