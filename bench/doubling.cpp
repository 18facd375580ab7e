#include "harness.h"
#include "texts.h"
#include "walks.h"

namespace bench {

namespace {

/// Both sizes fit into the second cache, so that the ratio shows the steps and not the memory.
constexpr int kBase = 1 << 18;

std::string Fill(int size, std::string_view piece) {
    std::string text;
    while (Count(text.size() + piece.size()) <= size)
        text += piece;
    return text;
}

std::string Usual(int size) {
    return WithHits(size, "needle");
}
std::string TwoCases(int size) {
    return Fill(size, WithHits(500, "needle") + WithHits(500, "Needle"));
}
std::string AllHits(int size) {
    return Fill(size, "needle");
}
std::string AllPairs(int size) {
    return Fill(size, "abAbaBAB");
}
std::string OneLetter(int size) {
    return Fill(size, "a");
}
std::string Tabs(int size) {
    return WithHits(size, "\t", 20);
}
std::string AllTabs(int size) {
    return Fill(size, "\t");
}
std::string ManyFields(int size) {
    return Fill(size, "word,");
}
std::string OnlyCommas(int size) {
    return Fill(size, ",");
}
std::string OnlyDigits(int size) {
    return Fill(size, "7");
}

/// Every removal of "ab" forms the next one.
std::string Nested(int size) {
    auto half = static_cast<std::size_t>(size / 2);
    return std::string(half, 'a') + std::string(half, 'b');
}

struct Growth {
    const char* name;
    std::string (*text)(int size);
    void (*run)(Kelm& value);
};

int g_sink;  // keeps the results of searches alive

const Growth kGrowths[] = {
    {"replace_usual", Usual, [](Kelm& v) { v.Replace("needle", "two needles"); }},
    {"replace_all_hits", AllHits, [](Kelm& v) { v.Replace("needle", "two needles"); }},
    {"replace_shrink_all_hits", AllHits, [](Kelm& v) { v.Replace("needle", "n"); }},
    {"replace_no_hits", OneLetter, [](Kelm& v) { v.Replace("aaaaaaaaaaaaaaab", "x"); }},
    {"replace_no_hits_front", OneLetter, [](Kelm& v) { v.Replace("baaaaaaaaaaaaaaa", "x"); }},
    {"replace_joining", Nested, [](Kelm& v) { v.Replace("ab", ""); }},
    {"nc_replace_usual", TwoCases, [](Kelm& v) { v.NCReplace("NEEDLE", "pin"); }},
    {"nc_replace_grow", TwoCases, [](Kelm& v) { v.NCReplace("NEEDLE", "two pieces"); }},
    {"nc_replace_all_hits", AllPairs, [](Kelm& v) { v.NCReplace("ab", "xyz"); }},
    {"nc_replace_no_hits", OneLetter, [](Kelm& v) { v.NCReplace("AAAAAAAAAAAAAAAB", "x"); }},
    {"nc_replace_joining", Nested, [](Kelm& v) { v.NCReplace("AB", "b"); }},
    {"nc_remove_usual", TwoCases, [](Kelm& v) { v.NCRemove("NEEDLE"); }},
    {"nc_remove_all_hits", AllPairs, [](Kelm& v) { v.NCRemove("AB"); }},
    {"nc_remove_no_hits", OneLetter, [](Kelm& v) { v.NCRemove("AAAAAAAAAAAAAAAB"); }},
    {"nc_remove_joining", Nested, [](Kelm& v) { v.NCRemove("AB"); }},
    {"remove_all_hits", OneLetter, [](Kelm& v) { v.Remove('a'); }},
    {"remove_space_usual", Usual, [](Kelm& v) { v.RemoveSpace(); }},
    {"insert_front", Usual, [](Kelm& v) { v.Insert(0, "needle"); }},
    {"delete_front", Usual, [](Kelm& v) { v.Delete(0, 5); }},
    {"replace_tabs_usual", Tabs, [](Kelm& v) { v.ReplaceTabs(8); }},
    {"replace_tabs_all_hits", AllTabs, [](Kelm& v) { v.ReplaceTabs(8); }},
    {"replace_tabs_no_hits", OneLetter, [](Kelm& v) { v.ReplaceTabs(8); }},
    {"find_no_hits", OneLetter, [](Kelm& v) { g_sink += v.Find("aaaaaaaaaaaaaaab"); }},
    {"nc_find_no_hits", OneLetter, [](Kelm& v) { g_sink += v.NCFind("AAAAAAAAAAAAAAAB"); }},
    {"element_last", ManyFields, [](Kelm& v) { g_sink += v.Element(1 << 30, ',').GetLength(); }},
    {"index_of_element", ManyFields, [](Kelm& v) { g_sink += v.IndexOfElement("wore", ','); }},
    {"index_of_empty", OnlyCommas, [](Kelm& v) { g_sink += v.IndexOfElement("x", ','); }},
    {"index_of_number", ManyFields, [](Kelm& v) { g_sink += v.IndexOfElement(5, ','); }},
    {"index_of_long_number", OnlyDigits, [](Kelm& v) { g_sink += v.IndexOfElement(0.5, ','); }},
    {"walk_find_mid", ManyFields,
     [](Kelm& v) { EachByFindAndMid(v, ',', [](const Kelm& f) { g_sink += f.GetLength(); }); }},
    {"walk_token", ManyFields,
     [](Kelm& v) {
         for (Kelm::Token token(v); token; token.Next(','))
             g_sink += token.Current().GetLength();
     }},
    {"trim_right_no_hits", OneLetter, [](Kelm& v) { v.TrimRight("b"); }},
};

struct WideGrowth {
    const char* name;
    std::string (*text)(int size);
    void (*run)(WString& value);
};

const WideGrowth kWideGrowths[] = {
    {"replace_usual_wide", Usual, [](WString& v) { v.Replace(u"needle", u"two needles"); }},
    {"replace_all_hits_wide", AllHits, [](WString& v) { v.Replace(u"needle", u"two needles"); }},
    {"replace_no_hits_wide", OneLetter, [](WString& v) { v.Replace(u"aaaaaaaaaaaaaaab", u"x"); }},
    {"nc_remove_usual_wide", TwoCases, [](WString& v) { v.NCRemove(u"NEEDLE"); }},
    {"nc_remove_all_hits_wide", AllPairs, [](WString& v) { v.NCRemove(u"AB"); }},
    {"nc_remove_joining_wide", Nested, [](WString& v) { v.NCRemove(u"AB"); }},
};

/// The text doubled; sizes differ and with them the answers.
void AddGrowth(Workload& work, const Growth& growth) {
    int size = work.Size();
    work.AddInPlaceUnchecked("n", FreshKelm(growth.text(size)), growth.run);
    work.AddInPlaceUnchecked("2n", FreshKelm(growth.text(2 * size)), growth.run);
}

void AddWideGrowth(Workload& work, const WideGrowth& growth) {
    int size = work.Size();
    work.AddInPlaceUnchecked("n", FreshWString(Wide(growth.text(size))), growth.run);
    work.AddInPlaceUnchecked("2n", FreshWString(Wide(growth.text(2 * size))), growth.run);
}

}  // namespace

void AddDoubling(Suite& suite) {
    for (const Growth& growth : kGrowths) {
        suite.Add(std::string("doubling_") + growth.name, {kBase},
                  [&growth](Workload& work) { AddGrowth(work, growth); });
    }
    for (const WideGrowth& growth : kWideGrowths) {
        suite.Add(std::string("doubling_") + growth.name, {kBase},
                  [&growth](Workload& work) { AddWideGrowth(work, growth); });
    }
}

}  // namespace bench
