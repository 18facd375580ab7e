#include <Kelm.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "require.h"

namespace {

using fuzz::Require;

/// The token in hand is a piece of the source's text, and both ways of reading it agree.
void CheckCurrent(const Kelm& source, const Kelm::Token& token) {
    const Kelm current = token.Current();
    const int length = current.GetLength();
    Require(token.IsValid() ? length > 0 : length == 0);
    Require(static_cast<std::size_t>(length) == std::strlen(current));
    Require(std::strstr(source, current) != nullptr);
    Require(token() == current);
}

/// Takes the steps that the bytes name and then the last of them until the walk ends. Every step
/// moves on by a byte, but for two at the end of the text.
void Walk(const Kelm& source, bool skips, const std::uint8_t* steps, std::size_t count) {
    Kelm::Token token(source, skips);
    const std::size_t limit = std::strlen(source) + 2;
    bool more = true;
    for (std::size_t taken = 0; more; ++taken) {
        Require(taken <= limit);
        CheckCurrent(source, token);
        const std::uint8_t step =
            count == 0 ? std::uint8_t{0} : steps[taken < count ? taken : count - 1];
        switch (step) {
            case 0:
                more = token.Next();
                break;
            case 1:
                more = token.NextLine();
                break;
            default:
                more = token.Next(static_cast<char>(step));
                break;
        }
        Require(!token || more);
    }
    Require(!token && !token.Next() && !token.NextLine() && !token.IsValid());
    Require(token.SkipPunctuation(!skips) == skips);
    token.Clear();
    Require(token && !token.IsValid());
    token.Restart();
    CheckCurrent(source, token);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const bool skips = (data[0] & 1) != 0;
    const std::size_t steps = data[1] % 8U;
    if (size < 2 + steps) {
        return 0;
    }
    const char* text = reinterpret_cast<const char*>(data) + 2 + steps;
    Walk(Kelm(text, static_cast<int>(size - 2 - steps)), skips, data + 2, steps);
    return 0;
}
