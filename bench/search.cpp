#include <locale.h>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};

/// In range of int, -1 for a null pointer, as the library counts.
template <class Ch>
int IndexOf(const Ch* hit, const Ch* text) {
    return hit == nullptr ? -1 : static_cast<int>(hit - text);
}

int IndexOf(std::size_t position) {
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

/// The only hit is the last byte.
void FindChar(Workload& work) {
    std::string text = Words(work.Size());
    text.back() = '#';
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.Find('#'); });
    work.Add("memchr", [text] {
        return IndexOf(static_cast<const char*>(std::memchr(text.data(), '#', text.size())),
                       text.data());
    });
    work.Add("strchr", [text] { return IndexOf(std::strchr(text.c_str(), '#'), text.c_str()); });
    work.Add("std_string", [text] { return IndexOf(text.find('#')); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] { return text.indexOf('#'); });
#endif
}

void FindCharWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    text.back() = u'#';
    work.Add("kelm", [text = WString(text.c_str())] { return text.Find(u'#'); });
    work.Add("std_u16string", [text] { return IndexOf(text.find(u'#')); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text)] { return text.indexOf(QChar(u'#')); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [text] {
        return IndexOf<char16_t>(u_memchr(text.data(), u'#', Count(text.size())), text.data());
    });
#endif
}

void CountChar(Workload& work) {
    std::string text = Words(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.Count('e'); });
    work.Add("std_count", [text] { return std::count(text.begin(), text.end(), 'e'); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] { return text.count('e'); });
#endif
}

void CountCharWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.Add("kelm", [text = WString(text.c_str())] { return text.Count(u'e'); });
    work.Add("std_count", [text] { return std::count(text.begin(), text.end(), u'e'); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text)] { return text.count(QChar(u'e')); });
#endif
}

/// Made of usual letters, and only at the end.
constexpr const char* kRare = "thereon";

std::string TextToFind(int size) {
    std::string text = Words(size);
    std::string rare = kRare;
    return text.replace(text.size() - rare.size(), rare.size(), rare);
}

void FindText(Workload& work) {
    std::string text = TextToFind(work.Size());
    std::string what = kRare;
    work.Add("kelm", [text = Kelm(text.c_str()), what] { return text.Find(what.c_str()); });
    work.Add("strstr", [text, what] {
        return IndexOf(std::strstr(text.c_str(), what.c_str()), text.c_str());
    });
    work.Add("memmem", [text, what] {
        auto* hit = memmem(text.data(), text.size(), what.data(), what.size());
        return IndexOf(static_cast<const char*>(hit), text.data());
    });
    work.Add("std_string", [text, what] { return IndexOf(text.find(what)); });
#ifdef BENCH_BOOST
    work.Add("boost", [text, what] {
        return static_cast<int>(boost::find_first(text, what).begin() - text.begin());
    });
#endif
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text), what = QtBytes(what)] { return text.indexOf(what); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text, what] {
        return IndexOf<char>(
            g_strstr_len(text.c_str(), static_cast<gssize>(text.size()), what.c_str()),
            text.c_str());
    });
#endif
}

void FindTextWide(Workload& work) {
    std::u16string text = Wide(TextToFind(work.Size()));
    std::u16string what = Wide(kRare);
    work.Add("kelm", [text = WString(text.c_str()), what] { return text.Find(what.c_str()); });
    work.Add("std_u16string", [text, what] { return IndexOf(text.find(what)); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text), what = QtText(what)] { return text.indexOf(what); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [text, what] {
        return IndexOf<char16_t>(u_strstr(text.c_str(), what.c_str()), text.c_str());
    });
#endif
}

template <class Find>
int CountHits(const char* text, std::size_t step, Find find) {
    int count = 0;
    for (const char* hit = find(text); hit != nullptr; hit = find(hit + step))
        count++;
    return count;
}

void CountText(Workload& work) {
    std::string text = WithHits(work.Size(), "needle");
    std::string what = "needle";
    work.Add("kelm", [text = Kelm(text.c_str()), what] { return text.Count(what.c_str()); });
    work.Add("strstr", [text, what] {
        return CountHits(text.c_str(), what.size(),
                         [&](const char* from) { return std::strstr(from, what.c_str()); });
    });
    work.Add("std_string", [text, what] {
        int count = 0;
        for (auto at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
            count++;
        return count;
    });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text), what = QtBytes(what)] { return text.count(what); });
#endif
}

