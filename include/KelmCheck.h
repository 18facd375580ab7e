#ifndef KELM_CHECK_H
#define KELM_CHECK_H

/// @file
/// Formats checked by the compiler against their arguments, for C++20 and later. Opt-in: included
/// before `Kelm.h`, best by an option of the compiler, `-include KelmCheck.h`. The calls stay as
/// they are, what they compile to as well, and sources with and without the check link together.
///
///     text.Format("%d of %s", 3L, name.constBuffer());   // Conversion<1, TakesAnInt>
///
/// Checked is a format that is a literal or a `constexpr` array. A pointer passes as it is, and so
/// does any other `const` array, a choice between two literals too, with a `+` before it. A null
/// text is `nullptr`: what `NULL` is cannot be told from a number.

#ifdef KELM_H
#error "KelmCheck.h stands before Kelm.h"
#endif
#if __cplusplus < 202002L
#error "KelmCheck.h needs C++20"
#endif

#include <KelmFormat.h>

#include <cstddef>
#include <type_traits>
#include <utility>

/// @cond
namespace KelmCheck {

/// What the print can tell apart, and what it cannot read.
enum class Type : char {
    Int = 'i',  ///< after the promotions; no character type
    Bits64 = 'q',
    Double = 'd',
    NarrowCharacter = 'c',
    WideCharacter = 'w',
    NarrowText = 's',
    WideText = 'u',
    Pointer = 'p',
    Null = '0',
    Object = 'o',
    Other = '?'
};

/// What can be wrong with a conversion.
enum class Fault {
    None,
    IsNotInTheLanguage,
    HasNoArgument,
    IsGivenAnObject,
    TakesAnIntAsWidthOrPrecision,
    TakesAnInt,
    TakesA64BitInteger,
    TakesADouble,
    TakesAPointer,
    TakesNarrowText,
    TakesWideText,
    TakesANarrowCharacter,
    TakesAWideCharacter,
    Count
};

template <class T, class... Candidates>
inline constexpr bool kIsOneOf = (std::is_same_v<T, Candidates> || ...);

template <class Pointee>
constexpr Type PointerTo() {
    if (kIsOneOf<Pointee, char, signed char, unsigned char, char8_t>) {
        return Type::NarrowText;
    }
    return std::is_same_v<Pointee, char16_t> ? Type::WideText : Type::Pointer;
}

template <class T>
constexpr Type Integer() {
    if (kIsOneOf<T, char, char8_t>) {
        return Type::NarrowCharacter;
    }
    if (kIsOneOf<T, char16_t, char32_t, wchar_t>) {
        return Type::WideCharacter;
    }
    if (sizeof(T) <= sizeof(int)) {
        return Type::Int;
    }
    return sizeof(T) == sizeof(long long) ? Type::Bits64 : Type::Other;
}

/// Of a type as it is passed by value.
template <class T>
constexpr Type TypeOf() {
    if constexpr (std::is_null_pointer_v<T>) {
        return Type::Null;
    } else if constexpr (std::is_pointer_v<T>) {
        return PointerTo<std::remove_cv_t<std::remove_pointer_t<T>>>();
    } else if constexpr (std::is_class_v<T> || std::is_union_v<T>) {
        return Type::Object;
    } else if constexpr (kIsOneOf<T, float, double>) {
        return Type::Double;
    } else if constexpr (std::is_integral_v<T>) {
        return Integer<T>();
    } else if constexpr (std::is_enum_v<T> && std::is_convertible_v<T, long long>) {
        return Integer<decltype(+T())>();
    } else {
        return Type::Other;
    }
}

constexpr Type Wanted(const KelmFormat::Directive& conversion) {
    using KelmFormat::Kind;
    switch (conversion.kind) {
        case Kind::Character:
            return conversion.isWide ? Type::WideCharacter : Type::NarrowCharacter;
        case Kind::Text:
            return conversion.isWide ? Type::WideText : Type::NarrowText;
        case Kind::Integer:
            return conversion.mark == KelmFormat::SizeMark::Bits64 ? Type::Bits64 : Type::Int;
        case Kind::Floating:
            return Type::Double;
        default:
            return Type::Pointer;
    }
}

constexpr bool Fits(Type wanted, Type given) {
    if (wanted == given) {
        return true;
    }
    switch (given) {
        case Type::Int:
            return wanted == Type::NarrowCharacter || wanted == Type::WideCharacter;
        case Type::NarrowCharacter:
        case Type::WideCharacter:
            return wanted == Type::Int;
        case Type::NarrowText:
        case Type::WideText:
            return wanted == Type::Pointer;
        case Type::Null:
            return wanted == Type::NarrowText || wanted == Type::WideText ||
                   wanted == Type::Pointer;
        default:
            return false;
    }
}

constexpr Fault FaultOf(Type wanted) {
    switch (wanted) {
        case Type::Int:
            return Fault::TakesAnInt;
        case Type::Bits64:
            return Fault::TakesA64BitInteger;
        case Type::Double:
            return Fault::TakesADouble;
        case Type::NarrowCharacter:
            return Fault::TakesANarrowCharacter;
        case Type::WideCharacter:
            return Fault::TakesAWideCharacter;
        case Type::NarrowText:
            return Fault::TakesNarrowText;
        case Type::WideText:
            return Fault::TakesWideText;
        default:
            return Fault::TakesAPointer;
    }
}

/// One fault of a call; both numbers count from 1.
struct Finding {
    int conversion;  ///< 0 for an argument that none takes
    int argument;    ///< the one that is wrong
    int first;       ///< where the conversion stands in the format, from its `%`
    int length;      ///< of the conversion
    Fault fault;
};

/// Stands for the arguments where a format is read and not run.
struct Source {
    const Type* types;
    int count;
    int taken = 0;
    int blamed = 0;             ///< the argument
    Fault fault = Fault::None;  ///< the first one of a conversion
    bool isLost = false;        ///< Which arguments come next is not known.

