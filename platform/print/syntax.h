#pragma once

#include <array>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>

#include "assertion.h"
#include "multibyte/characters.h"
#include "numbers.h"
#include "pages/code_pages.h"
#include "system_errors.h"
#include "wide/wide.h"

/// The syntax of the format language. The estimate and the print of both widths read a format and
/// take its arguments through `walk_format`, so that they cannot drift apart.
namespace platform {

/// What a null text prints as.
inline constexpr std::string_view kNullText = "(null)";

inline std::size_t length_of(const char* text) noexcept {
    return std::strlen(text);
}

inline std::size_t length_of(const char16_t* text) noexcept {
    return wcslen(text);
}

/// At most `limit`; nothing behind that is read.
inline std::size_t bounded_length(const char* text, std::size_t limit) noexcept {
    return ::strnlen(text, limit);
}

inline std::size_t bounded_length(const char16_t* text, std::size_t limit) noexcept {
    std::size_t length = 0;
    while (length < limit && text[length] != u'\0') {
        ++length;
    }
    return length;
}

/// The process's code page, looked up at the first use and not before: most formats never need it.
/// Whoever may disturb `errno` needs it too, so it also puts that back.
class ProcessPage {
public:
    ProcessPage() = default;
    ProcessPage(const ProcessPage&) = delete;
    ProcessPage& operator=(const ProcessPage&) = delete;
    const CodePage& Get() {
        if (page_ == nullptr) {
            keeper_.emplace();
            page_ = process_code_page();
        }
        return *page_;
    }

private:
    const CodePage* page_ = nullptr;
    std::optional<ErrnoKeeper> keeper_;
};

enum class SizeMark : unsigned char { None, Narrow, Wide, Bits64 };

enum class Kind : unsigned char { None, Character, Text, Integer, Floating, Pointer, Nothing };

constexpr std::array<Kind, 128> kKinds = [] {
    std::array<Kind, 128> kinds{};
    const auto set = [&kinds](std::string_view letters, Kind kind) {
        for (const char letter : letters) {
            kinds[static_cast<unsigned char>(letter)] = kind;
        }
    };
    set("cC", Kind::Character);
    set("sS", Kind::Text);
    set("diouxX", Kind::Integer);
    set("efgG", Kind::Floating);
    set("p", Kind::Pointer);
    set("n", Kind::Nothing);
    return kinds;
}();

/// What the character converts as a conversion character; `None` if it is no such character.
template <class Unit>
Kind kind_of(Unit unit) {
    const auto index = static_cast<std::make_unsigned_t<Unit>>(unit);
    return index < kKinds.size() ? kKinds[index] : Kind::None;
}

enum Option : unsigned {
    kLeft = 1,
    kPlus = 2,
    kBlank = 4,
    kZero = 8,
    kAlternate = 16,
    kPrecision = 32,  ///< one is given, be it 0
    kStar = 64        ///< the width is an argument
};

constexpr std::array<unsigned char, '0' + 1> kFlags = [] {
    std::array<unsigned char, '0' + 1> flags{};
    flags['-'] = kLeft;
    flags['+'] = kPlus;
    flags[' '] = kBlank;
    flags['0'] = kZero;
    flags['#'] = kAlternate;
    flags['*'] = kStar;
    return flags;
}();

/// One conversion and its argument.
struct Conversion {
    int width = 0;
    int precision = 0;     ///< 0 too where none is given
    unsigned options = 0;  ///< set of `Option`
    bool isWide = false;   ///< a character or text of 16-bit units
    SizeMark mark = SizeMark::None;
    Kind kind = Kind::None;
    char letter = 0;
    long long alternates = 0;  ///< how often `#` is given
    union {
        long long integer;  ///< unsigned conversions: the same 64 bits
        double real;
        const void* pointer;  ///< of texts too
    };

