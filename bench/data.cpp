#include "data.h"

#include <iconv.h>

#include <cctype>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::string_view kEnglish[] = {
    "the",    "of",     "and",      "a",      "to",       "in",        "he",       "have",
    "it",     "that",   "for",      "they",   "with",     "as",        "not",      "on",
    "she",    "at",     "by",       "this",   "we",       "you",       "do",       "but",
    "from",   "or",     "which",    "one",    "would",    "all",       "will",     "there",
    "say",    "who",    "make",     "when",   "can",      "more",      "if",       "no",
    "man",    "out",    "other",    "so",     "what",     "time",      "up",       "go",
    "about",  "than",   "into",     "could",  "state",    "only",      "year",     "some",
    "people", "system", "question", "during", "language", "character", "interest", "between"};

constexpr std::string_view kLatin[] = {"Straße", "café",    "naïve",  "über",  "garçon", "señor",
                                       "élève",  "für",     "größer", "déjà",  "maison", "Haus",
                                       "porque", "niño",    "temps",  "après", "Mühle",  "schön",
                                       "where",  "quelque", "tiempo"};

constexpr std::string_view kJapanese[] = {"日本語", "文字",     "漢字",   "ひらがな", "カタカナ",
                                          "東京",   "情報処理", "新しい", "世界",     "です",
                                          "、",     "。",       "言葉",   "という",   "能力"};

/// A fixed sequence of numbers, so that every run sees the same texts.
class Sequence {
public:
    std::size_t Below(std::size_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(state_ >> 33) % limit;
    }

private:
    std::uint64_t state_ = 42;
};

std::string Fill(int size, std::span<const std::string_view> words, std::string_view separator) {
    std::string text;
    Sequence sequence;
    auto limit = static_cast<std::size_t>(size);
    text.reserve(limit);
    for (;;) {
        std::string_view word = words[sequence.Below(words.size())];
        std::string_view before = text.empty() ? std::string_view() : separator;
        if (text.size() + before.size() + word.size() > limit)
            break;
        text.append(before).append(word);
    }
    text.append(limit - text.size(), '.');
    return text;
}

}  // namespace

std::string Words(int size) {
    return Fill(size, kEnglish, " ");
}

std::string Latin(int size) {
    return Fill(size, kLatin, " ");
}

std::string Cjk(int size) {
    return Fill(size, kJapanese, "");
}

std::string Mixed(int size) {
    std::string_view words[] = {"the",   "language", "of",      "Straße", "東京",      "question",
                                "élève", "ひら",     "between", "people", "\U0001F600"};
    return Fill(size, words, " ");
}

std::string Prose(int size) {
    std::string text = Words(size);
    Sequence sequence;
    for (std::size_t i = 1; i + 1 < text.size(); i++) {
        if (text[i] != ' ')
            continue;
        std::size_t dice = sequence.Below(10);
        if (dice == 0)
            text[i - 1] = ',';
        if (dice == 1)
            text[i] = '\n';
        if (dice < 3)
            text[i + 1] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i + 1])));
    }
    return text;
}

std::string WithHits(int size, std::string_view hit, int every) {
    std::string text = Words(size);
    auto step = static_cast<std::size_t>(every);
    for (std::size_t i = step / 2; i + hit.size() < text.size(); i += step)
        text.replace(i, hit.size(), hit);
    return text;
}

std::string Encoded(std::string_view utf8, const char* charset) {
    iconv_t converter = iconv_open(charset, "UTF-8");
    std::string source(utf8);
    std::string result(2 * source.size() + 2, '\0');
    char* in = source.data();
    char* out = result.data();
    std::size_t inLeft = source.size();
    std::size_t outLeft = result.size();
    if (iconv(converter, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1))
        throw std::runtime_error("a text of the benchmarks cannot be encoded");
    iconv_close(converter);
    result.resize(result.size() - outLeft);
    return result;
}

std::u16string Wide(std::string_view utf8) {
    std::string bytes = Encoded(utf8, "UTF-16LE");
    std::u16string text;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto low = static_cast<unsigned char>(bytes[i]);
        auto high = static_cast<unsigned char>(bytes[i + 1]);
        text.push_back(static_cast<char16_t>(low | high << 8));
    }
    return text;
}

}  // namespace bench
