// Whatever is composed of texts orders and equals as `Compare` says, in every standard: also where
// the language has `<=>`, for which two pointers to the texts would do as well. And the headers for
// neighbours, in the standards that have these.

#include <Kelm.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>
#if __cplusplus >= 201703L
#include <KelmStd.h>

#include <optional>
#include <sstream>
#include <unordered_map>
#endif
#if __cplusplus == 202002L && !defined(__clang__) && __has_include(<fmt/format.h>)
#define FMT_HEADER_ONLY
#include <KelmFmt.h>
#define WITH_FMT
#endif

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::printf("does not hold: %s\n", what);
        ++failures;
    }
}

#if __cplusplus >= 202002L
template <class Text>
struct Row {
    Text text;
    int number;
    auto operator<=>(const Row&) const = default;
};
#endif

template <class Text>
std::vector<Text> make(const char* letters) {
    std::vector<Text> texts;
    for (const char* p = letters; *p != '\0'; ++p) {
        texts.push_back(Text(Kelm(p, 1)));
    }
    return texts;
}

// Both ways: blocks are allocated upwards or downwards.
template <class Text, class Wrap>
void check(const char* what, Wrap wrap) {
    for (const char* letters : {"abcab", "cbacb"}) {
        const std::vector<Text> texts = make<Text>(letters);
        std::set<decltype(wrap(texts[0]))> once;
        for (const Text& left : texts) {
            once.insert(wrap(left));
            for (const Text& right : texts) {
                const int order = left.Compare(right);
                expect((wrap(left) < wrap(right)) == (order < 0), what);
                expect((wrap(left) == wrap(right)) == (order == 0), what);
                expect((wrap(left) >= wrap(right)) == (order >= 0), what);
            }
        }
        expect(once.size() == 3, what);
    }
}

template <class Text>
void check_all(const typename std::remove_pointer<decltype(Text().GetBuffer(0))>::type* literal) {
    check<Text>("value", [](const Text& text) { return text; });
    check<Text>("pair", [](const Text& text) { return std::make_pair(text, 1); });
    check<Text>("tuple", [](const Text& text) { return std::make_tuple(1, text); });
    check<Text>("vector", [](const Text& text) { return std::vector<Text>{text}; });
    check<Text>("array", [](const Text& text) { return std::array<Text, 1>{{text}}; });
    check<Text>("map", [](const Text& text) { return std::map<Text, int>{{text, 1}}; });
#if __cplusplus >= 201703L
    check<Text>("optional", [](const Text& text) { return std::optional<Text>(text); });
#endif
#if __cplusplus >= 202002L
    check<Text>("defaulted", [](const Text& text) { return Row<Text>{text, 1}; });
    const Text text(literal);
    const decltype(literal) null = nullptr;
    expect((text <=> literal) == 0 && (literal <=> text) == 0, "equal to a pointer");
    expect((text <=> null) > 0 && (null <=> text) < 0, "null sorts below");
#else
    (void)literal;
#endif
}

#if __cplusplus >= 201703L
template <class Text, class Unit>
void check_neighbours(const Unit (&units)[6]) {
    const std::basic_string_view<Unit> view(units, 5);  // with a NUL as the fourth
    const Text text = KelmStd::From(view);
    expect(text.GetLength() == 5 && text.GetAllocLength() == 5, "From");
    expect(KelmStd::View(text) == view && KelmStd::String(text) == view, "View, String");
    expect(KelmStd::From(view.substr(5)).IsEmpty(), "From nothing");
    const Text shorter(text.constBuffer());
    expect(shorter == text && std::hash<Text>()(shorter) == std::hash<Text>()(text), "hash");
    expect(KelmStd::Hash()(view) == KelmStd::Hash()(units), "hash of views");
    std::unordered_map<Text, int> byHash{{text, 7}};
    expect(byHash.at(shorter) == 7, "unordered_map");
    std::map<Text, int, KelmStd::Less> byLess{{text, 7}};
    expect(byLess.count(view) == 1 && byLess.count(units) == 1, "look-up without a temporary");
    const Unit* null = nullptr;
    expect(byLess.count(null) == 0 && KelmStd::Equal()(null, Text()), "null counts as empty");
    expect(KelmStd::Less()(units, view.substr(1)), "units are ordered as unsigned numbers");
#ifdef __cpp_lib_generic_unordered_lookup
    std::unordered_map<Text, int, KelmStd::Hash, KelmStd::Equal> any{{text, 7}};
    expect(any.contains(view) && !any.contains(view.substr(1)), "hashed look-up of a view");
#endif
}

void check_printing() {
    std::ostringstream stream;
    stream.width(4);
    stream << Kelm("a\0b", 3) << WString(u"\u00E4");
    expect(stream.str() == std::string(" a\0b\xC3\xA4", 6), "streams");
    stream.str("");
    PrintTo(Kelm("\"\0\xC3", 3), &stream);
    PrintTo(WString(u"\\\u20AC"), &stream);
    expect(stream.str() == "\"\\\"\\x00\\xC3\"u\"\\\\\\x20AC\"", "PrintTo");
#ifdef __cpp_lib_format
    expect(std::format("{:>3}{}", Kelm("a"), WString(u"w")) == "  aw", "std::format");
#endif
#ifdef WITH_FMT
    expect(fmt::format("{:>3}{}", Kelm("a"), WString(u"w")) == "  aw", "fmt");
#endif
}
#endif

}  // namespace

int main() {
    check_all<Kelm>("b");
    check_all<WString>(u"b");
#if __cplusplus >= 201703L
    check_neighbours<Kelm>(
        "a\xFF"
        "b\0c");
    check_neighbours<WString>(u"a\uFFFFb\0c");
    check_printing();
#endif
    return failures == 0 ? 0 : 1;
}
