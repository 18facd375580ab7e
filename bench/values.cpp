#include <strings.h>

#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

constexpr int kIntegers[] = {0,     7,       -1,      42,         -123,       4096,
                             65535, -100000, 1234567, -987654321, 2147483647, 15};
constexpr long long kLongIntegers[] = {
    0, -1, 4711, 5000000000, -1234567890123, 9223372036854775807};
constexpr double kReals[] = {0.5, 3.1415926535897931, -1e10, 1.25e-7, 12345.678, 99.125, 6.02e23};

template <class Number>
std::vector<std::string> Digits(const Number& numbers) {
    std::vector<std::string> texts;
    for (auto number : numbers) {
        char buffer[64];
        auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
        texts.emplace_back(buffer, end);
    }
    return texts;
}

/// The texts in the form of one implementation, and the sum of what `read` makes of them.
template <class Number, class Make, class Read>
auto Reader(const std::vector<std::string>& digits, Make make, Read read) {
    std::vector<decltype(make(digits[0]))> texts;
    for (const std::string& text : digits)
        texts.push_back(make(text));
    return [texts, read] {
        Number sum = 0;
        for (const auto& text : texts)
            sum += static_cast<Number>(read(text));
        return sum;
    };
}

Kelm ToKelm(const std::string& text) {
    return Kelm(text.c_str());
}
WString ToWString(const std::string& text) {
    return WString(text.c_str());
}
std::string Same(const std::string& text) {
    return text;
}

