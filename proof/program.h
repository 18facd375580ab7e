#pragma once

#include <exception>
#include <iterator>
#include <sstream>
#include <string>

#include "allocator.h"
#include "guarded.h"
#include "input.h"
#include "operations.h"

/// Programs of random operations that run on a class and on its model, read from bytes.
namespace programs {

struct Setting {
    const char* locale;
    std::string narrow;
    std::u16string wide;
};

/// Pieces of characters, of both cases, and what only looks like one.
inline const Setting kSettings[] = {
    {"C", "\xC3\xA9\xFF", u"\u00E9\u0130\xD83D"},
    {"en_US.UTF-8", "\xC3\xA9\x89\xE2\x82\xF0\x9F", u"\u00E9\u00C9\xD83D\xDE00"},
    {"tr_TR.UTF-8", "iI\xC4\xB0\xB1", u"iI\u0130\u0131\u2003\u212A\u017F"},
    {"tr_TR.ISO-8859-9", "iI\xDD\xFD", u"iI\u0130\u0131"},
    {"en_US.UTF-8", "\xED\xA0\x9F\xE0\xF4\xF0\x90\x80", u"\u0434\u0414\xDC00\uFFFF"},
    {"de_DE.ISO-8859-1", "\xE4\xC4\xDF\xA0", u"\u00E4\u00C4\u20AC"},
    {"ja_JP.SHIFT_JIS", "\x82\x60\x81\xB1\xE0\x5C", u"\uFF41\uFF21\u3042\u3000"},
    {"ja_JP.EUC-JP", "\xA3\xC1\xE1\x8F\x8E", u"\uFF41\uFF21\u3042"},
    {"zh_CN.GBK", "\x81\x5C\xA3\xC1\xE1", u"\uFF41\uFF21\u4E02"},
    {"zh_CN.GB18030", "\x81\x30\xA3\xC1\xE1", u"\uFF41\uFF21\u4E00"},
};
inline constexpr char kAscii[] = "aAzZkx{`[@_ \t\t\n,,;.0179-+fe'#\x01\x7F\0";

template <class Unit>
std::string quoted(const std::basic_string<Unit>& text) {
    std::ostringstream out;
    out << '"' << std::hex;
    for (const Unit unit : text) {
        const auto value = static_cast<std::make_unsigned_t<Unit>>(unit);
        if (value >= ' ' && value < 0x7F) {
            out << static_cast<char>(value);
        } else {
            out << '<' << static_cast<unsigned>(value) << '>';
        }
    }
    return out.str() + '"';
}

/// Whether the steps of replacing without case come to an end soon: some never do.
template <class Unit>
bool replacing_ends(const Model<Unit>& text, const Unit* pchOld, const Unit* pchNew) {
    if (pchOld == nullptr || *pchOld == 0) {
        return true;
    }
    const Model<Unit> from(pchOld), to(pchNew);
    Model<Unit> rest = Model<Unit>::Made(text.Whole());
    int nSteps = 0;
    for (int at = 0, nHit = 0; nSteps < 40 && nHit >= 0 && rest.GetLength() < 1000; ++nSteps) {
        const Model<Unit> tail = rest.Mid(at);
        nHit = tail.NCFind(pchOld);
        if (nHit >= 0) {
            rest.Replace(tail.Mid(nHit, from.GetLength()).constBuffer(), pchNew);
            at += nHit + to.GetLength();
        }
    }
    return nSteps < 40 && rest.GetLength() < 1000;
}

template <class Text>
class Program {
public:
    using Unit = typename Twin<Text>::Unit;
    using String = std::basic_string<Unit>;

    Program(const unsigned char* data, std::size_t size, bool bTells)
        : bTells_(bTells),
          in_(data, size),
          bLong_(in_.Below(3) == 0),
          setting_(kSettings[in_.Below(std::size(kSettings))]) {}

