# SPDX-License-Identifier: Apache-2.0
# Said before CMake looks for the compilers itself, because CMake does not tell what to install. The
# leading space keeps CMake from breaking the line.

# kestrel_require_compiler(LANGUAGE PACKAGE VARIABLE NAME...)
#
# VARIABLE is the environment's name for the compiler of the language, NAME... are its usual ones.
function(kestrel_require_compiler language package variable)
  if(CMAKE_${language}_COMPILER OR CMAKE_TOOLCHAIN_FILE OR NOT "$ENV{${variable}}" STREQUAL "")
    return()
  endif()
  find_program(kestrel_compiler NAMES ${ARGN} NO_CACHE)
  if(NOT kestrel_compiler)
    message(FATAL_ERROR " There is no compiler for ${language}: install one (on Debian, apt-get \
install ${package}), or name it with -DCMAKE_${language}_COMPILER=...")
  endif()
endfunction()

kestrel_require_compiler(C gcc CC cc gcc clang)
kestrel_require_compiler(CXX g++ CXX c++ g++ clang++)
