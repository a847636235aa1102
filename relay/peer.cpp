// SPDX-License-Identifier: Apache-2.0
#include "peer.h"

#include <sys/socket.h>

namespace kestrel::relay {

Peer Peer::Of(int connection) {
  ucred credentials{};
  socklen_t length = sizeof credentials;
  if (getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0) {
    return {};
  }
  return {credentials.pid, credentials.uid};
}

std::string Peer::Name() const {
  // A process of another namespace has no number here.
  return process > 0 ? "process " + std::to_string(process) : "a process";
}

}  // namespace kestrel::relay