    /// What went wrong, with the program up to there if it is to be told; nothing where all agrees.
    std::string Run() {
        if (std::setlocale(LC_ALL, setting_.locale) == nullptr) {
            return std::string("no locale ") + setting_.locale;
        }
        log_ << setting_.locale << '\n';
        ChooseLetters();
        while (!in_.IsEmpty() && fault_.empty()) {
            TakeStep();
        }
        return fault_.empty() ? "" : log_.str() + fault_;
    }

private:
    static constexpr std::size_t kValues = 3;

    void ChooseLetters() {
        const String own(Twin<Text>::Pick(setting_.narrow.c_str(), setting_.wide.c_str()));
        for (int n = 0; n < 5; ++n) {
            const unsigned byte = in_.Byte();
            letters_ += byte % 3 == 0 ? own[byte / 3 % own.size()]
                                      : static_cast<Unit>(kAscii[byte / 3 % sizeof kAscii]);
        }
    }

    Unit Letter() {
        const unsigned byte = in_.Byte();
        return byte < 240   ? letters_[byte % letters_.size()]
               : byte < 250 ? static_cast<Unit>(kAscii[byte % sizeof kAscii])
                            : static_cast<Unit>(in_.Byte() * (byte % 2 == 0 ? 0x101u : 1u));
    }

    /// Letters, or a piece of the text.
    String Some(const String& text) {
        const unsigned kind = in_.Byte();
        const std::size_t nLong = 6 * in_.Byte();
        String result;
        if (kind % 64 == 7) {
            static const std::string kWords[] = {"true", " On", "YES\t ", "no"};
            const std::string& word = kWords[nLong / 6 % 4];
            return String(word.begin(), word.end());
        }
        if (kind % 3 == 0) {
            const std::size_t nAt = in_.Below(text.size() + 1);
            return text.substr(kind % 2 == 0 ? 0 : nAt, 1 + kind / 3 % (bLong_ ? 80 : 6) * nAt);
        }
        for (unsigned n = kind / 3 % 7; n > 0; --n) {
            result += Letter();
        }
        const String piece = result;
        while (bLong_ && kind % 4 == 0 && result.size() < nLong) {
            result += piece + Letter();
        }
        return result;
    }

    int Number() {
        static const int kEnds[] = {INT_MIN, INT_MIN + 1, -1, INT_MAX - 1, INT_MAX};
        const unsigned byte = in_.Byte();
        return byte >= 250 ? kEnds[byte % 5] : static_cast<int>(byte % 40) - 3;
    }

