#include "text.h"

#include <cerrno>
#include <cstdio>
#include <cwctype>

namespace {

constexpr int kLargestFile = 1 << 27;  // spelled for the tokenizer it may take five times as much

/// Everything there is to read, by a buffer that doubles. False, with `errno` set, if that fails.
bool ReadAll(std::FILE* file, Kelm& bytes) {
    int length = 0;
    int room = 1 << 16;
    for (;;) {
        char* buffer = bytes.GetBuffer(room);
        const size_t count =
            std::fread(buffer + length, 1, static_cast<size_t>(room - length), file);
        length += static_cast<int>(count);
        bytes.ReleaseBuffer(length);
        if (length < room) {
            return std::ferror(file) == 0;
        }
        if (room >= kLargestFile) {
            errno = EFBIG;
            return false;
        }
        room *= 2;
    }
}

bool ReadFile(const Kelm& path, Kelm& bytes) {
    const File file = OpenFile(path);
    if (file && ReadAll(file.get(), bytes)) {
        return true;
    }
    Kelm message;
    message.FormatMsg(static_cast<std::uint32_t>(errno), "cannot read %s", path.constBuffer());
    Complain(message);
    return false;
}

/// Says what does not decode. False if that is so much that the file is no text in this code page.
bool IsText(const Source& source, const WString& wide) {
    const int broken = wide.Count(u'\uFFFD');
    const int nuls = wide.Count(u'\0');
    if (broken == 0 && nuls == 0) {
        return true;
    }
    const bool isText = nuls == 0 && broken <= wide.GetLength() / 8;
    Complain(Kelm::FromFormat(
        "%s: %scode page %s does not define %d of %d characters%s", source.path.constBuffer(),
        isText ? "" : "not a text: ", CodePageName(source.codePage).constBuffer(), broken,
        wide.GetLength(), nuls > 0 ? ", and some are NUL" : ""));
    return isText;
}

bool IsLetter(char16_t unit) {
    if (unit >= 0x80) {
        return std::iswpunct(unit) == 0 && std::iswspace(unit) == 0;
    }
    return std::iswalnum(unit) != 0 || unit == u'_';
}

/// Whether an apostrophe at `index` belongs to the word around it, as in "don't".
bool IsInnerApostrophe(const WString& text, int index) {
    return (text[index] == u'\'' || text[index] == u'\u2019') && index > 0 &&
           IsLetter(text[index - 1]) && IsLetter(text[index + 1]);
}

/// The text made ready for `Kelm::Token`, which takes marks and every byte above 0x7F for tokens of
/// their own and never sees the byte behind them. Letters outside ASCII, `_` and inner apostrophes
/// are spelled as `_` and four digits, so that words stay whole; all other marks become blanks.
Kelm SpellForToken(const WString& text) {
    Kelm spelled;
    spelled.GetBuffer(text.GetLength() + 64);
    for (int i = 0; i < text.GetLength(); ++i) {
        if (spelled.GetAllocLength() - spelled.GetLength() < 64) {
            // Appending alone would make a block of the exact size every time.
            spelled.GetBuffer(2 * spelled.GetAllocLength());
        }
        const char16_t unit = text[i];
        const bool isApostrophe = IsInnerApostrophe(text, i);
        if (unit < 0x80 && unit != u'_' && !isApostrophe) {
            const bool stays = IsLetter(unit) || unit == u'\n' || unit == u'\r';
            spelled.Append(stays ? static_cast<char>(unit) : ' ');
        } else if (isApostrophe || IsLetter(unit)) {
            spelled.AppendFormat("_%04x", isApostrophe ? u'\'' : unit);
        } else {
            spelled.Append(' ');
        }
    }
    return spelled;
}

/// The word that `SpellForToken` spelled.
Kelm WordOf(const Kelm& spelled) {
    WString word;
    int start = 0;
    for (int mark = 0; (mark = spelled.Find('_', start)) >= 0; start = mark + 5) {
        word += WString(spelled.Mid(start, mark - start));
        word += static_cast<char16_t>(("0x" + spelled.Mid(mark + 1, 4)).Int());
    }
    return start == 0 ? spelled : (word + spelled.Mid(start)).ToKelm();
}

int CountTokens(const Kelm& text) {
    int tokens = 0;
    for (Kelm::Token token(text); token; ++token) {
        ++tokens;
    }
    return tokens;
}

}  // namespace

void Complain(const Kelm& message) {
    std::fprintf(stderr, "words: %s\n", message.constBuffer());
}

bool ReadText(const Source& source, Text& text) {
    if (!IsKnownCodePage(source.codePage)) {
        Complain(source.path + ": " + UnknownCodePage(source.codePage));
        return false;
    }
    Kelm bytes;
    if (!ReadFile(source.path, bytes)) {
        return false;
    }
    text.source = source;
    text.bytes = bytes.GetLength();
    text.wide = WString::FromCodePage(bytes, source.codePage);
    return IsText(source, text.wide);
}

void CountText(Text& text, WordCounts& counts) {
    const Kelm narrow = text.wide.ToKelm();
    text.narrow = narrow.GetLength();
    text.tokens = CountTokens(narrow);
    WString folded = text.wide;
    folded.MakeLower();
    const Kelm spelled = SpellForToken(folded);
    Kelm::Token token(spelled);
    for (; token; ++token) {
        ++counts[WordOf(token.Current())];
        ++text.words;
    }
    token.Clear();  // back to the first byte, and no token in hand, so that lines begin there
    while (token.NextLine()) {
        text.lines += token.IsValid() ? 1 : 0;
    }
}