    constexpr void Blame(Fault what) {
        if (fault == Fault::None) {
            fault = what;
            blamed = taken;
        }
    }

    constexpr void Take(Type wanted, Fault otherwise) {
        if (taken == count) {
            Blame(Fault::HasNoArgument);
            isLost = true;
            return;
        }
        const Type given = types[taken++];
        if (!Fits(wanted, given)) {
            Blame(given == Type::Object ? Fault::IsGivenAnObject : otherwise);
        }
    }

    constexpr int TakeInt() {
        Take(Type::Int, Fault::TakesAnIntAsWidthOrPrecision);
        return 1;  // Digits may follow a width of 0, but who writes them means something else.
    }
    template <class Unit>
    constexpr int ReadInt(const Unit*) const {
        return 0;
    }
    constexpr void Require(bool holds, const char*) {
        if (!holds) {
            Blame(Fault::IsNotInTheLanguage);
            isLost = true;
        }
    }
};

/// Gives `report` what is wrong with a call, in the order of the format.
template <class Unit, class Report>
constexpr void Examine(const Unit* format, const Type* types, int count, Report&& report) {
    Source source{types, count};
    int number = 0;
    for (const Unit* p = format; *p != Unit{}; ++p) {
        if (*p != Unit{'%'}) {
            continue;
        }
        const Unit* first = p++;
        if (*p == Unit{'%'}) {
            continue;
        }
        source.fault = Fault::None;
        KelmFormat::Directive conversion;
        KelmFormat::TakeDirective(p, source, conversion);
        if (!source.isLost) {
            const Type wanted = Wanted(conversion);
            source.Take(wanted, FaultOf(wanted));
        }
        ++number;
        if (source.fault != Fault::None) {
            const int length = static_cast<int>(p - first) + (*p == Unit{} ? 0 : 1);
            report(Finding{number, source.blamed, static_cast<int>(first - format), length,
                           source.fault});
        }
        if (source.isLost) {
            return;
        }
    }
    if (source.taken < count) {
        report(Finding{0, source.taken + 1, 0, 0, Fault::None});
    }
}

// No compiler can call these, so that its message ends with the numbers and the fault.
template <int Number, Fault What>
void Conversion();
template <int Number>
void ArgumentOfNoConversion();

template <int Number, int... Faults>
constexpr void Complain(Fault fault, std::integer_sequence<int, Faults...>) {
    ((fault == Fault{Faults} ? Conversion<Number, Fault{Faults}>() : void()), ...);
}

template <int... Indexes>
constexpr void Complain(const Finding& finding, std::integer_sequence<int, Indexes...>) {
    constexpr std::make_integer_sequence<int, static_cast<int>(Fault::Count)> kFaults;
    ((finding.conversion == Indexes + 1 ? Complain<Indexes + 1>(finding.fault, kFaults) : void()),
     ...);
    ((finding.conversion == 0 && finding.argument == Indexes + 1
          ? ArgumentOfNoConversion<Indexes + 1>()
          : void()),
     ...);
}

/// What passes as a format but cannot be read when compiling.
template <class Text, class Unit>
concept Runtime = std::is_convertible_v<Text, const Unit*> &&
    !(std::is_bounded_array_v<std::remove_reference_t<Text>> &&
      std::is_const_v<std::remove_reference_t<Text>>);

/// The format of a call with these arguments.
template <class Unit, class... Arguments>
struct Format {
    template <std::size_t N>
    consteval Format(const Unit (&literal)[N]) : text(literal) {
        constexpr int kCount = sizeof...(Arguments);
        constexpr Type kTypes[] = {TypeOf<Arguments>()..., Type::Other};
        Examine(text, kTypes, kCount, [](const Finding& finding) {
            Complain(finding, std::make_integer_sequence<int, kCount + 1>());
        });
    }

