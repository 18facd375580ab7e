#include "multibyte/single_bytes.h"

#include <ctype.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "lanes/byte_ranges.h"
#include "lanes/compaction.h"

namespace platform {
namespace {

constexpr std::ptrdiff_t kStep = sizeof(std::uint64_t);

// Long enough that taking the class apart does not show.
constexpr std::ptrdiff_t kLongText = 512;

bool take_ranges(ByteClass members, ByteRanges& ranges) {
    bool has[256];
    for (int byte = 0; byte < 256; ++byte) {
        has[byte] = members.Has(static_cast<char>(byte));
    }
    return ranges.Take(has);
}

}  // namespace

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
    for (; last - first >= kStep; first += kStep) {
        bool isAll = true;
        for (std::ptrdiff_t i = 0; i < kStep; ++i) {
            isAll &= members.Has(first[i]);
        }
        if (!isAll) {
            return false;
        }
    }
    return std::all_of(first, last, [members](char byte) { return members.Has(byte); });
}

char* remove_class(ByteClass members, char* first, char* last) noexcept {
    const auto isMember = [members](char byte) { return members.Has(byte); };
    char* hit = std::find_if(first, last, isMember);
    ByteRanges ranges;
    if (last - hit < kLongText || !take_ranges(members, ranges)) {
        return keep_each<char>(hit, last, hit, isMember);
    }
    return drop_hits(
        hit, last,
        [ranges](const char* p) {
            return ranges.Members(load_lanes(p)) |
                   ranges.Members(load_lanes(p + Lanes<char>::kCount)) << 16;
        },
        isMember);
}

}  // namespace platform
