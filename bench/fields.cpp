#include <sstream>

#include "data.h"
#include "harness.h"
#include "walks.h"

namespace bench {

namespace {

constexpr int kMiddle = 65536;

/// Words between commas; at most the full stops at the end are no word.
std::string Fields(int size) {
    std::string text = Words(size);
    std::replace(text.begin(), text.end(), ' ', ',');
    std::replace(text.begin(), text.end(), '.', 'x');
    return text;
}

int CountFields(const std::string& text) {
    return static_cast<int>(std::count(text.begin(), text.end(), ',')) + 1;
}

std::string_view Nth(std::string_view text, int wanted) {
    std::string_view found;
    int number = 0;
    EachByMemchr(text, ',', [&](std::string_view field) {
        if (number++ < wanted)
            return true;
        found = field;
        return false;
    });
    return found;
}

/// A field near the end.
void NthField(Workload& work) {
    std::string text = Fields(work.Size());
    int wanted = CountFields(text) - 2;
    work.Add("kelm", [text = Kelm(text.c_str()), wanted] { return text.Element(wanted, ','); });
    work.Add("memchr", [text, wanted] { return std::string(Nth(text, wanted)); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(Wide(text)), wanted] {
        return text.section(QLatin1Char(','), wanted, wanted);
    });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text, wanted] {
        gchar** fields = g_strsplit(text.c_str(), ",", -1);
        std::string field(fields[wanted]);
        g_strfreev(fields);
        return field;
    });
#endif
}

void NthFieldWide(Workload& work) {
    std::string narrow = Fields(work.Size());
    std::u16string text = Wide(narrow);
    int wanted = CountFields(narrow) - 2;
    work.Add("kelm", [text = WString(text.c_str()), wanted] { return text.Element(wanted, u','); });
    work.Add("std_u16string", [text, wanted] {
        std::size_t start = 0;
        for (int i = 0; i < wanted; i++)
            start = text.find(u',', start) + 1;
        return text.substr(start, text.find(u',', start) - start);
    });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text), wanted] {
        return text.section(QLatin1Char(','), wanted, wanted);
    });
#endif
}

/// The middle half of all fields.
void SomeFields(Workload& work) {
    std::string text = Fields(work.Size());
    int first = CountFields(text) / 4;
    int last = 3 * first;
    work.Add("kelm", [=, text = Kelm(text.c_str())] { return text.Elements(first, last, ','); });
    work.Add("memchr", [=] {
        std::string_view begin = Nth(text, first);
        std::string_view end = Nth(text, last);
        return std::string(begin.data(), end.data() + end.size());
    });
#ifdef BENCH_QT
    work.Add("qt", [=, text = QtText(Wide(text))] {
        return text.section(QLatin1Char(','), first, last);
    });
#endif
}

int IndexOf(std::string_view text, std::string_view wanted) {
    int number = -1;
    bool found = false;
    EachByMemchr(text, ',', [&](std::string_view field) {
        number++;
        found = field == wanted;
        return !found;
    });
    return found ? number : -1;
}

/// The text is not among the fields, but the length of some.
void IndexOfText(Workload& work) {
    std::string text = Fields(work.Size());
    std::string wanted = "needle";
    work.Add("kelm",
             [=, text = Kelm(text.c_str())] { return text.IndexOfElement(wanted.c_str(), ','); });
    work.Add("memchr", [=] { return IndexOf(text, wanted); });
#ifdef BENCH_QT
    work.Add("qt", [wanted = QtBytes(wanted), text = QtBytes(text)] {
        return text.split(',').indexOf(wanted);
    });
#endif
}

std::string Numbers(int size) {
    std::string text;
    for (int number = 1; Count(text.size()) + 8 < size; number = number * 29 % 99991)
        text += std::to_string(number) + ',';
    return text + "7";
}

void IndexOfNumber(Workload& work) {
    std::string text = Numbers(work.Size());
    work.Add("kelm", [=, text = Kelm(text.c_str())] { return text.IndexOfElement(-5, ','); });
    work.Add("memchr_strtol", [=] {
        int number = -1;
        bool found = false;
        EachByMemchr(text, ',', [&](std::string_view field) {
            number++;
            found = std::strtol(field.data(), nullptr, 10) == -5;
            return !found;
        });
        return found ? number : -1;
    });
}

/// All fields, each as a text of its own. `Element` begins at the start each time.
void AllFields(Workload& work) {
    std::string text = Fields(work.Size());
    Kelm value(text.c_str());
    if (work.Size() <= kMiddle) {
        work.Add("kelm_element", [value, fields = CountFields(text)] {
            Sum sum;
            for (int i = 0; i < fields; i++)
                sum.Take(value.Element(i, ','));
            return sum.Value();
        });
    }
    work.Add("kelm_find_mid", [value] {
        Sum sum;
        EachByFindAndMid(value, ',', [&](const Kelm& field) { sum.Take(field); });
        return sum.Value();
    });
    work.Add("kelm", [value] {
        Sum sum;
        for (Kelm::Token token(value); token; token.Next(','))
            sum.Take(token.Current());
        return sum.Value();
    });
    work.Add("memchr", [text] {
        Sum sum;
        EachByMemchr(text, ',', [&](std::string_view field) {
            sum.Take(std::string(field));
            return true;
        });
        return sum.Value();
    });
    work.Add("getline", [text] {
        Sum sum;
        std::istringstream stream(text);
        for (std::string field; std::getline(stream, field, ',');)
            sum.Take(field);
        return sum.Value();
    });
#ifdef BENCH_BOOST
    work.Add("boost", [text] {
        Sum sum;
        std::vector<std::string> fields;
        boost::split(fields, text, [](char ch) { return ch == ','; });
        for (const std::string& field : fields)
            sum.Take(field);
        return sum.Value();
    });
#endif
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] {
        Sum sum;
        for (const QByteArray& field : text.split(','))
            sum.Take(field.constData(), static_cast<std::size_t>(field.size()));
        return sum.Value();
    });
#endif
}

}  // namespace

void AddFields(Suite& suite) {
    suite.Add("element", {kMedium, kLarge}, NthField);
    suite.Add("element_wide", {kMedium, kLarge}, NthFieldWide);
    suite.Add("elements", {kMedium, kLarge}, SomeFields);
    suite.Add("index_of_element", {kMedium, kLarge}, IndexOfText);
    suite.Add("index_of_number", {kMedium, kLarge}, IndexOfNumber);
    suite.Add("all_elements", {kMedium, kMiddle, kLarge}, AllFields);
}

}  // namespace bench
