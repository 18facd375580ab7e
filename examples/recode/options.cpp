#include "options.h"

#include "../shared/arguments.h"
#include "../shared/source.h"

const char* const kHelp =
    "usage: recode --from PAGE[,PAGE]... [OPTION]... FILE|FOLDER...\n"
    "       recode --from PAGE[,PAGE]... [OPTION]... -\n"
    "\n"
    "Re-encodes each FILE, and every file below each FOLDER, from one code page to another. A\n"
    "file is replaced as a whole once all of it could be re-encoded; else it stays as it is, and\n"
    "what stands in the way is told as FILE:LINE:COLUMN. With - alone it goes from standard\n"
    "input to standard output.\n"
    "\n"
    "  --from PAGE,...  what the files are in; of several pages the first that defines every\n"
    "                   byte of the file, so the strictest comes first: 65001,932,1252\n"
    "  --to PAGE        what they become (65001, which is UTF-8)\n"
    "  --dry-run        change nothing, tell what would be\n"
    "  --places N       how many places are shown of each file (10)\n"
    "  --pages          list the code pages\n"
    "  --help           this\n"
    "\n"
    "Links are told and not followed, and so are files of several names and what is no file.\n"
    "\n"
    "Exit status: 0 if every file is in its new code page, or would be, 1 if one is not, 2 for\n"
    "wrong arguments.\n";

namespace {

unsigned int ParsePage(const Kelm& text) {
    if (!IsNumber(text)) {
        throw WrongUse{"a code page is a number such as 932, not " + text};
    }
    const auto page = text.To<unsigned int>();
    if (!IsKnownCodePage(page)) {
        throw WrongUse{UnknownCodePage(page)};
    }
    if (IsShifting(page)) {
        throw WrongUse{"code page " + text + " shifts between two sets, which recode cannot do"};
    }
    return page;
}

void TakeValue(const Kelm& name, const Kelm& value, Options& options) {
    if (name == "--to") {
        options.to = ParsePage(value);
    } else if (name == "--from") {
        for (int i = 0; i <= value.Count(','); ++i) {
            options.from.push_back(ParsePage(value.Element(i, ',')));
        }
    } else if (name != "--places") {
        throw WrongUse{name + " is no option"};
    } else if (options.places = value.Int(); !IsNumber(value) || options.places < 1) {
        throw WrongUse{"--places needs a number of at least 1, not " + value};
    }
}

/// Options without a value. False if the name is none of them.
bool TakeSwitch(const Kelm& name, Options& options) {
    struct Switch {
        const char* name;
        bool& isOn;
    };
    const Switch known[] = {
        {"--dry-run", options.isDryRun}, {"--pages", options.pages}, {"--help", options.help}};
    for (const Switch& each : known) {
        if (name == each.name) {
            return each.isOn = true;
        }
    }
    return false;
}

void CheckOptions(const Options& options) {
    if (options.help || options.pages) {
        return;
    }
    if (options.paths.empty()) {
        throw WrongUse{"no file is named"};
    }
    if (options.from.empty()) {
        throw WrongUse{"--from PAGE is needed: what are the files in?"};
    }
    for (const Kelm& path : options.paths) {
        if (path == "-" && options.paths.size() > 1) {
            throw WrongUse{"- stands alone"};
        }
    }
}

}  // namespace

bool IsShifting(unsigned int codePage) {
    constexpr char kShiftOut = '\x0e';
    return WString(u"\u3042").ToKelm(codePage).Char() == kShiftOut;
}

Options ParseArguments(const std::vector<Kelm>& arguments) {
    Options options;
    TakeArguments(arguments,
                  {[&](const Kelm& file) { options.paths.push_back(file); },
                   [&](const Kelm& name) { return TakeSwitch(name, options); },
                   [&](const Kelm& name, const Kelm& value) { TakeValue(name, value, options); }});
    CheckOptions(options);
    return options;
}
