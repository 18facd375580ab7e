#include "pages/code_pages.h"

#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string_view>

#include "pages/corrections.h"

namespace platform {
namespace {

struct LeadBytes {
    struct Range {
        unsigned char first;
        unsigned char last;
    };

    constexpr LeadBytes(std::initializer_list<Range> ranges) : is{} {
        for (Range range : ranges) {
            for (unsigned byte = range.first; byte <= range.last; ++byte) {
                is[byte] = true;
            }
        }
    }

    bool is[256];
};

constexpr LeadBytes kShiftJisLeads{{0x81, 0x9F}, {0xE0, 0xFC}};
constexpr LeadBytes kWideLeads{{0x81, 0xFE}};
constexpr LeadBytes kJohabLeads{{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}};

struct Page {
    unsigned int number;
    const char* converter;
    Grouping grouping = Grouping::SingleByte;
    const LeadBytes* leads = nullptr;
};

// The converter is also a codeset name of the page. 930 to 939 and 1364 to 1399 are EBCDIC with
// shifts between single and double bytes.
constexpr Page kPages[] = {
    {737, "CP737"},
    {775, "CP775"},
    {930, "IBM930", Grouping::Other},
    {932, "CP932", Grouping::DoubleByte, &kShiftJisLeads},
    {933, "IBM933", Grouping::Other},
    {935, "IBM935", Grouping::Other},
    {936, "GBK", Grouping::DoubleByte, &kWideLeads},
    {937, "IBM937", Grouping::Other},
    {939, "IBM939", Grouping::Other},
    {949, "CP949", Grouping::DoubleByte, &kWideLeads},
    {950, "BIG5", Grouping::DoubleByte, &kWideLeads},
    {1250, "CP1250"},
    {1251, "CP1251"},
    {1252, "CP1252"},
    {1253, "CP1253"},
    {1254, "CP1254"},
    {1255, "CP1255"},
    {1256, "CP1256"},
    {1257, "CP1257"},
    {1258, "CP1258"},
    {1361, "JOHAB", Grouping::DoubleByte, &kJohabLeads},
    {1364, "IBM1364", Grouping::Other},
    {1371, "IBM1371", Grouping::Other},
    {1388, "IBM1388", Grouping::Other},
    {1390, "IBM1390", Grouping::Other},
    {1399, "IBM1399", Grouping::Other},
    {10000, "MACINTOSH"},
    {20127, "ASCII"},
    {20866, "KOI8-R"},
    {21866, "KOI8-U"},
    {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},
    {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},
    {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},
    {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},
    {28599, "ISO-8859-9"},
    {28600, "ISO-8859-10"},
    {28601, "ISO-8859-11"},
    {28603, "ISO-8859-13"},
    {28604, "ISO-8859-14"},
    {28605, "ISO-8859-15"},
    {28606, "ISO-8859-16"},
    {51932, corrections::kEucJp, Grouping::Other},
    {51936, "EUC-CN", Grouping::Other},
    {51949, "EUC-KR", Grouping::Other},
    {54936, "GB18030", Grouping::Other},
    {65001, "UTF-8", Grouping::Utf8},
};

// Pages of single bytes, most of them EBCDIC, whose converter is "IBM" and the number in three
// digits or more.
constexpr unsigned int kIbmPages[] = {
    37,   38,   256,  273,  274,  275,  277,  278,  280,  281,  284,  285,  290,  297,  420,
    423,  424,  437,  500,  803,  850,  851,  852,  855,  856,  857,  858,  860,  861,  862,
    863,  864,  865,  866,  868,  869,  870,  871,  874,  875,  880,  905,  918,  1025, 1026,
    1047, 1097, 1112, 1122, 1123, 1130, 1132, 1137, 1140, 1141, 1142, 1143, 1144, 1145, 1146,
    1147, 1148, 1149, 1153, 1154, 1155, 1156, 1157, 1158, 1160, 1164, 1166};

// Those of them that are known by a number that is 20000 higher, too.
constexpr unsigned int kTwiceNumbered[] = {273, 277, 278, 280, 284, 285, 290, 297,
                                           420, 423, 424, 871, 880, 905, 1025};

constexpr auto kIbmNames = [] {
    std::array<std::array<char, sizeof "IBM1025">, std::size(kIbmPages)> names{};
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string_view("IBM").copy(names[i].data(), 3);
        char* end = names[i].data() + (kIbmPages[i] < 1000 ? 6 : 7);
        for (unsigned int rest = kIbmPages[i]; end != names[i].data() + 3; rest /= 10) {
            *--end = static_cast<char>('0' + rest % 10);
        }
    }
    return names;
}();

constexpr std::size_t kPageCount =
    std::size(kPages) + std::size(kIbmPages) + std::size(kTwiceNumbered);

struct CodesetName {
    std::string_view name;
    unsigned int number;
};

// Names that a locale's codeset can have beside the converter's.
constexpr CodesetName kOtherNames[] = {
    {"ANSI_X3.4-1968", 65001},  // the C and POSIX locales
    {"SHIFT_JIS", 932},
    {"SJIS", 932},
    {"WINDOWS-31J", 932},
    {"CP936", 936},
    {"UHC", 949},
    {"CP950", 950},
    {"CP1361", 1361},
    {"GB2312", 51936},
    {"TIS-620", 874},
};

constinit PageTables pageTables[kPageCount];

// By number.
constexpr std::array<CodePage, kPageCount> kRows = [] {
    std::array<CodePage, kPageCount> rows{};
    std::size_t count = 0;
    const auto add = [&](const Page& page) {
        rows[count] = {page.number, page.grouping, page.converter,
                       page.leads != nullptr ? page.leads->is : nullptr, &pageTables[count]};
        ++count;
    };
    for (const Page& page : kPages) {
        add(page);
    }
    for (std::size_t i = 0; i < std::size(kIbmPages); ++i) {
        add({kIbmPages[i], kIbmNames[i].data()});
        if (std::ranges::find(kTwiceNumbered, kIbmPages[i]) != std::end(kTwiceNumbered)) {
            add({20000 + kIbmPages[i], kIbmNames[i].data()});
        }
    }
    std::ranges::sort(rows, {}, &CodePage::number);
    return rows;
}();

constexpr const CodePage* row_of(unsigned int number) {
    const CodePage* row = std::lower_bound(
        kRows.begin(), kRows.end(), number,
        [](const CodePage& page, unsigned int wanted) { return page.number < wanted; });
    return row != kRows.end() && row->number == number ? row : nullptr;
}

struct Codeset {
    std::string_view name;
    const CodePage* row;
};

// All names with their rows, by name; of two rows with one converter the lower number comes first.
constexpr auto kCodesets = [] {
    std::array<Codeset, kPageCount + std::size(kOtherNames)> all{};
    std::size_t count = 0;
    for (const CodePage& row : kRows) {
        all[count++] = {row.converter, &row};
    }
    for (const CodesetName& other : kOtherNames) {
        all[count++] = {other.name, row_of(other.number)};
    }
    std::sort(all.begin(), all.end(), [](const Codeset& a, const Codeset& b) {
        return a.name != b.name ? a.name < b.name : a.row->number < b.row->number;
    });
    return all;
}();

constexpr const CodePage* kUtf8 = row_of(65001);

// A codeset without a number, met while the process runs. Stays in the list for ever, since rows
// are handed out without an owner; there are no more of them than locales in the system.
struct MetCodeset {
    Codeset codeset;
    CodePage row;
    PageTables tables;
    MetCodeset* next;
};

constinit std::atomic<MetCodeset*> metCodesets;

Grouping current_grouping() {
    return MB_CUR_MAX == 1 ? Grouping::SingleByte : Grouping::Other;
}

MetCodeset* make_met(const char* name) {
    const std::size_t length = std::strlen(name);
    void* memory = std::malloc(sizeof(MetCodeset) + length + 1);
    if (memory == nullptr) {
        return nullptr;
    }
    char* copy = static_cast<char*>(memory) + sizeof(MetCodeset);
    std::memcpy(copy, name, length + 1);
    auto* met = new (memory) MetCodeset{};
    met->row = {0, current_grouping(), copy, nullptr, &met->tables};
    met->codeset = {{copy, length}, &met->row};
    return met;
}

const Codeset* find_met(const MetCodeset* first, std::string_view name) {
    for (const MetCodeset* met = first; met != nullptr; met = met->next) {
        if (met->codeset.name == name) {
            return &met->codeset;
        }
    }
    return nullptr;
}

const Codeset* find_or_meet(const char* name) {
    MetCodeset* first = metCodesets.load(std::memory_order_acquire);
    if (const Codeset* known = find_met(first, name)) {
        return known;
    }
    MetCodeset* met = make_met(name);
    if (met == nullptr) {
        return nullptr;
    }
    do {
        met->next = first;
        if (metCodesets.compare_exchange_weak(first, met, std::memory_order_acq_rel,
                                              std::memory_order_acquire)) {
            return &met->codeset;
        }
    } while (find_met(first, name) == nullptr);
    std::free(met);  // another thread met it at the same time
    return find_met(first, name);
}

const Codeset* find_codeset(const char* name) {
    const std::string_view wanted = name;
    const auto* found = std::lower_bound(
        kCodesets.begin(), kCodesets.end(), wanted,
        [](const Codeset& codeset, std::string_view text) { return codeset.name < text; });
    return found != kCodesets.end() && found->name == wanted ? found : find_or_meet(name);
}

// For a codeset without a number that there was no memory to remember.
const CodePage* nameless_row() {
    static constinit PageTables none;
    static constexpr CodePage kSingle{0, Grouping::SingleByte, nullptr, nullptr, &none};
    static constexpr CodePage kOther{0, Grouping::Other, nullptr, nullptr, &none};
    return current_grouping() == Grouping::SingleByte ? &kSingle : &kOther;
}

/// The name that the C library has for the C locale, which nobody frees: known by its address.
const char* c_locale_name() {
    static constinit std::atomic<const char*> name;
    const char* known = name.load(std::memory_order_relaxed);
    if (known == nullptr) {
        // "C" is built in: this allocates nothing, and there is nothing to free.
        known = nl_langinfo_l(CODESET, newlocale(LC_ALL_MASK, "C", nullptr));
        name.store(known, std::memory_order_relaxed);
    }
    return known;
}

// Without a call: every operation on narrow text asks this.
bool is_utf8_name(const char* name) {
    return name[0] == 'U' && name[1] == 'T' && name[2] == 'F' && name[3] == '-' && name[4] == '8' &&
           name[5] == '\0';
}

// The last answer. It is compared by its text, never by the address of the locale's name, which a
// freed locale hands on to the next one.
constinit std::atomic<const Codeset*> lastCodeset;

__attribute__((noinline)) const CodePage* row_of_codeset(const char* name) {
    const Codeset* codeset = find_codeset(name);
    if (codeset == nullptr) {
        return nameless_row();
    }
    lastCodeset.store(codeset, std::memory_order_release);
    return codeset->row;
}

// What UTF-8 need not save registers for.
__attribute__((noinline)) const CodePage* other_code_page(const char* name) {
    if (name == c_locale_name()) {
        return kUtf8;
    }
    const Codeset* last = lastCodeset.load(std::memory_order_acquire);
    return last != nullptr && std::strcmp(last->name.data(), name) == 0 ? last->row
                                                                        : row_of_codeset(name);
}

}  // namespace

const CodePage* find_code_page(unsigned int number) noexcept {
    return number == kUtf8->number ? kUtf8 : row_of(number);
}

const CodePage* process_code_page() noexcept {
    const char* name = nl_langinfo(CODESET);
    return is_utf8_name(name) ? kUtf8 : other_code_page(name);
}

}  // namespace platform