template <class Number>
Number FromChars(const std::string& text) {
    Number value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

void ReadInt(Workload& work) {
    auto digits = Digits(kIntegers);
    using Total = unsigned;
    work.Add("kelm", Reader<Total>(digits, ToKelm, [](const Kelm& a) { return a.Int(); }));
    work.Add("kelm_wide",
             Reader<Total>(digits, ToWString, [](const WString& a) { return a.Int(); }));
    work.Add("from_chars", Reader<Total>(digits, Same, FromChars<int>));
    work.Add("strtol", Reader<Total>(digits, Same, [](const std::string& a) {
                 return std::strtol(a.c_str(), nullptr, 10);
             }));
#ifdef BENCH_QT
    work.Add("qt", Reader<Total>(
                       digits, [](const std::string& a) { return QtText(Wide(a)); },
                       [](const QString& a) { return a.toInt(); }));
#endif
}

void ReadInt64(Workload& work) {
    auto digits = Digits(kLongIntegers);
    using Total = unsigned long long;
    work.Add("kelm", Reader<Total>(digits, ToKelm, [](const Kelm& a) { return a.Int64(); }));
    work.Add("kelm_wide",
             Reader<Total>(digits, ToWString, [](const WString& a) { return a.Int64(); }));
    work.Add("from_chars", Reader<Total>(digits, Same, FromChars<long long>));
    work.Add("strtoll", Reader<Total>(digits, Same, [](const std::string& a) {
                 return std::strtoll(a.c_str(), nullptr, 10);
             }));
}

void ReadDouble(Workload& work) {
    auto digits = Digits(kReals);
    work.Add("kelm", Reader<double>(digits, ToKelm, [](const Kelm& a) { return a.Double(); }));
    work.Add("kelm_wide",
             Reader<double>(digits, ToWString, [](const WString& a) { return a.Double(); }));
    work.Add("strtod", Reader<double>(digits, Same, [](const std::string& a) {
                 return std::strtod(a.c_str(), nullptr);
             }));
    work.Add("from_chars", Reader<double>(digits, Same, FromChars<double>));
#ifdef BENCH_QT
    work.Add("qt", Reader<double>(
                       digits, [](const std::string& a) { return QtText(Wide(a)); },
                       [](const QString& a) { return a.toDouble(); }));
#endif
}

void ReadBool(Workload& work) {
    std::vector<std::string> words = {"true", "off", "Yes", "0", "1", "on", "nothing"};
    work.Add("kelm", Reader<int>(words, ToKelm, [](const Kelm& a) { return a.Bool(); }));
    work.Add("kelm_wide", Reader<int>(words, ToWString, [](const WString& a) { return a.Bool(); }));
    work.Add("strcasecmp", Reader<int>(words, Same, [](const std::string& a) {
                 const char* text = a.c_str();
                 return strcasecmp(text, "true") == 0 || strcasecmp(text, "on") == 0 ||
                        strcasecmp(text, "yes") == 0 || std::strtol(text, nullptr, 10) != 0;
             }));
}

RawBlock<char> NewToChars(int number) {
    char buffer[32];
    auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
    return RawBlock<char>(buffer, static_cast<std::size_t>(end - buffer));
}

std::string PrintG(double number) {
    char buffer[64];
    int length = std::snprintf(buffer, sizeof buffer, "%g", number);
    return std::string(buffer, static_cast<std::size_t>(length));
}

/// Makes a text of every number and looks at its length and last character.
template <class Numbers, class Write, class View>
auto SumOf(const Numbers& numbers, Write write, View view) {
    return [&numbers, write, view] {
        unsigned sum = 0;
        for (auto number : numbers) {
            auto text = write(number);
            auto characters = view(text);
            sum = sum * 31 + static_cast<unsigned>(characters.size()) * 7 +
                  static_cast<unsigned>(characters.back());
        }
        return sum;
    };
}

std::string_view ViewKelm(const Kelm& text) {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}
std::u16string_view ViewWide(const WString& text) {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}
std::string_view ViewStd(const std::string& text) {
    return text;
}

void FromInt(Workload& work) {
    work.Add("kelm", SumOf(
                         kIntegers, [](int i) { return Kelm::From(i); }, ViewKelm));
    work.Add("kelm_wide", SumOf(
                              kIntegers, [](int i) { return WString::From(i); }, ViewWide));
    work.Add("new_to_chars",
             SumOf(kIntegers, NewToChars, [](const RawBlock<char>& text) { return text.View(); }));
    work.Add("std_to_string", SumOf(
                                  kIntegers, [](int i) { return std::to_string(i); }, ViewStd));
#ifdef BENCH_FMT
    work.Add("fmt", SumOf(
                        kIntegers, [](int i) { return fmt::to_string(i); }, ViewStd));
#endif
#ifdef BENCH_QT
    work.Add("qt", SumOf(
                       kIntegers, [](int i) { return QByteArray::number(i); },
                       [](const QByteArray& text) {
                           return std::string_view(text.constData(),
                                                   static_cast<std::size_t>(text.size()));
                       }));
#endif
}

void FromDouble(Workload& work) {
    work.Add("kelm", SumOf(
                         kReals, [](double d) { return Kelm::From(d); }, ViewKelm));
    work.Add("kelm_wide", SumOf(
                              kReals, [](double d) { return WString::From(d); }, ViewWide));
    work.Add("snprintf", SumOf(kReals, PrintG, ViewStd));
#ifdef BENCH_FMT
    work.Add("fmt", SumOf(
                        kReals, [](double d) { return fmt::format("{:g}", d); }, ViewStd));
#endif
}

template <class Ask, class Test>
void WholeText(Workload& work, const std::string& text, Ask ask, Test test) {
    work.Add("kelm", [text = Kelm(text.c_str()), ask] { return ask(text); });
    work.Add("std_all_of", [text, test] {
        return std::all_of(text.begin(), text.end(),
                           [test](char ch) { return test(static_cast<unsigned char>(ch)) != 0; });
    });
}

void IsDigit(Workload& work) {
    WholeText(
        work, std::string(static_cast<std::size_t>(work.Size()), '7'),
        [](const Kelm& text) { return text.IsDigit(); }, [](int ch) { return std::isdigit(ch); });
}

void IsAlNum(Workload& work) {
    std::string text = Words(work.Size());
    std::replace_if(
        text.begin(), text.end(), [](char ch) { return ch == ' ' || ch == '.'; }, '7');
    WholeText(
        work, text, [](const Kelm& value) { return value.IsAlNum(); },
        [](int ch) { return std::isalnum(ch); });
}

}  // namespace

void AddValues(Suite& suite) {
    suite.Add("int", {kSmall}, ReadInt);
    suite.Add("int64", {kSmall}, ReadInt64);
    suite.Add("double", {kSmall}, ReadDouble);
    suite.Add("bool", {kSmall}, ReadBool);
    suite.Add("from_int", {kSmall}, FromInt);
    suite.Add("from_double", {kSmall}, FromDouble);
    suite.Add("is_digit", {kSmall, kMedium, kLarge}, IsDigit);
    suite.Add("is_alnum", {kSmall, kMedium, kLarge}, IsAlNum);
}

}  // namespace bench