    bool Has(Option option) const { return (options & option) != 0; }
    bool IsSigned() const { return letter == 'd' || letter == 'i'; }
    bool IsDecimal() const { return IsSigned() || letter == 'u'; }
    const char* NarrowText() const { return static_cast<const char*>(pointer); }
    const char16_t* WideText() const { return static_cast<const char16_t*>(pointer); }
};

/// A copy of the caller's list, which therefore stays at the first argument.
struct Arguments {
    explicit Arguments(va_list source) { va_copy(list, source); }
    ~Arguments() { va_end(list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    va_list list;
};

template <class Unit>
bool is_format_digit(Unit unit) {
    return unit >= Unit{'0'} && unit <= Unit{'9'};
}

inline int read_int(const char* text) {
    return atoi(text);
}
inline int read_int(const char16_t* text) {
    return _wtoi(text);
}

/// The number at `p` by the rules of `atoi`; steps over the digits that follow `p`. White space and
/// signs belong to those rules, so only what can start no number is told apart here.
template <class Unit>
int take_number(const Unit*& p) {
    if (!is_format_digit(*p)) {
        const bool startsNone = *p > Unit{'-'} && *p < Unit{0x7F};
        return startsNone ? 0 : read_int(p);
    }
    const Unit* first = p;
    unsigned value = 0;
    while (is_format_digit(*p)) {
        value = value * 10 + static_cast<unsigned>(*p - Unit{'0'});
        ++p;
    }
    const bool fits = p - first <= 9;
    return fits ? static_cast<int>(value) : read_int(first);
}

template <class Unit>
unsigned option_of(Unit unit) {
    const auto index = static_cast<std::make_unsigned_t<Unit>>(unit);
    return index < kFlags.size() ? kFlags[index] : 0;
}

template <class Unit>
void take_flags(const Unit*& p, Arguments& arguments, Conversion& conversion) {
    for (unsigned option; (option = option_of(*p)) != 0; ++p) {
        conversion.options |= option;
        if (option == kAlternate) {
            ++conversion.alternates;
        } else if (option == kStar) {
            conversion.width = va_arg(arguments.list, int);
        }
    }
}

template <class Unit>
void take_precision(const Unit*& p, Arguments& arguments, Conversion& conversion) {
    if (*p != Unit{'.'}) {
        return;
    }
    ++p;
    if (*p == Unit{'*'}) {
        conversion.precision = va_arg(arguments.list, int);
        ++p;
    } else {
        conversion.precision = take_number(p);
    }
    conversion.options |= kPrecision;
    require(conversion.precision >= 0, "nPrecision >= 0");
}

template <class Unit>
SizeMark take_prefix(const Unit*& p) {
    switch (*p) {
        case 'I':
            if (p[1] == Unit{'6'} && p[2] == Unit{'4'}) {
                p += 3;
                return SizeMark::Bits64;
            }
            p += p[1] == Unit{'3'} && p[2] == Unit{'2'} ? 3 : 0;
            return SizeMark::None;
        case 'F':
        case 'L':
        case 'N':
            ++p;
            return SizeMark::None;
        case 'h':
            ++p;
            return SizeMark::Narrow;
        case 'l':
            ++p;
            return SizeMark::Wide;
        default:
            return SizeMark::None;
    }
}

inline long long take_integer(const Conversion& conversion, Arguments& arguments) {
    if (conversion.mark == SizeMark::Bits64) {
        return va_arg(arguments.list, long long);
    }
    const int value = va_arg(arguments.list, int);
    if (conversion.mark == SizeMark::Narrow) {
        return conversion.IsSigned() ? static_cast<short>(value)
                                     : static_cast<unsigned short>(value);
    }
    return conversion.IsSigned() ? value : static_cast<long long>(static_cast<unsigned>(value));
}

inline void take_argument(Conversion& conversion, Arguments& arguments) {
    switch (conversion.kind) {
        case Kind::Character:
            conversion.integer = va_arg(arguments.list, int);
            return;
        case Kind::Text:
            conversion.pointer =
                conversion.isWide
                    ? static_cast<const void*>(va_arg(arguments.list, const char16_t*))
                    : va_arg(arguments.list, const char*);
            return;
        case Kind::Integer:
            conversion.integer = take_integer(conversion, arguments);
            return;
        case Kind::Floating:
            conversion.real = va_arg(arguments.list, double);
            return;
        case Kind::Pointer:
        case Kind::Nothing:
            conversion.pointer = va_arg(arguments.list, const void*);
            return;
        case Kind::None:
            return;
    }
}

/// What may stand between `%` and the conversion character.
template <class Unit>
void take_options(const Unit*& p, Arguments& arguments, Conversion& conversion) {
    take_flags(p, arguments, conversion);
    if (conversion.width == 0) {
        conversion.width = take_number(p);
    }
    require(conversion.width >= 0, "nWidth >= 0");
    take_precision(p, arguments, conversion);
    if (kind_of(*p) == Kind::None) {
        conversion.mark = take_prefix(p);
    }
}

inline bool is_wide_argument(const Conversion& conversion, bool formatIsWide) {
    if (conversion.mark != SizeMark::None) {
        return conversion.mark == SizeMark::Wide;
    }
    const bool isOther = conversion.letter == 'C' || conversion.letter == 'S';
    return formatIsWide != isOther;
}

/// Reads the conversion behind a `%` at `p` and takes its arguments; `p` ends up behind it.
template <class Unit>
void take_conversion(const Unit*& p, Arguments& arguments, Conversion& conversion) {
    if (kind_of(*p) == Kind::None) {
        take_options(p, arguments, conversion);
    }
    conversion.kind = kind_of(*p);
    conversion.letter = static_cast<char>(*p);
    const bool isText = conversion.kind == Kind::Character || conversion.kind == Kind::Text;
    require(conversion.kind != Kind::None && !(isText && conversion.mark == SizeMark::Bits64),
            "FALSE");
    if (isText) {
        conversion.isWide = is_wide_argument(conversion, std::is_same<Unit, char16_t>::value);
    }
    ++p;
    take_argument(conversion, arguments);
}

/// The next `%` that is a character of its own, or the terminator.
inline const char* literal_end(const char* p, ProcessPage& processPage) {
    while (*p != '\0' && *p != '%') {
        if (static_cast<unsigned char>(*p) < 0x80) {
            ++p;
            continue;
        }
        const CodePage& page = processPage.Get();
        if (page.grouping == Grouping::Utf8 || page.grouping == Grouping::SingleByte) {
            return ::strchrnul(p, '%');
        }
        p += _mbclen(page, p);
    }
    return p;
}

inline const char16_t* literal_end(const char16_t* p, ProcessPage&) {
    while (*p != u'\0' && *p != u'%') {
        ++p;
    }
    return p;
}

/// The conversion at `p`, whatever it is; the result is the place behind it. Kept out of the walk,
/// which would pay for its registers and its frame with every format.
template <class Unit, class Visitor>
[[gnu::noinline]] const Unit* convert_at(const Unit* p, Arguments& arguments, Visitor& visitor) {
    Conversion conversion;
    take_conversion(p, arguments, conversion);
    visitor.Convert(conversion);
    return p;
}

/// Gives `visitor` the runs of literal text, with "%%" as a run of one unit, and the conversions.
/// The two that most formats are made of have a short way: "%d" and "%s".
template <class Unit, class Visitor>
void walk_format(const Unit* p, va_list list, ProcessPage& page, Visitor& visitor) {
    Arguments arguments(list);
    for (;;) {
        const Unit* end = literal_end(p, page);
        if (end != p) {
            visitor.Literal(p, static_cast<std::size_t>(end - p));
        }
        if (*end == Unit{}) {
            return;
        }
        p = end + 1;
        if (*p == Unit{'d'}) {
            visitor.PlainInteger(va_arg(arguments.list, int));
            ++p;
        } else if (*p == Unit{'s'}) {
            visitor.PlainText(va_arg(arguments.list, const Unit*));
            ++p;
        } else if (*p == Unit{'%'}) {
            visitor.Literal(p, 1);
            ++p;
        } else {
            p = convert_at(p, arguments, visitor);
        }
    }
}

}  // namespace platform
