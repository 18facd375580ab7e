// Memory runs out at every allocation of the first use of a code page, the C library's own for a
// converter and its file included: each time in a fresh process, once and from then on, and where
// there are no new pages at all. What comes out is std::bad_alloc with the objects as they were, or
// the right text; the next call works.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <new>

#include "Kelm.h"

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);

namespace {

struct {
    bool isArmed;
    bool goesOn;
    int failing;  // 0: none, but the system has no pages left
    int calls;
} refusal;

bool is_refused() {
    if (!refusal.isArmed || refusal.failing == 0 || ++refusal.calls < refusal.failing ||
        (!refusal.goesOn && refusal.calls > refusal.failing)) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" void* malloc(std::size_t size) {
    return is_refused() ? nullptr : __libc_malloc(size);
}
extern "C" void* calloc(std::size_t count, std::size_t size) {
    return is_refused() ? nullptr : __libc_calloc(count, size);
}
extern "C" void* realloc(void* block, std::size_t size) {
    return is_refused() ? nullptr : __libc_realloc(block, size);
}

namespace {

struct Wide : WString {
    using WString::Format;
    using WString::operator=;
};

struct Operation {
    const char* name;
    const char* locale;
    const char* before;    // of the narrow value
    const char* after;     // of the same
    const char16_t* wide;  // of what was u"old"
    void (*run)(Kelm& narrow, Wide& wide);
};

const char kShiftJis[] = "ja_JP.SHIFT_JIS";
const char kKana[] = "\x83\x4A";

const Operation kOperations[] = {
    {"=", kShiftJis, kKana, kKana, u"\u30AB", [](Kelm& narrow, Wide& wide) { wide = narrow; }},
    {"<<", kShiftJis, kKana, kKana, u"old\u30AB",
     [](Kelm& narrow, Wide& wide) { wide << narrow.constBuffer(); }},
    {"FromCodePage", "C", kKana, kKana, u"\uAC00",
     [](Kelm&, Wide& wide) { wide = WString::FromCodePage("\xB0\xA1", 949); }},
    {"FromCodePage, shifting", "C", kKana, kKana, u"A",
     [](Kelm&, Wide& wide) { wide = WString::FromCodePage("\xC1", 939); }},
    {"ToKelm", kShiftJis, "old", kKana, u"old",
     [](Kelm& narrow, Wide&) { narrow = WString(u"\u30AB").ToKelm(); }},
    {"%S", kShiftJis, "old", kKana, u"old",
     [](Kelm& narrow, Wide&) { narrow.Format("%S", u"\u30AB"); }},
    {"%ls", "zh_TW.EUC-TW", "old", "old\xC4\xA1", u"old",
     [](Kelm& narrow, Wide&) { narrow.AppendFormat("%600ls", u"\u4E00"); }},
    {"wide %S", kShiftJis, kKana, kKana, u"\u30AB",
     [](Kelm& narrow, Wide& wide) { wide.Format(u"%S", narrow.constBuffer()); }},
    {"ToCharacterSet", "C", "\xEF\xBC\x81", "\xA3\xA1", u"old",
     [](Kelm& narrow, Wide&) { narrow.ToCharacterSet(949); }},
};

bool holds(Kelm narrow, const WString& wide, const char* wantedNarrow, const char16_t* wantedWide) {
    narrow.Remove(' ');  // the padding
    return narrow == wantedNarrow && wide == wantedWide;
}

/// Takes the pages that the system has left for a process, or gives them back.
void limit_pages(bool isLimited) {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = isLimited ? 0 : limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

enum Result { kDone, kRefused, kWrong };

Result attempt(const Operation& operation) {
    Kelm narrow(operation.before);
    Wide wide;
    wide = u"old";
    bool isThrown = false;
    refusal.isArmed = true;
    limit_pages(refusal.failing == 0);
    try {
        operation.run(narrow, wide);
    } catch (const std::bad_alloc&) {
        isThrown = true;
    }
    refusal.isArmed = false;
    limit_pages(false);
    const bool isRight = isThrown ? holds(narrow, wide, operation.before, u"old")
                                  : holds(narrow, wide, operation.after, operation.wide);
    Kelm next(operation.before);
    Wide nextWide;
    nextWide = u"old";
    operation.run(next, nextWide);
    if (!isRight || !holds(next, nextWide, operation.after, operation.wide)) {
        return kWrong;
    }
    return refusal.calls < refusal.failing ? kDone : kRefused;
}

/// In a process that has converted nothing.
Result attempt_apart(const Operation& operation) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        std::exit(attempt(operation));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<Result>(WEXITSTATUS(status)) : kWrong;
}

/// The number of faults.
int run(const Operation& operation) {
    int faults = 0;
    for (const bool goesOn : {false, true}) {
        Result result = kRefused;
        for (int failing = goesOn ? 0 : 1; result != kDone && failing < 1000; ++failing) {
            refusal = {false, goesOn, failing, 0};
            result = attempt_apart(operation);
            if (result == kWrong) {
                std::printf("%s: allocation %d%s\n", operation.name, failing, goesOn ? " on" : "");
                ++faults;
            }
        }
        faults += result == kDone ? 0 : 1;
    }
    return faults;
}

}  // namespace

int main() {
    int faults = 0;
    for (const Operation& operation : kOperations) {
        if (std::setlocale(LC_ALL, operation.locale) == nullptr) {
            std::printf("no locale %s; is LOCPATH set?\n", operation.locale);
            return 1;
        }
        faults += run(operation);
    }
    return faults != 0 ? 1 : 0;
}
