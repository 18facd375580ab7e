#include "print/text.h"

#include <wchar.h>

#include <algorithm>

#include "assertion.h"
#include "pages/conversion.h"
#include "pages/decode_table.h"
#include "pages/utf16_walk.h"
#include "pages/utf8_walk.h"
#include "print/syntax.h"

namespace platform {

namespace {

constexpr std::size_t kChunk = 256;

// What one unit of the other width can become, in the code page of any locale.
constexpr std::size_t kMostPerUnit = 4;

template <class Conversion, class Unit, class Other>
std::size_t convert_by(const CodePage& page, const Other* text, std::size_t count,
                       Unit* destination) {
    const Conversion conversion(&page, text, static_cast<int>(count));
    require(static_cast<std::size_t>(conversion.Size()) <= count * kMostPerUnit,
            "conversion.Size() <= count * kMostPerUnit");
    return static_cast<std::size_t>(conversion.Write(destination));
}

std::size_t convert(const CodePage& page, const char16_t* text, std::size_t count,
                    char* destination) {
    return convert_by<Encoding>(page, text, count, destination);
}

std::size_t convert(const CodePage& page, const char* text, std::size_t count,
                    char16_t* destination) {
    return convert_by<Decoding>(page, text, count, destination);
}

// The next chunk of a text is as long as `most`, or ends in front of a NUL, or where a character
// ends; it is empty only at the end. Nothing behind `most` is read, except for the rest of a
// character: what a precision cuts off need not be there.

std::size_t chunk_length(const CodePage&, const char16_t* text, std::size_t most) {
    const std::size_t count = bounded_length(text, std::min(most, kChunk));
    if (count == 0 || !is_high_surrogate(text[count - 1])) {
        return count;
    }
    // Half a pair comes again with the next chunk, which it begins.
    if (count > 1) {
        return count - 1;
    }
    return is_low_surrogate(text[1]) ? 2 : 1;
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

std::size_t last_by_locale(const char* text, std::size_t count) {
    std::size_t start = 0;
    for (std::size_t length = 0; length < count - start;) {
        start += length;
        length = sequence_by_locale(text + start, count - start);
    }
    return start;
}

std::size_t last_in_utf8(const char* text, std::size_t count) {
    for (std::size_t end = count; end > 0 && end + 4 > count; --end) {
        if (!is_utf8_continuation(text[end - 1])) {
            return end - 1;
        }
    }
    return count;
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

/// Where the last sequence within `count` bytes begins, be it complete or not.
std::size_t last_sequence(const CodePage& page, const char* text, std::size_t count) {
    if (const DecodeTable* table = table_of(page)) {
        return table_last_sequence(*table, text, count);
    }
    switch (page.grouping) {
        case Grouping::Utf8:
            return last_in_utf8(text, count);
        case Grouping::Other:
            return last_by_locale(text, count);
        case Grouping::SingleByte:
        case Grouping::DoubleByte:
            break;
    }
    return static_cast<std::size_t>(character_start(page, text, text + count - 1, text + count) -
                                    text);
}

std::size_t chunk_length(const CodePage& page, const char* text, std::size_t most) {
    most = std::min(most, kChunk);
    const std::size_t count = bounded_length(text, most);
    if (count < most) {
        return count;
    }
    const std::size_t whole = last_sequence(page, text, count);
    return whole != 0 ? whole : first_sequence(page, text);
}

/// The longest part of a converted text that keeps within `limit`, which is shorter than the text.
std::size_t cut(const CodePage& page, const char* text, std::size_t length, std::size_t limit) {
    return static_cast<std::size_t>(character_start(page, text, text + limit, text + length) -
                                    text);
}

std::size_t cut(const CodePage&, const char16_t* text, std::size_t, std::size_t limit) {
    const bool isSplit =
        limit > 0 && is_high_surrogate(text[limit - 1]) && is_low_surrogate(text[limit]);
    return isSplit ? limit - 1 : limit;
}

template <class Unit, class Other>
std::size_t put_text(Sink<Unit>& sink, const CodePage& own, const Other* text, std::size_t limit) {
    const CodePage& page = usable_page(own);
    Unit buffer[kChunk * kMostPerUnit + 1];
    std::size_t total = 0;
    while (total < limit) {
        const std::size_t count = chunk_length(page, text, limit - total);
        if (count == 0) {
            break;
        }
        const std::size_t length = convert(page, text, count, buffer);
        if (length > limit - total) {
            buffer[length] = Unit{};
            const std::size_t kept = cut(page, buffer, length, limit - total);
            sink.Put(buffer, kept);
            return total + kept;
        }
        sink.Put(buffer, length);
        total += length;
        text += count;
    }
    return total;
}

template <class Unit, class Other>
std::size_t put_unit(Sink<Unit>& sink, const CodePage& own, Other unit) {
    Unit buffer[kMostPerUnit];
    const std::size_t length = convert(usable_page(own), &unit, 1, buffer);
    sink.Put(buffer, length);
    return length;
}

}  // namespace

std::size_t put_converted(Sink<char>& sink, const CodePage& page, const char16_t* text,
                          std::size_t limit) {
    return put_text(sink, page, text, limit);
}

std::size_t put_converted(Sink<char16_t>& sink, const CodePage& page, const char* text,
                          std::size_t limit) {
    return put_text(sink, page, text, limit);
}

std::size_t put_converted_unit(Sink<char>& sink, const CodePage& page, char16_t unit) {
    return put_unit(sink, page, unit);
}

std::size_t put_converted_unit(Sink<char16_t>& sink, const CodePage& page, char unit) {
    return put_unit(sink, page, unit);
}

}  // namespace platform
