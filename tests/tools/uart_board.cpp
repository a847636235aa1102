// SPDX-License-Identifier: Apache-2.0
#include "uart_board.h"

#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

namespace kestrel::test {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

Words UartBoard::Uart(const Words& arguments) const {
  Words command = {KESTRELCTL, "uart"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Exec(command);
}

bool UartBoard::WaitUntilOpen(int port) const {
  const auto deadline = Clock::now() + std::chrono::seconds(20);
  while (Clock::now() < deadline) {
    const json ports = json::parse(Board({"show", "--json"})).at("uart").at("ports");
    if (ports.at(static_cast<size_t>(port)).at("open").get<bool>()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

Words UartBoard::HoldOpen(int port) const {
  // Its standard input is both ends of a pipe, and so never ends.
  return Exec(
      {"bash", "-c", R"(exec "$0" uart "$1" --send - <> <(:))", KESTRELCTL, std::to_string(port)});
}

void UartBoard::Send(int port, const std::string& text) const {
  const TemporaryDirectory folder;
  EXPECT_THAT(RunProgram(Uart({std::to_string(port), "--send", folder.Write("text", text)})),
              Ends(0, "", ""));
}

}  // namespace kestrel::test
