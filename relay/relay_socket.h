// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_RELAY_SOCKET_H
#define KESTREL_RELAY_RELAY_SOCKET_H

#include <sys/types.h>

#include <string>

#include "host/unique_fd.h"
#include "path_lock.h"

namespace kestrel::relay {

/// The socket where programs connect, removed at the end. From the first moment on it has the mode
/// and the group that it is to have.
class RelaySocket {
 public:
  /// What a relay that was killed left at the path is replaced; anything else that is there is left
  /// alone. An empty group is the process's own. Throws BoardError.
  RelaySocket(const std::string& path, mode_t mode, const std::string& group);
  ~RelaySocket();
  RelaySocket(const RelaySocket&) = delete;
  RelaySocket& operator=(const RelaySocket&) = delete;

  int descriptor() const { return listener_.get(); }

 private:
  std::string path_;
  PathLock lock_;
  board::UniqueFd listener_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_RELAY_SOCKET_H
