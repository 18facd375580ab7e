// Every operation on all small texts, and with arguments next to pages that cannot be read, held
// against the model.

#include <cstdlib>
#include <iostream>
#include <string_view>
#include <tuple>
#include <utility>

#include "guarded.h"
#include "locales.h"
#include "program.h"
#include "twins.h"

namespace {

using namespace std::literals;

/// Three letters for each class. What starts a character or goes on with one stands beside NUL,
/// beside its other case, and beside what is trimmed, widened or a delimiter.
struct Alphabet {
    const char* locale;
    std::string narrow;
    std::u16string wide;
};
const Alphabet kAlphabets[] = {
    {"C", "aA\0"s, u"aA\0"s},
    {"C", "\t \xC3", u"\t x"},
    {"de_DE.ISO-8859-1", "a_A", u"a_A"},
    {"ja_JP.SHIFT_JIS", "\x81_A", u"\u2003-\u3000"},
    {"ja_JP.SHIFT_JIS", "\x82\x61\0"s, u"\uFF21\uFF41\0"s},
    {"ja_JP.SHIFT_JIS", "\x82\t\0"s, u"\u3000,\0"s},
    {"ja_JP.SHIFT_JIS", "\x82 ,", u"\uFF41a\uFF21"},
    {"zh_CN.GBK", "\xA3\xC1\xE1", u"\u4E00\0 "s},
    {"zh_CN.GBK", "\xB0\x41\0"s, u"\u0434\u0414\0"s},
    {"zh_CN.GB18030", "\x81\x30\0"s, u"0-\0"s},
    {"ja_JP.EUC-JP", "\x8F\xA3\0"s, u"\u00E9\u00C9\0"s},
    {"en_US.UTF-8", "\xC3\xA9\0"s, u"\xD83D\xDE00\0"s},
    {"en_US.UTF-8", "\xC3\xA9\x89", u"\u0100\u0101\u0001"},
    {"tr_TR.UTF-8", "i\xC4\xB0", u"iI\u0130"},
    {"tr_TR.ISO-8859-9", "i\xDD\0"s, u"\u0131I\0"s},
};

/// One operation on the class and on its model, with arguments at one end of their pages.
template <class Text>
class Trial {
    using Unit = typename Twin<Text>::Unit;
    using String = std::basic_string<Unit>;

public:
    Trial(const operations::Row<Text>& row, const Alphabet& alphabet)
        : row_(row),
          narrow_(alphabet.narrow),
          letters_(std::get<const String&>(std::tie(alphabet.narrow, alphabet.wide))) {}

    bool TakesPointers() const { return Parameters("*") > 0; }
    /// Formats and pages have tests of their own; narrow text stands in front of pages.
    bool TakesSmall() const {
        const std::string_view name = row_.name;
        return name.find("ormat") == name.npos && name.find("CharacterSet") == name.npos &&
               Parameters("char") + Parameters("Kelm") == 0;
    }

    /// Arguments of each length at both ends of their pages, cut within one character or another.
    void TryAtPages() {
        for (std::size_t nLength = 0; nLength < 90; nLength += nLength < 36 ? 1 : 3) {
            const String f = Cycle(letters_, nLength), mark(1, letters_[0]);
            const String other = f.substr(0, nLength - (nLength > 0)) + Unit('y');
            a_.n = a_.nCount = static_cast<int>(nLength) + 1;
            a_.ch = a_.ch2 = letters_[1];
            for (const bool bEnd : {false, true}) {
                a_.nRoom = bEnd ? 2 : 3;
                Place(bEnd, f, String(nLength % 40, 'z'), Cycle(narrow_, nLength));
                for (const String& text : {f, other, f + mark, mark + f}) {
                    ASSERT_NO_FATAL_FAILURE(Expect(text));
                }
            }
        }
    }

    /// All calls with texts of up to so many letters, units and numbers.
    void TryAll(std::size_t nMost) {
        const String marks(letters_.c_str());
        const auto texts = all_texts(letters_, nMost), puts = all_texts(marks, 2),
                   words = all_texts(marks, marks == letters_ ? nMost - 2 : nMost);
        const std::size_t nNumbers = Parameters("int"),
                          nUnits = Parameters("C)") + Parameters("C,");
        for (std::size_t n = 0;; ++n, ++nCalls) {
            std::size_t rest = n;
            const auto choose = [&rest](bool bAny, std::size_t nChoices) {
                return bAny ? std::exchange(rest, rest / nChoices) % nChoices : 0;
            };
            const String& text = texts[choose(true, texts.size())];
            const String& f = words[choose(Parameters("const") > 0, words.size())];
            const String& g = puts[choose(Parameters("C const*") > 1, puts.size())];
            a_.ch = letters_[choose(nUnits > 0, letters_.size())];
            a_.ch2 = letters_[choose(nUnits > 1, letters_.size())];
            a_.n = a_.nCount = static_cast<int>(choose(nNumbers > 0, nMost + 3)) - 1;
            a_.n2 = static_cast<int>(choose(nNumbers > 1, nMost + 3)) - 1;
            a_.nRoom = a_.n2 + 2;
            a_.nIndex = std::clamp(a_.n, 0, static_cast<int>(text.size()));
            Place(n % 2 == 0, f, g, "");
            if (rest > 0 || ::testing::Test::HasFatalFailure()) {
                return;
            }
            Expect(text);
        }
    }

