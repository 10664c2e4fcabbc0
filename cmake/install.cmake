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

file(GLOB documents CONFIGURE_DEPENDS "${benchex_SOURCE_DIR}/docs/*.md")
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(PROGRAMS tools/fleet/slices.sh tools/fleet/run_slice.sh tools/fleet/run_parallel.sh
  tools/fleet/slurm-array.sh tools/fleet/collect.py DESTINATION "${CMAKE_INSTALL_DATADIR}/benchex/fleet")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME benchex)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The Benchex maintainers <maintainers@benchex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_CURRENT_BINARY_DIR}/bin")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libjs-chart.js")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "parallel, python3")
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
