#include <Kelm.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>

#include "oracle.h"
#include "require.h"

namespace {

using fuzz::Require;

bool ExpectedBool(const std::string& text) {
    if (text.find_first_of("0123456789") != std::string::npos) {
        return oracle::integer(text, oracle::clamped) != 0;
    }
    std::string word = text.c_str();
    const auto isSpace = [](unsigned char byte) { return std::isspace(byte) != 0; };
    const auto first = std::find_if_not(word.begin(), word.end(), isSpace);
    word = std::string(
        first, std::find_if_not(word.rbegin(), std::make_reverse_iterator(first), isSpace).base());
    for (char& letter : word) {
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return word == "true" || word == "on" || word == "yes";
}

template <class Value>
void CheckNumbers(const Value& value, const std::string& text) {
    Require(value.Int() == oracle::integer(text, oracle::clamped));
    Require(value.Long() == oracle::integer(text, oracle::clamped));
    Require(value.Int64() == oracle::integer(text, oracle::whole));
    const double expected = oracle::real(text);
    Require(value.Double() == expected && std::signbit(value.Double()) == std::signbit(expected));
}

/// Bytes that make up numbers more often than any bytes do.
std::string NumberText(const std::uint8_t* data, std::size_t size) {
    static constexpr char kAlphabet[] = "00011234567899..,,eEfFxX+-- \t\n";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += kAlphabet[data[i] % (sizeof kAlphabet - 1)];
    }
    return text;
}

void CheckText(const std::string& text) {
    const int length = static_cast<int>(text.size());
    CheckNumbers(Kelm(text.c_str(), length), text);

    // Beyond ASCII the two classes may differ in what is space.
    std::string ascii = text;
    std::replace_if(
        ascii.begin(), ascii.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; },
        '\x7F');
    Require(Kelm(ascii.c_str(), length).Bool() == ExpectedBool(ascii));

    ascii = ascii.c_str();
    const WString wide(std::u16string(ascii.begin(), ascii.end()).c_str());
    CheckNumbers(wide, ascii);
    Require(wide.Bool() == ExpectedBool(ascii));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::setlocale(LC_ALL, (data[0] & 1) != 0 ? "de_DE.UTF-8" : "C");
    if ((data[0] & 2) != 0) {
        CheckText(NumberText(data + 1, size - 1));
    } else {
        CheckText(std::string(data + 1, data + size));
    }
    return 0;
}
