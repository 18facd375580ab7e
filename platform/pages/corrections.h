#pragma once

/// Where the C library's table is not what the users of a number have. Nothing else changes one.
namespace platform::corrections {

/// 51932. Plain EUC-JP lacks the vendors' characters that the same texts have in 932 (circled
/// digits, full-width signs); it stays what a locale of that codeset means.
inline constexpr char kEucJp[] = "EUC-JP-MS";

/// Characters of consecutive code points: each lead byte with every trail byte from that of `first`
/// to that of `last`. Where the C library has a character, it stays, unless `overrides`.
struct Run {
    unsigned int firstPage;
    unsigned int lastPage;
    unsigned int first;
    unsigned int last;
    char16_t unit;
    unsigned int gapEnd = 0;  ///< trail bytes from 0x7F to here do not occur
    bool overrides = false;
};

inline constexpr Run kRuns[] = {
    // A byte without a character is the control of its number, as every other reader has it: text
    // that passes through loses nothing.
    {874, 874, 0x80, 0x9F, 0x80},
    {1250, 1258, 0x80, 0x9F, 0x80},
    // The C library has nothing at this byte, and '|' nowhere in the page.
    {875, 875, 0x6A, 0x6A, u'|'},
    // Users' paths and programs have a backslash here; the C library has the won sign alone.
    {1361, 1361, 0x5C, 0x5C, u'\\', 0, true},
    // Characters of the users' own, in the order in which the makers of the pages number them. 932
    // has them in the C library's table.
    {936, 936, 0xAAA1, 0xAFFE, 0xE000},
    {936, 936, 0xF8A1, 0xFEFE, 0xE234},
    {936, 936, 0xA140, 0xA7A0, 0xE4C6, 0x7F},
    {949, 949, 0xC9A1, 0xC9FE, 0xE000},
    {949, 949, 0xFEA1, 0xFEFE, 0xE05E},
    {950, 950, 0xFA40, 0xFEFE, 0xE000, 0xA0},
    {950, 950, 0x8E40, 0xA0FE, 0xE311, 0xA0},
    {950, 950, 0x8140, 0x8DFE, 0xEEB8, 0xA0},
    {950, 950, 0xC6A1, 0xC6FE, 0xF6B1},
    {950, 950, 0xC740, 0xC8FE, 0xF70F, 0xA0},
};

/// Calls `visit(lead, trail, unit, overrides)` for each; a single byte has no lead byte, 0.
template <class Visit>
void for_each(unsigned int page, Visit visit) {
    for (const Run& run : kRuns) {
        if (page < run.firstPage || page > run.lastPage) {
            continue;
        }
        char16_t unit = run.unit;
        for (unsigned int lead = run.first >> 8; lead <= run.last >> 8; ++lead) {
            for (unsigned int trail = run.first & 0xFF; trail <= (run.last & 0xFF); ++trail) {
                if (trail < 0x7F || trail > run.gapEnd) {
                    visit(lead, trail, unit++, run.overrides);
                }
            }
        }
    }
}

}  // namespace platform::corrections
