add_library(kelm_warnings INTERFACE)
target_compile_options(kelm_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${KELM_WERROR}>:-Werror>)

# What a delivered library is built with: direct calls inside it, and the usual hardening.
add_library(kelm_delivery INTERFACE)
target_compile_options(kelm_delivery INTERFACE -fno-semantic-interposition -fstack-protector-strong
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
target_link_options(kelm_delivery INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack -Wl,--no-undefined-version)
