#pragma once

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <type_traits>

#include "input.h"
#include "open.h"
#include "oracle.h"

/// Calls of the print, read from bytes, with the C library as the oracle.
namespace calls {

struct Text {
    const char* narrow;
    const char16_t* wide;
};

/// An argument of `S`.
struct OtherText {
    Text text;
};

template <bool isWide>
auto Pick(const Text& text) {
    if constexpr (isWide) {
        return text.wide;
    } else {
        return text.narrow;
    }
}

inline constexpr Text kTexts[] = {
    {"", u""}, {"a", u"a"}, {"%d%%", u"%d%%"}, {"some words and more", u"some words and more"}};

enum class User { Kelm, WString, C };

/// The argument as one of the three takes it.
template <User user, class Value>
auto Own(const Value& value) {
    if constexpr (std::is_same_v<Value, Text>) {
        return Pick<user == User::WString>(value);
    } else if constexpr (std::is_same_v<Value, OtherText>) {
        return Pick<user == User::Kelm>(value.text);
    } else {
        return value;
    }
}

enum class Type { Int, Int64, Double, Text, OtherText };

struct Argument {
    Type type;
    long long integer;
    double real;
    Text text;
};

inline constexpr std::size_t kMaxArguments = 3;

/// A format that the language accepts, what the C library calls the same, and the arguments.
struct Call {
    std::string format;
    std::string cFormat;
    bool isComparable = true;  // the C library gives the same text
    Argument arguments[kMaxArguments];
    std::size_t count = 0;
};

inline void AddBoth(Call& call, const std::string& text) {
    call.format += text;
    call.cFormat += text;
}

/// A width or a precision: none, a number, or an argument.
inline void AddNumber(Call& call, Input& input, const char* front) {
    const unsigned choice = input.Byte();
    const int number =
        input.Byte() % 2 != 0 ? static_cast<int>(input.Byte()) : input.Take<std::uint16_t>() % 2000;
    if (choice % 4 == 1) {
        AddBoth(call, front + std::to_string(number));
    } else if (choice % 4 == 2 && call.count + 1 < kMaxArguments) {
        AddBoth(call, front + std::string("*"));
        call.arguments[call.count++] = {Type::Int, number, 0, {}};
    } else if (choice % 4 == 3) {
        AddBoth(call, front);
    }
}

inline void AddInteger(Call& call, Input& input, char letter) {
    constexpr const char* kPrefixes[][2] = {{"", ""},  {"h", "h"}, {"l", ""}, {"I32", ""},
                                            {"F", ""}, {"L", ""},  {"N", ""}, {"I64", "ll"}};
    const auto& prefix = kPrefixes[input.Byte() % std::size(kPrefixes)];
    call.format += prefix[0];
    call.cFormat += prefix[1];
    AddBoth(call, std::string(1, letter));
    static constexpr long long kEnds[] = {0,       1,       -1,         99,        -12345,
                                          INT_MAX, INT_MIN, 4294967295, INT64_MAX, INT64_MIN};
    const unsigned choice = input.Byte();
    const auto value = choice % 2 == 0 ? kEnds[choice / 2 % std::size(kEnds)]
                                       : input.Take<long long>() >> choice / 2 % 64;
    const Type type = prefix[1] == std::string("ll") ? Type::Int64 : Type::Int;
    call.arguments[call.count++] = {type, value, 0, {}};
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

inline void AddConversion(Call& call, Input& input) {
    AddBoth(call, "%");
    const unsigned flags = input.Byte();
    for (int bit = 0; bit < 5; ++bit) {
        AddBoth(call, std::string(flags >> bit & 1, "#-+ 0"[bit]));
    }
    AddNumber(call, input, "");
    AddNumber(call, input, ".");
    const char letter = "diouxXefgGcsS"[input.Byte() % 13];
    if (std::strchr("diouxX", letter) != nullptr) {
        AddInteger(call, input, letter);
        return;
    }
    if (letter == 's' || letter == 'c') {
        constexpr const char* kPrefixes[] = {"", "F", "L", "N", "I32"};
        call.format += kPrefixes[input.Byte() % std::size(kPrefixes)];
    }
    call.format += letter;
    call.cFormat += letter == 'S' ? 's' : letter;
    Argument& argument = call.arguments[call.count++];
    if (letter == 'c') {
        argument = {Type::Int, input.Byte() % 0x7F + 1LL, 0, {}};
    } else if (letter == 's' || letter == 'S') {
        argument = {letter == 's' ? Type::Text : Type::OtherText, 0, 0,
                    kTexts[input.Byte() % std::size(kTexts)]};
    } else {
        argument = {Type::Double, 0, Double(input), {}};
        // The C library loses zeros here where rounding gives a digit more.
        call.isComparable &= (flags & 1) == 0 || std::tolower(letter) != 'g';
    }
}

inline Call MakeCall(Input& input) {
    Call call;
    while (!input.IsEmpty() && call.count < kMaxArguments) {
        const unsigned byte = input.Byte();
        if (byte >= 0x80) {
            AddConversion(call, input);
        } else if (byte == '%') {
            AddBoth(call, "%%");
        } else if (byte != 0) {
            AddBoth(call, std::string(1, static_cast<char>(byte)));
        }
    }
    return call;
}

/// The format where the classes differ from the C library or from each other; else nothing.
template <class... Values>
std::string Check(const Call& call, Values... values) {
    Open<Kelm> narrow;
    narrow.Format(call.format.c_str(), Own<User::Kelm>(values)...);
    const std::u16string wideFormat(call.format.begin(), call.format.end());
    Open<WString> wide;
    wide.Format(wideFormat.c_str(), Own<User::WString>(values)...);
    const std::string text = whole(narrow);
    // The 0 is for the formats that take no argument: the compilers warn of such a call.
    const bool bSame = !call.isComparable ||
                       text == oracle::printed(call.cFormat.c_str(), Own<User::C>(values)..., 0);
    const bool bTwins = whole(wide) == std::u16string(text.begin(), text.end());
    narrow = "<";
    narrow.AppendFormat(call.format.c_str(), Own<User::Kelm>(values)...);
    const bool bAppended = whole(narrow) == '<' + text;
    return bSame && bTwins && bAppended
               ? ""
               : call.format + " gave " + text + (bSame ? "" : ", not as the C library") +
                     (bTwins ? "" : ", not as the twin") + (bAppended ? "" : ", not appended");
}

/// Brings the arguments, whose types the input has chosen, to a call.
template <class... Values>
std::string Spread(const Call& call, Values... values) {
    constexpr std::size_t kIndex = sizeof...(values);
    if (kIndex == call.count) {
        return Check(call, values...);
    }
    if constexpr (kIndex < kMaxArguments) {
        const Argument& argument = call.arguments[kIndex];
        switch (argument.type) {
            case Type::Int:
                return Spread(call, values..., static_cast<int>(argument.integer));
            case Type::Int64:
                return Spread(call, values..., argument.integer);
            case Type::Double:
                return Spread(call, values..., argument.real);
            case Type::Text:
                return Spread(call, values..., argument.text);
            case Type::OtherText:
                return Spread(call, values..., OtherText{argument.text});
        }
    }
    return "";
}

inline std::string check(const unsigned char* data, std::size_t size) {
    Input input(data, size);
    return Spread(MakeCall(input));
}

}  // namespace calls
