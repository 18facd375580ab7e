# The locales of the tests, made from the distribution's sources into the build folder; programs
# find them by LOCPATH. Build folders may share them, as the presets do.
set(KELM_LOCALE_DIR ${PROJECT_BINARY_DIR}/locales CACHE PATH "Where the locales are made")

set(kelm_locale_stamps)
function(kelm_add_locale name source charmap)
    set(locale ${KELM_LOCALE_DIR}/${name})
    add_custom_command(OUTPUT ${locale}.stamp VERBATIM
        COMMAND ${PROJECT_SOURCE_DIR}/cmake/make_locale.sh ${locale} ${source} ${charmap}
            ${CMAKE_CXX_BYTE_ORDER})
    list(APPEND kelm_locale_stamps ${locale}.stamp)
    set(kelm_locale_stamps ${kelm_locale_stamps} PARENT_SCOPE)
endfunction()

kelm_add_locale(en_US.UTF-8 en_US UTF-8)
kelm_add_locale(de_DE.UTF-8 de_DE UTF-8)
kelm_add_locale(tr_TR.UTF-8 tr_TR UTF-8)
kelm_add_locale(ps_AF.UTF-8 ps_AF UTF-8)
kelm_add_locale(de_DE.ISO-8859-1 de_DE ISO-8859-1)
kelm_add_locale(tr_TR.ISO-8859-9 tr_TR ISO-8859-9)
kelm_add_locale(en_US.ISO-8859-9 en_US ISO-8859-9)
kelm_add_locale(ja_JP.SHIFT_JIS ja_JP SHIFT_JIS)
kelm_add_locale(ja_JP.EUC-JP ja_JP EUC-JP)
kelm_add_locale(zh_CN.GBK zh_CN GBK)
kelm_add_locale(zh_CN.GB18030 zh_CN GB18030)
kelm_add_locale(zh_TW.BIG5 zh_TW BIG5)
kelm_add_locale(ko_KR.EUC-KR ko_KR EUC-KR)
kelm_add_locale(ka_GE.GEORGIAN-PS ka_GE GEORGIAN-PS)
kelm_add_locale(zh_TW.EUC-TW zh_TW EUC-TW)
kelm_add_locale(zh_HK.BIG5-HKSCS zh_HK BIG5-HKSCS)

add_custom_target(kelm_locales ALL DEPENDS ${kelm_locale_stamps})
