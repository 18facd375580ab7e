add_library(kelm_warnings INTERFACE)
target_compile_options(kelm_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${KELM_WERROR}>:-Werror>)
# Vectors pass between inline functions only, so it does not matter how a processor without vector
# registers would hand them over.
target_compile_options(kelm_warnings INTERFACE -Wno-psabi)
# The standard library's own stable sort uses what it declares as deprecated, and clang++ tells.
target_compile_options(kelm_warnings INTERFACE
    $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>)

# The whole tree is instrumented or none of it: a sanitizer misses what passes through plain code.
set(KELM_INSTRUMENT "" CACHE STRING "\"coverage\", or sanitizers as -fsanitize takes them")
if(KELM_INSTRUMENT STREQUAL "coverage")
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
elseif(KELM_INSTRUMENT)
    add_compile_options(-fsanitize=${KELM_INSTRUMENT} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KELM_INSTRUMENT})
endif()

# What a delivered library is built with: direct calls inside it, and the usual hardening. A
# sanitizer brings its own checks of the fortified functions and leaves its own names undefined.
add_library(kelm_delivery INTERFACE)
target_compile_options(kelm_delivery INTERFACE -fno-semantic-interposition -fno-plt -fstack-protector-strong
    -fstack-clash-protection $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_link_options(kelm_delivery INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack
    -Wl,-Bsymbolic-functions,--as-needed)
if(NOT KELM_INSTRUMENT)
    target_compile_options(kelm_delivery INTERFACE
        "$<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3;-D_GLIBCXX_ASSERTIONS>")
    target_link_options(kelm_delivery INTERFACE -Wl,-z,defs)
endif()

# Types and layouts can be read from the library then.
option(KELM_DEBUG_INFO "Build the library with debug information; the preset release does" OFF)
target_compile_options(kelm_delivery INTERFACE $<$<BOOL:${KELM_DEBUG_INFO}>:-g>)

# `operator new[]` may give null where a client has replaced it. The compilers assume it never does
# and would drop the test for it.
add_library(kelm_check_new INTERFACE)
target_compile_options(kelm_check_new INTERFACE
    $<IF:$<CXX_COMPILER_ID:GNU>,-fcheck-new,-fno-delete-null-pointer-checks>)

# Left to itself, g++ fills and copies some dozen to some hundred bytes of a known size by a string
# instruction, which on most processors takes longer to start than the C library's function to end.
add_library(kelm_small_blocks INTERFACE)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(kelm_small_blocks INTERFACE
        -mmemset-strategy=unrolled_loop:128:noalign,libcall:-1:noalign
        -mmemcpy-strategy=unrolled_loop:128:noalign,libcall:-1:noalign)
endif()
