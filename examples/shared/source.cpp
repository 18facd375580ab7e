#include "source.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <vector>

namespace {

constexpr unsigned int kLastNumber = 65535;  // that a code page can have

struct Candidate {
    unsigned int number;
    float likeness;
    long long distance;
};

/// How much of the longer text is in the shorter one.
float Likeness(const Kelm& left, const Kelm& right) {
    return left.GetLength() < right.GetLength() ? right.Similar(left) : left.Similar(right);
}

/// The numbers that look like this one, of known pages or not: the most alike first.
std::vector<Candidate> NumbersLike(unsigned int number) {
    const Kelm text = Kelm::From(number);
    std::vector<Candidate> candidates;
    for (unsigned int other = 1; other <= kLastNumber; ++other) {
        const float likeness = Likeness(text, Kelm::From(other));
        if (likeness >= 0.5F) {
            candidates.push_back({other, likeness, std::llabs(1LL * other - number)});
        }
    }
    std::sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return a.likeness != b.likeness ? a.likeness > b.likeness : a.distance < b.distance;
    });
    return candidates;
}

}  // namespace

void UseLocaleOfUser() {
    std::setlocale(LC_ALL, "");
    if (Kelm("ANSI_X3.4-1968") == nl_langinfo(CODESET)) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}

bool IsNumber(const Kelm& text) {
    return !text.IsEmpty() && text.IsDigit();
}

Source ParseSource(const Kelm& argument) {
    const int colon = argument.ReverseFind(':');
    const Kelm page = argument.Mid(colon + 1);
    if (colon <= 0 || !IsNumber(page)) {
        return {argument, 0};
    }
    return {argument.Left(colon), page.To<unsigned int>()};
}

bool IsKnownCodePage(unsigned int codePage) {
    return !WString::FromCodePage("a", codePage).IsEmpty();
}

Kelm UnknownCodePage(unsigned int codePage) {
    Kelm nearest;
    for (const Candidate& candidate : NumbersLike(codePage)) {
        // Asked here and not before: to know a page is to have its table built.
        if (IsKnownCodePage(candidate.number)) {
            nearest << (nearest.IsEmpty() ? "" : ", ") << Kelm::From(candidate.number);
        }
        if (nearest.Count(',') == 2) {
            break;
        }
    }
    return "code page " + Kelm::From(codePage) + " is unknown" +
           (nearest.IsEmpty() ? nearest : "; the nearest are " + nearest);
}

Kelm CodePageName(unsigned int codePage) {
    return codePage != 0 ? Kelm::From(codePage) : Kelm(nl_langinfo(CODESET));
}

File OpenFile(const Kelm& path) {
    // A descriptor of its own, so that closing the file leaves standard input open.
    std::FILE* file = path == "-" ? fdopen(dup(STDIN_FILENO), "rb") : std::fopen(path, "rb");
    return File(file, &std::fclose);
}

bool FinishOutput(const char* program) {
    const bool isWritten = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (std::fclose(stdout) == 0 && isWritten) {
        return true;
    }
    Kelm message;
    message.FormatMsg(static_cast<std::uint32_t>(errno), "%s: the output is incomplete", program);
    std::fprintf(stderr, "%s\n", message.constBuffer());
    return false;
}
