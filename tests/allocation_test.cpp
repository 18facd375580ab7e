// The operators that can be made to refuse, for the random programs; what those cannot reach, and
// that they reach every export.

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <new>
#include <set>
#include <sstream>

#include "operations.h"
#include "program.h"
#include "twins.h"

namespace {

void* allocate(std::size_t nSize, bool bMayBeNull) {
    const bool bRefuses = allocator.Refuses();
    void* const p = bRefuses ? nullptr : std::malloc(nSize == 0 ? 1 : nSize);
    if (p == nullptr && !(bRefuses && bMayBeNull && allocator.refusal >= Refusal::Null)) {
        throw std::bad_alloc();
    }
    allocator.Count(p != nullptr ? 1 : 0);
    return p;
}

void release(void* p) noexcept {
    allocator.Count(p != nullptr ? -1 : 0);
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

TEST(Allocation, NarrowTextIsDecodedToWhereItStays) {
    const auto allocations = [](auto make) {
        allocator.Arm(Refusal::Throw, LONG_MAX);
        const WString made = make();
        allocator.refusal = Refusal::None;
        EXPECT_EQ(made.GetAllocLength(), made.GetLength());
        return allocator.nCalls;
    };
    const WString text(u"wide");
    EXPECT_EQ(allocations([] { return WString("narrow"); }), 1);
    EXPECT_EQ(allocations([&] { return text + "narrow"; }), 1);
    EXPECT_EQ(allocations([&] { return text + static_cast<const char*>(nullptr); }), 1);
}

TEST(Allocation, OfATokensText) {
    const Kelm text("word and more");
    const Kelm::Token token(text);
    for (const auto take : {+[](const Kelm::Token& from) { return from.Current(); },
                            +[](const Kelm::Token& from) { return from(); },
                            +[](const Kelm::Token& from) { return Kelm(from); }}) {
        allocator.Arm(Refusal::Throw, 1);
        EXPECT_THROW(take(token), std::bad_alloc);
        allocator.refusal = Refusal::None;
        EXPECT_STREQ(take(token), "word");
    }
}

namespace {

/// Members without a row: the rows reach them through others, or they only read.
const char kReachedByOthers[] =
    "Init AllocBuffer FreeData Release CopyBeforeWrite AssignCopy AllocCopy AllocBeforeWrite "
    "MoveAssign ConcatCopy ConcatInPlace FormatV GetFormattedLength VFormat AppendFormatV FindChar "
    "_FromCodePage FindWhitespace CopyUnshared DestroyUnshared operator!= operator< operator<= "
    "operator> operator>= ~Kelm ~WString GetData GetLength GetAllocLength constBuffer Token "
    "Current "
    "operator Next NextLine operator++ IsValid SkipPunctuation Restart Clear";

/// The name of a row with the class for T and its unit for C.
std::string exported(const std::string& name, const std::string& text, const std::string& unit) {
    std::string result, word;
    for (const char ch : name + ' ') {
        if (std::isalnum(static_cast<unsigned char>(ch)) != 0) {
            word += ch;
            continue;
        }
        result += (word == "T" ? text : word == "C" ? unit : word) + ch;
        word.clear();
    }
    result.pop_back();
    return result;
}

/// Drops what the rows call, whose names stand in the list with their class or without.
template <class Text>
void drop_covered(std::set<std::string>& names, const char* text, const char* unit) {
    for (const auto& row : operations::rows<Text>()) {
        const std::string name = exported(row.name, text, unit);
        EXPECT_EQ(names.erase(name) + names.erase(std::string(text) + "::" + name), 1U)
            << name << " is no export of " << text;
    }
}

}  // namespace

TEST(Programs, CallEveryExport) {
    std::set<std::string> names;
    std::ifstream list(KELM_EXPORTS);
    for (std::string line; std::getline(list, line);) {
        names.insert(line.ends_with(" const") ? line.substr(0, line.size() - 6) : line);
    }
    ASSERT_GT(names.size(), 200U);
    drop_covered<Kelm>(names, "Kelm", "char");
    drop_covered<WString>(names, "WString", "char16_t");
    std::istringstream words(kReachedByOthers);
    const std::set<std::string> others{std::istream_iterator<std::string>(words), {}};
    for (const std::string& name : names) {
        const std::string front = name.substr(0, name.find_first_of(" ("));
        EXPECT_TRUE(others.contains(front.substr(front.rfind(':') + 1))) << name;
    }
}
