#include <Kelm.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "model.h"
#include "require.h"

namespace {

using fuzz::Require;

template <class Value>
void CheckNumbers(const Value& value, const Model<char>& model) {
    Require(value.Bool() == model.Bool());
    Require(value.Int() == model.Int());
    Require(value.Long() == model.Long());
    Require(value.Int64() == model.Int64());
    const double expected = model.Double();
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

/// Beyond ASCII the two classes may differ in what is space.
void CheckText(const std::string& text) {
    const int length = static_cast<int>(text.size());
    CheckNumbers(Kelm(text.c_str(), length), Model<char>(text.c_str(), length));
    const std::u16string ascii(text.begin(), std::find_if(text.begin(), text.end(), [](char ch) {
                                   return static_cast<unsigned char>(ch) > 0x7F;
                               }));
    CheckNumbers(WString(ascii.c_str()), Model<char>(text.substr(0, ascii.size()).c_str()));
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
