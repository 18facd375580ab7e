// The print and the code pages against the C library.
//
// world formats [COUNT [SEED]]
//     Random calls of the print in eight locales, and numbers at the ends of int.
// world pages [SHARE]
//     In every page, every character of the BMP, and of the other rows of 256 one in SHARE; every
//     sequence of one byte, of two where the page has such characters, and one in SHARE of those of
//     three, with all of four where three begin a character.
//
// Tells the first faults and ends with 1 if there was one.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "calls.h"
#include "oracle.h"
#include "pages/code_pages.h"
#include "pages/conversion.h"
#include "print/print.h"

namespace {

using oracle::Iconv;
using platform::CodePage;
using platform::Grouping;

long g_tried = 0;
long g_faults = 0;

void Fault(const std::string& text) {
    constexpr long kTold = 20;
    if (++g_faults <= kTold) {
        std::printf("%s\n", text.c_str());
    }
}

void Expect(bool holds, const std::function<std::string()>& text) {
    ++g_tried;
    if (!holds) {
        Fault(text());
    }
}

template <class Unit>
int Count(const Unit* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    int length = 0;
    if constexpr (sizeof(Unit) == 1) {
        length = platform::vsprintf(nullptr, 0, format, arguments);
    } else {
        length = platform::_vswprintf(nullptr, 0, format, arguments);
    }
    va_end(arguments);
    return length;
}

/// The C library would take seconds for each of these.
template <class... Values>
void ExpectCount(const std::string& format, long long count, Values... values) {
    const std::u16string wide(format.begin(), format.end());
    const auto expected = static_cast<int>(std::min<long long>(count, INT_MAX));
    Expect(Count(format.c_str(), values...) == expected, [&] { return format + ": narrow"; });
    Expect(Count(wide.c_str(), values...) == expected, [&] { return format + ": wide"; });
    const auto refuses = [&](auto value, const auto* text) {
        const auto before = value;
        try {
            value.Format(text, values...);
        } catch (const std::bad_alloc&) {
            return value == before;
        }
        return false;
    };
    if (count >= INT_MAX) {
        Expect(refuses(Open<Kelm>("text"), format.c_str()), [&] { return format + ": refuses"; });
        Expect(refuses(Open<WString>(u"text"), wide.c_str()), [&] { return format + ": refuses"; });
    }
}

void TryEndsOfInt() {
    for (const int number : {INT_MAX, INT_MAX - 1, INT_MAX - 400, 1 << 30}) {
        for (const std::string flags : {"%", "%-", "%0", "%+#"}) {
            for (const char* letter : {"d", "x", "c"}) {
                ExpectCount(flags + "*" + letter, number, number, 7);
                ExpectCount(flags + std::to_string(number) + letter + "|", number + 1LL, 7);
            }
            ExpectCount(flags + "*.1f", number, number, 7.5);
            ExpectCount(flags + "*p", number, number, nullptr);
        }
        ExpectCount("%.*d", number + 1LL, number, -7);
        ExpectCount("%.*f", number + 2LL, number, 7.5);
        ExpectCount("%.*e", number + 6LL, number, 7.5);
        ExpectCount("%*.*u", number, number, number, 7);
        ExpectCount("%*d%*d", 2LL * number, number, 1, number, 2);
    }
}

void TryFormats(unsigned long count, unsigned long seed) {
    std::mt19937_64 random(seed);
    unsigned char bytes[96];
    for (unsigned long n = 0; n < count; ++n) {
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random() >> 32);
        }
        const auto size = static_cast<std::size_t>(1 + random() % sizeof bytes);
        const std::string fault = calls::check(bytes, size);
        Expect(fault.empty(), [&] { return "call " + std::to_string(n) + ": " + fault; });
    }
    std::setlocale(LC_ALL, "C");
    TryEndsOfInt();
}

std::string Shown(const CodePage& page, std::string_view bytes) {
    std::string text = std::to_string(page.number) + " (" + page.converter + ")";
    for (const char byte : bytes) {
        text += oracle::printed(" %02X", static_cast<unsigned char>(byte));
    }
    return text;
}