    template <Runtime<Unit> Text>
    constexpr Format(Text&& pointer) : text(pointer) {
        static_assert(((TypeOf<Arguments>() != Type::Object) && ...), "An object is no argument");
    }

    const Unit* text;
};

}  // namespace KelmCheck

#define KELM_CHECK_SYMBOL_Kelm(member) "_ZN4Kelm" member "EPKcz"
#define KELM_CHECK_SYMBOL_WString(member) "_ZN7WString" member "EPKDsz"

#ifndef KELM_CHECKED_FORMATS
// What the classes have instead of their members with variable arguments. Those keep their symbols
// under other names; beside them under their own, a literal would be as good for either.
#define KELM_CHECKED_FORMATS(Text, Unit)                                                    \
    void FormatUnchecked(const Unit*, ...) __asm__(KELM_CHECK_SYMBOL_##Text("6Format"));    \
    void AppendFormatUnchecked(const Unit*,                                                 \
                               ...) __asm__(KELM_CHECK_SYMBOL_##Text("12AppendFormat"));    \
    static Text FromFormatUnchecked(const Unit*,                                            \
                                    ...) __asm__(KELM_CHECK_SYMBOL_##Text("10FromFormat")); \
    template <class... Arguments>                                                           \
    void Format(KelmCheck::Format<Unit, std::type_identity_t<Arguments>...> format,         \
                Arguments... arguments) {                                                   \
        FormatUnchecked(format.text, arguments...);                                         \
    }                                                                                       \
    template <class... Arguments>                                                           \
    void AppendFormat(KelmCheck::Format<Unit, std::type_identity_t<Arguments>...> format,   \
                      Arguments... arguments) {                                             \
        AppendFormatUnchecked(format.text, arguments...);                                   \
    }                                                                                       \
    template <class... Arguments>                                                           \
    [[nodiscard]] static Text FromFormat(                                                   \
        KelmCheck::Format<Unit, std::type_identity_t<Arguments>...> format,                 \
        Arguments... arguments) {                                                           \
        return FromFormatUnchecked(format.text, arguments...);                              \
    }

// The same for the message, which `Kelm` alone has.
#define KELM_CHECKED_MESSAGE                                                                      \
    void FormatMsgUnchecked(std::uint32_t, const char*, ...) __asm__("_ZN4Kelm9FormatMsgEjPKcz"); \
    template <class... Arguments>                                                                 \
    void FormatMsg(std::uint32_t error,                                                           \
                   KelmCheck::Format<char, std::type_identity_t<Arguments>...> format,            \
                   Arguments... arguments) {                                                      \
        FormatMsgUnchecked(error, format.text, arguments...);                                     \
    }
#endif
/// @endcond

#include <Kelm.h>

#endif
