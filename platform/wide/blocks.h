#pragma once

#include <cstddef>
#include <cstdint>

/// The inner loop of comparing two terminated 16-bit texts.
namespace platform {

inline constexpr std::ptrdiff_t kBlockUnits = 64;

/// In bytes; blocks may lie anywhere, but those of a left text so aligned are gone through faster.
inline constexpr std::uintptr_t kBlockAlignment = 32;

/// Index of the first unit that differs or ends both texts, or all units of the blocks if there is
/// none. Looks at any unit of the blocks, also behind the end.
std::ptrdiff_t end_in_blocks(const char16_t* left, const char16_t* right,
                             std::ptrdiff_t blocks) noexcept;

}  // namespace platform
