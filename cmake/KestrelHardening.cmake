# SPDX-License-Identifier: Apache-2.0
# How what is installed resists attacks; scripts/hardening checks it. Of these targets
#   kestrel_hardened_code          is for objects, whatever they are linked into
#   kestrel_hardened_program_code  is for objects of programs
#   kestrel_hardened_library       is for libraries that are installed
#   kestrel_hardened_program       is for programs that are installed
# The first two say nothing to the linker, because tests link the same objects in their own way.
include(CheckLinkerFlag)

add_library(kestrel_hardened_code INTERFACE)
target_compile_options(kestrel_hardened_code INTERFACE -fstack-protector-strong)

# Checks of the C library's calls need an optimiser, and sanitizers know the plain names alone. The
# library and what the board preloads do without: the reasons are beside their options.
add_library(kestrel_hardened_program_code INTERFACE)
target_link_libraries(kestrel_hardened_program_code INTERFACE kestrel_hardened_code)
target_compile_options(kestrel_hardened_program_code INTERFACE -fPIE)
if(NOT KESTREL_SANITIZE)
  target_compile_options(kestrel_hardened_program_code INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
endif()

set(hardened_link -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
add_library(kestrel_hardened_library INTERFACE)
target_link_options(kestrel_hardened_library INTERFACE ${hardened_link})
add_library(kestrel_hardened_program INTERFACE)
target_link_libraries(kestrel_hardened_program INTERFACE kestrel_hardened_program_code)
target_link_options(kestrel_hardened_program INTERFACE ${hardened_link} -pie)

# Marks of where jumps and returns may lead. The linker notes them in a file when all that it links has
# them, which Debian's start files (crt1.o, crti.o) and libwpa_client have not.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
  target_compile_options(kestrel_hardened_code INTERFACE -fcf-protection=full)
  # Returns go to where calls came from even in code without marks, so the shadow stack may be on.
  check_linker_flag(CXX -Wl,-z,shstk KESTREL_LINKER_NOTES_SHADOW_STACK)
  if(KESTREL_LINKER_NOTES_SHADOW_STACK)
    target_link_options(kestrel_hardened_library INTERFACE -Wl,-z,shstk)
    target_link_options(kestrel_hardened_program INTERFACE -Wl,-z,shstk)
  endif()
  # Of crti.o a library needs nothing: its _init and _fini, which have no marks, only serve profilers.
  # Without them every target of a jump has its mark. A program begins in crt1.o, so it cannot say so.
  check_linker_flag(CXX -Wl,-z,ibt KESTREL_LINKER_NOTES_JUMP_TARGETS)
  if(KESTREL_LINKER_NOTES_JUMP_TARGETS AND NOT KESTREL_SANITIZE)
    target_link_options(kestrel_hardened_library INTERFACE
      -Wl,-z,ibt -Wl,-init=kestrel_none -Wl,-fini=kestrel_none)
  endif()
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  # The start files of a library, whose functions run when it is loaded, have no marks here.
  target_compile_options(kestrel_hardened_code INTERFACE -mbranch-protection=standard)
endif()