void CountTextWide(Workload& work) {
    std::u16string text = Wide(WithHits(work.Size(), "needle"));
    std::u16string what = u"needle";
    work.Add("kelm", [text = WString(text.c_str()), what] { return text.Count(what.c_str()); });
    work.Add("std_u16string", [text, what] {
        int count = 0;
        for (auto at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
            count++;
        return count;
    });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text), what = QtText(what)] { return text.count(what); });
#endif
}

/// Runs in another locale than the rest of the workload; the switch costs a few nanoseconds.
template <class Run>
auto InLocale(const char* name, Run run) {
    std::shared_ptr<std::remove_pointer_t<locale_t>> locale(newlocale(LC_ALL_MASK, name, nullptr),
                                                            freelocale);
    return [locale, run] {
        locale_t old = uselocale(locale.get());
        auto result = run();
        uselocale(old);
        return result;
    };
}

/// The same bytes where pairs are characters and where each byte is one.
void FindTextDoubleByte(Workload& work) {
    std::string text = Encoded(Cjk(2 * work.Size()), "SHIFT_JIS");
    text.resize(static_cast<std::size_t>(work.Size()) - 6);
    std::string what = "needle";
    text += what;
    auto find = [text = Kelm(text.c_str()), what] { return text.Find(what.c_str()); };
    work.Add("kelm", InLocale("ja_JP.SHIFT_JIS", find));
    work.Add("kelm_single_byte", InLocale("de_DE.ISO-8859-1", find));
    work.Add("kelm_utf8", find);
    work.Add("strstr", [text, what] {
        return IndexOf(std::strstr(text.c_str(), what.c_str()), text.c_str());
    });
}

/// Two characters that the text has only at its end.
void FindTextDoubleByteJapanese(Workload& work) {
    std::string text = Encoded(Cjk(2 * work.Size()), "SHIFT_JIS");
    text.resize(static_cast<std::size_t>(work.Size()) - 4);
    std::string what = Encoded("\u6771\u8A9E", "SHIFT_JIS");
    text += what;
    auto find = [text = Kelm(text.c_str()), what] { return text.Find(what.c_str()); };
    work.Add("kelm", InLocale("ja_JP.SHIFT_JIS", find));
    work.Add("kelm_single_byte", InLocale("de_DE.ISO-8859-1", find));
    work.Add("strstr", [text, what] {
        return IndexOf(std::strstr(text.c_str(), what.c_str()), text.c_str());
    });
}

void FindCharDoubleByte(Workload& work) {
    std::string text = Encoded(Cjk(2 * work.Size()), "SHIFT_JIS");
    text.resize(static_cast<std::size_t>(work.Size()) - 2);
    text += "#";
    auto find = [text = Kelm(text.c_str())] { return text.Find('#'); };
    work.Add("kelm", InLocale("ja_JP.SHIFT_JIS", find));
    work.Add("kelm_single_byte", InLocale("de_DE.ISO-8859-1", find));
    work.Add("memchr", [text] {
        return IndexOf(static_cast<const char*>(std::memchr(text.data(), '#', text.size())),
                       text.data());
    });
}

void CountTextDoubleByte(Workload& work) {
    std::string text = Encoded(Cjk(2 * work.Size()), "SHIFT_JIS");
    text.resize(static_cast<std::size_t>(work.Size()));
    for (std::size_t i = 0; i + 100 < text.size(); i += 100)
        text.replace(i, 6, "needle");
    auto count = [text = Kelm(text.c_str())] { return text.Count("needle"); };
    work.Add("kelm", InLocale("ja_JP.SHIFT_JIS", count));
    work.Add("kelm_single_byte", InLocale("de_DE.ISO-8859-1", count));
}

constexpr const char* kSet = "#$%@";

void FindOneOf(Workload& work) {
    std::string text = Words(work.Size());
    text.back() = '@';
    std::string set = kSet;
    work.Add("kelm", [text = Kelm(text.c_str()), set] { return text.FindOneOf(set.c_str()); });
    work.Add("strpbrk", [text, set] {
        return IndexOf(std::strpbrk(text.c_str(), set.c_str()), text.c_str());
    });
    work.Add("std_string", [text, set] { return IndexOf(text.find_first_of(set)); });
}

void FindOneOfWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    text.back() = u'@';
    std::u16string set = Wide(kSet);
    work.Add("kelm", [text = WString(text.c_str()), set] { return text.FindOneOf(set.c_str()); });
    work.Add("std_u16string", [text, set] { return IndexOf(text.find_first_of(set)); });
#ifdef BENCH_ICU
    work.Add("icu", [text, set] {
        return IndexOf<char16_t>(u_strpbrk(text.c_str(), set.c_str()), text.c_str());
    });
