// Memory runs out at every allocation of the first use of a code page, the C library's own for a
// converter and its file included: each time in a fresh process, once and from then on, and where
// there are no new pages at all. What comes out is std::bad_alloc with the objects as they were, or
// the right text; the next call works. With the argument `all` every code page is tried as well,
// both ways, which takes minutes.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string>
#include <vector>

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

unsigned int tried_page;  // by these two
const char kBytes[] = "A\x81\xB0\xA1z";
const Operation kDecode = {
    "decode", "C",
    kBytes,   kBytes,
    nullptr,  [](Kelm& narrow, Wide& wide) { wide = WString::FromCodePage(narrow, tried_page); }};
const Operation kEncode = {
    "encode", "C",
    "old",    nullptr,
    u"old",   [](Kelm& narrow, Wide&) {
                               narrow = WString(u"A\u00E9\u4E00").ToKelm(tried_page); }};

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

int refusals;

/// The number of faults.
int run(const Operation& operation) {
    int faults = 0;
    for (const bool goesOn : {false, true}) {
        Result result = kRefused;
        for (int failing = goesOn ? 0 : 1; result != kDone && failing < 1000; ++failing) {
            refusal = {false, goesOn, failing, 0};
            result = attempt_apart(operation);
            refusals += result == kRefused ? 1 : 0;
            if (result == kWrong) {
                std::printf("%s: allocation %d%s\n", operation.name, failing, goesOn ? " on" : "");
                ++faults;
            }
        }
        faults += result == kDone ? 0 : 1;
    }
    return faults;
}

struct Page {
    unsigned int number;
    char encoded[32];
    char16_t decoded[32];
};

/// All there are, with what they make where there is memory. Told by a process of its own, so that
/// each stays unused in this one.
std::vector<Page> known_pages() {
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    if (fork() == 0) {
        for (unsigned int number = 1; number < 0x10000; ++number) {
            const WString decoded = WString::FromCodePage(kBytes, number);
            const Kelm encoded = WString(u"A\u00E9\u4E00").ToKelm(number);
            Page page{number, {}, {}};
            std::memcpy(page.decoded, decoded, 2 * static_cast<std::size_t>(decoded.GetLength()));
            std::memcpy(page.encoded, encoded, static_cast<std::size_t>(encoded.GetLength()));
            if (!decoded.IsEmpty() && write(ends[1], &page, sizeof page) != sizeof page) {
                break;
            }
        }
        _exit(0);
    }
    close(ends[1]);
    std::vector<Page> pages;
    for (Page page; read(ends[0], &page, sizeof page) == sizeof page;) {
        pages.push_back(page);
    }
    close(ends[0]);
    wait(nullptr);
    return pages;
}

int run_all_pages() {
    const std::vector<Page> pages = known_pages();
    int faults = pages.size() < 100 ? 1 : 0;
    for (const Page& page : pages) {
        tried_page = page.number;
        Operation decode = kDecode;
        decode.wide = page.decoded;
        Operation encode = kEncode;
        encode.after = page.encoded;
        const int before = faults;
        faults += run(decode) + run(encode);
        if (faults != before) {
            std::printf("page %u\n", page.number);
        }
    }
    std::printf("%zu pages, ", pages.size());
    return faults;
}

}  // namespace

int main(int count, char** arguments) {
    int faults = 0;
    for (const Operation& operation : kOperations) {
        if (std::setlocale(LC_ALL, operation.locale) == nullptr) {
            std::printf("no locale %s; is LOCPATH set?\n", operation.locale);
            return 1;
        }
        faults += run(operation);
    }
    if (count > 1 && std::strcmp(arguments[1], "all") == 0) {
        faults += run_all_pages();
    }
    std::printf("%d refusals, %d faults\n", refusals, faults);
    return faults != 0 ? 1 : 0;
}
