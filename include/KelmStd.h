#ifndef KELM_STD_H
#define KELM_STD_H

/// @file
/// `Kelm` and `WString` among the types of the standard library, for C++17 and later: views and
/// strings, hashing, ordered look-up without a temporary, streams, `std::format`, and the printing
/// of GoogleTest. Opt-in, and nothing but this header.
///
///     std::unordered_map<Kelm, int> counts;
///     std::map<Kelm, int, KelmStd::Less> ages;
///     ages.find(std::string_view("Ada"));              // no Kelm is made
///     std::string line = KelmStd::String(text);
///     std::cout << WString(u"wide") << '\n';
///
/// Two values that are equal hash alike and neither sorts before the other here: all three look at
/// the text up to its first NUL.

#include <Kelm.h>

#include <climits>
#include <cstddef>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#if defined(__has_include)
#if __has_include(<format>)
#include <format>
#endif
#endif

namespace KelmStd {

/// The whole text, NULs included; good as long as `constBuffer` is.
inline std::string_view View(const Kelm& text KELM_LIFETIMEBOUND) noexcept {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}
/// The same.
inline std::u16string_view View(const WString& text KELM_LIFETIMEBOUND) noexcept {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}

/// A copy of the whole text.
inline std::string String(const Kelm& text) {
    return std::string(View(text));
}
/// The same.
inline std::u16string String(const WString& text) {
    return std::u16string(View(text));
}

/// @cond
template <class Text, class Unit>
Text Copied(std::basic_string_view<Unit> view) {
    if (view.size() >= INT_MAX) {
#if defined(__cpp_exceptions)
        throw std::length_error("KelmStd::From");
#else
        __builtin_abort();
#endif
    }
    Text text;
    if (!view.empty()) {
        view.copy(text.GetBufferSetLength(static_cast<int>(view.size())), view.size());
    }
    return text;
}
/// @endcond

/// A value of the whole view, NULs included, in a block of exactly its length. What an `int` does
/// not count is `std::length_error`, other texts that are too long are `std::bad_alloc`.
inline Kelm From(std::string_view view) {
    return Copied<Kelm>(view);
}
/// The same.
inline WString From(std::u16string_view view) {
    return Copied<WString>(view);
}

/// A text, a pointer or a view up to its first NUL, which is what texts are compared by. A null
/// pointer counts as empty.
inline std::string_view UpToNul(std::string_view view) noexcept {
    return view.substr(0, view.find('\0'));
}
/// The same.
inline std::u16string_view UpToNul(std::u16string_view view) noexcept {
    return view.substr(0, view.find(u'\0'));
}
/// The same.
inline std::string_view UpToNul(const char* pchText) noexcept {
    return pchText == nullptr ? std::string_view() : std::string_view(pchText);
}
/// The same.
inline std::u16string_view UpToNul(const char16_t* pchText) noexcept {
    return pchText == nullptr ? std::u16string_view() : std::u16string_view(pchText);
}
/// The same.
inline std::string_view UpToNul(const Kelm& text) noexcept {
    return UpToNul(text.constBuffer());
}
/// The same.
inline std::u16string_view UpToNul(const WString& text) noexcept {
    return UpToNul(text.constBuffer());
}

/// Orders values, pointers and views of one width by their units as unsigned numbers. Unlike
/// `Compare` this does not depend on the locale, so a container keeps its order when that changes;
/// for well-formed UTF-8 and in single-byte code pages the two are one order.
struct Less {
    using is_transparent = void;  ///< Look-up takes what is no value.
    /// Whether the left one sorts first.
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const noexcept {
        return UpToNul(left) < UpToNul(right);
    }
};

/// Equality of the same, for containers by hash that find without a temporary.
struct Equal {
    using is_transparent = void;  ///< Look-up takes what is no value.
    /// Whether both are the same.
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const noexcept {
        return UpToNul(left) == UpToNul(right);
    }
};

/// The hash of a value, a pointer or a view, the same for what is equal.
struct Hash {
    using is_transparent = void;  ///< Look-up takes what is no value.
    /// The hash up to the first NUL.
    template <class Text>
    std::size_t operator()(const Text& text) const noexcept {
        const auto view = UpToNul(text);
        return std::hash<std::decay_t<decltype(view)>>()(view);
    }
};

/// @cond
template <class Text>
void Show(const Text& text, std::ostream& stream) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const auto unit : View(text)) {
        const unsigned value = static_cast<unsigned>(unit) & (sizeof(unit) == 1 ? 0xFFU : 0xFFFFU);
        if (value >= 0x20 && value < 0x7F) {
            stream << (value == '"' || value == '\\' ? "\\" : "") << static_cast<char>(value);
            continue;
        }
        stream << "\\x";
        for (int shift = sizeof(unit) == 1 ? 4 : 12; shift >= 0; shift -= 4) {
            stream << kDigits[value >> shift & 0xF];
        }
    }
    stream << '"';
}
/// @endcond

}  // namespace KelmStd

/// @cond
template <>
struct std::hash<Kelm> : KelmStd::Hash {};
template <>
struct std::hash<WString> : KelmStd::Hash {};
/// @endcond

/// The whole text, NULs included, with the stream's width and fill.
inline std::ostream& operator<<(std::ostream& stream, const Kelm& text) {
    return stream << KelmStd::View(text);
}

/// Encoded in the process's code page, like the narrow text that goes to the same stream.
inline std::ostream& operator<<(std::ostream& stream, const WString& text) {
    return stream << text.ToKelm();
}

/// How GoogleTest prints a value: as a literal that shows NULs and what is not ASCII.
inline void PrintTo(const Kelm& text, std::ostream* stream) {
    KelmStd::Show(text, *stream << '"');
}
/// The same.
inline void PrintTo(const WString& text, std::ostream* stream) {
    KelmStd::Show(text, *stream << "u\"");
}

#if defined(__cpp_lib_format)
/// @cond
// With the options of a `std::string_view`; wide text is encoded in the process's code page.
template <>
struct std::formatter<Kelm> : std::formatter<std::string_view> {
    template <class Context>
    auto format(const Kelm& text, Context& context) const {
        return std::formatter<std::string_view>::format(KelmStd::View(text), context);
    }
};
template <>
struct std::formatter<WString> : std::formatter<Kelm> {
    template <class Context>
    auto format(const WString& text, Context& context) const {
        return std::formatter<Kelm>::format(text.ToKelm(), context);
    }
};
/// @endcond
#endif

#endif
