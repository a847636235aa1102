# SPDX-License-Identifier: Apache-2.0
# Says which emulator a build for the target would take, of those in the folder TOOLS.
include("${CMAKE_CURRENT_LIST_DIR}/../../cmake/armhf.cmake")
find_program(emulator NAMES ${KESTREL_EMULATOR_NAMES} PATHS "${TOOLS}" NO_DEFAULT_PATH NO_CACHE)
message("emulator: ${emulator}")
