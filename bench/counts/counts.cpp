// What operations cost without a clock: run under callgrind, this program dumps the instructions of
// each row by itself. "op" rows are calls on a batch of short texts of 8 to 32 units, and tell of
// allocations too. "once" and "twice" rows are one call on a long text and on one of double length,
// whose quotient tells what is not linear.

#include <Kelm.h>
#include <locale.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace {

int g_nAllocations = 0;

void* allocate(std::size_t size) {
    ++g_nAllocations;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

constexpr int kBatch = 64;
volatile long long g_sink;

void dump(const std::string& name) {
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

/// Runs a call on each text of a batch, after a first run that fills caches and tables.
template <class Text>
void op(const std::string& name, const std::vector<Text>& texts,
        const std::function<long long(Text&)>& call) {
    for (int nRun = 0; nRun < 2; ++nRun) {
        std::vector<Text> batch(texts);
        long long nSum = 0;
        g_nAllocations = 0;
        CALLGRIND_ZERO_STATS;
        for (Text& text : batch) {
            nSum += call(text);
        }
        if (nRun == 1) {
            dump("op " + name + " " + std::to_string(g_nAllocations));
        }
        g_sink = nSum;
    }
}

/// Runs a call on a text of 20,000 units and on one of 40,000.
template <class Text>
void linear(const std::string& name, const std::function<Text(int)>& make,
            const std::function<void(Text&)>& call) {
    for (const int nTimes : {1, 2}) {
        Text text = make(20000 * nTimes);
        text.GetBuffer(text.GetLength());
        CALLGRIND_ZERO_STATS;
        call(text);
        dump((nTimes == 1 ? "once " : "twice ") + name);
    }
}

std::vector<Kelm> narrow_texts() {
    static const char* const aWords[] = {"amount", "north", "Berlin", "x", "fields", "and", "Zulu"};
    std::vector<Kelm> texts;
    unsigned nState = 7;
    while (texts.size() < kBatch) {
        Kelm text;
        const int nLength = 8 + static_cast<int>((nState = nState * 1103515245 + 12345) >> 16) % 25;
        while (text.GetLength() < nLength) {
            text << aWords[(nState = nState * 1103515245 + 12345) / 65536 % 7] << ' ';
        }
        texts.push_back(Kelm(text, nLength));
    }
    return texts;
}

std::vector<WString> wide_texts() {
    std::vector<WString> texts;
    for (const Kelm& text : narrow_texts()) {
        texts.push_back(WString(text));
    }
    return texts;
}

/// The same text as narrow and as wide literal.
template <class Text>
Text of(const char* pchText);
template <>
Kelm of(const char* pchText) {
    return Kelm(pchText);
}
template <>
WString of(const char* pchText) {
    return WString(pchText);
}

template <class Text>
void short_texts(const std::string& width, const std::vector<Text>& texts) {
    using Unit = std::remove_cv_t<std::remove_reference_t<decltype(Text()[0])>>;
    const auto run = [&](const char* pchName, const std::function<long long(Text&)>& call) {
        op<Text>(width + pchName, texts, call);
    };
    const Text blank = of<Text>(" "), word = of<Text>("north"), set = of<Text>("zyZ");
    const Text sixteen = of<Text>("sixteen units...");
    std::vector<Text> kept(kBatch), equal;
    for (const Text& text : texts) {
        equal.push_back(Text(text.constBuffer()));
    }
    std::size_t i = 0;
    const auto next = [&i] { return i++ % kBatch; };
    run("copy", [&](Text& t) { return Text(t).GetLength(); });
    run("assign_sharer", [&](Text& t) { return (kept[next()] = t).GetLength(); });
    run("construct", [&](Text& t) { return Text(t.constBuffer()).GetLength(); });
    run("append_character", [&](Text& t) {
        t.GetBuffer(40);
        return t.Append(Unit('x')).GetLength();
    });
    run("append_16", [&](Text& t) {
        t.GetBuffer(60);
        return t.Append(sixteen.constBuffer()).GetLength();
    });
    run("reserve", [&](Text& t) { return *t.GetBuffer(60); });
    run("find_character", [&](Text& t) { return t.Find(Unit('z')); });
    run("find_text", [&](Text& t) { return t.Find(word); });
    run("find_one_of", [&](Text& t) { return t.FindOneOf(set); });
    run("reverse_find", [&](Text& t) { return t.ReverseFind(Unit('z')); });
    run("nc_find", [&](Text& t) { return t.NCFind(word); });
    run("count", [&](Text& t) { return t.Count(blank); });
    run("equal", [&](Text& t) { return t == equal[next()] ? 1 : 0; });
    run("less", [&](Text& t) { return t < texts[(next() + 1) % kBatch] ? 1 : 0; });
    run("compare_no_case", [&](Text& t) { return t.CompareNoCase(equal[next()]); });
    run("mid", [&](Text& t) { return t.Mid(2, 5).GetLength(); });
    run("trim", [&](Text& t) { return t.Trim().GetLength(); });
    run("upper", [&](Text& t) { return t.MakeUpper(), 0; });
    run("reverse", [&](Text& t) { return t.MakeReverse(), 0; });
    run("replace_text", [&](Text& t) { return t.Replace(word, blank); });
    run("remove_space", [&](Text& t) { return t.RemoveSpace(); });
    run("element", [&](Text& t) { return t.Element(1, Unit(' ')).GetLength(); });
    run("from_int", [&](Text& t) { return Text::From(t.GetLength()).GetLength(); });
    run("int", [&](Text& t) { return t.Int(); });
}

template <class Text>
void long_texts(const std::string& width) {
    using Unit = std::remove_cv_t<std::remove_reference_t<decltype(Text()[0])>>;
    const auto words = [](int nLength) {
        Text text = of<Text>("");
        text.GetBuffer(nLength + 20);
        while (text.GetLength() < nLength) {
            text << of<Text>("the amount, in fields; ");
        }
        return text;
    };
    const auto same = [](int nLength) { return Text::FromRepeat(Unit('a'), nLength); };
    const auto nested = [](int nLength) {
        const Text half = Text::FromRepeat(Unit('a'), nLength / 2);
        return half + Text::FromRepeat(Unit('b'), nLength / 2);
    };
    const auto run = [&](const char* pchName, const std::function<Text(int)>& make,
                         const std::function<void(Text&)>& call) {
        linear<Text>(width + pchName, make, call);
    };
    const Text adverse = Text::FromRepeat(Unit('a'), 200) + of<Text>("b");
    const Text amount = of<Text>("amount"), AmounT = of<Text>("AmounT"),
               longer = of<Text>("amounts");
    run("find", words, [&](Text& t) { g_sink = t.Find(of<Text>("nowhere")); });
    run("find_adverse", same, [&](Text& t) { g_sink = t.Find(adverse); });
    run("nc_find_adverse", same, [&](Text& t) { g_sink = t.NCFind(adverse); });
    run("find_one_of", words, [&](Text& t) { g_sink = t.FindOneOf(of<Text>("QXZ")); });
    run("count", words, [&](Text& t) { g_sink = t.Count(amount); });
    run("replace_longer", words, [&](Text& t) { g_sink = t.Replace(amount, longer); });
    run("replace_shorter", words, [&](Text& t) { g_sink = t.Replace(amount, of<Text>("x")); });
    run("replace_each", same, [&](Text& t) { g_sink = t.Replace(of<Text>("a"), amount); });
    run("remove", words, [&](Text& t) { g_sink = t.Remove(amount); });
    run("remove_space", words, [&](Text& t) { g_sink = t.RemoveSpace(); });
    run("nc_remove", words, [&](Text& t) { g_sink = t.NCRemove(AmounT); });
    run("nc_remove_nested", nested, [&](Text& t) { g_sink = t.NCRemove(of<Text>("AB")); });
    run("upper", words, [&](Text& t) { t.MakeUpper(); });
    run("reverse", words, [&](Text& t) { t.MakeReverse(); });
    run(
        "trim", [](int n) { return Text::FromRepeat(Unit(' '), n); },
        [&](Text& t) { g_sink = t.Trim().GetLength(); });
    run("elements", words,
        [&](Text& t) { g_sink = t.Element(t.GetLength() / 30, Unit(';')).GetLength(); });
    run("compare_no_case", words,
        [&](Text& t) { g_sink = t.CompareNoCase(Text(t.constBuffer())); });
}

void narrow_alone() {
    const std::vector<Kelm> texts = narrow_texts();
    const auto run = [&](const char* pchName, const std::function<long long(Kelm&)>& call) {
        op<Kelm>(pchName, texts, call);
    };
    run("format_d", [](Kelm& t) { return t.Format("%d", t.GetLength()), 0; });
    run("format_s", [](Kelm& t) { return Kelm::FromFormat("%s=%d", t.constBuffer(), 7)[0]; });
    run("format_g", [](Kelm& t) { return t.Format("%g", t.GetLength() / 7.0), 0; });
    run("token", [](Kelm& t) { return Kelm::Token(t).Current().GetLength(); });
    run("to_wide", [](Kelm& t) { return WString(t).GetLength(); });
    run("to_page", [](Kelm& t) { return WString::FromCodePage(t, 932).GetLength(); });
    op<WString>("to_narrow", wide_texts(), [](WString& t) { return t.ToKelm().GetLength(); });
    op<WString>("from_page", wide_texts(), [](WString& t) { return t.ToKelm(932).GetLength(); });
    const auto words = [](int nLength) {
        return Kelm::FromRepeat('&', nLength / 20) + Kelm::FromRepeat('x', nLength);
    };
    linear<Kelm>("nc_replace", words, [](Kelm& t) { g_sink = t.NCReplace("&", "&amp;"); });
    linear<Kelm>(
        "tabs", [](int n) { return Kelm::FromRepeat('\t', n); },
        [](Kelm& t) { g_sink = t.ReplaceTabs(4); });
    linear<Kelm>(
        "lines", [](int n) { return Kelm::FromRepeat('\n', n); },
        [](Kelm& t) {
            Kelm::Token token(t);
            while (token.NextLine()) {
            }
        });
    linear<Kelm>(
        "tokens",
        [](int n) {
            Kelm t;
            t.Repeat("a b ", n / 4);
            return t;
        },
        [](Kelm& t) {
            for (Kelm::Token token(t); token; ++token) {
            }
        });
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

int main() {
    if (setlocale(LC_ALL, "en_US.UTF-8") == nullptr) {
        std::fputs("no locale en_US.UTF-8; is LOCPATH set?\n", stderr);
        return 1;
    }
    short_texts<Kelm>("", narrow_texts());
    short_texts<WString>("wide_", wide_texts());
    narrow_alone();
    long_texts<Kelm>("");
    long_texts<WString>("wide_");
}
