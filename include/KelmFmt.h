#ifndef KELM_FMT_H
#define KELM_FMT_H

/// @file
/// `Kelm` and `WString` as arguments of the fmt library, for C++17 and later. Opt-in, and nothing
/// but this header. `fmt::format("{:>8}", text)` takes the options of a string; wide text is
/// encoded in the process's code page.

#include <Kelm.h>
#include <fmt/format.h>

#include <cstddef>

/// @cond
template <>
struct fmt::formatter<Kelm> : fmt::formatter<fmt::string_view> {
    template <class Context>
    auto format(const Kelm& text, Context& context) const {
        return fmt::formatter<fmt::string_view>::format(
            {text.constBuffer(), static_cast<std::size_t>(text.GetLength())}, context);
    }
};

template <>
struct fmt::formatter<WString> : fmt::formatter<Kelm> {
    template <class Context>
    auto format(const WString& text, Context& context) const {
        return fmt::formatter<Kelm>::format(text.ToKelm(), context);
    }
};

/// @endcond

#endif
