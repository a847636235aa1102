# SPDX-License-Identifier: Apache-2.0
# The target: ARMv7-A, Cortex-A7, hard-float, with Debian's cross compilers.
find_program(kestrel_cross_compiler arm-linux-gnueabihf-g++ NO_CACHE)
if(NOT kestrel_cross_compiler)
  # The leading space keeps CMake from breaking the line.
  message(FATAL_ERROR " There is no arm-linux-gnueabihf-g++: install Debian's cross compilers with \
apt-get install g++-arm-linux-gnueabihf")
endif()
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_FLAGS_INIT "-mcpu=cortex-a7 -mfpu=neon-vfpv4 -mfloat-abi=hard")
# All C++ code of a device comes from compilers of one age; notes on older ones help nobody.
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -Wno-psabi")
set(KESTREL_DEBIAN_ARCH armhf)
set(KESTREL_EMULATOR_NAMES qemu-arm-static qemu-arm)
set(KESTREL_EMULATED_CPU cortex-a7)
set(KESTREL_EMULATED_ROOT /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
