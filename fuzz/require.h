#pragma once

#include <cstdlib>

namespace fuzz {

inline void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace fuzz
