#include "terminal.h"

#include <cwchar>

namespace {

bool IsHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/// The character at `index`, which moves behind it: one unit or a surrogate pair.
wchar_t NextCharacter(const WString& text, int& index) {
    const char16_t first = text[index++];
    if (!IsHighSurrogate(first) || !IsLowSurrogate(text[index])) {
        return static_cast<wchar_t>(first);
    }
    const char16_t second = text[index++];
    return static_cast<wchar_t>(0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF));
}

int ColumnsOf(wchar_t character) {
    const int columns = wcwidth(character);
    return columns < 0 ? 1 : columns;  // unknown to the locale: most letters take one
}

bool IsAscii(const Kelm& text) {
    unsigned char bits = 0;
    for (int i = 0; i < text.GetLength(); ++i) {
        bits |= static_cast<unsigned char>(text[i]);
    }
    return bits < 0x80;
}

}  // namespace

int Columns(const Kelm& text) {
    if (IsAscii(text)) {
        return text.GetLength();
    }
    const WString wide(text);
    int columns = 0;
    for (int i = 0; i < wide.GetLength();) {
        columns += ColumnsOf(NextCharacter(wide, i));
    }
    return columns;
}

Kelm PadLeft(const Kelm& text, int columns) {
    return Kelm::FromRepeat(' ', columns - Columns(text)) + text;
}

Kelm PadRight(const Kelm& text, int columns) {
    return text + Kelm::FromRepeat(' ', columns - Columns(text));
}

Kelm CutTo(const Kelm& text, int columns) {
    if (Columns(text) <= columns) {
        return text;
    }
    const WString wide(text);
    int room = columns - 1;  // the last column is for the mark
    int end = 0;
    for (int next = 0; next < wide.GetLength(); end = next) {
        room -= ColumnsOf(NextCharacter(wide, next));
        if (room < 0) {
            break;
        }
    }
    return wide.Left(end).ToKelm() + '~';
}

Kelm Printable(Kelm text) {
    text.Replace('\t', ' ');
    text.RemoveControl();
    return text;
}
