# SPDX-License-Identifier: Apache-2.0
# With KESTREL_EMULATE every program that is built for another machine starts like one of this machine: what lies
# in bin/ runs the program of that name in arm/ under user-mode emulation. Tests, and the programs
# that they start, need to know nothing of it.
option(KESTREL_EMULATE "Let the programs that are built for another machine run on this one" OFF)
if(NOT KESTREL_EMULATE)
  return()
endif()

find_program(KESTREL_EMULATOR NAMES ${KESTREL_EMULATOR_NAMES})
find_program(KESTREL_HOST_CC cc)
find_program(KESTREL_STATIC_BASH bash-static)
find_program(KESTREL_STATIC_TOOLS busybox)
foreach(tool KESTREL_EMULATOR KESTREL_HOST_CC KESTREL_STATIC_BASH KESTREL_STATIC_TOOLS)
  if(NOT ${tool})
    message(FATAL_ERROR " KESTREL_EMULATE needs more of this machine: apt-get install gcc libc6-dev \
qemu-user-static bash-static busybox-static (qemu-user will do as well)")
  endif()
endforeach()

set(launcher "${PROJECT_BINARY_DIR}/emulation/launch")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/emulation")
execute_process(
  COMMAND "${KESTREL_HOST_CC}" -static -O2
    "-DKESTREL_EMULATOR=\"${KESTREL_EMULATOR}\""
    "-DKESTREL_EMULATED_CPU=\"${KESTREL_EMULATED_CPU}\""
    "-DKESTREL_EMULATED_ROOT=\"${KESTREL_EMULATED_ROOT}\""
    "${PROJECT_SOURCE_DIR}/cmake/emulation/launch.c" -o "${launcher}"
  COMMAND_ERROR_IS_FATAL ANY)
# Shells on a board pass its preloaded object on, which this machine's own would try on themselves.
set(KESTREL_EMULATION_TOOLS "${PROJECT_BINARY_DIR}/emulation/tools")
file(MAKE_DIRECTORY "${KESTREL_EMULATION_TOOLS}")
file(CREATE_LINK "${KESTREL_STATIC_BASH}" "${KESTREL_EMULATION_TOOLS}/bash" SYMBOLIC)
foreach(tool sh cat head printf sleep sort timeout true)
  file(CREATE_LINK "${KESTREL_STATIC_TOOLS}" "${KESTREL_EMULATION_TOOLS}/${tool}" SYMBOLIC)
endforeach()

foreach(language C CXX)
  list(APPEND CMAKE_${language}_LINK_EXECUTABLE
    "\"${PROJECT_SOURCE_DIR}/cmake/emulation/place\" \"${launcher}\" <TARGET>")
endforeach()
