// The bytes are a program that runs on a class and on its model.

#include <cstdint>

#include "program.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Require(programs::run(data, size));
    return 0;
}
