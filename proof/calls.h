#pragma once

#include <array>
#include <cctype>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <deque>
#include <iterator>
#include <string>
#include <vector>

#include "input.h"
#include "open.h"
#include "oracle.h"

/// Calls of the print, read from bytes, with the C library as the oracle.
namespace calls {

inline constexpr const char* kLocales[] = {
    "C",         "en_US.UTF-8",   "tr_TR.UTF-8", "de_DE.ISO-8859-1", "ja_JP.SHIFT_JIS",
    "zh_CN.GBK", "zh_CN.GB18030", "ja_JP.EUC-JP"};

/// Who formats: the classes, and the C library in their place.
enum User : std::size_t { kKelm, kWString, kNarrowC, kWideC, kUsers };

enum class Type { Int, Int64, Double, Pointer };

struct Argument {
    Type type = Type::Int;
    double real = 0;
    std::array<long long, kUsers> integers{};
    std::array<const void*, kUsers> pointers{};
};

struct Text {
    std::string narrow;
    std::u16string wide;
    std::wstring wideC;
};

inline constexpr std::size_t kMaxArguments = 3;

struct Call {
    std::wstring format, narrowC, wideC;
    std::vector<Argument> arguments;
    std::size_t firstOfConversion = 0;
    std::deque<Text> texts;
};

/// A width or a precision.
struct Number {
    enum class Form { None, Bare, Digits, Argument } form;
    int value;
};

struct Conversion {
    std::string flags;
    Number width;
    Number precision;
};

/// The bytes of the locale, none where it lacks the character. The C locale has ASCII alone to the
/// C library, and UTF-8 to the classes.
inline std::string Bytes(wchar_t ch) {
    char bytes[MB_LEN_MAX];
    std::mbstate_t state{};
    const std::size_t count = std::wcrtomb(bytes, ch, &state);
    return {bytes, count == std::size_t(-1) ? 0 : count};
}

inline wchar_t Letter(unsigned byte) {
    static constexpr wchar_t kLetters[] = L"az%0é\u00DF\u0130\u20AC\u3042\uFF71\u4E00\u4E02";
    const wchar_t letter = kLetters[byte % (std::size(kLetters) - 1)];
    return Bytes(letter).empty() ? L'?' : letter;
}

inline Text MakeText(const std::wstring& characters) {
    Text text{{}, {characters.begin(), characters.end()}, characters};
    for (const wchar_t ch : characters) {
        text.narrow += Bytes(ch);
    }
    return text;
}

inline void AddToAll(Call& call, const std::wstring& text) {
    call.format += text;
    call.narrowC += text;
    call.wideC += text;
}

inline Argument MakeInteger(Type type, long long value) {
    Argument argument{type};
    argument.integers.fill(value);
    return argument;
}

inline Number MakeNumber(Call& call, Input& input) {
    const auto form = static_cast<Number::Form>(input.Byte() % 4);
    const int value =
        input.Byte() % 2 != 0 ? static_cast<int>(input.Byte()) : input.Take<std::uint16_t>() % 2000;
    if (form == Number::Form::Argument) {
        if (call.arguments.size() + 1 >= kMaxArguments) {
            return {Number::Form::None, 0};
        }
        call.arguments.push_back(MakeInteger(Type::Int, value));
    }
    return {form, value};
}

inline std::wstring Spelled(const Number& number) {
    return number.form == Number::Form::Digits     ? std::to_wstring(number.value)
           : number.form == Number::Form::Argument ? L"*"
                                                   : L"";
}

inline std::wstring Spelled(const Conversion& conversion, const std::string& letters) {
    const bool isPrecise = conversion.precision.form != Number::Form::None;
    return L'%' + std::wstring(conversion.flags.begin(), conversion.flags.end()) +
           Spelled(conversion.width) + (isPrecise ? L"." : L"") + Spelled(conversion.precision) +
           std::wstring(letters.begin(), letters.end());
}

inline void AddInteger(Call& call, Input& input, const Conversion& conversion, char letter) {
    constexpr const char* kPrefixes[][2] = {{"", ""},  {"h", "h"}, {"l", ""}, {"I32", ""},
                                            {"F", ""}, {"L", ""},  {"N", ""}, {"I64", "ll"}};
    const auto& prefix = kPrefixes[input.Byte() % std::size(kPrefixes)];
    call.format += Spelled(conversion, std::string(prefix[0]) + letter);
    call.narrowC += Spelled(conversion, std::string(prefix[1]) + letter);
    call.wideC += Spelled(conversion, std::string(prefix[1]) + letter);
    static constexpr long long kEnds[] = {0,       1,       -1,         99,        -12345,
                                          INT_MAX, INT_MIN, 4294967295, INT64_MAX, INT64_MIN};
    const unsigned choice = input.Byte();
    auto value = choice % 2 == 0 ? kEnds[choice / 2 % std::size(kEnds)]
                                 : input.Take<long long>() >> choice / 2 % 64;
    const Type type = prefix[1] == std::string("ll") ? Type::Int64 : Type::Int;
    // Where `long` has 32 bits the C library prints nothing for a wide "%0lld" of 0.
    if (sizeof(long) == sizeof(int) && type == Type::Int64 && value == 0) {
        value = 1;
    }
    call.arguments.push_back(MakeInteger(type, value));
}

/// Of any bits, everyday ones and those at which rounding makes a digit more.
inline double Double(Input& input) {
    static constexpr double kEnds[] = {0.0,  -0.0,    0.5,     2.5,    9.9995,   99.95, 999999.5,
                                       1e22, DBL_MAX, DBL_MIN, 5e-324, INFINITY, NAN,   123456.5};
    const unsigned choice = input.Byte();
    return choice % 3 == 0   ? kEnds[choice / 3 % std::size(kEnds)]
           : choice % 3 == 1 ? input.Take<std::int32_t>() / std::pow(10, choice / 3 % 10)
                             : input.Take<double>();
}

/// "%#g" by its definition: the C library loses zeros where rounding gives a digit more.
inline char ReplaceGeneral(Call& call, Conversion& conversion, char letter, double value) {
    Number& precision = conversion.precision;
    const int digits = precision.form == Number::Form::None ? 6
                       : precision.form == Number::Form::Bare || precision.value == 0
                           ? 1
                           : precision.value;
    const std::string scientific = oracle::printed("%.*e", digits - 1, value);
    const int exponent = std::atoi(scientific.c_str() + scientific.find('e') + 1);
    const bool isFixed = exponent >= -4 && exponent < digits;
    const int places = digits - 1 - (isFixed ? exponent : 0);
    if (precision.form == Number::Form::Argument) {
        auto& integers = call.arguments.back().integers;
        integers[kNarrowC] = integers[kWideC] = places;
    } else {
        precision = {Number::Form::Digits, places};
    }
    return isFixed ? 'f' : letter == 'g' ? 'e' : 'E';
}

inline void AddReal(Call& call, Input& input, Conversion conversion, char letter) {
    constexpr const char* kPrefixes[] = {"", "F", "L", "N", "I32", "h", "l"};
    call.format += Spelled(conversion,
                           kPrefixes[input.Byte() % std::size(kPrefixes)] + std::string(1, letter));
    Argument argument{Type::Double, Double(input)};
    const bool isGeneral = letter == 'g' || letter == 'G';
    if (isGeneral && conversion.flags[0] == '#' && std::isfinite(argument.real)) {
        letter = ReplaceGeneral(call, conversion, letter, argument.real);
    }
    call.narrowC += Spelled(conversion, std::string(1, letter));
    call.wideC += Spelled(conversion, std::string(1, letter));
    call.arguments.push_back(argument);
}

/// A character or a text, of the class's own width, the other one, or one that is named.
inline void AddText(Call& call, Input& input, const Conversion& conversion, char letter) {
    constexpr const char* kPrefixes[] = {"", "F", "L", "N", "I32", "h", "l"};
    const std::string prefix = kPrefixes[input.Byte() % std::size(kPrefixes)];
    const bool isOther = std::isupper(letter) != 0;
    const bool isWide[] = {prefix == "l" || (prefix != "h" && isOther),
                           prefix == "l" || (prefix != "h" && !isOther)};
    const char small = static_cast<char>(std::tolower(letter));
    call.format += Spelled(conversion, prefix + letter);
    call.narrowC += Spelled(conversion, (isWide[kKelm] ? "l" : "") + std::string(1, small));
    call.wideC += Spelled(conversion, (isWide[kWString] ? "l" : "") + std::string(1, small));
    std::wstring characters;
    for (unsigned length = small == 'c' ? 1 : input.Byte() % 40; length > 0; --length) {
        characters += Letter(input.Byte());
    }
    // The C library prints all of a null text or nothing, and widens less bytes than it converts.
    const bool isNull = characters.size() == 39;
    const Text& text = call.texts.emplace_back(MakeText(isNull ? L"(null)" : characters));
    const bool isByte =
        text.narrow.size() == 1 && std::btowc(static_cast<unsigned char>(text.narrow[0])) != WEOF;
    Argument argument{small == 'c' ? Type::Int : Type::Pointer};
    for (const User user : {kKelm, kWString, kNarrowC, kWideC}) {
        const bool isOfC = user >= kNarrowC;
        const void* const wide = isOfC ? static_cast<const void*>(text.wideC.c_str())
                                       : static_cast<const void*>(text.wide.c_str());
        const bool takesWide = isWide[user % 2];
        argument.pointers[user] = isNull && !isOfC ? nullptr
                                  : takesWide      ? wide
                                                   : text.narrow.c_str();
        argument.integers[user] = takesWide ? text.wideC[0] : isByte ? text.narrow[0] : '?';
    }
    call.arguments.push_back(argument);
}

/// "%n" writes nothing at all: to the C library it is an empty text, without a width.
inline void AddPointer(Call& call, Input& input, Conversion conversion, char letter) {
    Argument argument{Type::Pointer};
    argument.pointers.fill(input.Byte() % 3 == 0 ? nullptr : kLocales[0]);
    call.format += Spelled(conversion, std::string(1, letter));
    if (letter == 'n') {
        for (Number* const number : {&conversion.precision, &conversion.width}) {
            if (number->form != Number::Form::Argument) {
                *number = {Number::Form::Digits, 0};
            }
        }
        for (std::size_t n = call.firstOfConversion; n < call.arguments.size(); ++n) {
            call.arguments[n].integers[kNarrowC] = call.arguments[n].integers[kWideC] = 0;
        }
        letter = 's';
    }
    call.narrowC += Spelled(conversion, std::string(1, letter));
    call.wideC += Spelled(conversion, std::string(1, letter));
    call.arguments.push_back(argument);
}

inline void AddConversion(Call& call, Input& input) {
    call.firstOfConversion = call.arguments.size();
    Conversion conversion{};
    const unsigned flags = input.Byte();
    for (int bit = 0; bit < 5; ++bit) {
        conversion.flags += std::string(flags >> bit & 1, "#-+ 0"[bit]);
    }
    conversion.width = MakeNumber(call, input);
    conversion.precision = MakeNumber(call, input);
    const char letter = "diouxXefgGcsCSpn"[input.Byte() % 16];
    if (std::strchr("diouxX", letter) != nullptr) {
        AddInteger(call, input, conversion, letter);
    } else if (std::strchr("efgG", letter) != nullptr) {
        AddReal(call, input, conversion, letter);
    } else if (letter == 'p' || letter == 'n') {
        AddPointer(call, input, conversion, letter);
    } else {
        AddText(call, input, conversion, letter);
    }
}

inline Call MakeCall(Input& input) {
    Call call;
    while (!input.IsEmpty() && call.arguments.size() < kMaxArguments) {
        const unsigned byte = input.Byte();
        if (byte >= 0x80) {
            AddConversion(call, input);
        } else if (byte == '%') {
            AddToAll(call, L"%%");
        } else if (byte < ' ') {
            const wchar_t letter = Letter(byte);
            AddToAll(call, letter == L'%' ? L"%%" : std::wstring(1, letter));
        } else {
            AddToAll(call, std::wstring(1, static_cast<wchar_t>(byte)));
        }
    }
    return call;
}

/// An argument as its own type.
template <Type type>
struct Value {
    const Argument& argument;
    template <User user>
    auto For() const {
        if constexpr (type == Type::Int) {
            return static_cast<int>(argument.integers[user]);
        } else if constexpr (type == Type::Int64) {
            return argument.integers[user];
        } else if constexpr (type == Type::Double) {
            return argument.real;
        } else {
            return argument.pointers[user];
        }
    }
};

/// The text and the texts that it differs from; nothing where the classes print as the C library.
/// The 0 is for the formats that take no argument: the compilers warn of such a call.
template <class... Values>
std::string Check(const Call& call, Values... values) {
    const Text format = MakeText(call.format);
    const std::string expected = oracle::printed(MakeText(call.narrowC).narrow.c_str(),
                                                 values.template For<kNarrowC>()..., 0);
    const std::u16string expectedWide =
        oracle::printed(call.wideC.c_str(), values.template For<kWideC>()..., 0);
    Open<Kelm> narrow, after("<");
    narrow.Format(format.narrow.c_str(), values.template For<kKelm>()...);
    after.AppendFormat(format.narrow.c_str(), values.template For<kKelm>()...);
    Open<WString> wide, afterWide(u"<");
    wide.Format(format.wide.c_str(), values.template For<kWString>()...);
    afterWide.AppendFormat(format.wide.c_str(), values.template For<kWString>()...);
    const bool bSame = whole(narrow) == expected && whole(wide) == expectedWide;
    const bool bAppended =
        whole(after) == '<' + expected && whole(afterWide) == u'<' + expectedWide;
    return bSame && bAppended
               ? ""
               : std::setlocale(LC_ALL, nullptr) + std::string(" ") + format.narrow + " gave " +
                     whole(narrow) + " and " + oracle::encode_utf8(whole(wide)) +
                     (bSame ? ", appended something else" : ", not as the C library") + ": " +
                     expected + " and " + oracle::encode_utf8(expectedWide);
}

/// Brings the arguments, whose types the input has chosen, to a call.
template <class... Values>
std::string Spread(const Call& call, Values... values) {
    constexpr std::size_t kIndex = sizeof...(values);
    if (kIndex == call.arguments.size()) {
        return Check(call, values...);
    }
    if constexpr (kIndex < kMaxArguments) {
        const Argument& argument = call.arguments[kIndex];
        switch (argument.type) {
            case Type::Int:
                return Spread(call, values..., Value<Type::Int>{argument});
            case Type::Int64:
                return Spread(call, values..., Value<Type::Int64>{argument});
            case Type::Double:
                return Spread(call, values..., Value<Type::Double>{argument});
            case Type::Pointer:
                return Spread(call, values..., Value<Type::Pointer>{argument});
        }
    }
    return "";
}

/// In the locale that the first byte names.
inline std::string check(const unsigned char* data, std::size_t size) {
    Input input(data, size);
    const char* const locale = kLocales[input.Below(std::size(kLocales))];
    return std::setlocale(LC_ALL, locale) == nullptr ? std::string("no locale ") + locale
                                                     : Spread(MakeCall(input));
}

}  // namespace calls
