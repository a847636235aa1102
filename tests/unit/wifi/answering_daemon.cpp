// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/answering_daemon.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace kestrel::test {

AnsweringDaemon::AnsweringDaemon(std::function<std::string(const std::string&)> answer)
    : answer_(std::move(answer)) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    abort();
  }
  client_end_ = ends[0];
  thread_ = std::thread([this, daemon_end = ends[1]] { Serve(daemon_end); });
}

void AnsweringDaemon::Serve(int daemon_end) const {
  std::array<char, 256> command;
  while (recv(daemon_end, command.data(), command.size(), 0) > 0) {
    const std::string reply = answer_(command.data());
    send(daemon_end, reply.data(), reply.size(), MSG_NOSIGNAL);
  }
  close(daemon_end);
}

}  // namespace kestrel::test
