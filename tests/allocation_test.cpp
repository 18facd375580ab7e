// Every allocation of every exported operation is made to fail, alone and with all that follow.
// What comes out is std::bad_alloc, the object is as promised, its neighbour is untouched, nothing
// leaks.

#include <atomic>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <new>
#include <set>

#include "operations.h"
#include "twins.h"

namespace {

/// How `operator new[]` says no: the other one always throws.
enum class Refusal { Throw, ThrowFromThenOn, Null, NullTwice, NullFromThenOn };

struct Allocator {
    std::atomic<long> nLive{0};
    bool bArmed = false;
    Refusal refusal = Refusal::Throw;
    long nCalls = 0;
    long nFail = 0;
    long nRefused = 0;

    void Arm(Refusal how, long nFirst) {
        refusal = how;
        nFail = nFirst;
        nCalls = nRefused = 0;
        bArmed = true;
    }

    bool Refuses() {
        if (!bArmed || ++nCalls < nFail) {
            return false;
        }
        const bool bOn = refusal == Refusal::ThrowFromThenOn || refusal == Refusal::NullFromThenOn;
        const bool bRefuses =
            bOn || nCalls == nFail || (refusal == Refusal::NullTwice && nCalls == nFail + 1);
        nRefused += bRefuses ? 1 : 0;
        return bRefuses;
    }
} allocator;

void* allocate(std::size_t nSize, bool bMayBeNull) {
    if (allocator.Refuses()) {
        if (bMayBeNull && allocator.refusal >= Refusal::Null) {
            return nullptr;
        }
        throw std::bad_alloc();
    }
    void* p = std::malloc(nSize == 0 ? 1 : nSize);
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    ++allocator.nLive;
    return p;
}

void release(void* p) noexcept {
    allocator.nLive -= p != nullptr ? 1 : 0;
    std::free(p);
}

}  // namespace

