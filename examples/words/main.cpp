// Counts the words of text files in any code page, finds text in them and lists words that are
// alike: `words --help` tells how to call it.

#include <Kelm.h>

#include <cstdio>
#include <new>
#include <vector>

#include "../shared/source.h"
#include "report.h"
#include "text.h"

namespace {

constexpr const char* kHelp =
    "usage: words [OPTION]... FILE[:CODEPAGE]...\n"
    "\n"
    "Decodes each FILE from its code page (a number such as 932, 1252 or 65001; without\n"
    "one, the code page of the process), counts its words and shows the most frequent.\n"
    "The file - is standard input.\n"
    "\n"
    "  --top N        show the N most frequent words (15 if nothing else is asked for)\n"
    "  --find TEXT    show where the text occurs, in upper or lower case\n"
    "  --alike SHARE  list pairs of words that have at least this share, such as 0.85, of\n"
    "                 their bytes in common in the same order\n"
    "  --help         show this\n"
    "\n"
    "The counts of a file: its bytes, the bytes of its text in the process's code page, the\n"
    "16-bit units of its text, lines with something on them, tokens (words, marks, quoted\n"
    "strings and single bytes beyond ASCII, as Kelm::Token hands them out) and words.\n"
    "\n"
    "Exit status: 0 if every file was read, 1 if one was not, 2 for wrong arguments.\n";

enum Status { kFine = 0, kFileFailed = 1, kWrongUse = 2 };

struct Options {
    std::vector<Source> sources;
    int top = 0;
    Kelm find;
    Kelm alike;
    bool help = false;
};

/// Complains and gives false.
bool Refuse(const Kelm& message) {
    Complain(message);
    return false;
}

/// Takes the option at `index` with its value. False for an option without one, and unknown ones.
bool TakeOption(const std::vector<Kelm>& arguments, size_t& index, Options& options) {
    const Kelm& name = arguments[index];
    if (name == "--help") {
        options.help = true;
        return true;
    }
    const bool isKnown = name == "--top" || name == "--find" || name == "--alike";
    if (!isKnown || index + 1 == arguments.size() || arguments[index + 1].IsEmpty()) {
        return Refuse(name + (isKnown ? " needs a value" : " is no option"));
    }
    const Kelm& value = arguments[++index];
    if (name == "--find") {
        options.find = value;
    } else if (name == "--alike") {
        options.alike = value;
    } else {
        options.top = value.Int();
        return IsNumber(value) || Refuse("--top needs a number, not " + value);
    }
    return true;
}

bool ParseArguments(const std::vector<Kelm>& arguments, Options& options) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].Left(2) != "--") {
            options.sources.push_back(ParseSource(arguments[i]));
        } else if (!TakeOption(arguments, i, options)) {
            return false;
        }
    }
    if (options.help) {
        return true;
    }
    if (options.sources.empty()) {
        return Refuse("no file is named");
    }
    const double share = options.alike.Double();
    if (!options.alike.IsEmpty() && !(share >= 0.5 && share <= 1)) {
        return Refuse("--alike needs a share from 0.5 to 1, not " + options.alike);
    }
    if (options.find.IsEmpty() && options.alike.IsEmpty() && options.top == 0) {
        options.top = 15;
    }
    return true;
}

Status Run(const Options& options) {
    std::vector<Text> texts;
    WordCounts counts;
    for (const Source& source : options.sources) {
        Text text{};
        if (ReadText(source, text)) {
            CountText(text, counts);
            texts.push_back(text);
        }
    }
    if (!texts.empty()) {
        const std::vector<Word> byCount = ByCount(counts);
        if (options.top > 0) {
            PrintFiles(texts);
            PrintMostFrequent(byCount, options.top);
        }
        for (const Text& text : texts) {
            if (!options.find.IsEmpty()) {
                PrintHits(text, options.find);
            }
        }
        if (!options.alike.IsEmpty()) {
            PrintAlike(byCount, options.alike);
        }
    }
    const bool isWritten = FinishOutput("words");
    return isWritten && texts.size() == options.sources.size() ? kFine : kFileFailed;
}

}  // namespace

int main(int argc, char** argv) {
    UseLocaleOfUser();
    try {
        Options options;
        if (!ParseArguments(std::vector<Kelm>(argv + 1, argv + argc), options)) {
            std::fputs("Try words --help.\n", stderr);
            return kWrongUse;
        }
        if (options.help) {
            std::fputs(kHelp, stdout);
            return FinishOutput("words") ? kFine : kFileFailed;
        }
        return Run(options);
    } catch (const std::bad_alloc&) {
        Complain("out of memory");
        return kFileFailed;
    }
}
