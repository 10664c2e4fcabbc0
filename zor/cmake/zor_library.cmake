# zor_library(<target> <domain>...): a shared library of the sources in src/<domain>/, of the kernels in
# src/<domain>/kernels/ (compiled once per code path), and of its version record.
#
# Kernel sources find the path in ZOR_PATH (an enumerator of zor::CodePath). The portable objects come first
# in the link, so that a function template instantiated by several paths is taken from them.
set(zor_flags_portable -fno-tree-vectorize -fno-tree-slp-vectorize)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(zor_flags_portable -fno-vectorize -fno-slp-vectorize)
endif()
set(zor_flags_sse2 -msse2)
set(zor_flags_avx -mavx)
set(zor_flags_avx2 -mavx2 -mfma)

# Kernels whose arithmetic a standard fixes, or whose results round to integers that all paths have to share: they are
# compiled without contraction of multiply and add.
set(zor_exact_kernels aac/kernels/fdp_kernels.cpp aac/kernels/spectrum_kernels.cpp mp3/kernels/mdct_kernels.cpp)

function(zor_library target)
  set(sources "src/version/${target}.cpp")
  set(kernels)
  foreach(domain ${ARGN})
    file(GLOB domain_sources CONFIGURE_DEPENDS "src/${domain}/*.cpp")
    file(GLOB domain_kernels CONFIGURE_DEPENDS "src/${domain}/kernels/*.cpp")
    list(APPEND sources ${domain_sources})
    list(APPEND kernels ${domain_kernels})
  endforeach()
  foreach(kernel ${zor_exact_kernels})
    set_source_files_properties("src/${kernel}" PROPERTIES COMPILE_OPTIONS -ffp-contract=off)
  endforeach()
  set(objects)
  foreach(path portable sse2 avx avx2)
    if(kernels)
      add_library(${target}_${path} OBJECT ${kernels})
      benchex_target(${target}_${path})
      target_compile_definitions(${target}_${path} PRIVATE ZOR_PATH=zor::CodePath::${path} ZOR_BUILD)
      target_compile_options(${target}_${path} PRIVATE -O3 -fno-math-errno -fno-trapping-math
        -fvisibility=hidden -fvisibility-inlines-hidden ${zor_flags_${path}})
      target_include_directories(${target}_${path} PRIVATE "${PROJECT_SOURCE_DIR}/zor/src")
      target_link_libraries(${target}_${path} PUBLIC zortypes)
      list(APPEND objects $<TARGET_OBJECTS:${target}_${path}>)
    endif()
  endforeach()
  add_library(${target} SHARED ${sources} ${objects})
  benchex_target(${target})
  target_compile_definitions(${target} PRIVATE ZOR_BUILD)
  target_compile_options(${target} PRIVATE -O2 -fvisibility=hidden -fvisibility-inlines-hidden)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/zor/src")
  target_link_libraries(${target} PUBLIC zortypes)
  if(NOT target STREQUAL "zorcore")
    target_link_libraries(${target} PUBLIC zorcore)
  endif()
  add_library(benchex::${target} ALIAS ${target})
endfunction()
