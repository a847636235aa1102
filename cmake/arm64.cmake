# SPDX-License-Identifier: Apache-2.0
# Hosts with 64-bit ARM, with Debian's cross compilers.
find_program(kestrel_cross_compiler aarch64-linux-gnu-g++ NO_CACHE)
if(NOT kestrel_cross_compiler)
  # The leading space keeps CMake from breaking the line.
  message(FATAL_ERROR " There is no aarch64-linux-gnu-g++: install Debian's cross compilers with \
apt-get install g++-aarch64-linux-gnu")
endif()
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(KESTREL_DEBIAN_ARCH arm64)
set(KESTREL_EMULATOR_NAMES qemu-aarch64-static qemu-aarch64)
set(KESTREL_EMULATED_CPU cortex-a53)
set(KESTREL_EMULATED_ROOT /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
