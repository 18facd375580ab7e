#include "wide/blocks.h"

#include "lanes/page_loads.h"

namespace platform {

std::ptrdiff_t end_in_blocks(const char16_t* left, const char16_t* right,
                             std::ptrdiff_t blocks) noexcept {
    constexpr std::ptrdiff_t kLanes = Lanes<char16_t>::kCount;
    std::ptrdiff_t at = 0;
    for (; blocks > 0; --blocks, at += kBlockUnits) {
        Lanes<char16_t>::Vector ends{};
        for (std::ptrdiff_t i = 0; i < kBlockUnits; i += kLanes) {
            ends |= zero_lanes(load_common(left + at + i, right + at + i));
        }
        if (has_hit(ends)) {
            break;
        }
    }
    for (std::ptrdiff_t end = kLanes; blocks > 0 && end == kLanes; at += end) {
        end = end_in_vector(left + at, right + at);
    }
    return at;
}

}  // namespace platform
