// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PRELOAD_SURROUNDINGS_H
#define KESTREL_BOARD_PRELOAD_SURROUNDINGS_H

#include <sys/socket.h>
#include <sys/un.h>

namespace kestrel::board::preload {

/// What the environment said when the program started. A program may change or clear its
/// environment, and stays on its board all the same.
struct Surroundings {
  char socket_path[sizeof(sockaddr_un::sun_path)];  ///< empty when the program runs on no board
  char paths[4096];                                 ///< as wire::kPathsVariable
  char files[8192];                                 ///< as wire::kFilesVariable
};

const Surroundings& OurSurroundings();

inline bool IsOnBoard() { return *OurSurroundings().socket_path != '\0'; }

}  // namespace kestrel::board::preload

#endif  // KESTREL_BOARD_PRELOAD_SURROUNDINGS_H
