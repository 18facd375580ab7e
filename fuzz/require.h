#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// Ends with the fault that was found, if one was.
inline void Require(const std::string& fault) {
    if (!fault.empty()) {
        std::fputs(fault.c_str(), stderr);
        std::abort();
    }
}

inline void Require(bool holds) {
    Require(holds ? std::string() : std::string("a condition fails"));
}

}  // namespace fuzz
