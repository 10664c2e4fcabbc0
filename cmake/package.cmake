# Manual pages, change log and copyright as Debian has them, and the package through CPack. With SOURCE_DATE_EPOCH in
# the environment two builds of the same source in the same folder give the same package, bit by bit.
find_program(BENCHEX_GZIP gzip)
mark_as_advanced(BENCHEX_GZIP)

# Installs a file, compressed where there is gzip.
function(benchex_install_compressed file destination name)
  if(BENCHEX_GZIP)
    set(compressed "${CMAKE_CURRENT_BINARY_DIR}/compressed/${name}.gz")
    file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/compressed")
    execute_process(COMMAND "${BENCHEX_GZIP}" -9nc "${file}" OUTPUT_FILE "${compressed}" COMMAND_ERROR_IS_FATAL ANY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    install(FILES "${compressed}" DESTINATION "${destination}")
  else()
    install(FILES "${file}" DESTINATION "${destination}" RENAME "${name}")
  endif()
endfunction()

foreach(program benchex benchex-report benchex-compare benchex-explain benchex-new)
  if(TARGET ${program})
    benchex_install_compressed("${benchex_SOURCE_DIR}/docs/man/${program}.1" "${CMAKE_INSTALL_MANDIR}/man1" ${program}.1)
  endif()
endforeach()
benchex_install_compressed("${benchex_SOURCE_DIR}/cmake/debian/changelog" "${CMAKE_INSTALL_DOCDIR}" changelog)
install(FILES cmake/debian/copyright DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME benchex)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The Benchex maintainers <maintainers@benchex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "measure what the functions of a signal-processing library cost")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Benchex calls each function of a library many times, for every combination
of its parameters, and reports clocks per call and per element, microseconds
and MFlops. A crash in a tested function costs one test and not the run.
.
The package has the program with a reference library of audio-coding
functions, benchex-report (result tables as a page or JSON), benchex-compare
(did it get slower?), benchex-explain (what does a call execute?), benchex-new
(a test from a prototype), and headers and libraries for tests of other
libraries.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_CURRENT_BINARY_DIR}/bin")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libjs-chart.js")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "parallel, python3")
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${benchex_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
