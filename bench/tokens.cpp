#include <sstream>

#include "data.h"
#include "harness.h"
#include "walks.h"

namespace bench {

namespace {

/// `strtok_r` writes into the text, so it works on a copy.
std::uint64_t CutWithStrtok(const std::string& text, const char* delimiters) {
    std::string copy(text);
    Sum sum;
    char* state = nullptr;
    for (char* token = strtok_r(copy.data(), delimiters, &state); token != nullptr;
         token = strtok_r(nullptr, delimiters, &state))
        sum.Take(std::string(token));
    return sum.Value();
}

void SpacedWords(Workload& work) {
    std::string text = Words(work.Size());
    text.erase(text.find_last_not_of('.') + 1);
    work.Add("kelm", [text = Kelm(text.c_str())] {
        Sum sum;
        for (Kelm::Token token(text); token; ++token)
            sum.Take(token.Current());
        return sum.Value();
    });
    work.Add("strtok_r", [text] { return CutWithStrtok(text, " \t\r\n"); });
    work.Add("istringstream", [text] {
        Sum sum;
        std::istringstream stream(text);
        for (std::string word; stream >> word;)
            sum.Take(word);
        return sum.Value();
    });
#ifdef BENCH_BOOST
    work.Add("boost", [text] {
        Sum sum;
        for (const std::string& word :
             boost::tokenizer<boost::char_separator<char>>(text, boost::char_separator<char>(" ")))
            sum.Take(word);
        return sum.Value();
    });
#endif
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] {
        Sum sum;
        for (const QByteArray& word : text.split(' '))
            sum.Take(word.constData(), static_cast<std::size_t>(word.size()));
        return sum.Value();
    });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text] {
        Sum sum;
        gchar** words = g_strsplit(text.c_str(), " ", -1);
        for (gchar** word = words; *word != nullptr; word++)
            sum.Take(*word, std::strlen(*word));
        g_strfreev(words);
        return sum.Value();
    });
#endif
}

std::string LinesOf(int size) {
    std::string text = Words(size);
    for (std::size_t i = 60; i < text.size(); i += 60)
        text[i] = '\n';
    return text;
}

void Lines(Workload& work) {
    std::string text = LinesOf(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())] {
        Sum sum;
        Kelm::Token token(text);
        while (token.NextLine())
            sum.Take(token.Current());
        return sum.Value();
    });
    work.Add("strtok_r", [text] { return CutWithStrtok(text, "\r\n"); });
    work.Add("getline", [text] {
        Sum sum;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);)
            sum.Take(line);
        return sum.Value();
    });
    work.Add("memchr", [text] {
        Sum sum;
        EachByMemchr(text, '\n', [&](std::string_view line) {
            sum.Take(std::string(line));
            return true;
        });
        return sum.Value();
    });
}

}  // namespace

void AddTokens(Suite& suite) {
    suite.Add("tokens", {kMedium, kLarge}, SpacedWords);
    suite.Add("lines", {kMedium, kLarge}, Lines);
}

}  // namespace bench
