# Toolchain: aarch64 from an x86-64 machine, by Debian's cross compiler and the arm64 libraries that
# `scripts/setup --aarch64` puts into the user's cache folder. Programs run under qemu-aarch64.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(tolvik_cache "$ENV{XDG_CACHE_HOME}")
if(NOT tolvik_cache)
  set(tolvik_cache "$ENV{HOME}/.cache")
endif()
set(CMAKE_SYSROOT ${tolvik_cache}/tolvik/aarch64-sysroot)
if(NOT EXISTS ${CMAKE_SYSROOT}/packages)
  message(FATAL_ERROR "no arm64 libraries in ${CMAKE_SYSROOT}: run scripts/setup --aarch64")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${CMAKE_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
