# SPDX-License-Identifier: Apache-2.0
include(CheckLinkerFlag)
include(GoogleTest)

# After a line of the library, two dozen programs are linked anew: gold needs half of ld's time. It is
# part of binutils, or a package beside it. It knows no -z undefs, which sanitizers need.
if(CMAKE_BUILD_TYPE STREQUAL Debug AND NOT CMAKE_CROSSCOMPILING AND NOT KESTREL_SANITIZE)
  check_linker_flag(CXX -fuse-ld=gold KESTREL_HAS_GOLD)
endif()

# Which test programs a build has: those of the named labels (waits among them), and
#   optimised  those whose outcome depends on what the compiler's optimisation does
#   threads    those in which several threads run
# The others can be built by their names, and are not run. CONTRIBUTING.md has the table of what runs in
# which build, and why.
set(KESTREL_TESTS "abi;board;device;install;relay;tools;unit" CACHE STRING
  "Which tests are built and run: labels, optimised, threads")

# Builds them all; kestrel_tests_LABEL builds those of a label.
add_custom_target(kestrel_tests)

# kestrel_wants_test(RESULT LABEL OPTIMISED SOURCE…)
function(kestrel_wants_test result label optimised)
  set(kinds ${label})
  if(optimised)
    list(APPEND kinds optimised)
  endif()
  if("threads" IN_LIST KESTREL_TESTS)
    foreach(source IN LISTS ARGN)
      if(source MATCHES "^\\$<")
        continue()
      endif()
      cmake_path(ABSOLUTE_PATH source NORMALIZE)
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${source}")
      # Whoever only sleeps includes <thread> as well.
      file(STRINGS "${source}" starts_threads LIMIT_COUNT 1
        REGEX "std::thread[ >(]|std::async|pthread_create|OnThreads\\(")
      if(starts_threads)
        list(APPEND kinds threads)
      endif()
    endforeach()
  endif()
  set(${result} NO PARENT_SCOPE)
  foreach(kind IN LISTS kinds)
    if(kind IN_LIST KESTREL_TESTS)
      set(${result} YES PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

# kestrel_add_test(NAME SOURCES file… LABEL label [FAMILIES folder…] [LIBRARIES target…] [OPTIMISED]
#                  [PREFIX text] [ENVIRONMENT change] [LAUNCHER program]
#                  [ON_BOARD [option…]])
#
# A GoogleTest program. Each of its tests becomes a ctest test with a process of its own, so that
# every test meets the library's singletons as a fresh program would. FAMILIES links the objects of
# these folders of src/, so that a change in another one leaves the program as it is. OPTIMISED says
# that the outcome depends on what the compiler's optimisation does. PREFIX tells programs with tests
# of the same names apart. ENVIRONMENT is a change as ctest's ENVIRONMENT_MODIFICATION has it, for
# tests that start no programs. LAUNCHER is given the program with its arguments to run. With ON_BOARD
# the program runs on a virtual board of its own, started with the given options of
# `kestrel-board run`.
function(kestrel_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OPTIMISED" "ENVIRONMENT;LABEL;LAUNCHER;PREFIX"
    "FAMILIES;SOURCES;LIBRARIES;ON_BOARD")
  add_executable(${name} ${arg_SOURCES})
  if(arg_FAMILIES)
    list(JOIN arg_FAMILIES "|" families)
    target_sources(${name} PRIVATE
      "$<FILTER:$<TARGET_OBJECTS:kestrel_objects>,INCLUDE,/(${families})/[^/]+$>")
    target_include_directories(${name} PRIVATE
      $<TARGET_PROPERTY:kestrel_objects,INTERFACE_INCLUDE_DIRECTORIES>)
    target_link_libraries(${name} PRIVATE nwl_objects kestrel_containers Threads::Threads)
  endif()
  target_link_libraries(${name} PRIVATE
    ${arg_LIBRARIES} kestrel_test_support GTest::gmock_main kestrel_warnings kestrel_sanitizers)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_link_options(${name} PRIVATE -fno-lto)
  endif()
  if(KESTREL_HAS_GOLD)
    target_link_options(${name} PRIVATE -fuse-ld=gold)
  endif()
  # A board loads what it plays with into the programs on it, and that needs the shared C++ library.
  if(NOT "ON_BOARD" IN_LIST ARGN AND NOT "Kestrel::kestrel" IN_LIST ARGN)
    target_link_libraries(${name} PRIVATE kestrel_quick_start)
  endif()
  if("ON_BOARD" IN_LIST ARGN)
    add_dependencies(${name} kestrel-board)
    set(programs "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    if(KESTREL_PROGRAMS_FROM)
      set(programs "${KESTREL_PROGRAMS_FROM}/bin")
    endif()
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
      "${programs}/kestrel-board;run;${arg_ON_BOARD};--")
  endif()
  if(arg_LAUNCHER)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${arg_LAUNCHER}")
  endif()
  kestrel_wants_test(wanted "${arg_LABEL}" "${arg_OPTIMISED}" ${arg_SOURCES})
  if(NOT wanted)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  add_dependencies(kestrel_tests ${name})
  if(NOT TARGET kestrel_tests_${arg_LABEL})
    add_custom_target(kestrel_tests_${arg_LABEL})
  endif()
  add_dependencies(kestrel_tests_${arg_LABEL} ${name})
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
