#include "print_text.h"

#include "conversion.h"

namespace platform {

namespace {

constexpr std::size_t kChunk = 256;

// What one unit of the other width can become.
template <class Unit>
constexpr std::size_t kMostPerUnit = std::is_same<Unit, char>::value ? 4 : 1;

bool is_high(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool is_low(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

int convert(const CodePage& page, const char16_t* text, int count, char* destination, int size) {
    return WideCharToMultiByte(page.number, text, count, destination, size);
}

int convert(const CodePage& page, const char* text, int count, char16_t* destination, int size) {
    return MultiByteToWideChar(page.number, text, count, destination, size);
}

char substitute(char16_t unit) {
    return unit < 0x80 ? static_cast<char>(unit) : '?';
}

char16_t substitute(char byte) {
    return static_cast<unsigned char>(byte) < 0x80 ? static_cast<char16_t>(byte) : u'\uFFFD';
}

/// Converts at most `kChunk` units; what the code page's converter refuses is printed unit by unit.
template <class Unit, class Other>
std::size_t convert_chunk(const CodePage& page, const Other* text, std::size_t count,
                          Unit* destination) {
    const int done = convert(page, text, static_cast<int>(count), destination,
                             static_cast<int>(count * kMostPerUnit<Unit>));
    if (done > 0) {
        return static_cast<std::size_t>(done);
    }
    for (std::size_t i = 0; i < count; ++i) {
        destination[i] = substitute(text[i]);
    }
    return count;
}

/// Length of the next chunk of a terminated text, which ends where a character ends; 0 at its end.
std::size_t chunk_length(const CodePage&, const char16_t* text) {
    std::size_t count = 0;
    while (count < kChunk && text[count] != u'\0') {
        ++count;
    }
    const bool isSplit = count == kChunk && is_high(text[count - 1]) && is_low(text[count]);
    return isSplit ? count - 1 : count;
}

std::size_t chunk_length(const CodePage& page, const char* text) {
    constexpr std::size_t kLongest = MB_LEN_MAX;
    const std::size_t count = ::strnlen(text, kChunk + kLongest);
    if (count <= kChunk) {
        return count;
    }
    if (page.grouping != Grouping::Utf8) {
        return static_cast<std::size_t>(character_start(page, text, text + kChunk, text + count) -
                                        text);
    }
    // A decoder sees an ill-formed sequence as one, too, where the walk sees single bytes.
    for (std::size_t end = kChunk; end > kChunk - 4; --end) {
        if ((text[end] & 0xC0) != 0x80) {
            return end;
        }
    }
    return kChunk;
}

/// The longest part of a converted text that keeps within `limit`, which is shorter than the text.
std::size_t cut(const CodePage& page, const char* text, std::size_t length, std::size_t limit) {
    return static_cast<std::size_t>(character_start(page, text, text + limit, text + length) -
                                    text);
}

std::size_t cut(const CodePage&, const char16_t* text, std::size_t, std::size_t limit) {
    const bool isSplit = limit > 0 && is_high(text[limit - 1]) && is_low(text[limit]);
    return isSplit ? limit - 1 : limit;
}

template <class Unit, class Other>
std::size_t put_text(Sink<Unit>& sink, const CodePage& page, const Other* text, std::size_t limit) {
    Unit buffer[kChunk * kMostPerUnit<Unit> + 1];
    std::size_t total = 0;
    while (total < limit) {
        const std::size_t count = chunk_length(page, text);
        if (count == 0) {
            break;
        }
        const std::size_t length = convert_chunk(page, text, count, buffer);
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
std::size_t put_unit(Sink<Unit>& sink, const CodePage& page, Other unit) {
    Unit buffer[kMostPerUnit<Unit>];
    const std::size_t length = convert_chunk(page, &unit, 1, buffer);
    sink.Put(buffer, length);
    return length;
}

}  // namespace

std::size_t put_converted(Sink<char>& sink, const CodePage& page, const char16_t* text,
                          std::size_t limit) noexcept {
    return put_text(sink, page, text, limit);
}

std::size_t put_converted(Sink<char16_t>& sink, const CodePage& page, const char* text,
                          std::size_t limit) noexcept {
    return put_text(sink, page, text, limit);
}

std::size_t put_converted_unit(Sink<char>& sink, const CodePage& page, char16_t unit) noexcept {
    return put_unit(sink, page, unit);
}

std::size_t put_converted_unit(Sink<char16_t>& sink, const CodePage& page, char unit) noexcept {
    return put_unit(sink, page, unit);
}

}  // namespace platform