/// From a block and into a block of exactly the size.
template <class To, class From>
std::basic_string<To> Converted(int (*convert)(unsigned int, const From*, int, To*, int),
                                unsigned int page, std::basic_string_view<From> text) {
    const auto source = std::make_unique<From[]>(text.size());
    std::copy(text.begin(), text.end(), source.get());
    const int length = static_cast<int>(text.size());
    const int size = convert(page, source.get(), length, nullptr, 0);
    const auto result = std::make_unique<To[]>(static_cast<std::size_t>(size));
    const int written = size > 0 ? convert(page, source.get(), length, result.get(), size) : 0;
    return {result.get(), static_cast<std::size_t>(written)};
}

/// EBCDIC of several bytes.
bool HasShifts(const CodePage& page) {
    return page.grouping == Grouping::Other && page.number != 0 && page.number < 2000;
}

/// What users of the number mean, in the C library's names; of the locale's page its codeset.
std::string ConverterOf(unsigned int number) {
    static const std::map<unsigned int, const char*> kNames = {
        {932, "CP932"},     {936, "GBK"},         {949, "UHC"},      {950, "BIG5"},
        {1361, "JOHAB"},    {10000, "MACINTOSH"}, {20127, "ASCII"},  {20866, "KOI8-R"},
        {21866, "KOI8-U"},  {51932, "EUC-JP-MS"}, {51936, "EUC-CN"}, {51949, "EUC-KR"},
        {54936, "GB18030"}, {65001, "UTF-8"}};
    if (number == 0 || kNames.contains(number)) {
        return number == 0 ? oracle::codeset() : kNames.at(number);
    }
    if (number / 100 == 285 || number / 100 == 286) {
        return "ISO-8859-" + std::to_string(number - 28590);
    }
    const std::string digits = oracle::printed("%03u", number > 20000 ? number - 20000 : number);
    return Iconv(oracle::kUtf16, ("IBM" + digits).c_str()).IsOpen() ? "IBM" + digits
                                                                    : "CP" + digits;
}

/// One page, in the locale that is set where it has no number.
class Page {
public:
    explicit Page(const CodePage& page)
        : page_(page),
          decoder_(oracle::kUtf16, ConverterOf(page.number).c_str()),
          encoder_(ConverterOf(page.number).c_str(), oracle::kUtf16) {}

    void Try(std::size_t share) {
        const bool isSingle = page_.grouping == Grouping::SingleByte;
        TrySequences(1, 1);
        TrySequences(2, isSingle ? share : 1);
        if (!isSingle && !HasShifts(page_)) {
            TrySequences(3, share);
        }
        for (char32_t row = 0; row < 0x1100; ++row) {
            const bool isOfTags = row == 0xE00;
            if (row < 0x100 || isOfTags || row % share == 0) {
                TryRow(row * 0x100);
            }
        }
    }

private:
    void TrySequences(std::size_t length, std::size_t share) {
        for (std::size_t number = share / 2; number < std::size_t{1} << 8 * length;
             number += share) {
            std::string bytes;
            for (std::size_t at = length; at > 0; --at) {
                bytes += static_cast<char>(number >> 8 * (at - 1));
            }
            TryBytes(bytes);
            for (int last = 0; length == 3 && Begins(bytes) && last < 0x100; ++last) {
                TryBytes(bytes + static_cast<char>(last));
            }
        }
    }

    /// Whether all of it is the beginning of one character.
    bool Begins(const std::string& bytes) {
        if (page_.grouping == Grouping::Utf8) {
            return bytes[0] >= '\xF0' && bytes[0] < 0 && oracle::begins_utf8(bytes);
        }
        std::string result;
        return decoder_.Convert(bytes, result) == EINVAL && result.empty();
    }

