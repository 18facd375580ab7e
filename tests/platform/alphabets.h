#pragma once

#include <string>

namespace alphabets {

using namespace std::string_literals;

struct Alphabet {
    const char* locale;
    std::string bytes;
};

/// Of every grouping: letters of both cases, pieces of longer characters that also occur alone,
/// ends that look like beginnings, bytes that are part of no character, and NUL.
inline const Alphabet kAlphabets[] = {
    {"C", "aA\xC3\xA9\0"s},
    {"en_US.UTF-8", "\xC3\xA9\x89Z\xFF"},
    {"en_US.UTF-8", "\xE2\x82\xAC\x61\0"s},
    {"en_US.UTF-8", "\xF0\x90\x80\xC3_"},
    {"en_US.UTF-8", "\xF0\x9F\x98\x80\xFF"},
    {"en_US.UTF-8", "\xED\x9F\xA0\xBF\xE1"},
    {"en_US.UTF-8", "\xED\xA0\x9F\xE0\xF4"},
    {"tr_TR.UTF-8", "iI\xC4\xB0\xB1"},
    {"de_DE.ISO-8859-1", "aA\xE4\xC4\0"s},
    {"tr_TR.ISO-8859-9", "iI\xDD\xFD_"},
    {"en_US.ISO-8859-9", "iI\xDD\xFDz"},
    {"ja_JP.SHIFT_JIS", "\x82\x60\x81\xB1\x61"},
    {"ja_JP.SHIFT_JIS", "\x81\x40\xB1\xFC\0"s},
    {"zh_CN.GBK", "\xA3\xC1\xE1\x61\x41"},
    {"zh_CN.GBK", "\x81\xFE\x40 \0"s},
    {"zh_TW.BIG5", "\xA2\xCF\xE9\x61\x41"},
    {"ja_JP.EUC-JP", "\xA3\xC1\xE1\x8F\x61"},
    {"ja_JP.EUC-JP", "\xA4\x8F\x8E\x41\0"s},
    {"zh_CN.GB18030", "\x81\x30\x84\xA3\x61"},
    {"zh_CN.GB18030", "\x81\x30\x84\xFF\0"s},
};

}  // namespace alphabets
