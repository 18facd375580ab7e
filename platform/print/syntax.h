#pragma once

#include <KelmFormat.h>

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

/// The estimate and the print of both widths read a format and take its arguments through
/// `walk_format`, so that they cannot drift apart.
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

using namespace KelmFormat;

/// One conversion and its argument.
struct Conversion : Directive {
    union {
        long long integer;  ///< unsigned conversions: the same 64 bits
        double real;
        const void* pointer;  ///< of texts too
    };

    const char* NarrowText() const { return static_cast<const char*>(pointer); }
    const char16_t* WideText() const { return static_cast<const char16_t*>(pointer); }
};

/// A copy of the caller's list, which therefore stays at the first argument, and what the language
/// asks of whoever reads a format.
struct Arguments {
    explicit Arguments(va_list source) { va_copy(list, source); }
    ~Arguments() { va_end(list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    int TakeInt() { return va_arg(list, int); }
    static int ReadInt(const char* text) { return atoi(text); }
    static int ReadInt(const char16_t* text) { return _wtoi(text); }
    static void Require(bool holds, const char* expression) { require(holds, expression); }

    va_list list;
};

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

/// Reads the conversion behind a `%` at `p` and takes its arguments; `p` ends up behind it.
template <class Unit>
void take_conversion(const Unit*& p, Arguments& arguments, Conversion& conversion) {
    TakeDirective(p, arguments, conversion);
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
