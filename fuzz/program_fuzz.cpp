// The bytes are a program that runs on a class and on its model.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "program.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string fault = programs::run(data, size);
    if (!fault.empty()) {
        std::fputs(fault.c_str(), stderr);
        std::abort();
    }
    return 0;
}
