#include <strings.h>

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

int Sign(int value) {
    return (value > 0) - (value < 0);
}

/// Equal texts in two places.
void Equal(Workload& work) {
    std::string a = Words(work.Size());
    std::string b = a;
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return a.Compare(b.c_str()); });
    work.Add("kelm_operator",
             [a = Kelm(a.c_str()), b = Kelm(b.c_str())] { return a == b ? 0 : 1; });
    work.Add("strcmp", [a, b] { return Sign(std::strcmp(a.c_str(), b.c_str())); });
    work.Add("std_string", [a, b] { return a.compare(b.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [a = QtBytes(a), b] { return a == b.c_str() ? 0 : 1; });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [a, b] { return Sign(g_strcmp0(a.c_str(), b.c_str())); });
#endif
}

void EqualUtf8(Workload& work) {
    std::string a = Cjk(work.Size());
    std::string b = a;
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return a.Compare(b.c_str()); });
    work.Add("strcmp", [a, b] { return Sign(std::strcmp(a.c_str(), b.c_str())); });
}

void EqualWide(Workload& work) {
    std::u16string a = Wide(Words(work.Size()));
    std::u16string b = a;
    work.Add("kelm", [a = WString(a.c_str()), b] { return a.Compare(b.c_str()); });
    work.Add("memcmp", [a, b] { return std::memcmp(a.data(), b.data(), a.size() * 2); });
    work.Add("std_u16string", [a, b] { return a.compare(b); });
#ifdef BENCH_QT
    work.Add("qt", [a = QtText(a), b = QtText(b)] { return a.compare(b); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [a, b] { return u_strcmp(a.c_str(), b.c_str()); });
#endif
}

void NoCase(Workload& work) {
    std::string a = Words(work.Size());
    std::string b = a;
    for (std::size_t i = 0; i < b.size(); i += 3)
        b[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(b[i])));
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return a.CompareNoCase(b.c_str()); });
    work.Add("strcasecmp", [a, b] { return strcasecmp(a.c_str(), b.c_str()); });
#ifdef BENCH_BOOST
    work.Add("boost", [a, b] { return boost::iequals(a, b) ? 0 : 1; });
#endif
#ifdef BENCH_QT
    work.Add("qt", [a = QtBytes(a), b] { return a.compare(b.c_str(), Qt::CaseInsensitive); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [a, b] { return g_ascii_strcasecmp(a.c_str(), b.c_str()); });
#endif
}

void NoCaseWide(Workload& work) {
    std::u16string a = Wide(Words(work.Size()));
    std::u16string b = a;
    for (std::size_t i = 0; i < b.size(); i += 3) {
        if (b[i] >= u'a' && b[i] <= u'z')
            b[i] = static_cast<char16_t>(b[i] - 32);
    }
    work.Add("kelm", [a = WString(a.c_str()), b] { return a.CompareNoCase(b.c_str()); });
#ifdef BENCH_QT
    work.Add("qt", [a = QtText(a), b = QtText(b)] { return a.compare(b, Qt::CaseInsensitive); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [a, b] { return u_strcasecmp(a.c_str(), b.c_str(), 0); });
#endif
}

void Collated(Workload& work) {
    work.UseLocale("en_US.UTF-8");
    std::string a = Latin(work.Size());
    std::string b = a;
    b.back() = 'z';
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return Sign(a.Collate(b.c_str())); });
    work.Add("strcoll", [a, b] { return Sign(std::strcoll(a.c_str(), b.c_str())); });
#ifdef BENCH_GLIB
    work.Add("glib", [a, b] { return Sign(g_utf8_collate(a.c_str(), b.c_str())); });
#endif
}

/// Pieces of 8 to 32 bytes of one text, in an order that no branch predictor learns.
template <class Text, class Make>
auto Sorted(const std::vector<std::string>& pieces, Make make) {
    std::vector<Text> texts;
    for (const std::string& piece : pieces) {
        texts.push_back(make(piece));
    }
    return [texts = std::move(texts)] {
        std::vector<const Text*> order;
        for (const Text& text : texts) {
            order.push_back(&text);
        }
        std::sort(order.begin(), order.end(), [](auto* a, auto* b) { return *a < *b; });
        return static_cast<int>(order[order.size() / 2] - texts.data());
    };
}

void SortShort(Workload& work) {
    const std::string text = Words(40 * work.Size());
    std::vector<std::string> pieces;
    unsigned state = 1;
    for (std::size_t at = 0; at + 32 < text.size(); at += 40) {
        state = state * 1103515245 + 12345;
        pieces.push_back(text.substr(at, 8 + (state >> 16) % 25) + std::to_string(at));
    }
    work.Add("kelm", Sorted<Kelm>(pieces, [](const std::string& s) { return Kelm(s.c_str()); }));
    work.Add("std_string", Sorted<std::string>(pieces, [](const std::string& s) { return s; }));
    work.Add("kelm_wide", Sorted<WString>(pieces, [](const std::string& s) {
                 return WString(Kelm(s.c_str()));
             }));
#ifdef BENCH_QT
    work.Add("qt", Sorted<QByteArray>(pieces, [](const std::string& s) { return QtBytes(s); }));
#endif
}

void CollatedNoCase(Workload& work) {
    work.UseLocale("en_US.UTF-8");
    std::string a = Latin(work.Size());
    std::string b = a;
    b.back() = 'z';
    work.Add("kelm", [a = Kelm(a.c_str()), b] { return Sign(a.CollateNoCase(b.c_str())); });
#ifdef BENCH_GLIB
    work.Add("glib", [a, b] {
        GText foldedA(g_utf8_casefold(a.c_str(), -1));
        GText foldedB(g_utf8_casefold(b.c_str(), -1));
        return Sign(g_utf8_collate(foldedA.Data(), foldedB.Data()));
    });
#endif
}

}  // namespace

void AddCompare(Suite& suite) {
    const std::vector<int> sizes = {kSmall, kMedium, kLarge};
    suite.Add("compare", sizes, Equal);
    suite.Add("compare_utf8", sizes, EqualUtf8);
    suite.Add("compare_wide", sizes, EqualWide);
    suite.Add("sort_short", {kMedium}, SortShort);
    suite.Add("compare_no_case", sizes, NoCase);
    suite.Add("compare_no_case_wide", sizes, NoCaseWide);
    suite.Add("collate", {kSmall, kMedium}, Collated);
    suite.Add("collate_no_case", {kSmall, kMedium}, CollatedNoCase);
}

}  // namespace bench
