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

// By number. The converter is also a codeset name of the page. Numbers below 20000 that stand
// beside a 20xxx with the same converter are the maker's own name of that EBCDIC page; 930 to 939
// and 1364 to 1399 are EBCDIC with shifts between single and double bytes.
constexpr Page kPages[] = {
    {37, "IBM037"},
    {38, "IBM038"},
    {256, "IBM256"},
    {273, "IBM273"},
    {274, "IBM274"},
    {275, "IBM275"},
    {277, "IBM277"},
    {278, "IBM278"},
    {280, "IBM280"},
    {281, "IBM281"},
    {284, "IBM284"},
    {285, "IBM285"},
    {290, "IBM290"},
    {297, "IBM297"},
    {420, "IBM420"},
    {423, "IBM423"},
    {424, "IBM424"},
    {437, "IBM437"},
    {500, "IBM500"},
    {737, "CP737"},
    {775, "CP775"},
    {803, "IBM803"},
    {850, "IBM850"},
    {851, "IBM851"},
    {852, "IBM852"},
    {855, "IBM855"},
    {856, "IBM856"},
    {857, "IBM857"},
    {858, "IBM858"},
    {860, "IBM860"},
    {861, "IBM861"},
    {862, "IBM862"},
    {863, "IBM863"},
    {864, "IBM864"},
    {865, "IBM865"},
    {866, "IBM866"},
    {868, "IBM868"},
    {869, "IBM869"},
    {870, "IBM870"},
    {871, "IBM871"},
    {874, "IBM874"},
    {875, "IBM875"},
    {880, "IBM880"},
    {905, "IBM905"},
    {918, "IBM918"},
    {930, "IBM930", Grouping::Other},
    {932, "CP932", Grouping::DoubleByte, &kShiftJisLeads},
    {933, "IBM933", Grouping::Other},
    {935, "IBM935", Grouping::Other},
    {936, "GBK", Grouping::DoubleByte, &kWideLeads},
    {937, "IBM937", Grouping::Other},
    {939, "IBM939", Grouping::Other},
    {949, "CP949", Grouping::DoubleByte, &kWideLeads},
    {950, "BIG5", Grouping::DoubleByte, &kWideLeads},
    {1025, "IBM1025"},
    {1026, "IBM1026"},
    {1047, "IBM1047"},
    {1097, "IBM1097"},
    {1112, "IBM1112"},
    {1122, "IBM1122"},
    {1123, "IBM1123"},
    {1130, "IBM1130"},
    {1132, "IBM1132"},
    {1137, "IBM1137"},
    {1140, "IBM1140"},
    {1141, "IBM1141"},
    {1142, "IBM1142"},
    {1143, "IBM1143"},
    {1144, "IBM1144"},
    {1145, "IBM1145"},
    {1146, "IBM1146"},
    {1147, "IBM1147"},
    {1148, "IBM1148"},
    {1149, "IBM1149"},
    {1153, "IBM1153"},
    {1154, "IBM1154"},
    {1155, "IBM1155"},
    {1156, "IBM1156"},
    {1157, "IBM1157"},
    {1158, "IBM1158"},
    {1160, "IBM1160"},
    {1164, "IBM1164"},
    {1166, "IBM1166"},
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
    {20273, "IBM273"},
    {20277, "IBM277"},
    {20278, "IBM278"},
    {20280, "IBM280"},
    {20284, "IBM284"},
    {20285, "IBM285"},
    {20290, "IBM290"},
    {20297, "IBM297"},
    {20420, "IBM420"},
    {20423, "IBM423"},
    {20424, "IBM424"},
    {20866, "KOI8-R"},
    {20871, "IBM871"},
    {20880, "IBM880"},
    {20905, "IBM905"},
    {21025, "IBM1025"},
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
constexpr std::size_t kPageCount = std::size(kPages);

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

constexpr std::array<CodePage, kPageCount> kRows = [] {
    std::array<CodePage, kPageCount> rows{};
    for (std::size_t i = 0; i < kPageCount; ++i) {
        const Page& page = kPages[i];
        rows[i] = {page.number, page.grouping, page.converter,
                   page.leads != nullptr ? page.leads->is : nullptr, &pageTables[i]};
    }
    return rows;
}();

constexpr const CodePage* row_of(unsigned int number) {
    const CodePage* row = std::lower_bound(
        kRows.begin(), kRows.end(), number,
        [](const CodePage& page, unsigned int wanted) { return page.number < wanted; });
    return row != kRows.end() && row->number == number ? row : nullptr;
}

static_assert(std::is_sorted(std::begin(kPages), std::end(kPages),
                             [](const Page& a, const Page& b) { return a.number < b.number; }));

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
