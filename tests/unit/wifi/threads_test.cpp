// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>

#include <atomic>
#include <string>

#include "support/threads.h"
#include "unit/wifi/answering_daemon.h"
#include "unit/wifi/recorded_reply.h"
#include "wifi/control_client.h"
#include "wifi/wifi_context.h"

#include <gtest/gtest.h>

namespace kestrel::test {
namespace {

/// Answers every command with the command itself, or refuses those that ask for it.
std::string Echo(const std::string& command) {
  return command.rfind("REFUSE", 0) == 0 ? "FAIL\n" : command;
}

TEST(ClientThreads, GetTheRepliesToTheirOwnCommands) {
  AnsweringDaemon daemon(Echo);
  auto ipc = eastl::make_shared<vestaipc::IpcClient>();
  ipc->fd = daemon.client_end();
  wifi::WifiControlClient client(std::move(ipc));
  std::atomic<int> wrong{0};
  OnThreads(8, [&](size_t thread) {
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
    AnsweringDaemon daemon(Echo);
    client.ipc->fd = daemon.client_end();
    shutdown(daemon.client_end(), SHUT_RDWR);
  }
  std::atomic<int> successes{0};
  OnThreads(8, [&](size_t) {
    for (int i = 0; i < 100; ++i) {
      successes += client.Request("STATUS").has_value() ? 1 : 0;
    }
  });
  EXPECT_EQ(successes, 0);
  EXPECT_EQ(client.ipc->fd, -1);
}

}  // namespace
}  // namespace kestrel::test