    static inline long nCalls = 0;

private:
    /// How often a type or the end of one is among the parameters.
    std::size_t Parameters(std::string_view what) const {
        const std::string_view name = row_.name;
        std::size_t n = 0;
        for (auto at = name.find('('); (at = name.find(what, at)) != name.npos; ++at) {
            ++n;
        }
        return n;
    }

    template <class Any>
    static Any Cycle(const Any& letters, std::size_t nLength) {
        const Any marks(letters.c_str());
        Any text;
        while (text.size() < nLength) {
            text += marks[text.size() % marks.size()];
        }
        return text;
    }

    void Place(bool bEnd, const String& f, const String& g, const std::string& narrow) {
        a_.f = a_.fOrNull = atF_.At(bEnd, f);
        a_.g = a_.gOrNull = atG_.At(bEnd, g);
        a_.narrow = atNarrow_.At(bEnd, narrow);
    }

    /// Expects the same of a text that is held alone and of one that is shared.
    void Expect(const String& text) {
        using Outcome = std::tuple<String, String, std::string, long double, String>;
        a_.bEnds = !std::string_view(row_.name).starts_with("NCReplace") ||
                   programs::replacing_ends(Model<Unit>::Made(text), a_.f, a_.g);
        Model<Unit> t = Model<Unit>::Made(text), o(a_.f), r;
        Model<char> k(a_.narrow);
        operations::ModelStep<Text> expected{a_, t, o, r, k};
        row_.expect(expected);
        for (const bool bShared : {false, true}) {
            Open<Text> real = from<Text>(text), other(a_.f), result;
            Open<Kelm> narrow(a_.narrow);
            const Text holder = bShared ? static_cast<const Text&>(real) : Text();
            operations::RealStep<Text> actual{a_, real, other, result, narrow};
            row_.run(actual);
            ASSERT_EQ(
                Outcome(whole(real), whole(result), whole(narrow), actual.result, whole(holder)),
                Outcome(t.Whole(), r.Whole(), k.Whole(), expected.result,
                        bShared ? text : String()))
                << row_.name << " of " << programs::quoted(text) << " f "
                << programs::quoted(String(a_.f)) << " g " << programs::quoted(String(a_.g))
                << " ch " << programs::quoted(String{a_.ch, a_.ch2}) << " n " << a_.n << ' '
                << a_.n2;
            ASSERT_EQ(real.constBuffer()[real.GetLength()], 0) << row_.name;
        }
    }

    const operations::Row<Text>& row_;
    const std::string& narrow_;
    const String& letters_;
    operations::Arguments<Unit> a_{};
    GuardedPages<Unit> atF_, atG_;
    GuardedPages<char> atNarrow_;
};

template <class Text, class Try>
void try_rows(Try try_row) {
    for (const Alphabet& alphabet : kAlphabets) {
        const LocaleScope locale(alphabet.locale);
        for (const auto& row : operations::rows<Text>()) {
            Trial<Text> trial(row, alphabet);
            ASSERT_NO_FATAL_FAILURE(try_row(trial)) << alphabet.locale;
        }
    }
}

template <class Text>
class Inputs : public ::testing::Test {};
TYPED_TEST_SUITE(Inputs, Twins);

}  // namespace

// Of up to as many units as KELM_INPUTS says; 6 take six minutes.
TYPED_TEST(Inputs, AllThatAreSmall) {
    const char* const pchMost = std::getenv("KELM_INPUTS");
    const std::size_t nMost = pchMost != nullptr ? std::strtoul(pchMost, nullptr, 10) : KELM_INPUTS;
    try_rows<TypeParam>([&](Trial<TypeParam>& trial) {
        if (trial.TakesSmall()) {
            trial.TryAll(nMost);
        }
    });
    std::cout << Trial<TypeParam>::nCalls << " calls agree\n";
}

TYPED_TEST(Inputs, NextToPagesThatCannotBeRead) {
    try_rows<TypeParam>([](Trial<TypeParam>& trial) {
        if (trial.TakesPointers()) {
            trial.TryAtPages();
        }
    });
}
