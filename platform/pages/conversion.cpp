#include "pages/conversion.h"

#include <climits>
#include <cstddef>

#include "lanes/ascii_runs.h"
#include "pages/code_pages.h"
#include "pages/decode_table.h"
#include "pages/encode_table.h"
#include "pages/stream_conversion.h"
#include "pages/utf16_walk.h"
#include "pages/utf8.h"

namespace platform {
namespace {

constexpr unsigned int kAscii = 20127;
constexpr unsigned int kLatin1 = 28591;

const CodePage* page_of(unsigned int number) {
    return number == 0 ? process_code_page() : find_code_page(number);
}

/// 0 where an `int` cannot count the result.
int to_size(std::size_t size) {
    return size <= INT_MAX ? static_cast<int>(size) : 0;
}

bool is_own_single(const CodePage& page) {
    return page.number == kLatin1 || page.number == kAscii;
}

/// The first unit that the page cannot express.
char16_t own_limit(const CodePage& page) {
    return page.number == kLatin1 ? 0x100 : 0x80;
}

void decode_ascii(const char* source, std::size_t length, char16_t* destination) {
    for (std::size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(source[i]);
        destination[i] = byte < 0x80 ? byte : char16_t{0xFFFD};
    }
}

void encode_own_single(const char16_t* source, std::size_t length, char16_t limit,
                       char* destination, std::size_t size) {
    if (size == length) {  // no surrogate pairs
        for (std::size_t i = 0; i < length; ++i) {
            destination[i] = static_cast<char>(source[i] < limit ? source[i] : u'?');
        }
        return;
    }
    const char16_t* const last = source + length;
    for (const char16_t* p = source; p != last;) {
        const char32_t code = utf16_code(p, last);
        *destination++ = static_cast<char>(code < limit ? code : U'?');
        p += utf16_units(code);
    }
}

}  // namespace

Decoding::Decoding(unsigned int codePage, const char* source, int length) noexcept
    : source_(source), length_(length) {
    page_ = length > 0 ? page_of(codePage) : nullptr;
    if (page_ == nullptr) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    if (page_->grouping == Grouping::Utf8) {
        const Utf8Measure measure = utf8_measure(source, count);
        isWellFormed_ = measure.isWellFormed;
        size_ = to_size(measure.units);
    } else if (is_own_single(*page_)) {
        size_ = length;
    } else if (const DecodeTable* table = decode_table(*page_)) {
        size_ = to_size(table->isStreamed ? stream_decode(page_->converter, source, count, nullptr)
                                          : table_decoded_size(*table, source, count));
    }
}

int Decoding::Write(char16_t* destination) const noexcept {
    if (size_ == 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(length_);
    if (page_->grouping == Grouping::Utf8) {
        utf8_decode(source_, count, {static_cast<std::size_t>(size_), isWellFormed_}, destination);
    } else if (page_->number == kLatin1) {
        widen(source_, count, destination);
    } else if (page_->number == kAscii) {
        decode_ascii(source_, count, destination);
    } else if (const DecodeTable* table = decode_table(*page_); table->isStreamed) {
        return to_size(stream_decode(page_->converter, source_, count, destination));
    } else {
        table_decode(*table, source_, count, destination, static_cast<std::size_t>(size_));
    }
    return size_;
}

Encoding::Encoding(unsigned int codePage, const char16_t* source, int length) noexcept
    : source_(source), length_(length) {
    page_ = length > 0 ? page_of(codePage) : nullptr;
    if (page_ == nullptr) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    if (page_->grouping == Grouping::Utf8) {
        size_ = to_size(utf8_size(source, count));
    } else if (is_own_single(*page_)) {
        size_ = to_size(count - count_surrogate_pairs(source, count));
    } else if (const EncodeTable* table = encode_table(*page_)) {
        size_ = to_size(table->isStreamed ? stream_encode(page_->converter, source, count, nullptr)
                                          : table_encoded_size(*table, source, count));
    }
}

int Encoding::Write(char* destination) const noexcept {
    if (size_ == 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(length_);
    const auto size = static_cast<std::size_t>(size_);
    if (page_->grouping == Grouping::Utf8) {
        utf8_encode(source_, count, destination, size);
    } else if (is_own_single(*page_)) {
        encode_own_single(source_, count, own_limit(*page_), destination, size);
    } else if (const EncodeTable* table = encode_table(*page_); table->isStreamed) {
        return to_size(stream_encode(page_->converter, source_, count, destination));
    } else {
        table_encode(*table, source_, count, destination, size);
    }
    return size_;
}

int MultiByteToWideChar(unsigned int codePage, const char* source, int length,
                        char16_t* destination, int destinationSize) noexcept {
    const Decoding decoding(codePage, source, length);
    if (destinationSize == 0) {
        return decoding.Size();
    }
    return decoding.Size() <= destinationSize ? decoding.Write(destination) : 0;
}

int WideCharToMultiByte(unsigned int codePage, const char16_t* source, int length,
                        char* destination, int destinationSize) noexcept {
    const Encoding encoding(codePage, source, length);
    if (destinationSize == 0) {
        return encoding.Size();
    }
    return encoding.Size() <= destinationSize ? encoding.Write(destination) : 0;
}

}  // namespace platform
