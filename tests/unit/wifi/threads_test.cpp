// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "support/eight_threads.h"
#include "unit/wifi/recorded_reply.h"
#include "wifi/control_client.h"
#include "wifi/wifi_context.h"

#include <gtest/gtest.h>

namespace kestrel::test {
namespace {

/// A daemon that answers every command with the command itself, or refuses those that ask for it,
/// until the connection ends.
class EchoingDaemon {
 public:
  EchoingDaemon() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
      abort();
    }
    client_end_ = ends[0];
    thread_ = std::thread(Serve, ends[1]);
  }
  ~EchoingDaemon() { thread_.join(); }
  EchoingDaemon(const EchoingDaemon&) = delete;
  EchoingDaemon& operator=(const EchoingDaemon&) = delete;

  int client_end() const { return client_end_; }

 private:
  static void Serve(int daemon_end) {
    char command[256];
    while (recv(daemon_end, command, sizeof command, 0) > 0) {
      const std::string text(command);
      const std::string reply = text.rfind("REFUSE", 0) == 0 ? "FAIL\n" : text;
      send(daemon_end, reply.data(), reply.size(), MSG_NOSIGNAL);
    }
    close(daemon_end);
  }

  int client_end_ = -1;
  std::thread thread_;
};

TEST(ClientThreads, GetTheRepliesToTheirOwnCommands) {
  EchoingDaemon daemon;
  auto ipc = eastl::make_shared<vestaipc::IpcClient>();
  ipc->fd = daemon.client_end();
  wifi::WifiControlClient client(std::move(ipc));
  std::atomic<int> wrong{0};
  OnEightThreads([&](size_t thread) {
    for (int i = 0; i < 500; ++i) {
      const std::string command = std::to_string(thread) + ' ' + std::to_string(i);
      const nwl::Expected<eastl::string> reply = client.Request(Text(command));
      const bool is_refused = !client.Request(Text("REFUSE " + command)).has_value();
      wrong += reply.has_value() && Plain(reply.value()) == command && is_refused ? 0 : 1;
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(ClientThreads, AllMeetTheEndOfTheConnection) {
  wifi::WifiControlClient client(eastl::make_shared<vestaipc::IpcClient>());
  {
    EchoingDaemon daemon;
    client.ipc->fd = daemon.client_end();
    shutdown(daemon.client_end(), SHUT_RDWR);
  }
  std::atomic<int> successes{0};
  OnEightThreads([&](size_t) {
    for (int i = 0; i < 100; ++i) {
      successes += client.Request("STATUS").has_value() ? 1 : 0;
    }
  });
  EXPECT_EQ(successes, 0);
  EXPECT_EQ(client.ipc->fd, -1);
}

}  // namespace
}  // namespace kestrel::test
