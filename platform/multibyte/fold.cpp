#include "multibyte/fold.h"

#include <wchar.h>

#include <array>
#include <climits>
#include <cstring>

#include "system_errors.h"

namespace platform {
namespace {

// The letters of both cases and what is between them. No locale may give a case to the rest of
// ASCII: digits, space, punctuation and controls.
constexpr std::size_t kFirst = 'A';
constexpr std::size_t kCount = 'z' + 1 - kFirst;

constexpr std::array<std::int32_t, kCount> usual_fold(char firstLetter) {
    std::array<std::int32_t, kCount> folded{};
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::size_t byte = kFirst + i;
        const bool isLetter = is_letter(static_cast<char>(byte), firstLetter);
        folded[i] = static_cast<std::int32_t>(isLetter ? byte ^ kCaseBit : byte);
    }
    return folded;
}

constexpr auto kUsualUpper = usual_fold('a');
constexpr auto kUsualLower = usual_fold('A');

wint_t decode(const char* p, std::size_t length) {
    const auto bits = [p](std::size_t i) { return static_cast<unsigned char>(p[i]); };
    wint_t value = bits(0) & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        value = value << 6 | (bits(i) & 0x3FU);
    }
    return value;
}

std::size_t encoded_length(wint_t value) {
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

// `length` is that of the value's encoding, more than 1.
void encode(wint_t value, char* p, std::size_t length) {
    for (std::size_t i = length - 1; i > 0; --i) {
        p[i] = static_cast<char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    p[0] = static_cast<char>((0xFF00U >> length & 0xFF) | value);
}

void fold_utf8_character(const Fold& fold, char* p, std::size_t length) {
    const wint_t value = decode(p, length);
    const wint_t folded = fold.Wide(value);
    if (folded != value && encoded_length(folded) == length) {
        encode(folded, p, length);
    }
}

void fold_by_locale(const Fold& fold, char* p, std::size_t length) {
    wchar_t value;
    mbstate_t state{};
    if (mbrtowc(&value, p, length, &state) != length) {
        return;
    }
    const wint_t folded = fold.Wide(static_cast<wint_t>(value));
    if (folded == static_cast<wint_t>(value)) {
        return;
    }
    char bytes[MB_LEN_MAX];
    state = {};
    if (wcrtomb(bytes, static_cast<wchar_t>(folded), &state) == length) {
        std::memcpy(p, bytes, length);
    }
}

void fold_locale_character(const Fold& fold, char* p, std::size_t length) {
    const ErrnoKeeper keeper;
    fold_by_locale(fold, p, length);
}

}  // namespace

bool Fold::IsUsualForAscii() const noexcept {
    const auto& usual = firstLetter_ == 'a' ? kUsualUpper : kUsualLower;
    return std::memcmp(bytes_ + kFirst, usual.data(), sizeof usual) == 0;
}

bool Fold::ReachesAscii() const noexcept {
    bool reaches = false;
    for (std::size_t byte = 0x80; byte < 0x100; ++byte) {
        reaches |= bytes_[byte] < 0x80;
    }
    return reaches;
}

void fold_character(const CodePage& page, const Fold& fold, char* p, std::size_t length) noexcept {
    if (length > 1) {
        page.grouping == Grouping::Utf8 ? fold_utf8_character(fold, p, length)
                                        : fold_locale_character(fold, p, length);
    } else if (static_cast<unsigned char>(*p) < 0x80) {
        *p = fold.Byte(*p);
    }
}

}  // namespace platform
