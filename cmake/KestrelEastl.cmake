# SPDX-License-Identifier: Apache-2.0
# kestrel_containers: the eastl:: names, from an installed EASTL or from libs/eastl-std.
# KESTREL_EASTL_SUPPORT_SOURCES: what the library adds for an installed EASTL, else empty.

# kestrel_find_part(RESULT PACKAGE HEADER)
#
# Finds one of EASTL, EABase and EAStdC. RESULT becomes a target to link, or empty. A package that
# comes without CMake files gets a target kestrel_PACKAGE made from its header and library; EABase
# is headers alone.
function(kestrel_find_part result package header)
  find_package(${package} CONFIG QUIET)
  foreach(target ${package}::${package} ${package})
    if(TARGET ${target})
      set(${result} ${target} PARENT_SCOPE)
      return()
    endif()
  endforeach()

  # A search is skipped when its variable is set, so the variables have names of this project.
  set(found kestrel_${package})
  set(hints HINTS "${${package}_ROOT}" "$ENV{${package}_ROOT}" "${EASTL_ROOT}" "$ENV{EASTL_ROOT}")
  find_path(${found}_include_dir ${header} ${hints} PATH_SUFFIXES include include/Common NO_CACHE)
  find_library(${found}_library ${package} ${hints} PATH_SUFFIXES lib NO_CACHE)
  set(${result} "" PARENT_SCOPE)
  if(${found}_include_dir AND (${found}_library OR package STREQUAL EABase))
    add_library(${found} INTERFACE)
    target_include_directories(${found} SYSTEM INTERFACE "${${found}_include_dir}")
    if(${found}_library)
      target_link_libraries(${found} INTERFACE "${${found}_library}")
    endif()
    set(${result} ${found} PARENT_SCOPE)
  endif()
endfunction()

if(NOT KESTREL_EASTL MATCHES "^(auto|system|std)$")
  message(FATAL_ERROR " KESTREL_EASTL is \"${KESTREL_EASTL}\"; it can be auto, system or std.")
endif()

set(eastl "")
set(eabase "")
set(eastdc "")
if(NOT KESTREL_EASTL STREQUAL std)
  kestrel_find_part(eastl EASTL EASTL/string.h)
  kestrel_find_part(eabase EABase EABase/eabase.h)
  kestrel_find_part(eastdc EAStdC EAStdC/EASprintf.h)
endif()
# A package manager's target brings EABase along; headers found by themselves need it beside them.
if(eastl STREQUAL kestrel_EASTL AND NOT eabase)
  set(eastl "")
endif()
if(KESTREL_EASTL STREQUAL system AND NOT eastl)
  # The leading space keeps CMake from breaking the line.
  message(FATAL_ERROR " KESTREL_EASTL=system found no EASTL: install EASTL and EABase, set \
EASTL_ROOT or CMAKE_PREFIX_PATH to where they are, or take -DKESTREL_EASTL=std.")
endif()

add_library(kestrel_containers INTERFACE)
set(KESTREL_EASTL_SUPPORT_SOURCES "")
if(eastl)
  # Its warnings are not ours: neither those of its headers, nor those of an optimiser that finds code of
  # its headers inlined in ours, which no compiler takes for a system header's.
  foreach(part IN ITEMS ${eastl} ${eabase} ${eastdc})
    target_link_libraries(kestrel_containers INTERFACE ${part})
    target_include_directories(kestrel_containers SYSTEM INTERFACE
      $<TARGET_PROPERTY:${part},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
  foreach(warning array-bounds free-nonheap-object maybe-uninitialized nonnull restrict
      stringop-overflow stringop-overread uninitialized)
    target_compile_options(kestrel_containers INTERFACE
      $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-error=${warning}>)
  endforeach()
  set(KESTREL_EASTL_SUPPORT_SOURCES "${PROJECT_SOURCE_DIR}/src/core/eastl_support.cpp")
  if(eastdc)
    target_compile_definitions(kestrel_containers INTERFACE KESTREL_HAS_EASTDC)
    message(STATUS "Containers: the system's EASTL (${eastl}) with EAStdC (${eastdc})")
  else()
    message(STATUS "Containers: the system's EASTL (${eastl}), without EAStdC")
  endif()
else()
  target_include_directories(kestrel_containers INTERFACE
    "${PROJECT_SOURCE_DIR}/libs/eastl-std/include")
  message(STATUS "Containers: libs/eastl-std, over the C++ standard library")
endif()
