# 32-bit x86 Linux, built with the multilib compiler of an x86-64 machine. Arithmetic on double uses SSE2,
# so that figures and fills are the same as on x86-64.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(BENCHEX_X86 ON)

find_program(BENCHEX_QEMU_I386 qemu-i386)
if(BENCHEX_QEMU_I386)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${BENCHEX_QEMU_I386};-cpu;max")
endif()
