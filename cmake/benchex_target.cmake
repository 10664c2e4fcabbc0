# What every target of the tree has in common: language level, warnings, one folder for programs and shared
# libraries (so that a program finds the libraries beside it).
set(benchex_warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  list(APPEND benchex_warnings -Wno-sign-conversion)
endif()
if(BENCHEX_WERROR)
  list(APPEND benchex_warnings -Werror)
endif()

function(benchex_target target)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON
    RUNTIME_OUTPUT_DIRECTORY "${benchex_BINARY_DIR}/bin"
    LIBRARY_OUTPUT_DIRECTORY "${benchex_BINARY_DIR}/bin"
    ARCHIVE_OUTPUT_DIRECTORY "${benchex_BINARY_DIR}/lib"
    # The same before and after installation, and without the build's folder: a build id then depends on neither.
    BUILD_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}"
    BUILD_RPATH_USE_ORIGIN ON
    INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  target_compile_features(${target} PUBLIC cxx_std_20)
  # Sources name themselves by their path in the tree, whatever folder the tree is built in.
  target_compile_options(${target} PRIVATE ${benchex_warnings} "-ffile-prefix-map=${benchex_SOURCE_DIR}/=")
endfunction()
