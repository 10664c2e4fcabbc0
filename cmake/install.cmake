# Installation: programs, libraries, headers and the package file, so that find_package(benchex) works; and the
# Debian package.
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

include(cmake/package.cmake)