    void TakeStep() {
        const auto& all = operations::rows<Text>();
        const unsigned choice = in_.Byte();
        const auto& row = choice < 200 ? all[choice % all.size()] : *blind_[choice % blind_.size()];
        const std::size_t nTarget = in_.Below(kValues);
        const std::size_t nOther = in_.Below(kValues);
        const std::size_t nResult = in_.Below(kValues);
        const String text = model_[nTarget].Whole();
        const unsigned kinds = in_.Byte();
        const Unit* const pchOwn = real_[nTarget].constBuffer() + in_.Below(text.size() + 1);
        const bool bOwnF = kinds % 8 == 1, bOwnG = kinds / 8 % 8 == 1;
        const String f = bOwnF ? String(pchOwn) : Some(text),
                     g = bOwnG ? String(pchOwn) : Some(text);
        const std::string narrow = "n" + std::string(1, static_cast<char>(in_.Byte()));
        static const double kDoubles[] = {0, 0.5, -1.5, 7, 1e300, 1.0 / 3, -5e-324, 123456789};
        static const unsigned kPages[] = {0, 65001, 28591, 12345};

        operations::Arguments<Unit> arguments{};
        arguments.ch = Letter();
        arguments.ch2 = Letter();
        arguments.n = Number();
        arguments.n2 = Number();
        arguments.nCount = static_cast<int>(in_.Below(24)) - 3;
        arguments.nRoom = static_cast<int>(in_.Below(60));
        arguments.nIndex = static_cast<int>(in_.Below(text.size() + 1));
        arguments.f = atF_.At(kinds / 2 % 2 == 0, f);
        arguments.g = atG_.At(kinds / 4 % 2 == 0, g);
        arguments.fOrNull = kinds % 16 == 0 ? nullptr : arguments.f;
        arguments.gOrNull = kinds / 16 == 0 ? nullptr : arguments.g;
        arguments.narrow = kinds == 255 ? nullptr : narrow.c_str();
        arguments.nPage = kPages[kinds % 4];
        arguments.d = kDoubles[kinds / 4 % std::size(kDoubles)];
        arguments.bEnds = std::strncmp(row.name, "NCReplace", 9) != 0 ||
                          replacing_ends(model_[nTarget], arguments.fOrNull, arguments.gOrNull);
        if (bTells_) {
            Tell(row.name, nTarget, nOther, nResult, arguments, bOwnF, bOwnG);
        }
        Remember();
        auto own = arguments;
        own.f = bOwnF ? pchOwn : own.f;
        own.fOrNull = bOwnF && own.fOrNull != nullptr ? pchOwn : own.fOrNull;
        own.gOrNull = bOwnG && own.gOrNull != nullptr ? pchOwn : own.gOrNull;
        operations::RealStep<Text> actual{own, real_[nTarget], real_[nOther], real_[nResult],
                                          narrow_};
        const auto refusal = static_cast<Refusal>(in_.Byte() % 16);
        const bool bRefuses = refusal <= (row.TakesOtherArrays() ? Refusal::ThrowFromThenOn
                                                                 : Refusal::NullFromThenOn);
        if (Throws(row, actual, bRefuses ? refusal : Refusal::None, 1 + in_.Below(4)) &&
            (!IsAsBefore(row.leaves, nTarget) || Throws(row, actual, Refusal::None, 0))) {
            return;
        }
        operations::ModelStep<Text> expected{arguments, model_[nTarget], model_[nOther],
                                             model_[nResult], narrowModel_};
        row.expect(expected);
        Expect("", "result", actual.result, expected.result);
        Expect("", "narrow text", quoted(whole(narrow_)), quoted(narrowModel_.Whole()));
        Compare();
        Shorten();
    }

    /// Does the step with an allocation that fails, or none.
    bool Throws(const operations::Row<Text>& row, operations::RealStep<Text>& step, Refusal refusal,
                long nFail) {
        bool bThrown = false;
        allocator.Arm(refusal, nFail);
        try {
            row.run(step);
        } catch (const std::bad_alloc&) {
            bThrown = true;
        }
        allocator.refusal = Refusal::None;
        const bool bRefused = allocator.nRefused > 0;
        Expect("", "bad_alloc", bThrown, bRefused && refusal != Refusal::Null);
        Expect("", "allocates", bRefused && row.leaves == operations::Leaves::Never, false);
        return bThrown;
    }

    /// Whether a step that failed has left everything, so that it can be done again. A target that
    /// may have lost its text or the block that it shared starts anew.
    bool IsAsBefore(operations::Leaves leaves, std::size_t nTarget) {
        using operations::Leaves;
        auto& real = real_[nTarget];
        auto& model = model_[nTarget];
        const bool bMoved = real.constBuffer() != addresses_[nTarget];
        const bool bLost = leaves == Leaves::TextOfSteps || (bMoved && model.Refs() > 1) ||
                           (leaves == Leaves::TextOrEmpty && real.IsEmpty());
        if (leaves == Leaves::Text) {
            Expect("", "text after a failure", quoted(whole(real)), quoted(model.Whole()));
        }
        if (bLost) {
            static_cast<Text&>(real).Release();
            model.Release();
        }
        Compare();
        return !bLost;
    }

