# Cross build for AArch64 Linux, run with qemu-aarch64.
#
# AARCH64_ROOT, a cache or environment variable, is the folder that fetch-arm64
# filled with the target's libraries; by default aarch64-root in the build
# folder.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

if(NOT AARCH64_ROOT)
  if(DEFINED ENV{AARCH64_ROOT})
    set(AARCH64_ROOT "$ENV{AARCH64_ROOT}")
  else()
    set(AARCH64_ROOT "${CMAKE_BINARY_DIR}/aarch64-root")
  endif()
endif()
get_filename_component(AARCH64_ROOT "${AARCH64_ROOT}" ABSOLUTE
  BASE_DIR "${CMAKE_BINARY_DIR}")
# CMake's own test builds have another build folder but read this file too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES AARCH64_ROOT)
if(NOT EXISTS "${AARCH64_ROOT}/usr/lib/aarch64-linux-gnu/libOpenCL.so")
  message(FATAL_ERROR
    "${AARCH64_ROOT} lacks the AArch64 libraries: fill it with fetch-arm64")
endif()

# Not a sysroot: the compiler brings its own C and C++ libraries to link with.
set(CMAKE_FIND_ROOT_PATH "${AARCH64_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${AARCH64_ROOT}")
