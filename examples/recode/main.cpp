// Files and trees from one code page to another, in place: `recode --help` tells how to call it.

#include <Kelm.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <new>
#include <vector>

#include "../shared/arguments.h"
#include "../shared/source.h"
#include "failure.h"
#include "options.h"
#include "recoder.h"

namespace {

enum Status { kFine = 0, kProblems = 1, kWrongUse = 2 };

/// Opens what the caller has closed of standard input, output and error, so that no file of the
/// user gets one of their numbers, and with it what is printed. Writing to them fails as before.
void KeepStandardNumbers() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDONLY);
    }
    close(descriptor);
}

void PrintPages() {
    for (unsigned int page = 1; page < 1 << 16; ++page) {
        if (IsKnownCodePage(page) && !IsShifting(page)) {
            std::printf("%u\n", page);
        }
    }
}

bool Recode(const Options& options) {
    Recoder recoder(options);
    CatchSignals();
    if (options.paths[0] == "-") {
        recoder.TakeStandardInput();
        return !recoder.HasFailed();
    }
    for (const Kelm& path : options.paths) {
        recoder.TakePath(path);
    }
    recoder.Summarize();
    return !recoder.HasFailed();
}

Status Run(const Options& options) {
    bool isFine = true;
    if (options.help) {
        std::fputs(kHelp, stdout);
    } else if (options.pages) {
        PrintPages();
    } else {
        isFine = Recode(options);
    }
    return FinishOutput("recode") && isFine ? kFine : kProblems;
}

}  // namespace

int main(int argc, char** argv) {
    KeepStandardNumbers();
    UseLocaleOfUser();
    try {
        return Run(ParseArguments(std::vector<Kelm>(argv + 1, argv + argc)));
    } catch (const WrongUse& wrong) {
        std::fprintf(stderr, "recode: %s\nTry recode --help.\n", wrong.text.constBuffer());
        return kWrongUse;
    } catch (const Interrupted& interrupted) {
        std::signal(interrupted.signal, SIG_DFL);
        return std::raise(interrupted.signal);
    } catch (const std::bad_alloc&) {
        std::fputs("recode: out of memory\n", stderr);
        return kProblems;
    }
}
