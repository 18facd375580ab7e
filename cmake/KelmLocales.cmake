# The locales of the tests, made from the distribution's sources into the build folder; programs
# find them by LOCPATH.
set(KELM_LOCALE_DIR ${PROJECT_BINARY_DIR}/locales)
find_program(KELM_LOCALEDEF localedef REQUIRED)

set(kelm_locale_stamps)
function(kelm_add_locale name source charmap)
    set(stamp ${KELM_LOCALE_DIR}/${name}.stamp)
    # localedef exits with 1 for warnings alone (Shift_JIS has no backslash), so what counts is
    # whether the locale is there.
    add_custom_command(OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${KELM_LOCALE_DIR}
        COMMAND sh -c "${KELM_LOCALEDEF} --quiet --no-archive --force -i ${source} -f ${charmap} ${KELM_LOCALE_DIR}/${name} || test -f ${KELM_LOCALE_DIR}/${name}/LC_CTYPE"
        COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
        VERBATIM)
    list(APPEND kelm_locale_stamps ${stamp})
    set(kelm_locale_stamps ${kelm_locale_stamps} PARENT_SCOPE)
endfunction()

kelm_add_locale(en_US.UTF-8 en_US UTF-8)
kelm_add_locale(de_DE.UTF-8 de_DE UTF-8)
kelm_add_locale(tr_TR.UTF-8 tr_TR UTF-8)
kelm_add_locale(de_DE.ISO-8859-1 de_DE ISO-8859-1)
kelm_add_locale(tr_TR.ISO-8859-9 tr_TR ISO-8859-9)
kelm_add_locale(ja_JP.SHIFT_JIS ja_JP SHIFT_JIS)
kelm_add_locale(ja_JP.EUC-JP ja_JP EUC-JP)
kelm_add_locale(zh_CN.GBK zh_CN GBK)
kelm_add_locale(zh_CN.GB18030 zh_CN GB18030)
kelm_add_locale(zh_TW.BIG5 zh_TW BIG5)
kelm_add_locale(ko_KR.EUC-KR ko_KR EUC-KR)

add_custom_target(kelm_locales ALL DEPENDS ${kelm_locale_stamps})
