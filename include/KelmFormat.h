#ifndef KELM_FORMAT_H
#define KELM_FORMAT_H

/// @file
/// The language of formats: what a conversion is made of, read by the same code in the library's
/// print and in `KelmCheck.h`. C++17 and later, and nothing for a client to call.

/// @cond
#include <type_traits>

namespace KelmFormat {

enum class SizeMark : unsigned char { None, Narrow, Wide, Bits64 };

enum class Kind : unsigned char { None, Character, Text, Integer, Floating, Pointer, Nothing };

/// By character; `None` if it is no conversion character.
struct Letters {
    Kind kinds[128]{};

    constexpr Letters() {
        Set("cC", Kind::Character);
        Set("sS", Kind::Text);
        Set("diouxX", Kind::Integer);
        Set("efgG", Kind::Floating);
        Set("p", Kind::Pointer);
        Set("n", Kind::Nothing);
    }
    constexpr void Set(const char* letters, Kind kind) {
        for (; *letters != '\0'; ++letters) {
            kinds[static_cast<unsigned char>(*letters)] = kind;
        }
    }
};
inline constexpr Letters kLetters;

template <class Unit>
constexpr Kind KindOf(Unit unit) {
    const auto index = static_cast<std::make_unsigned_t<Unit>>(unit);
    return index < sizeof kLetters.kinds ? kLetters.kinds[index] : Kind::None;
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

/// By character; 0 if it is no flag.
struct Flags {
    unsigned char options['0' + 1]{};

    constexpr Flags() {
        Set('-', kLeft);
        Set('+', kPlus);
        Set(' ', kBlank);
        Set('0', kZero);
        Set('#', kAlternate);
        Set('*', kStar);
    }
    constexpr void Set(unsigned char flag, Option option) {
        options[flag] = static_cast<unsigned char>(option);
    }
};
inline constexpr Flags kFlags;

template <class Unit>
constexpr unsigned OptionOf(Unit unit) {
    const auto index = static_cast<std::make_unsigned_t<Unit>>(unit);
    return index < sizeof kFlags.options ? kFlags.options[index] : 0;
}

/// One conversion without its argument.
struct Directive {
    int width = 0;
    int precision = 0;     ///< 0 too where none is given
    unsigned options = 0;  ///< set of `Option`
    bool isWide = false;   ///< a character or text of 16-bit units
    SizeMark mark = SizeMark::None;
    Kind kind = Kind::None;
    char letter = 0;
    long long alternates = 0;  ///< how often `#` is given

    constexpr bool Has(Option option) const { return (options & option) != 0; }
    constexpr bool IsSigned() const { return letter == 'd' || letter == 'i'; }
    constexpr bool IsDecimal() const { return IsSigned() || letter == 'u'; }
    constexpr bool IsOfCharacters() const { return kind == Kind::Character || kind == Kind::Text; }
};

template <class Unit>
constexpr bool IsDigit(Unit unit) {
    return unit >= Unit{'0'} && unit <= Unit{'9'};
}

// A `Source` below has the arguments and what differs between running and checking: `TakeInt()`
// gives the next argument as an `int`, `ReadInt(p)` the number at `p` by the rules of `atoi`, and
// `Require` is told what must hold. What it is told last comes before any further step.

/// The number at `p` by the rules of `atoi`; steps over the digits that follow `p`. White space and
/// signs belong to those rules, so only what can start no number is told apart here.
template <class Unit, class Source>
constexpr int TakeNumber(const Unit*& p, Source& source) {
    if (!IsDigit(*p)) {
        const bool startsNone = *p > Unit{'-'} && *p < Unit{0x7F};
        return startsNone ? 0 : source.ReadInt(p);
    }
    const Unit* first = p;
    unsigned value = 0;
    while (IsDigit(*p)) {
        value = value * 10 + static_cast<unsigned>(*p - Unit{'0'});
        ++p;
    }
    const bool fits = p - first <= 9;
    return fits ? static_cast<int>(value) : source.ReadInt(first);
}

template <class Unit, class Source>
constexpr void TakeFlags(const Unit*& p, Source& source, Directive& conversion) {
    for (unsigned option = OptionOf(*p); option != 0; option = OptionOf(*++p)) {
        conversion.options |= option;
        if (option == kAlternate) {
            ++conversion.alternates;
        } else if (option == kStar) {
            conversion.width = source.TakeInt();
        }
    }
}

template <class Unit, class Source>
constexpr void TakePrecision(const Unit*& p, Source& source, Directive& conversion) {
    if (*p != Unit{'.'}) {
        return;
    }
    ++p;
    if (*p == Unit{'*'}) {
        conversion.precision = source.TakeInt();
        ++p;
    } else {
        conversion.precision = TakeNumber(p, source);
    }
    conversion.options |= kPrecision;
    source.Require(conversion.precision >= 0, "nPrecision >= 0");
}

template <class Unit>
constexpr SizeMark TakePrefix(const Unit*& p) {
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

/// What may stand between `%` and the conversion character.
template <class Unit, class Source>
constexpr void TakeOptions(const Unit*& p, Source& source, Directive& conversion) {
    TakeFlags(p, source, conversion);
    if (conversion.width == 0) {
        conversion.width = TakeNumber(p, source);
    }
    source.Require(conversion.width >= 0, "nWidth >= 0");
    TakePrecision(p, source, conversion);
    if (KindOf(*p) == Kind::None) {
        conversion.mark = TakePrefix(p);
    }
}

constexpr bool TakesWide(const Directive& conversion, bool formatIsWide) {
    if (conversion.mark != SizeMark::None) {
        return conversion.mark == SizeMark::Wide;
    }
    const bool isOther = conversion.letter == 'C' || conversion.letter == 'S';
    return formatIsWide != isOther;
}

/// Reads the conversion behind a `%` at `p`; `p` ends up on its conversion character.
template <class Unit, class Source>
constexpr void TakeDirective(const Unit*& p, Source& source, Directive& conversion) {
    if (KindOf(*p) == Kind::None) {
        TakeOptions(p, source, conversion);
    }
    conversion.kind = KindOf(*p);
    conversion.letter = static_cast<char>(*p);
    const bool isOfCharacters = conversion.IsOfCharacters();
    source.Require(
        conversion.kind != Kind::None && !(isOfCharacters && conversion.mark == SizeMark::Bits64),
        "FALSE");
    if (isOfCharacters) {
        conversion.isWide = TakesWide(conversion, std::is_same<Unit, char16_t>::value);
    }
}

}  // namespace KelmFormat
/// @endcond

#endif
