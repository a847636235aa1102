// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/scripted_daemon.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

namespace kestrel::test {

ScriptedDaemon::ScriptedDaemon() {
  int ends[2];
  const int room = 400000;
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0 ||
      setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &room, sizeof room) != 0) {
    abort();
  }
  client_end_ = ends[0];
  daemon_end_ = ends[1];
}

ScriptedDaemon::~ScriptedDaemon() { Leave(); }

void ScriptedDaemon::Expect(const Script& script) {
  // Makes room: commands that nobody takes fill the connection.
  Received();
  for (const auto& [command, reply] : script) {
    expected_.push_back(command + '\0');
    const ssize_t size = static_cast<ssize_t>(reply.size());
    if (send(daemon_end_, reply.data(), reply.size(), MSG_DONTWAIT) != size) {
      abort();
    }
  }
}

void ScriptedDaemon::ExpectAndDie(const std::string& command) {
  expected_.push_back(command + '\0');
  shutdown(daemon_end_, SHUT_WR);
}

void ScriptedDaemon::Leave() {
  if (daemon_end_ >= 0) {
    close(daemon_end_);
    daemon_end_ = -1;
  }
}

const std::vector<std::string>& ScriptedDaemon::Received() {
  char command[4096];
  ssize_t size = 0;
  while ((size = recv(daemon_end_, command, sizeof command, MSG_DONTWAIT)) > 0) {
    received_.emplace_back(command, static_cast<size_t>(size));
  }
  return received_;
}

}  // namespace kestrel::test
