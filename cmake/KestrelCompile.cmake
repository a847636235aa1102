# SPDX-License-Identifier: Apache-2.0
# Compiler and linker settings: kestrel_warnings and kestrel_sanitizers for every target of the
# project, kestrel_ship for what is loaded on a device.

# The first of each with the whole of C++17 and its library. The leading space keeps CMake from
# breaking the line.
set(oldest_GNU 9)
set(oldest_Clang 10)
set(oldest ${oldest_${CMAKE_CXX_COMPILER_ID}})
if(oldest AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS oldest)
  message(FATAL_ERROR " ${CMAKE_CXX_COMPILER} is of version ${CMAKE_CXX_COMPILER_VERSION}, and the \
oldest that will do is ${oldest}: install a newer one (on Debian, apt-get install g++), or name it \
with -DCMAKE_CXX_COMPILER=...")
endif()

# A batch of sources fills GCC's memory so often that a tenth of its time goes into tidying up. It may
# fill half a GiB first, where several compilers at once have the room. Options are noted down in what
# is built, and packages must not depend on the memory of the machine: so this is for debug builds and
# tests alone.
set(KESTREL_BATCH_OPTIONS "")
cmake_host_system_information(RESULT memory_mib QUERY TOTAL_PHYSICAL_MEMORY)
if(CMAKE_UNITY_BUILD AND memory_mib GREATER 12000)
  set(KESTREL_BATCH_OPTIONS $<$<COMPILE_LANG_AND_ID:CXX,GNU>:--param=ggc-min-heapsize=524288>)
endif()
if(CMAKE_BUILD_TYPE STREQUAL Debug)
  add_compile_options(${KESTREL_BATCH_OPTIONS})
endif()

# Whether warnings are errors says CMAKE_COMPILE_WARNING_AS_ERROR. The presets of developers and of CI set
# it; others have compilers of which nobody here knows the warnings.
add_library(kestrel_warnings INTERFACE)
target_compile_options(kestrel_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wconversion
  # C has no overloads, so g++ and gcc spell the same warning differently.
  $<$<COMPILE_LANGUAGE:CXX>:-Wmissing-declarations>
  $<$<COMPILE_LANGUAGE:C>:-Wmissing-prototypes>)

add_library(kestrel_sanitizers INTERFACE)
if(KESTREL_SANITIZE)
  target_compile_options(kestrel_sanitizers INTERFACE
    -fsanitize=${KESTREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # Reports name lines. Debug builds have them, perhaps without variables, which -g would bring back.
    $<$<NOT:$<CONFIG:Debug>>:-g>)
  target_link_options(kestrel_sanitizers INTERFACE -fsanitize=${KESTREL_SANITIZE})
endif()

# For programs that tests start by the thousand: one that has the C++ library in it, and need not look up
# its names, starts in two thirds of the time. What loads libkestrel has to share the C++ library with it.
add_library(kestrel_quick_start INTERFACE)
if(NOT KESTREL_SANITIZE)
  target_link_options(kestrel_quick_start INTERFACE -static-libstdc++)
endif()

include(KestrelHardening)
add_library(kestrel_ship INTERFACE)
target_link_libraries(kestrel_ship INTERFACE kestrel_hardened_code)
target_compile_options(kestrel_ship INTERFACE
  -fvisibility=hidden -fvisibility-inlines-hidden
  -ffunction-sections -fdata-sections
  # For packages of debug symbols, and to tell the types of the interface.
  -g
  # Formats and addresses belong to the caller, and calls must leave under their plain names:
  # fortified variants check %n themselves and call __vfprintf_chk and the like.
  -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=0
  # Distributions set these for 32-bit machines; open would leave as open64.
  -U_FILE_OFFSET_BITS -U_TIME_BITS
  # What ships is optimised as a whole. Tests are linked with the same objects as they are.
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<NOT:$<CONFIG:Debug>>>:-flto;-ffat-lto-objects>
  # A unique symbol would pin the library in memory for good, and dlclose must unload it.
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
target_link_options(kestrel_ship INTERFACE
  -Wl,-z,defs -Wl,--as-needed -Wl,--gc-sections)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
  # The device has pages of 4 KiB; some linkers leave room for larger ones.
  target_link_options(kestrel_ship INTERFACE -Wl,-z,max-page-size=4096)
endif()
if(KESTREL_SANITIZE)
  # The sanitizers' own symbols are only there when the program starts.
  target_link_options(kestrel_ship INTERFACE -Wl,-z,undefs)
endif()
