#include <Kelm.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "require.h"

namespace {

using fuzz::Require;

struct WideText : WString {
    using WString::Format;
};

struct Text {
    const char* narrow;
    const char16_t* wide;
};

/// An argument of `S`.
struct OtherText {
    Text text;
};

constexpr Text kTexts[] = {
    {"", u""}, {"a", u"a"}, {"%d%%", u"%d%%"}, {"some words and more", u"some words and more"}};

struct ForKelm {};
struct ForWString {};
struct ForC {};

/// The argument as each of the three takes it.
const char* Own(const Text& text, ForKelm) {
    return text.narrow;
}
const char16_t* Own(const Text& text, ForWString) {
    return text.wide;
}
const char* Own(const Text& text, ForC) {
    return text.narrow;
}
const char16_t* Own(const OtherText& other, ForKelm) {
    return other.text.wide;
}
const char* Own(const OtherText& other, ForWString) {
    return other.text.narrow;
}
const char* Own(const OtherText& other, ForC) {
    return other.text.narrow;
}
template <class Value, class User>
Value Own(Value value, User) {
    return value;
}

enum class Type { Int, Int64, Double, Text, OtherText };

struct Argument {
    Type type;
    long long integer;
    double real;
    Text text;
};

constexpr std::size_t kMaxArguments = 3;

/// A format that the language accepts, what the C library calls the same, and the arguments.
struct Call {
    std::string format;
    std::string cFormat;
    bool isComparable = true;  // the C library gives the same text
    Argument arguments[kMaxArguments];
    std::size_t count = 0;
};

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : p_(data), end_(data + size) {}

    bool IsAtEnd() const { return p_ == end_; }
    std::uint8_t Byte() { return p_ != end_ ? *p_++ : std::uint8_t{0}; }
    template <class Value>
    Value Take() {
        Value value{};
        const std::size_t size = std::min(sizeof value, static_cast<std::size_t>(end_ - p_));
        std::memcpy(&value, p_, size);
        p_ += size;
        return value;
    }

private:
    const std::uint8_t* p_;
    const std::uint8_t* end_;
};

void AddBoth(Call& call, const std::string& text) {
    call.format += text;
    call.cFormat += text;
}

/// A width or a precision: none, a number, or an argument.
void AddNumber(Call& call, Input& input, const char* front) {
    const std::uint8_t choice = input.Byte();
    const int number = input.Byte() % 2 != 0 ? input.Byte() : input.Take<std::uint16_t>() % 2000;
    if (choice % 4 == 1) {
        AddBoth(call, front + std::to_string(number));
    } else if (choice % 4 == 2 && call.count + 1 < kMaxArguments) {
        AddBoth(call, front + std::string("*"));
        call.arguments[call.count++] = {Type::Int, number, 0, {}};
    } else if (choice % 4 == 3) {
        AddBoth(call, front);
    }
}

void AddInteger(Call& call, Input& input, char letter) {
    constexpr const char* kPrefixes[][2] = {{"", ""},  {"h", "h"}, {"l", ""}, {"I32", ""},
                                            {"F", ""}, {"L", ""},  {"N", ""}, {"I64", "ll"}};
    const auto& prefix = kPrefixes[input.Byte() % std::size(kPrefixes)];
    call.format += prefix[0];
    call.cFormat += prefix[1];
    AddBoth(call, std::string(1, letter));
    const auto value = input.Take<long long>();
    const Type type = prefix[1] == std::string("ll") ? Type::Int64 : Type::Int;
    call.arguments[call.count++] = {type, value, 0, {}};
}

void AddConversion(Call& call, Input& input) {
    AddBoth(call, "%");
    const std::uint8_t flags = input.Byte();
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
    call.format += letter;
    call.cFormat += letter == 'S' ? 's' : letter;
    Argument& argument = call.arguments[call.count++];
    if (letter == 'c') {
        argument = {Type::Int, input.Byte() % 0x7F + 1, 0, {}};
    } else if (letter == 's' || letter == 'S') {
        argument = {letter == 's' ? Type::Text : Type::OtherText, 0, 0,
                    kTexts[input.Byte() % std::size(kTexts)]};
    } else {
        argument = {Type::Double, 0, input.Take<double>(), {}};
        // The C library loses zeros here where rounding gives a digit more.
        call.isComparable &= (flags & 1) == 0 || std::tolower(letter) != 'g';
    }
}

Call MakeCall(Input& input) {
    Call call;
    while (!input.IsAtEnd() && call.count < kMaxArguments) {
        const std::uint8_t byte = input.Byte();
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

template <class... Values>
void Check(const Call& call, Values... values) {
    Kelm narrow;
    narrow.Format(call.format.c_str(), Own(values, ForKelm())...);
    const std::u16string wideFormat(call.format.begin(), call.format.end());
    WideText wide;
    wide.Format(wideFormat.c_str(), Own(values, ForWString())...);
    Require(static_cast<std::size_t>(narrow.GetLength()) == std::strlen(narrow));
    Require(narrow.GetLength() == wide.GetLength());
    Require(std::equal(narrow.constBuffer(), narrow.constBuffer() + narrow.GetLength(),
                       wide.constBuffer()));
    if (call.isComparable) {
        // The 0 is for the formats that take no argument: the compilers warn of such a call.
        const auto print = [&](char* destination, std::size_t size) {
            return std::snprintf(destination, size, call.cFormat.c_str(), Own(values, ForC())...,
                                 0);
        };
        const auto size = static_cast<std::size_t>(print(nullptr, 0)) + 1;
        std::string expected(size, '\0');
        print(expected.data(), size);
        Require(narrow == expected.c_str());
    }
    narrow.Format("<");
    narrow.AppendFormat(call.format.c_str(), Own(values, ForKelm())...);
    Require(narrow.GetLength() == wide.GetLength() + 1);
}

/// Brings the arguments, whose types the input has chosen, to a call.
template <class... Values>
void Spread(const Call& call, Values... values) {
    constexpr std::size_t kIndex = sizeof...(values);
    if (kIndex == call.count) {
        Check(call, values...);
        return;
    }
    if constexpr (kIndex < kMaxArguments) {
        const Argument& argument = call.arguments[kIndex];
        switch (argument.type) {
            case Type::Int:
                Spread(call, values..., static_cast<int>(argument.integer));
                break;
            case Type::Int64:
                Spread(call, values..., argument.integer);
                break;
            case Type::Double:
                Spread(call, values..., argument.real);
                break;
            case Type::Text:
                Spread(call, values..., argument.text);
                break;
            case Type::OtherText:
                Spread(call, values..., OtherText{argument.text});
                break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Spread(MakeCall(input));
    return 0;
}
