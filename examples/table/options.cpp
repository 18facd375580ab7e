#include "options.h"

#include "../shared/arguments.h"

const char* const kHelp =
    "usage: table [OPTION]... FILE[:CODEPAGE[:DELIMITER]]...\n"
    "\n"
    "Reads delimited files, each in its own code page, as one table; keeps, edits and sorts its\n"
    "rows; prints them aligned or delimited again.\n"
    "\n"
    "CODEPAGE is a number such as 932, 1252 or 65001; without one, the process's own holds.\n"
    "DELIMITER is tab (where none is given), comma, semicolon, pipe, colon, space or one other\n"
    "mark. Every delimiter separates: there is no quoting.\n"
    "The file - is standard input. FIELD is a number from 1, or a name.\n"
    "\n"
    "What is in the files\n"
    "  --header           the first row of each file names the fields\n"
    "  --names A,B,...    names for the fields; those with a ? behind them may be missing\n"
    "  --comment TEXT     rows that begin with the text are left out\n"
    "\n"
    "What becomes of the rows, step by step in the order of the arguments\n"
    "  --keep TEST        keep the rows that pass; TEST is one of\n"
    "       FIELD=TEXT   FIELD!=TEXT   the same text in any case, or another\n"
    "       FIELD~TEXT   FIELD!~TEXT   with the text in any case in it, or without\n"
    "       FIELD==N  FIELD<N  FIELD<=N  FIELD>N  FIELD>=N   by number\n"
    "       FIELD?       FIELD!        flag (yes, on, true, a number but 0) set, or not\n"
    "  --tabs N           expand tabs in every field to multiples of N\n"
    "  --replace FIELD/OLD/NEW    replace a text in the field; | : and , separate as well\n"
    "  --remove FIELD/TEXT        remove a text from the field\n"
    "  --any-case         let --replace and --remove ignore case\n"
    "\n"
    "What becomes of the result\n"
    "  --sort FIELD[:number][:down]   sort, as text if not by number; a second --sort\n"
    "                     orders what is equal by the first\n"
    "  --first N          no more than the first rows\n"
    "\n"
    "What is printed\n"
    "  --fields FIELD,... these fields in this order; all without it\n"
    "  --width N          no column of the aligned table wider than this (60; 0: no limit)\n"
    "  --out CODEPAGE[:DELIMITER]     the rows delimited, in this code page\n"
    "  --alike FIELD:SHARE            instead of the rows, pairs of different texts in the\n"
    "                     field that have at least this share, such as 0.8, in common\n"
    "  --alike-limit N    how many different texts --alike compares (5000): the time is\n"
    "                     that of N * N / 2 comparisons at most\n"
    "  --problems N       how many problems of rows are shown (20)\n"
    "  --help             this\n"
    "\n"
    "Exit status: 0 if everything was in order, 1 if a problem was reported, 2 for wrong\n"
    "arguments.\n";

namespace {

struct DelimiterName {
    const char* name;
    char delimiter;
};

constexpr DelimiterName kDelimiterNames[] = {{"tab", '\t'}, {"comma", ','}, {"semicolon", ';'},
                                             {"pipe", '|'}, {"colon", ':'}, {"space", ' '}};

/// 0 if the text names no delimiter.
char DelimiterOf(const Kelm& text) {
    for (const DelimiterName& known : kDelimiterNames) {
        if (text == known.name) {
            return known.delimiter;
        }
    }
    const bool isMark = text.GetLength() == 1 && text.Char() > ' ' && text.Char() < '\x7f';
    return isMark && !text.IsAlNum() ? text.Char() : '\0';
}

Input ParseInput(const Kelm& argument) {
    const int colon = argument.ReverseFind(':');
    const char delimiter = DelimiterOf(argument.Mid(colon + 1));
    if (colon > 0 && delimiter != '\0') {
        const Source source = ParseSource(argument.Left(colon));
        if (source.path.GetLength() < colon) {  // a code page stands before it
            return {source, delimiter};
        }
    }
    return {ParseSource(argument), '\t'};
}

void ParseOutput(const Kelm& value, Options& options) {
    const Kelm page = value.Element(0, ':');
    const bool hasDelimiter = value.Find(':') >= 0;
    const char delimiter = hasDelimiter ? DelimiterOf(value.Elements(1, -1, ':')) : '\t';
    if (!IsNumber(page) || delimiter == '\0') {
        throw WrongUse{"--out needs CODEPAGE or CODEPAGE:DELIMITER, not " + value};
    }
    options.outputPage = page.To<unsigned int>();
    if (!IsKnownCodePage(options.outputPage)) {
        throw WrongUse{UnknownCodePage(options.outputPage)};
    }
    options.outputDelimiter = delimiter;
    options.isDelimited = true;
}

/// A number of at least `least`.
int ParseCount(const Kelm& name, const Kelm& value, int least) {
    if (!IsNumber(value) || value.Int() < least) {
        throw WrongUse{Kelm::FromFormat("%s needs a number of at least %d, not %s",
                                        name.constBuffer(), least, value.constBuffer())};
    }
    return value.Int();
}

/// Options without a value. False if the name is none of them.
bool TakeSwitch(const Kelm& name, Options& options) {
    if (name == "--header") {
        options.hasHeader = true;
    } else if (name == "--any-case") {
        options.anyCase = true;
    } else if (name == "--help") {
        options.help = true;
    } else {
        return false;
    }
    return true;
}

/// Options that stand in the order of the arguments. False if the name is none of them.
bool TakeRequest(const Kelm& name, const Kelm& value, Options& options) {
    struct Known {
        const char* name;
        Request::Kind kind;
    };
    constexpr Known kKnown[] = {{"--replace", Request::Replace},
                                {"--remove", Request::Remove},
                                {"--tabs", Request::Tabs},
                                {"--keep", Request::Keep},
                                {"--sort", Request::Sort}};
    for (const Known& known : kKnown) {
        if (name == known.name) {
            options.requests.push_back({known.kind, value});
            return true;
        }
    }
    return false;
}

void TakeValue(const Kelm& name, const Kelm& value, Options& options) {
    if (name == "--names") {
        options.names = value;
    } else if (name == "--comment") {
        options.comment = value;
    } else if (name == "--fields") {
        options.fields = value;
    } else if (name == "--alike") {
        options.alike = value;
    } else if (name == "--alike-limit") {
        options.alikeLimit = ParseCount(name, value, 2);
    } else if (name == "--first") {
        options.first = ParseCount(name, value, 0);
    } else if (name == "--width") {
        options.width = ParseCount(name, value, 0);
    } else if (name == "--problems") {
        options.problems = ParseCount(name, value, 0);
    } else if (name == "--out") {
        ParseOutput(value, options);
    } else if (!TakeRequest(name, value, options)) {
        throw WrongUse{name + " is no option"};
    }
}

}  // namespace

Options ParseArguments(const std::vector<Kelm>& arguments) {
    Options options;
    TakeArguments(arguments,
                  {[&](const Kelm& file) { options.inputs.push_back(ParseInput(file)); },
                   [&](const Kelm& name) { return TakeSwitch(name, options); },
                   [&](const Kelm& name, const Kelm& value) { TakeValue(name, value, options); }});
    if (options.inputs.empty() && !options.help) {
        throw WrongUse{"no file is named"};
    }
    return options;
}
