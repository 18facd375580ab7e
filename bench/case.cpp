#include <cctype>

#include "harness.h"
#include "texts.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};

char ToUpper(char ch) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
}
char ToLower(char ch) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
}

void MakeUpper(Workload& work) {
    std::string text = Prose(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.MakeUpper(); });
    work.AddInPlace("std_toupper", FreshStd(text), [](std::string& value) {
        std::transform(value.begin(), value.end(), value.begin(), ToUpper);
    });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text), [](std::string& value) { boost::to_upper(value); });
#endif
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text),
                    [](QByteArray& value) { value = std::move(value).toUpper(); });
#endif
}

void MakeLower(Workload& work) {
    std::string text = Prose(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.MakeLower(); });
    work.AddInPlace("std_tolower", FreshStd(text), [](std::string& value) {
        std::transform(value.begin(), value.end(), value.begin(), ToLower);
    });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text),
                    [](QByteArray& value) { value = std::move(value).toLower(); });
#endif
}

void MakeUpperWide(Workload& work) {
    std::u16string text = Wide(Prose(work.Size()));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.MakeUpper(); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text),
                    [](QString& value) { value = std::move(value).toUpper(); });
#endif
#ifdef BENCH_ICU
    work.AddInPlace("icu", FreshIcu(text), [](icu::UnicodeString& value) { value.toUpper(); });
#endif
}

void MakeLowerWide(Workload& work) {
    std::u16string text = Wide(Prose(work.Size()));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.MakeLower(); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text),
                    [](QString& value) { value = std::move(value).toLower(); });
#endif
}

/// Letters beyond ASCII that keep their width.
void MakeUpperLatin(Workload& work) {
    std::u16string text = Wide(Latin(work.Size()));
    // A single unit of capital sharp s in the peers is none here.
    std::replace(text.begin(), text.end(), u'\u00DF', u's');
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.MakeUpper(); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text),
                    [](QString& value) { value = std::move(value).toUpper(); });
#endif
#ifdef BENCH_ICU
    work.AddInPlace("icu", FreshIcu(text), [](icu::UnicodeString& value) { value.toUpper(); });
#endif
}

void MakeUpperUtf8(Workload& work) {
    std::string text = Latin(work.Size());
    for (auto at = text.find("ß"); at != text.npos; at = text.find("ß", at))
        text.replace(at, 2, "ss");
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.MakeUpper(); });
#ifdef BENCH_GLIB
    work.AddInPlace("glib", FreshStd(text), [](std::string& value) {
        value = GText(g_utf8_strup(value.data(), static_cast<gssize>(value.size()))).View();
    });
#endif
}

/// In a code page of single bytes, where a narrow character is a byte.
void MakeReverse(Workload& work) {
    work.UseLocale("de_DE.ISO-8859-1");
    std::string text = Words(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.MakeReverse(); });
    work.AddInPlace("std_reverse", FreshStd(text),
                    [](std::string& value) { std::reverse(value.begin(), value.end()); });
}

void MakeReverseUtf8(Workload& work) {
    std::string text = Mixed(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.MakeReverse(); });
#ifdef BENCH_GLIB
    work.AddInPlace("glib", FreshStd(text), [](std::string& value) {
        value = GText(g_utf8_strreverse(value.data(), static_cast<gssize>(value.size()))).View();
    });
#endif
}

void MakeReverseWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.MakeReverse(); });
    work.AddInPlace("std_reverse", FreshStd(text),
                    [](std::u16string& value) { std::reverse(value.begin(), value.end()); });
}

/// A tenth of the text at each end is white space.
std::string Padded(int size) {
    std::string text = Words(size);
    auto margin = static_cast<std::size_t>(size / 10 + 1);
    text.replace(0, margin, margin, ' ');
    text.replace(text.size() - margin, margin, margin, ' ');
    return text;
}

void Trim(Workload& work) {
    std::string text = Padded(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.Trim(); });
#ifdef BENCH_BOOST
    work.Add("boost", [text] { return boost::trim_copy(text); });
#endif
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] { return text.trimmed(); });
#endif
    work.Add("std_string", [text] {
        std::size_t first = text.find_first_not_of(" \t\r\n");
        return text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
    });
}

void TrimWide(Workload& work) {
    std::u16string text = Wide(Padded(work.Size()));
    work.Add("kelm", [text = WString(text.c_str())] { return text.Trim(); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text)] { return text.trimmed(); });
#endif
}

void TrimRight(Workload& work) {
    std::string text = Padded(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.TrimRight(); });
    work.AddInPlace("std_string", FreshStd(text),
                    [](std::string& value) { value.erase(value.find_last_not_of(" \t\r\n") + 1); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text), [](std::string& value) { boost::trim_right(value); });
#endif
}

void TrimLeft(Workload& work) {
    std::string text = Padded(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.TrimLeft(); });
    work.AddInPlace("std_string", FreshStd(text),
                    [](std::string& value) { value.erase(0, value.find_first_not_of(" \t\r\n")); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text), [](std::string& value) { boost::trim_left(value); });
#endif
}

}  // namespace

void AddCase(Suite& suite) {
    suite.Add("make_upper", kSizes, MakeUpper);
    suite.Add("make_upper_utf8", {kMedium, kLarge}, MakeUpperUtf8);
    suite.Add("make_upper_wide", kSizes, MakeUpperWide);
    suite.Add("make_upper_latin_wide", {kMedium, kLarge}, MakeUpperLatin);
    suite.Add("make_lower", kSizes, MakeLower);
    suite.Add("make_lower_wide", kSizes, MakeLowerWide);
    suite.Add("make_reverse", kSizes, MakeReverse);
    suite.Add("make_reverse_utf8", {kMedium, kLarge}, MakeReverseUtf8);
    suite.Add("make_reverse_wide", kSizes, MakeReverseWide);
    suite.Add("trim", kSizes, Trim);
    suite.Add("trim_wide", kSizes, TrimWide);
    suite.Add("trim_right", kSizes, TrimRight);
    suite.Add("trim_left", kSizes, TrimLeft);
}

}  // namespace bench
