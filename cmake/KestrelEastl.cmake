# SPDX-License-Identifier: Apache-2.0
# kestrel_containers: the eastl:: names, from EASTL where it is installed or from libs/eastl-std.
add_library(kestrel_containers INTERFACE)
target_include_directories(kestrel_containers INTERFACE "${PROJECT_SOURCE_DIR}/libs/eastl-std/include")
