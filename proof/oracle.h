#pragma once

#include <iconv.h>
#include <langinfo.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the tests and the fuzz targets hold the library against: the slowest way that is plainly
/// right, by the C library alone. The locale is the one that is set.
namespace oracle {

template <class Unit>
using Characters = std::vector<std::basic_string<Unit>>;

/// The code point that the bytes are in UTF-8.
inline std::optional<char32_t> utf8_code(std::string_view bytes) {
    constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    const std::size_t more = bytes.size() - 1;
    const unsigned lead = static_cast<unsigned char>(bytes[0]);
    char32_t code = more == 0 ? lead : lead & (0x3FU >> more);
    for (const char byte : bytes.substr(1)) {
        if ((byte & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    const bool isLead =
        more == 0 ? lead < 0x80 : more < 4 && lead >> (6 - more) == (4U << more) - 2;
    const bool isCode = isLead && code >= kLeast[more] && code <= 0x10FFFF && code >> 11 != 0x1B;
    return isCode ? std::optional(code) : std::nullopt;
}

/// Whether some bytes behind these would make them one character, or they are one.
inline bool begins_utf8(const std::string& bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    bool begins = false;
    for (std::size_t more = length - bytes.size(); const char fill : {'\x80', '\xBF'}) {
        begins |= more < length && utf8_code(bytes + std::string(more, fill));
    }
    return begins;
}

inline std::string codeset() {
    const std::string name = nl_langinfo(CODESET);
    return name == "ANSI_X3.4-1968" ? "UTF-8" : name;
}

/// First and last lead bytes of the codesets whose lead bytes take whatever follows.
inline std::string lead_ranges(const std::string& name) {
    return name == "SHIFT_JIS" || name == "CP932" ? "\x81\x9F\xE0\xFC"
           : name == "GBK" || name == "BIG5"      ? "\x81\xFE"
                                                  : "";
}

inline bool is_lead(const std::string& ranges, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    bool isLead = false;
    for (std::size_t i = 0; i < ranges.size(); i += 2) {
        isLead |= value >= static_cast<unsigned char>(ranges[i]) &&
                  value <= static_cast<unsigned char>(ranges[i + 1]);
    }
    return isLead;
}

/// Whether the bytes, two or more, are one character of the locale.
inline bool is_character(const std::string& name, const std::string& bytes) {
    if (name == "UTF-8") {
        return utf8_code(bytes).has_value();
    }
    const std::string ranges = lead_ranges(name);
    if (!ranges.empty()) {
        return bytes.size() == 2 && is_lead(ranges, bytes[0]) && bytes[1] != '\0';
    }
    std::mbstate_t state{};
    return MB_CUR_MAX > 1 && std::mbrlen(bytes.data(), bytes.size(), &state) == bytes.size();
}

/// The length of the character at the place, by trying every length.
inline std::size_t length_at(const std::string& name, const std::string& text, std::size_t at) {
    std::size_t length = static_cast<unsigned char>(text[at]) < 0x80 ? 1 : 4;
    while (length > 1 &&
           (at + length > text.size() || !is_character(name, text.substr(at, length)))) {
        --length;
    }
    return length;
}
inline std::size_t length_at(const std::string&, const std::u16string&, std::size_t) {
    return 1;
}

/// The characters of the text, NUL one of them.
template <class Unit>
Characters<Unit> split(const std::basic_string<Unit>& text) {
    const std::string name = codeset();
    Characters<Unit> characters;
    for (std::size_t at = 0; at < text.size(); at += characters.back().size()) {
        characters.push_back(text.substr(at, length_at(name, text, at)));
    }
    return characters;
}

template <class Unit>
std::basic_string<Unit> join(const Characters<Unit>& characters) {
    std::basic_string<Unit> text;
    for (const auto& character : characters) {
        text += character;
    }
    return text;
}

template <class String>
String until_nul(const String& text) {
    return text.c_str();
}

/// Where the text occurs at the beginning of a character at or behind the place and in front of the
/// next NUL.
template <class Unit>
std::size_t find(const std::basic_string<Unit>& text, const std::basic_string<Unit>& wanted,
                 std::size_t at = 0) {
    const std::string name = codeset();
    while (at < text.size() && text[at] != 0 && text.compare(at, wanted.size(), wanted) != 0) {
        at += length_at(name, text, at);
    }
    return text.compare(at, wanted.size(), wanted) == 0 ? at : text.npos;
}

/// A class or a fold of wide characters and of bytes.
struct Letters {
    wint_t (*wide)(wint_t);
    int (*byte)(int);
};
inline constexpr Letters kUpper = {std::towupper, std::toupper};
inline constexpr Letters kLower = {std::towlower, std::tolower};

inline std::string fold_one(const std::string& character, Letters fold) {
    if (character.size() == 1) {
        const auto value = static_cast<unsigned char>(character[0]);
        const bool isFolded = value < 0x80 || (MB_CUR_MAX == 1 && codeset() != "UTF-8");
        return std::string(1, static_cast<char>(isFolded ? fold.byte(value) : value));
    }
    wchar_t value;
    std::mbstate_t state{};
    char bytes[MB_LEN_MAX];
    if (std::mbrtowc(&value, character.data(), character.size(), &state) != character.size()) {
        return character;
    }
    const auto folded = static_cast<wchar_t>(fold.wide(static_cast<wint_t>(value)));
    const bool fits = std::wcrtomb(bytes, folded, &state) == character.size();
    return fits ? std::string(bytes, character.size()) : character;
}

inline std::u16string fold_one(const std::u16string& unit, Letters fold) {
    const wint_t folded = fold.wide(unit[0]);
    return folded < 0x10000 ? std::u16string(1, static_cast<char16_t>(folded)) : unit;
}

/// The whole text folded, character by character.
template <class Unit>
std::basic_string<Unit> folded(const std::basic_string<Unit>& text, Letters fold) {
    auto characters = split(text);
    for (auto& character : characters) {
        character = fold_one(character, fold);
    }
    return join(characters);
}

/// -1, 0 or 1.
inline int sign(int n) {
    return (n > 0) - (n < 0);
}

/// The numbers of the characters, the first byte the highest.
template <class Unit>
std::vector<std::uint32_t> codes(const std::basic_string<Unit>& text) {
    std::vector<std::uint32_t> result;
    for (const auto& character : split(text)) {
        result.push_back(0);
        for (const Unit unit : character) {
            result.back() = result.back() << 8 | static_cast<std::make_unsigned_t<Unit>>(unit);
        }
    }
    return result;
}

template <class Unit>
int order(const std::basic_string<Unit>& left, const std::basic_string<Unit>& right) {
    const auto l = codes(left);
    const auto r = codes(right);
    // g++ 12 compares vectors of words wrongly on big-endian processors.
    const auto [p, q] = std::mismatch(l.begin(), l.end(), r.begin(), r.end());
    if (p == l.end() || q == r.end()) {
        return (l.size() > r.size()) - (l.size() < r.size());
    }
    return *p < *q ? -1 : 1;
}

/// The number of hits, which do not overlap. Every NUL ends a piece that is searched by itself.
template <class String>
int replace_all(String& text, const String& from, const String& to) {
    String result;
    int nHits = 0;
    for (std::size_t at = 0; at < text.size() && !from.empty();) {
        const std::size_t nHit = find(text, from, at);
        const std::size_t nEnd =
            nHit == String::npos ? text.find(typename String::value_type(), at) : nHit;
        result.append(text, at, nEnd - at);
        at = std::min(nEnd, text.size());
        if (nHit != String::npos) {
            result += to;
            at += from.size();
            ++nHits;
        } else if (at < text.size()) {
            result += text[at++];
        }
    }
    text = from.empty() ? text : result;
    return nHits;
}

/// The length of the longest common subsequence.
inline int common_length(const std::string& a, const std::string& b) {
    std::vector<int> previous(a.size() + 1), next(a.size() + 1);
    for (const char byte : b) {
        for (std::size_t j = 1; j <= a.size(); ++j) {
            next[j] = a[j - 1] == byte ? previous[j - 1] + 1 : std::max(previous[j], next[j - 1]);
        }
        previous.swap(next);
    }
    return previous.back();
}

/// What reading numbers sees of a text. Beyond ASCII nothing but white space matters to it.
inline std::string numeric(const std::string& text) {
    return until_nul(text);
}
inline std::string numeric(const std::u16string& text) {
    std::string result;
    for (const char16_t unit : until_nul(text)) {
        result += unit < 0x80 ? static_cast<char>(unit) : std::iswspace(unit) != 0 ? ' ' : '?';
    }
    return result;
}

inline long long clamped(long long value) {
    return std::clamp<long long>(value, INT32_MIN, INT32_MAX);
}
inline long long whole(long long value) {
    return value;
}

/// The decimal number at the start; where that is 0, the hexadecimal one.
inline long long integer(const std::string& text, long long (*reduce)(long long)) {
    const long long decimal = reduce(std::strtoll(text.c_str(), nullptr, 10));
    return decimal != 0 ? decimal : reduce(std::strtoll(text.c_str(), nullptr, 16));
}

/// The C library reads hexadecimal and words as well: it is not shown their letters.
inline double real(const std::string& text) {
    return std::strtod(text.substr(0, text.find_first_of("xXiInN")).c_str(), nullptr);
}

/// What the C library prints.
template <class... Values>
std::string printed(const char* format, Values... values) {
    const auto size = static_cast<std::size_t>(std::snprintf(nullptr, 0, format, values...)) + 1;
    std::string text(size, '\0');
    std::snprintf(text.data(), size, format, values...);
    text.pop_back();
    return text;
}

template <class... Values>
std::u16string printed(const wchar_t* format, Values... values) {
    std::wstring text(0x4000, L'\0');
    const int length = std::swprintf(text.data(), text.size(), format, values...);
    return {text.begin(), text.begin() + std::max(length, 0)};
}

/// One conversion of the C library, of each text on its own.
class Iconv {
public:
    Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Iconv() {
        if (IsOpen()) {
            iconv_close(handle_);
        }
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    /// 0 or the error of converting all of it.
    int Convert(std::string_view from, std::string& to) {
        char* in = const_cast<char*>(from.data());
        std::size_t inLeft = from.size();
        to.assign(4 * from.size() + 16, '\0');
        char* out = to.data();
        std::size_t room = to.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        const bool failed = iconv(handle_, &in, &inLeft, &out, &room) == std::size_t(-1) ||
                            iconv(handle_, nullptr, nullptr, &out, &room) == std::size_t(-1);
        const int error = failed ? errno : 0;
        to.resize(to.size() - room);
        return error;
    }

private:
    iconv_t handle_;
};

/// 16-bit text as the processor has it, as `iconv` names it.
inline constexpr const char* kUtf16 =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

inline std::u16string units(const std::string& bytes) {
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), 2 * text.size());
    return text;
}

inline std::string bytes_of(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), 2 * text.size()};
}

inline void append_code(std::u16string& text, char32_t code) {
    if (code >= 0x10000) {
        text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
        code = 0xDC00 + ((code - 0x10000) & 0x3FF);
    }
    text += static_cast<char16_t>(code);
}

/// One U+FFFD for each longest beginning of a character.
inline std::u16string decode_utf8(const std::string& bytes) {
    std::u16string text;
    for (std::size_t at = 0, length = 0; at < bytes.size(); at += length) {
        length = 1;
        while (at + length < bytes.size() && begins_utf8(bytes.substr(at, length + 1))) {
            ++length;
        }
        append_code(text, utf8_code(bytes.substr(at, length)).value_or(0xFFFD));
    }
    return text;
}

/// The text as code points; of half a pair the half.
inline std::u32string code_points(std::u16string_view text) {
    std::u32string codes;
    for (const char16_t unit : text) {
        const bool pairs = (unit & 0xFC00) == 0xDC00 && !codes.empty() && codes.back() < 0x10000 &&
                           (codes.back() & 0xFC00) == 0xD800;
        if (pairs) {
            codes.back() = 0x10000 + (codes.back() - 0xD800) * 0x400 + (unit - 0xDC00u);
        } else {
            codes += unit;
        }
    }
    return codes;
}

inline std::string encode_utf8(std::u16string_view text) {
    std::string bytes;
    for (char32_t code : code_points(text)) {
        code = code / 0x800 == 0xD800 / 0x800 ? 0xFFFD : code;
        const int more = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        const unsigned int marks[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(marks[more] | code >> 6 * more);
        for (int k = more - 1; k >= 0; --k) {
            bytes += static_cast<char>(0x80 | (code >> 6 * k & 0x3F));
        }
    }
    return bytes;
}

/// Rows of characters of the users' own, by page and lead byte.
struct Area {
    unsigned int page;
    int firstLead;
    int lastLead;
    int unit;
    int perRow;
};

inline constexpr Area kUsersAreas[] = {
    {936, 0xAA, 0xAF, 0xE000, 94},  {936, 0xF8, 0xFE, 0xE234, 94},  {936, 0xA1, 0xA7, 0xE4C6, 96},
    {949, 0xC9, 0xC9, 0xE000, 94},  {949, 0xFE, 0xFE, 0xE05E, 94},  {950, 0xFA, 0xFE, 0xE000, 157},
    {950, 0x8E, 0xA0, 0xE311, 157}, {950, 0x81, 0x8D, 0xEEB8, 157}, {950, 0xC6, 0xC6, 0xF672, 157},
    {950, 0xC7, 0xC8, 0xF70F, 157},
};

/// Of a trail byte in its row; -1 where it is none.
inline int rank(const Area& area, int trail) {
    const bool isLow = trail >= 0x40 && trail < 0x7F;
    const bool isHigh = trail >= 0xA1 && trail < 0xFF;
    if (area.perRow == 94 || area.firstLead == 0xC6) {
        return isHigh ? trail - (area.perRow == 94 ? 0xA1 : 0x62) : -1;
    }
    if (area.perRow == 96 && trail >= 0x80 && trail <= 0xA0) {
        return trail - 0x41;
    }
    return isLow ? trail - 0x40 : isHigh && area.perRow == 157 ? trail - 0x62 : -1;
}

/// What a page has and the converter's table lacks, or 0; a single byte has no lead byte, 0.
inline char16_t own_unit(unsigned int page, int lead, int trail) {
    const bool hasControls = page == 874 || (page >= 1250 && page <= 1258);
    if (lead == 0) {
        const bool isControl = hasControls && (trail & 0xE0) == 0x80;
        return static_cast<char16_t>(page == 875 && trail == 0x6A    ? '|'
                                     : page == 1361 && trail == 0x5C ? '\\'
                                     : isControl                     ? trail
                                                                     : 0);
    }
    for (const Area& area : kUsersAreas) {
        const int at = rank(area, trail);
        if (area.page == page && lead >= area.firstLead && lead <= area.lastLead && at >= 0) {
            return static_cast<char16_t>(area.unit + area.perRow * (lead - area.firstLead) + at);
        }
    }
    return 0;
}

/// The bytes of what stands beside the converter's table.
inline const std::map<char32_t, std::string>& own_units(unsigned int page) {
    static std::map<unsigned int, std::map<char32_t, std::string>> pages;
    const auto [known, isNew] = pages.try_emplace(page);
    for (int bytes = 0; isNew && bytes < 0x10000; ++bytes) {
        const char pair[] = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
        if (const char16_t unit = own_unit(page, bytes >> 8, bytes & 0xFF)) {
            known->second[unit] = std::string(bytes < 0x100 ? pair + 1 : pair, pair + 2);
        }
    }
    return known->second;
}

/// The shortest prefix that is a character; else the bytes that began one and the next, up to the
/// first ASCII byte, are one U+FFFD, or the first byte alone.
template <class IsLead>
std::u16string decode(Iconv& iconv, unsigned int page, IsLead isLead, std::string_view bytes,
                      bool isByteByByte = false) {
    std::u16string text;
    while (!bytes.empty()) {
        std::string result;
        std::size_t length = 0;
        int error = EINVAL;
        while (error == EINVAL && length < bytes.size()) {
            error = iconv.Convert(bytes.substr(0, ++length), result);
        }
        const bool isPair = isLead(bytes[0]) && bytes.size() > 1;
        const auto lead = static_cast<unsigned char>(isPair ? bytes[0] : '\0');
        const auto last = static_cast<unsigned char>(bytes[isPair ? 1 : 0]);
        const bool isOverridden = page == 1361 && bytes[0] == '\\';
        const char16_t own = error != 0 || isOverridden ? own_unit(page, lead, last) : u'\0';
        if (own != 0) {
            length = isPair ? 2 : 1;
        } else if (error != 0) {
            length = isLead(bytes[0]) ? std::min<std::size_t>(2, bytes.size())
                     : isByteByByte   ? 1
                                      : length;
            const auto* ascii = std::find_if(bytes.begin() + 1, bytes.begin() + length,
                                             [](char c) { return (c & 0x80) == 0; });
            length = static_cast<std::size_t>(ascii - bytes.begin());
        }
        text += own != 0 ? std::u16string(1, own) : error == 0 ? units(result) : u"\xFFFD";
        bytes.remove_prefix(length);
    }
    return text;
}

/// Code point by code point, a question mark for what is not there. The C library drops language
/// tags without a word.
inline std::string encode(Iconv& iconv, unsigned int page, std::u16string_view text) {
    const auto& own = own_units(page);
    std::string bytes, question;
    iconv.Convert(std::string_view("?\0", 2), question);
    for (const char32_t code : code_points(text)) {
        std::u16string one;
        append_code(one, code);
        std::string result;
        const bool isThere = iconv.Convert(bytes_of(one), result) == 0 && !result.empty() &&
                             (page != 1361 || code != 0x20A9);
        const auto beside = own.find(code);
        bytes += isThere ? result : beside != own.end() ? beside->second : question;
    }
    return bytes;
}

}  // namespace oracle
