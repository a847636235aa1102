// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_PEER_H
#define KESTREL_RELAY_PEER_H

#include <sys/types.h>

#include <string>

namespace kestrel::relay {

/// Who connected, as the kernel tells it.
struct Peer {
  pid_t process = 0;
  uid_t user = static_cast<uid_t>(-1);

  /// Of the process at the other end of a connection; all unknown ones are the same.
  static Peer Of(int connection);

  /// As the log calls it.
  std::string Name() const;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_PEER_H
