# SPDX-License-Identifier: Apache-2.0
include(GoogleTest)

# kestrel_add_test(NAME SOURCES file… [LIBRARIES target…] [LABEL label] [PREFIX text]
#                  [ENVIRONMENT change] [LAUNCHER program]
#                  [ON_BOARD [option…]])
#
# A GoogleTest program. Each of its tests becomes a ctest test with a process of its own, so that
# every test meets the library's singletons as a fresh program would. PREFIX tells programs with
# tests of the same names apart. ENVIRONMENT is a change as ctest's ENVIRONMENT_MODIFICATION has it,
# for tests that start no programs. LAUNCHER is given the program with its arguments to run. With ON_BOARD the program runs on a virtual board of its own,
# started with the given options of `kestrel-board run`.
function(kestrel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "ENVIRONMENT;LABEL;LAUNCHER;PREFIX" "SOURCES;LIBRARIES;ON_BOARD")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE
    ${arg_LIBRARIES} kestrel_test_support GTest::gmock_main kestrel_warnings kestrel_sanitizers)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_link_options(${name} PRIVATE -fno-lto)
  endif()
  if("ON_BOARD" IN_LIST ARGN)
    add_dependencies(${name} kestrel-board)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
      "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kestrel-board;run;${arg_ON_BOARD};--")
  endif()
  if(arg_LAUNCHER)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${arg_LAUNCHER}")
  endif()
  # One change alone: gtest_discover_tests would take a second for the name of a property.
  set(environment "")
  if(arg_ENVIRONMENT)
    set(environment ENVIRONMENT_MODIFICATION "${arg_ENVIRONMENT}")
  elseif(KESTREL_EMULATE)
    set(environment ENVIRONMENT_MODIFICATION "PATH=path_list_prepend:${KESTREL_EMULATION_TOOLS}")
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    # Values that have no printed form would put their bytes into the names.
    NO_PRETTY_VALUES
    DISCOVERY_TIMEOUT 60
    TEST_PREFIX "${arg_PREFIX}"
    PROPERTIES LABELS "${arg_LABEL}" ${environment})
endfunction()
