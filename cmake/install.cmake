# Installation: programs, libraries, headers and the package file, so that find_package(benchex) works; and a
# Debian package through CPack.
include(CMakePackageConfigHelpers)

set(benchex_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/benchex")
install(TARGETS benchex RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS zortypes zorcore zors zorac zordc bxapi bxmain kvbinding zoracsuite
  EXPORT benchex-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  OBJECTS DESTINATION "${CMAKE_INSTALL_LIBDIR}/benchex")
install(EXPORT benchex-targets NAMESPACE benchex:: DESTINATION "${benchex_package_dir}")

configure_package_config_file(cmake/benchex-config.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/benchex-config.cmake"
  INSTALL_DESTINATION "${benchex_package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/benchex-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/benchex-config.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/benchex-config-version.cmake" DESTINATION "${benchex_package_dir}")

set(benchex_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/benchex")
install(DIRECTORY api/src/ DESTINATION "${benchex_include_dir}" FILES_MATCHING PATTERN "*.h")
install(DIRECTORY binding/ DESTINATION "${benchex_include_dir}" FILES_MATCHING PATTERN "*.h")
install(DIRECTORY zor/include/ DESTINATION "${benchex_include_dir}" FILES_MATCHING PATTERN "*.h")
install(FILES README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME benchex)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The Benchex maintainers <maintainers@benchex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