void* operator new(std::size_t nSize) {
    return allocate(nSize, false);
}
void* operator new[](std::size_t nSize) {
    return allocate(nSize, true);
}
void operator delete(void* p) noexcept {
    release(p);
}
void operator delete[](void* p) noexcept {
    release(p);
}
void operator delete(void* p, std::size_t) noexcept {
    release(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    release(p);
}

namespace {

using operations::Leaves;
using operations::Row;

enum class State { Private, Room, Shared, Locked };

/// The values of one run: the target in a state, with a neighbour that may share its block.
template <class Value, class Narrow>
struct Values {
    Value text, neighbour, other, result;
    Narrow narrow{"narrow"};

    template <class Unit>
    Values(State state, const Unit* pchText) : text(pchText), neighbour(pchText), other(pchText) {
        other.Append(other);
        if (state == State::Room) {
            text.GetBuffer(75);
        } else if (state == State::Shared) {
            neighbour = text;
        } else if constexpr (sizeof(Unit) == 1) {
            if (state == State::Locked) {
                text.LockBuffer();
            }
        }
    }
    template <class Step, class Arguments>
    Step With(const Arguments& arguments) {
        return Step{arguments, text, other, result, narrow};
    }
};

/// What takes arrays of its own where texts are long. No one looks at those for null.
bool takes_other_arrays(const std::string& name) {
    return name.starts_with("Similar") || name.starts_with("IndexOf") ||
           name.starts_with("Collate") || name.ends_with("CharacterSet(unsigned int)");
}

/// One run of an operation, on the class with a refusal and on the model without.
template <class TypeParam>
class Attempt {
public:
    using Unit = typename Twin<TypeParam>::Unit;
    using String = std::basic_string<Unit>;

    Attempt(const Row<TypeParam>& row, State state, int nSet)
        : row_(row),
          start_(Widened(kTexts[nSet]) +
                 String(nSet == 1 && takes_other_arrays(row.name) ? 1500 : 3, Unit('h'))),
          find_(Widened(kFinds[nSet])),
          real_(state, start_.c_str()),
          model_(state, start_.c_str()),
          arguments_{'o',
                     'x',
                     1,
                     2,
                     kCounts[nSet],
                     77,
                     1,
                     find_.c_str(),
                     put_.c_str(),
                     find_.c_str(),
                     put_.c_str(),
                     "narrow",
                     28591,
                     1.5,
                     true} {
        auto step = model_.template With<operations::ModelStep<TypeParam>>(arguments_);
        row_.expect(step);
        expected_ = step.result;
    }

    /// Whether an allocation was refused.
    bool Run(Refusal refusal, long nFail) {
        const bool bShared = real_.neighbour.constBuffer() == real_.text.constBuffer();
        const auto* const pchBefore = real_.text.constBuffer();
        const int nRefs = real_.text.Refs();
        auto step = real_.template With<operations::RealStep<TypeParam>>(arguments_);
        bool bFailed = false;
        allocator.Arm(refusal, nFail);
        try {
            row_.run(step);
        } catch (const std::bad_alloc&) {
            bFailed = true;
        }
        allocator.bArmed = false;
        const bool bRefused = allocator.nRefused > 0;
        EXPECT_EQ(bFailed, bRefused && refusal != Refusal::Null) << row_.name;
        EXPECT_EQ(whole(real_.neighbour), start_) << row_.name;
        EXPECT_EQ(real_.text[real_.text.GetLength()], 0) << row_.name;
        EXPECT_TRUE(!bRefused || row_.leaves != Leaves::Never) << row_.name;
        if (bFailed) {
            ExpectWhatIsLeft(bShared, pchBefore, nRefs);
        }
        if (!bFailed || row_.leaves == Leaves::Text) {
            bFailed ? row_.run(step) : void();
            EXPECT_EQ(whole(real_.text), model_.text.Whole()) << row_.name;
            EXPECT_EQ(whole(real_.result), model_.result.Whole()) << row_.name;
            EXPECT_EQ(whole(real_.narrow), model_.narrow.Whole()) << row_.name;
            EXPECT_EQ(step.result, expected_) << row_.name;
        }
        return bRefused;
    }

private:
    static constexpr const char* kTexts[] = {"hello world, 42 xx\t", "o", "  o", "\tHello, o"};
    static constexpr const char* kFinds[] = {"o", "hh", "  o", "a text that is longer than it"};
    static constexpr int kCounts[] = {3, -1, 5, 16};

    static String Widened(const std::string& text) { return {text.begin(), text.end()}; }

    void ExpectWhatIsLeft(bool bShared, const Unit* pchBefore, int nRefs) {
        if (row_.leaves == Leaves::TextOrEmpty && real_.text.IsEmpty()) {
            return;
        }
        if (row_.leaves != Leaves::TextOfSteps) {
            EXPECT_EQ(whole(real_.text), start_) << row_.name;
        }
        if (!bShared) {
            EXPECT_EQ(real_.text.constBuffer(), pchBefore) << row_.name;
            EXPECT_EQ(real_.text.Refs(), nRefs) << row_.name;
        }
    }

    const Row<TypeParam>& row_;
    const String start_, find_, put_ = Widened("a larger piece");
    Values<Open<TypeParam>, Open<Kelm>> real_;
    Values<Model<Unit>, Model<char>> model_;
    const operations::Arguments<Unit> arguments_;
    long double expected_;
};

template <class TypeParam>
class Allocation : public ::testing::Test {};
TYPED_TEST_SUITE(Allocation, Twins);

/// The name with each word that is this letter alone replaced.
std::string with_word(const std::string& name, char letter, const std::string& word) {
    const auto is_part = [](char ch) { return std::isalnum(static_cast<unsigned char>(ch)) != 0; };
    std::string result;
    for (std::size_t n = 0; n < name.size(); ++n) {
        const bool bAlone =
            (n == 0 || !is_part(name[n - 1])) && (n + 1 == name.size() || !is_part(name[n + 1]));
        if (name[n] == letter && bAlone) {
            result += word;
        } else {
            result += name[n];
        }
    }
    return result;
}

/// The row's name as the list of exports has it, qualified or not.
std::vector<std::string> export_names(const std::string& name, const std::string& text,
                                      const std::string& unit) {
    const std::string full = with_word(with_word(name, 'C', unit), 'T', text);
    return {full, text + "::" + full};
}

/// What the rows reach through other members, and what only reads.
bool is_covered_by_others(const std::string& name) {
    static const std::set<std::string> kNames = {"Init",
                                                 "AllocBuffer",
                                                 "FreeData",
                                                 "Release",
                                                 "CopyBeforeWrite",
                                                 "AssignCopy",
                                                 "AllocCopy",
                                                 "AllocBeforeWrite",
                                                 "MoveAssign",
                                                 "ConcatCopy",
                                                 "ConcatInPlace",
                                                 "FormatV",
                                                 "GetFormattedLength",
                                                 "VFormat",
                                                 "AppendFormatV",
                                                 "FindChar",
                                                 "_FromCodePage",
                                                 "FindWhitespace",
                                                 "CopyUnshared",
                                                 "DestroyUnshared",
                                                 "operator!=",
                                                 "operator<",
                                                 "operator<=",
                                                 "operator>",
                                                 "operator>=",
                                                 "~Kelm",
                                                 "~WString",
                                                 "GetData",
                                                 "GetLength",
                                                 "GetAllocLength",
                                                 "constBuffer",
                                                 "operator char const*",
                                                 "operator char16_t const*",
                                                 "Token",
                                                 "Current",
                                                 "operator",
                                                 "operator Kelm",
                                                 "Next",
                                                 "NextLine",
                                                 "operator++",
                                                 "operator bool",
                                                 "IsValid",
                                                 "SkipPunctuation",
                                                 "Restart",
                                                 "Clear"};
    const std::string head = name.substr(0, name.find('('));
    const auto colon = head.rfind(':');
    return kNames.count(colon == std::string::npos ? head : head.substr(colon + 1)) != 0;
}

template <class TypeParam>
void drop_covered(std::set<std::string>& names, const char* text, const char* unit) {
    for (const auto& row : operations::rows<TypeParam>()) {
        std::size_t nDropped = 0;
        for (const std::string& name : export_names(row.name, text, unit)) {
            nDropped += names.erase(name);
        }
        EXPECT_EQ(nDropped, 1U) << row.name << " is no export of " << text;
    }
}

}  // namespace

TYPED_TEST(Allocation, FailsWithoutHarm) {
    for (const auto& row : operations::rows<TypeParam>()) {
        for (int nCase = 0; nCase < 16; ++nCase) {
            for (const Refusal refusal : {Refusal::Throw, Refusal::ThrowFromThenOn, Refusal::Null,
                                          Refusal::NullTwice, Refusal::NullFromThenOn}) {
                if (refusal >= Refusal::Null && takes_other_arrays(row.name)) {
                    continue;
                }
                const long nLive = allocator.nLive;
                long nFail = 1;
                while (nFail < 50 &&
                       Attempt<TypeParam>(row, State(nCase / 4), nCase % 4).Run(refusal, nFail)) {
                    ++nFail;
                }
                EXPECT_LT(nFail, 50) << row.name << " never succeeds";
                EXPECT_EQ(allocator.nLive, nLive) << row.name << " leaks";
            }
        }
    }
}

TEST(NarrowText, IsDecodedToWhereItStays) {
    const auto allocations = [](auto make) {
        allocator.Arm(Refusal::Throw, 0);
        const WString made = make();
        allocator.bArmed = false;
        EXPECT_EQ(made.GetAllocLength(), made.GetLength());
        return allocator.nCalls;
    };
    const WString text(u"wide");
    EXPECT_EQ(allocations([] { return WString("narrow"); }), 1);
    EXPECT_EQ(allocations([&] { return text + "narrow"; }), 1);
    EXPECT_EQ(allocations([&] { return text + static_cast<const char*>(nullptr); }), 1);
}

TEST(TokenAllocation, OfTheText) {
    for (const auto take : {+[](const Kelm::Token& token) { return token.Current(); },
                            +[](const Kelm::Token& token) { return token(); },
                            +[](const Kelm::Token& token) { return Kelm(token); }}) {
        const Kelm text("word and more");
        const Kelm::Token token(text);
        allocator.Arm(Refusal::Throw, 1);
        EXPECT_THROW(take(token), std::bad_alloc);
        allocator.bArmed = false;
        EXPECT_STREQ(take(token), "word");
    }
}

TEST(AllocationRows, CoverEveryExport) {
    std::set<std::string> names;
    std::ifstream list(KELM_EXPORTS);
    for (std::string line; std::getline(list, line);) {
        if (line.ends_with(" const")) {
            line.resize(line.size() - 6);
        }
        names.insert(line);
    }
    ASSERT_GT(names.size(), 200U);
    drop_covered<Kelm>(names, "Kelm", "char");
    drop_covered<WString>(names, "WString", "char16_t");
    for (const std::string& name : names) {
        EXPECT_TRUE(is_covered_by_others(name)) << name << " is not tried";
    }
}
