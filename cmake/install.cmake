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
# The two chief headers, bx.h for programs and kv.h for tests, and what they include; the other headers are ours.
function(benchex_install_headers)
  set(waiting bx.h kv.h)
  set(known ${waiting})
  while(waiting)
    list(POP_FRONT waiting header)
    foreach(root api/src binding)
      if(EXISTS "${benchex_SOURCE_DIR}/${root}/${header}")
        get_filename_component(folder "${header}" DIRECTORY)
        install(FILES "${benchex_SOURCE_DIR}/${root}/${header}" DESTINATION "${benchex_include_dir}/${folder}")
        file(STRINGS "${benchex_SOURCE_DIR}/${root}/${header}" lines REGEX "^#include \"")
        foreach(line IN LISTS lines)
          string(REGEX REPLACE ".*\"(.*)\".*" "\\1" included "${line}")
          if(NOT included IN_LIST known)
            list(APPEND known "${included}")
            list(APPEND waiting "${included}")
          endif()
        endforeach()
      endif()
    endforeach()
  endwhile()
endfunction()
benchex_install_headers()
install(DIRECTORY zor/include/ DESTINATION "${benchex_include_dir}" FILES_MATCHING PATTERN "*.h")

file(GLOB documents CONFIGURE_DEPENDS "${benchex_SOURCE_DIR}/docs/*.md")
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(PROGRAMS tools/fleet/slices.sh tools/fleet/run_slice.sh tools/fleet/run_parallel.sh
  tools/fleet/slurm-array.sh tools/fleet/collect.py DESTINATION "${CMAKE_INSTALL_DATADIR}/benchex/fleet")

include(cmake/package.cmake)
