// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_COMMON_FOLDER_H
#define KESTREL_BOARD_HOST_COMMON_FOLDER_H

#include <string>

#include "host/unique_fd.h"

namespace kestrel::board {

/// The folder in which the boards of a user lie: $KESTREL_BOARD_DIR, kestrel-board under
/// $XDG_RUNTIME_DIR, or /tmp/kestrel-board-UID.
std::string CommonFolder();

/// Whether the user has chosen it. Such a folder stays when the last board has gone.
bool IsCommonFolderChosen();

/// Opens it; invalid where it does not exist. Throws BoardError unless this user owns it and nobody
/// else can write to it: whoever can may put an object there that programs on a board preload.
UniqueFd OpenCommonFolder();

/// The same after making it where it does not exist; invalid only if somebody removes it meanwhile.
UniqueFd MakeCommonFolder();

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_COMMON_FOLDER_H