    void Tell(const char* name, std::size_t nTarget, std::size_t nOther, std::size_t nResult,
              const operations::Arguments<Unit>& a, bool bOwnF, bool bOwnG) {
        const auto& target = model_[nTarget];
        log_ << '[' << nTarget << "] = " << quoted(target.Whole()) << " holders " << target.Refs()
             << " capacity " << target.GetAllocLength() << ": " << name << " [" << nOther
             << "] -> [" << nResult << "] f " << quoted(String(a.f)) << " g " << quoted(String(a.g))
             << " ch " << quoted(String{a.ch, a.ch2}) << " n " << a.n << ' ' << a.n2 << " count "
             << a.nCount << " room " << a.nRoom << " index " << a.nIndex << " own " << bOwnF
             << bOwnG << " null " << (a.fOrNull == nullptr) << (a.gOrNull == nullptr) << " page "
             << a.nPage << " d " << a.d << '\n';
    }

    void Remember() {
        for (std::size_t n = 0; n < kValues; ++n) {
            addresses_[n] = real_[n].constBuffer();
            blocks_[n] = model_[n].BlockNumber();
        }
    }

    template <class Value>
    void Expect(const char* where, const char* what, const Value& actual, const Value& expected) {
        if (!(actual == expected) && fault_.empty()) {
            std::ostringstream out;
            out << where << what << ": " << actual << " instead of " << expected << '\n';
            fault_ = out.str();
        }
    }

    void Compare() {
        for (std::size_t n = 0; n < kValues; ++n) {
            const char* const names[] = {"[0] ", "[1] ", "[2] "};
            const char* const name = names[n];
            const auto& real = real_[n];
            const auto& model = model_[n];
            const auto* pchText = real.constBuffer();
            const auto* pHeader = reinterpret_cast<const std::int32_t*>(pchText) - 3;
            if (whole(real) != model.Whole()) {
                Expect(name, "text", quoted(whole(real)), quoted(model.Whole()));
            }
            Expect(name, "length", real.GetLength(), model.GetLength());
            Expect(name, "capacity", real.GetAllocLength(), model.GetAllocLength());
            Expect(name, "terminator", static_cast<int>(pchText[real.GetLength()]), 0);
            Expect(name, "first field of the header", pHeader[0], model.Refs());
            Expect(name, "second field of the header", pHeader[1], model.GetLength());
            Expect(name, "third field of the header", pHeader[2], model.GetAllocLength());
            if (model.BlockNumber() == blocks_[n]) {
                Expect(name, "address is kept", pchText == addresses_[n], true);
            }
            for (std::size_t other = 0; other < n; ++other) {
                Expect(name, "shares with one in front", pchText == real_[other].constBuffer(),
                       model.BlockNumber() == model_[other].BlockNumber());
            }
        }
    }

    void Shorten() {
        for (std::size_t n = 0; n < kValues; ++n) {
            if (model_[n].GetLength() > (bLong_ ? 2600 : 150)) {
                static_cast<Text&>(real_[n]).Release();
                model_[n].Release();
            }
        }
    }

    /// What works without case has the most to go wrong and comes up more often.
    static std::vector<const operations::Row<Text>*> BlindRows() {
        std::vector<const operations::Row<Text>*> result;
        for (const auto& row : operations::rows<Text>()) {
            if (std::string_view(row.name).starts_with("NC")) {
                result.push_back(&row);
            }
        }
        return result;
    }

    const bool bTells_;
    const std::vector<const operations::Row<Text>*> blind_ = BlindRows();
    Input in_;
    GuardedPages<Unit> atF_, atG_;
    const bool bLong_;
    const Setting& setting_;
    String letters_;
    Open<Text> real_[kValues];
    Model<Unit> model_[kValues];
    Open<Kelm> narrow_;
    Model<char> narrowModel_;
    const Unit* addresses_[kValues];
    long blocks_[kValues];
    std::ostringstream log_;
    std::string fault_;
};

template <class Text>
std::string run(const unsigned char* data, std::size_t size) {
    return Program<Text>(data, size, false).Run().empty() ? std::string()
                                                          : Program<Text>(data, size, true).Run();
}

/// Runs the bytes as a program of the class that the first of them names.
inline std::string run(const unsigned char* data, std::size_t size) {
    return size == 0          ? ""
           : data[0] % 2 == 0 ? run<Kelm>(data + 1, size - 1)
                              : run<WString>(data + 1, size - 1);
}

}  // namespace programs