#endif
}

/// The only hit is the first byte.
void ReverseFind(Workload& work) {
    std::string text = Words(work.Size());
    text.front() = '#';
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.ReverseFind('#'); });
    work.Add("strrchr", [text] { return IndexOf(std::strrchr(text.c_str(), '#'), text.c_str()); });
    work.Add("memrchr", [text] {
        return IndexOf(static_cast<const char*>(memrchr(text.data(), '#', text.size())),
                       text.data());
    });
    work.Add("std_string", [text] { return IndexOf(text.rfind('#')); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtBytes(text)] { return text.lastIndexOf('#'); });
#endif
}

void ReverseFindWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    text.front() = u'#';
    work.Add("kelm", [text = WString(text.c_str())] { return text.ReverseFind(u'#'); });
    work.Add("std_u16string", [text] { return IndexOf(text.rfind(u'#')); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text)] { return text.lastIndexOf(QChar(u'#')); });
#endif
}

void NoCaseFind(Workload& work) {
    std::string text = TextToFind(work.Size());
    std::string what = "THEREON";
    work.Add("kelm", [text = Kelm(text.c_str()), what] { return text.NCFind(what.c_str()); });
    work.Add("strcasestr", [text, what] {
        return IndexOf<char>(strcasestr(text.c_str(), what.c_str()), text.c_str());
    });
#ifdef BENCH_BOOST
    work.Add("boost", [text, what] {
        return static_cast<int>(boost::ifind_first(text, what).begin() - text.begin());
    });
#endif
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(Wide(text)), what = QtText(Wide(what))] {
        return text.indexOf(what, 0, Qt::CaseInsensitive);
    });
#endif
}

void NoCaseFindWide(Workload& work) {
    std::u16string text = Wide(TextToFind(work.Size()));
    std::u16string what = u"THEREON";
    work.Add("kelm", [text = WString(text.c_str()), what] { return text.NCFind(what.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text), what = QtText(what)] {
        return text.indexOf(what, 0, Qt::CaseInsensitive);
    });
#endif
}

void NoCaseFindChar(Workload& work) {
    std::string text = Words(work.Size());
    text.back() = 'z';
    work.Add("kelm", [text = Kelm(text.c_str())] { return text.NCFind('Z'); });
    work.Add("strpbrk", [text] { return IndexOf(std::strpbrk(text.c_str(), "zZ"), text.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(Wide(text))] {
        return text.indexOf(QChar(u'Z'), 0, Qt::CaseInsensitive);
    });
#endif
}

void NoCaseFindCharWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    text.back() = u'z';
    work.Add("kelm", [text = WString(text.c_str())] { return text.NCFind(u'Z'); });
#ifdef BENCH_QT
    work.Add("qt",
             [text = QtText(text)] { return text.indexOf(QChar(u'Z'), 0, Qt::CaseInsensitive); });
#endif
}

}  // namespace

void AddSearch(Suite& suite) {
    suite.Add("find_char", kSizes, FindChar);
    suite.Add("find_char_wide", kSizes, FindCharWide);
    suite.Add("find_char_double_byte", {kMedium, kLarge}, FindCharDoubleByte);
    suite.Add("find_text", kSizes, FindText);
    suite.Add("find_text_wide", kSizes, FindTextWide);
    suite.Add("find_text_double_byte", {kMedium, kLarge}, FindTextDoubleByte);
    suite.Add("find_text_japanese", {kMedium, kLarge}, FindTextDoubleByteJapanese);
    suite.Add("reverse_find", kSizes, ReverseFind);
    suite.Add("reverse_find_wide", kSizes, ReverseFindWide);
    suite.Add("find_one_of", kSizes, FindOneOf);
    suite.Add("find_one_of_wide", kSizes, FindOneOfWide);
    suite.Add("nc_find_char", kSizes, NoCaseFindChar);
    suite.Add("nc_find_char_wide", kSizes, NoCaseFindCharWide);
    suite.Add("nc_find", kSizes, NoCaseFind);
    suite.Add("nc_find_wide", kSizes, NoCaseFindWide);
    suite.Add("count_char", kSizes, CountChar);
    suite.Add("count_char_wide", kSizes, CountCharWide);
    suite.Add("count_text", kSizes, CountText);
    suite.Add("count_text_wide", kSizes, CountTextWide);
    suite.Add("count_text_double_byte", {kMedium, kLarge}, CountTextDoubleByte);
}

}  // namespace bench
