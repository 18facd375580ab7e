include(CMakePackageConfigHelpers)

set(KELM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kelm)
set(KELM_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS kelm EXPORT kelm)
install(FILES include/Kelm.h TYPE INCLUDE)

# The library needs no other package, so its targets are the whole configuration.
install(EXPORT kelm FILE KelmConfig.cmake NAMESPACE kelm:: DESTINATION ${KELM_CMAKE_DIR})
write_basic_package_version_file(KelmConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KelmConfigVersion.cmake DESTINATION ${KELM_CMAKE_DIR})

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY
    ${CMAKE_INSTALL_PREFIX}/${KELM_PKGCONFIG_DIR} OUTPUT_VARIABLE KELM_PREFIX_FROM_PC)
configure_file(cmake/kelm.pc.in kelm.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kelm.pc DESTINATION ${KELM_PKGCONFIG_DIR})
