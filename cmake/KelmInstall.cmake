include(CMakePackageConfigHelpers)

set(KELM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kelm)
set(KELM_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS kelm EXPORT kelm)
install(FILES include/Kelm.h include/KelmStd.h include/KelmFmt.h include/KelmCheck.h include/KelmFormat.h
    TYPE INCLUDE)

# gdb loads what is named like the library and stands in this folder by the library's full path.
set(KELM_DEBUG ${CMAKE_CURRENT_SOURCE_DIR}/debug/kelm_debug.py)
install(FILES ${KELM_DEBUG} DESTINATION ${CMAKE_INSTALL_DATADIR}/kelm)
install(FILES ${KELM_DEBUG} RENAME libkelm.so.${PROJECT_VERSION}-gdb.py
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})

# The library needs no other package, so its targets are the whole configuration.
install(EXPORT kelm FILE KelmConfig.cmake NAMESPACE kelm:: DESTINATION ${KELM_CMAKE_DIR})
write_basic_package_version_file(KelmConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KelmConfigVersion.cmake DESTINATION ${KELM_CMAKE_DIR})

# By its own place where that is below the prefix, so that what was installed can be moved.
foreach(folder LIBDIR INCLUDEDIR)
    if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
        set(KELM_PC_${folder} ${CMAKE_INSTALL_${folder}})
    else()
        set(KELM_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(KELM_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY
        ${CMAKE_INSTALL_PREFIX}/${KELM_PKGCONFIG_DIR} OUTPUT_VARIABLE KELM_PC_PREFIX)
    set(KELM_PC_PREFIX "\${pcfiledir}/${KELM_PC_PREFIX}")
endif()
configure_file(cmake/kelm.pc.in kelm.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kelm.pc DESTINATION ${KELM_PKGCONFIG_DIR})
