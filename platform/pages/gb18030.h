#pragma once

#include <cstddef>

/// The sequences of four bytes of GB18030, which count through a mixed-radix number: those below
/// `kBmpCount` cover the rest of the BMP by a table, those from `kAstralStart` are U+10000 and up.
namespace platform::gb18030 {

inline constexpr unsigned int kNumber = 54936;
inline constexpr std::size_t kBmpCount = 39420;
inline constexpr std::size_t kAstralStart = 189000;

struct Four {
    unsigned char bytes[4];
};

constexpr Four four_at(std::size_t index) noexcept {
    return {{static_cast<unsigned char>(0x81 + index / 12600),
             static_cast<unsigned char>(0x30 + index / 1260 % 10),
             static_cast<unsigned char>(0x81 + index / 10 % 126),
             static_cast<unsigned char>(0x30 + index % 10)}};
}

constexpr bool is_lead(unsigned char byte) noexcept {
    return byte >= 0x81 && byte <= 0xFE;
}
constexpr bool is_digit(unsigned char byte) noexcept {
    return byte >= 0x30 && byte <= 0x39;
}

constexpr bool is_four(const Four& four) noexcept {
    return is_lead(four.bytes[0]) && is_digit(four.bytes[1]) && is_lead(four.bytes[2]) &&
           is_digit(four.bytes[3]);
}

constexpr std::size_t index_of(const Four& four) noexcept {
    const std::size_t pair = (four.bytes[0] - 0x81u) * 10 + (four.bytes[1] - 0x30u);
    return (pair * 126 + (four.bytes[2] - 0x81u)) * 10 + (four.bytes[3] - 0x30u);
}

}  // namespace platform::gb18030
