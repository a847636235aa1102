# SPDX-License-Identifier: Apache-2.0
include(GoogleTest)

# kestrel_add_test(NAME SOURCES file… [LIBRARIES target…] [LABEL label] [ON_BOARD [option…]])
#
# A GoogleTest program. Each of its tests becomes a ctest test with a process of its own, so that
# every test meets the library's singletons as a fresh program would. With ON_BOARD the program runs
# on a virtual board of its own, started with the given options of `kestrel-board run`.
function(kestrel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL" "SOURCES;LIBRARIES;ON_BOARD")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE
    ${arg_LIBRARIES} kestrel_test_support GTest::gmock_main kestrel_warnings kestrel_sanitizers)
  if("ON_BOARD" IN_LIST ARGN)
    add_dependencies(${name} kestrel-board)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
      "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/kestrel-board;run;${arg_ON_BOARD};--")
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    # Values that have no printed form would put their bytes into the names.
    NO_PRETTY_VALUES
    DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${arg_LABEL}")
endfunction()
