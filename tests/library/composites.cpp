// Whatever is composed of texts orders and equals as `Compare` says, in every standard: also where
// the language has `<=>`, for which two pointers to the texts would do as well.

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
#include <optional>
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

}  // namespace

int main() {
    check_all<Kelm>("b");
    check_all<WString>(u"b");
    return failures == 0 ? 0 : 1;
}
