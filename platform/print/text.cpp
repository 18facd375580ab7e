#include "print/text.h"

#include <wchar.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>
#include <type_traits>

#include "assertion.h"
#include "pages/conversion.h"
#include "pages/decode_table.h"
#include "pages/utf16_walk.h"
#include "pages/utf8_walk.h"
#include "print/syntax.h"

namespace platform {

namespace {

// What one unit of the other width can become, in the code page of any locale.
constexpr std::size_t kMostPerUnit = 4;

// So many plain units are converted at a time.
constexpr std::size_t kRun = 64;

template <class Unit>
using ConversionTo =
    typename std::conditional<std::is_same<Unit, char>::value, Encoding, Decoding>::type;

/// Converts the whole text to where it is printed, unless it has no room there.
template <class Unit, class Other>
std::size_t put_all(Sink<Unit>& sink, const CodePage& page, const Other* text, std::size_t count) {
    if (count > INT_MAX) {
        throw std::bad_alloc();
    }
    const ConversionTo<Unit> conversion(&page, text, static_cast<int>(count));
    const auto length = static_cast<std::size_t>(conversion.Size());
    if (length > sink.Room()) {
        sink.Fill(' ', length);
    } else if (length != 0) {
        sink.Advance(conversion.Write(sink.Next()));
    }
    return length;
}

/// Converts part of a text to a buffer with room for all that it can become.
template <class Unit, class Other>
std::size_t convert(const CodePage& page, const Other* text, std::size_t count, Unit* destination) {
    const ConversionTo<Unit> conversion(&page, text, static_cast<int>(count));
    require(static_cast<std::size_t>(conversion.Size()) <= count * kMostPerUnit,
            "conversion.Size() <= count * kMostPerUnit");
    return static_cast<std::size_t>(conversion.Write(destination));
}

// A precision is kept by whole characters, and nothing is read that it does not need: what it cuts
// off need not be there. So the text goes character by character, plain ones by the run.

std::size_t first_sequence(const CodePage&, const char16_t* text) {
    return is_high_surrogate(text[0]) && is_low_surrogate(text[1]) ? 2 : 1;
}

/// Bytes of the first sequence as a decoder sees it, ill-formed or not.
std::size_t utf8_sequence(const char* text) {
    const std::size_t length = utf8_length(text);
    const auto lead = static_cast<unsigned char>(text[0]);
    if (length > 1 || lead < 0xE0 || !is_utf8_start(lead, static_cast<unsigned char>(text[1]))) {
        return length;
    }
    std::size_t count = 2;
    while (is_utf8_continuation(text[count])) {
        ++count;
    }
    return count;
}

constexpr std::size_t kIncomplete = static_cast<std::size_t>(-2);

/// As `mbrlen` says from the initial state; an error counts as one byte.
std::size_t sequence_by_locale(const char* text, std::size_t count) {
    mbstate_t state{};
    const std::size_t length = mbrlen(text, count, &state);
    return length == 0 || (length > count && length != kIncomplete) ? 1 : length;
}

std::size_t first_by_locale(const char* text) {
    std::size_t count = 1;
    std::size_t length = sequence_by_locale(text, count);
    while (length == kIncomplete && count < MB_LEN_MAX && text[count] != '\0') {
        length = sequence_by_locale(text, ++count);
    }
    return length == kIncomplete ? count : length;
}

const DecodeTable* table_of(const CodePage& page) {
    const DecodeTable* table = page.grouping == Grouping::Other ? decode_table(page) : nullptr;
    return table != nullptr && !table->isStreamed ? table : nullptr;
}

std::size_t first_sequence(const CodePage& page, const char* text) {
    if (const DecodeTable* table = table_of(page)) {
        return table_first_sequence(*table, text);
    }
    switch (page.grouping) {
        case Grouping::Utf8:
            return utf8_sequence(text);
        case Grouping::Other:
            return first_by_locale(text);
        case Grouping::SingleByte:
        case Grouping::DoubleByte:
            break;
    }
    return _mbclen(page, text);
}

template <class Other>
std::size_t plain_run(const Other* text, std::size_t most) {
    std::size_t count = 0;
    while (count < std::min(most, kRun) && static_cast<unsigned>(text[count]) - 1U < 0x7FU) {
        ++count;
    }
    return count;
}

/// How much of a converted character that is longer than `limit` is printed.
std::size_t cut(const char*, std::size_t) {
    return 0;
}

std::size_t cut(const char16_t* units, std::size_t limit) {
    return limit > 0 && is_high_surrogate(units[limit - 1]) ? limit - 1 : limit;
}

template <class Unit, class Other>
std::size_t put_bounded(Sink<Unit>& sink, const CodePage& page, const Other* text,
                        std::size_t limit) {
    Unit buffer[kRun * kMostPerUnit];
    std::size_t total = 0;
    while (total < limit && *text != Other{}) {
        const std::size_t run = plain_run(text, limit - total);
        const std::size_t count = run != 0 ? run : first_sequence(page, text);
        const std::size_t length = convert(page, text, count, buffer);
        if (length > limit - total) {
            const std::size_t kept = cut(buffer, limit - total);
            sink.Put(buffer, kept);
            return total + kept;
        }
        sink.Put(buffer, length);
        total += length;
        text += count;
    }
    return total;
}

}  // namespace

template <class Unit, class Other>
std::size_t put_converted(Sink<Unit>& sink, const CodePage& own, const Other* text,
                          std::size_t limit) {
    const CodePage& page = usable_page(own);
    return limit == SIZE_MAX ? put_all(sink, page, text, bounded_length(text, SIZE_MAX))
                             : put_bounded(sink, page, text, limit);
}

template <class Unit, class Other>
std::size_t put_converted_unit(Sink<Unit>& sink, const CodePage& own, Other unit) {
    Unit buffer[kMostPerUnit];
    const std::size_t length = convert(usable_page(own), &unit, 1, buffer);
    sink.Put(buffer, length);
    return length;
}

template std::size_t put_converted(Sink<char>&, const CodePage&, const char16_t*, std::size_t);
template std::size_t put_converted(Sink<char16_t>&, const CodePage&, const char*, std::size_t);
template std::size_t put_converted_unit(Sink<char>&, const CodePage&, char16_t);
template std::size_t put_converted_unit(Sink<char16_t>&, const CodePage&, char);

}  // namespace platform
