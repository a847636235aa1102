# SPDX-License-Identifier: Apache-2.0
# The programs of another build, for tests of the library alone that need a board to run on.
if(NOT EXISTS "${KESTREL_PROGRAMS_FROM}/bin/kestrel-board")
  message(WARNING " The tests need programs of ${KESTREL_PROGRAMS_FROM}: build kestrel-board there.")
endif()
foreach(program kestrel-board kestrelctl kestrel-wifi-relay debug_log device_id gpio_blink uart_echo
    wait_for_network wifi_join)
  add_executable(${program} IMPORTED GLOBAL)
  set_target_properties(${program} PROPERTIES
    IMPORTED_LOCATION "${KESTREL_PROGRAMS_FROM}/bin/${program}")
endforeach()
