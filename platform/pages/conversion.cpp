#include "pages/conversion.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>

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

int to_size(std::size_t size) {
    if (size > INT_MAX) {
        throw std::bad_alloc();
    }
    return static_cast<int>(size);
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
        destination[i] = byte < 0x80 ? byte : kReplacement;
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

/// Null where there is nothing to convert, or nothing to convert it with.
const CodePage* page_of(unsigned int number, int length) {
    if (length <= 0) {
        return nullptr;
    }
    return number == 0 ? &usable_page(*process_code_page()) : find_code_page(number);
}

}  // namespace

const CodePage& usable_page(const CodePage& page) {
    const bool isOwn = page.grouping == Grouping::Utf8 || is_own_single(page);
    return isOwn || decode_table(page) != nullptr ? page : *find_code_page(kAscii);
}

Decoding::Decoding(unsigned int codePage, const char* source, int length)
    : Decoding(page_of(codePage, length), source, length) {}

Decoding::Decoding(const CodePage* page, const char* source, int length)
    : page_(page), source_(source), length_(length) {
    if (page_ == nullptr) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    if (page_->grouping == Grouping::Utf8) {
        MeasureUtf8(count);
    } else if (is_own_single(*page_)) {
        isPlain_ = page_->number == kLatin1;
        size_ = length;
    } else if (const DecodeTable* table = decode_table(*page_)) {
        size_ = to_size(table->isStreamed ? stream_decode(page_->converter, source, count, nullptr)
                                          : table_decoded_size(*table, source, count));
    }
}

void Decoding::MeasureUtf8(std::size_t count) {
    const std::size_t ascii = ascii_run(source_, count);
    if (ascii == count) {
        isPlain_ = true;
        size_ = length_;
    } else if (length_ <= kBrief) {
        isBrief_ = true;
        size_ = static_cast<int>(utf8_decode_once(source_, count, brief_));
    } else {
        const Utf8Measure measure = utf8_measure(source_, count, ascii);
        isWellFormed_ = measure.isWellFormed;
        size_ = to_size(measure.units);
    }
}

int Decoding::Write(char16_t* destination) const {
    if (size_ == 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(length_);
    if (isPlain_) {
        transfer(source_, count, destination);
    } else if (isBrief_) {
        std::copy_n(brief_, size_, destination);
    } else if (page_->grouping == Grouping::Utf8) {
        utf8_decode(source_, count, {static_cast<std::size_t>(size_), isWellFormed_}, destination);
    } else if (page_->number == kAscii) {
        decode_ascii(source_, count, destination);
    } else if (const DecodeTable* table = decode_table(*page_); table->isStreamed) {
        stream_decode(page_->converter, source_, count, destination);
    } else {
        table_decode(*table, source_, count, destination, static_cast<std::size_t>(size_));
    }
    return size_;
}

Encoding::Encoding(unsigned int codePage, const char16_t* source, int length)
    : Encoding(page_of(codePage, length), source, length) {}

Encoding::Encoding(const CodePage* page, const char16_t* source, int length)
    : page_(page), source_(source), length_(length) {
    if (page_ == nullptr) {
        return;
    }
    const auto count = static_cast<std::size_t>(length);
    if (page_->grouping == Grouping::Utf8) {
        MeasureUtf8(count);
    } else if (is_own_single(*page_)) {
        size_ = to_size(count - count_surrogate_pairs(source, count));
    } else if (const EncodeTable* table = encode_table(*page_)) {
        size_ = to_size(table->isStreamed ? stream_encode(page_->converter, source, count, nullptr)
                                          : table_encoded_size(*table, source, count));
    }
}

void Encoding::MeasureUtf8(std::size_t count) {
    const std::size_t ascii = ascii_run(source_, count);
    if (ascii == count) {
        isPlain_ = true;
        size_ = length_;
    } else if (length_ <= kBrief) {
        isBrief_ = true;
        size_ = static_cast<int>(utf8_encode_once(source_, count, brief_));
    } else {
        size_ = to_size(utf8_size(source_, count, ascii));
    }
}

int Encoding::Write(char* destination) const {
    if (size_ == 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(length_);
    const auto size = static_cast<std::size_t>(size_);
    if (isPlain_) {
        transfer(source_, count, destination);
    } else if (isBrief_) {
        std::copy_n(brief_, size_, destination);
    } else if (page_->grouping == Grouping::Utf8) {
        utf8_encode(source_, count, destination, size);
    } else if (is_own_single(*page_)) {
        encode_own_single(source_, count, own_limit(*page_), destination, size);
    } else if (const EncodeTable* table = encode_table(*page_); table->isStreamed) {
        stream_encode(page_->converter, source_, count, destination);
    } else {
        table_encode(*table, source_, count, destination, size);
    }
    return size_;
}

int MultiByteToWideChar(unsigned int codePage, const char* source, int length,
                        char16_t* destination, int destinationSize) {
    const Decoding decoding(codePage, source, length);
    if (destinationSize == 0) {
        return decoding.Size();
    }
    return decoding.Size() <= destinationSize ? decoding.Write(destination) : 0;
}

int WideCharToMultiByte(unsigned int codePage, const char16_t* source, int length,
                        char* destination, int destinationSize) {
    const Encoding encoding(codePage, source, length);
    if (destinationSize == 0) {
        return encoding.Size();
    }
    return encoding.Size() <= destinationSize ? encoding.Write(destination) : 0;
}

}  // namespace platform