    void TryBytes(const std::string& bytes) {
        if (HasShifts(page_) && bytes.size() > 1) {
            TryShifted('\x0E' + bytes + '\x0F');
            return;
        }
        const auto isLead = [&](char byte) {
            return page_.leadBytes != nullptr && page_.IsLead(static_cast<unsigned char>(byte));
        };
        // Its characters are too long for a table.
        const bool isByteByByte = page_.converter == std::string_view("EUC-TW");
        const std::u16string expected =
            page_.grouping == Grouping::Utf8
                ? oracle::decode_utf8(bytes)
                : oracle::decode(decoder_, page_.number, isLead, bytes, isByteByByte);
        Expect(Decoded(bytes) == expected, [&] { return "decoded " + Shown(page_, bytes); });
        // The rows above the BMP are tried in part, what the page has there wholly.
        const auto isSurrogate = [](char16_t unit) { return (unit & 0xF800) == 0xD800; };
        if (std::any_of(expected.begin(), expected.end(), isSurrogate)) {
            TryText(expected);
        }
    }

    void TryShifted(const std::string& bytes) {
        std::string result;
        const bool isFault = decoder_.Convert(bytes, result) != 0;
        const std::u16string text = Decoded(bytes);
        Expect(isFault ? text.find(u'\xFFFD') != text.npos : text == oracle::units(result),
               [&] { return "decoded " + Shown(page_, bytes); });
    }

    /// 256 characters in one text, or by themselves where they shift states.
    void TryRow(char32_t first) {
        std::u16string text;
        for (char32_t code = first; code < first + 0x100; ++code) {
            oracle::append_code(text, code);
            if (HasShifts(page_)) {
                TryText(text);
                text.clear();
            }
        }
        TryText(text);
    }

    void TryText(const std::u16string& text) {
        const std::string expected = page_.grouping == Grouping::Utf8
                                         ? oracle::encode_utf8(text)
                                         : oracle::encode(encoder_, page_.number, text);
        const std::string bytes =
            Converted<char, char16_t>(platform::WideCharToMultiByte, page_.number, text);
        Expect(bytes == expected, [&] {
            const auto [at, wanted] =
                std::mismatch(bytes.begin(), bytes.end(), expected.begin(), expected.end());
            return "encoded from " + oracle::printed("U+%04X", text[0]) + " on, at byte " +
                   std::to_string(at - bytes.begin()) + " of " + Shown(page_, "");
        });
    }

    std::u16string Decoded(const std::string& bytes) const {
        return Converted<char16_t, char>(platform::MultiByteToWideChar, page_.number, bytes);
    }

    const CodePage& page_;
    Iconv decoder_;
    Iconv encoder_;
};

void TryPages(std::size_t share) {
    int pages = 0;
    for (unsigned int number = 1; number < 70000; ++number) {
        if (const CodePage* page = platform::find_code_page(number)) {
            Page(*page).Try(share);
            ++pages;
        }
    }
    for (const char* locale : {"ja_JP.EUC-JP", "zh_TW.EUC-TW", "ka_GE.GEORGIAN-PS"}) {
        Expect(std::setlocale(LC_ALL, locale) != nullptr, [&] { return locale; });
        Page(*platform::process_code_page()).Try(share);
        ++pages;
    }
    std::printf("%d pages, ", pages);
}

unsigned long Number(int count, char** arguments, int index, unsigned long otherwise) {
    return index < count ? std::strtoul(arguments[index], nullptr, 10) : otherwise;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view kind = count > 1 ? arguments[1] : "";
    if (kind == "formats") {
        TryFormats(Number(count, arguments, 2, 1000000), Number(count, arguments, 3, 1));
    } else if (kind == "pages") {
        TryPages(std::max(1UL, Number(count, arguments, 2, 1)));
    } else {
        std::fputs("usage: world formats [COUNT [SEED]] | world pages [SHARE]\n", stderr);
        return 2;
    }
    std::printf("%ld tried, %ld faults\n", g_tried, g_faults);
    return g_faults != 0 || g_tried == 0 ? 1 : 0;
}
