#include "single_bytes.h"

#include <ctype.h>

#include <algorithm>

namespace platform {

bool isspace(char byte) noexcept {
    return ByteClass::Space().Has(byte);
}

bool ispunct(char byte) noexcept {
    return ByteClass::Punctuation().Has(byte);
}

bool iscntrl(char byte) noexcept {
    return ByteClass::Control().Has(byte);
}

bool isdigit(char byte) noexcept {
    return ByteClass::Digit().Has(byte);
}

bool isalnum(char byte) noexcept {
    return ByteClass::AlNum().Has(byte);
}

bool isalpha(char byte) noexcept {
    return ByteClass::Alpha().Has(byte);
}

bool isupper(char byte) noexcept {
    return ByteClass::Upper().Has(byte);
}

bool islower(char byte) noexcept {
    return ByteClass::Lower().Has(byte);
}

char toupper(char byte) noexcept {
    return static_cast<char>((*__ctype_toupper_loc())[static_cast<unsigned char>(byte)]);
}

char tolower(char byte) noexcept {
    return static_cast<char>((*__ctype_tolower_loc())[static_cast<unsigned char>(byte)]);
}

ByteClass ByteClass::Space() noexcept {
    return {*__ctype_b_loc(), _ISspace};
}

ByteClass ByteClass::Punctuation() noexcept {
    return {*__ctype_b_loc(), _ISpunct};
}

ByteClass ByteClass::Control() noexcept {
    return {*__ctype_b_loc(), _IScntrl};
}

ByteClass ByteClass::Digit() noexcept {
    return {*__ctype_b_loc(), _ISdigit};
}

ByteClass ByteClass::AlNum() noexcept {
    return {*__ctype_b_loc(), _ISalnum};
}

ByteClass ByteClass::Alpha() noexcept {
    return {*__ctype_b_loc(), _ISalpha};
}

ByteClass ByteClass::Upper() noexcept {
    return {*__ctype_b_loc(), _ISupper};
}

ByteClass ByteClass::Lower() noexcept {
    return {*__ctype_b_loc(), _ISlower};
}

bool all_in_class(ByteClass members, const char* first, const char* last) noexcept {
    return std::all_of(first, last, [members](char byte) { return members.Has(byte); });
}

char* remove_class(ByteClass members, char* first, char* last) noexcept {
    // Every byte is stored and the end moves only behind those that stay: no branch to mispredict.
    char* end = first;
    for (; first != last; ++first) {
        const char byte = *first;
        *end = byte;
        end += members.Has(byte) ? 0 : 1;
    }
    return end;
}

}  // namespace platform
