// SPDX-License-Identifier: Apache-2.0
#include "uart_board.h"

#include <gtest/gtest.h>

namespace kestrel::test {

using nlohmann::json;

Words UartBoard::Uart(const Words& arguments) const {
  Words command = {KESTRELCTL, "uart"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Exec(command);
}

json UartBoard::Port(int port) const {
  const json ports = json::parse(Board({"show", "--json"})).at("uart").at("ports");
  return ports.at(static_cast<size_t>(port));
}

bool UartBoard::WaitUntilOpen(int port) const {
  return ComesTrue([&] { return Port(port).at("open").get<bool>(); });
}

bool UartBoard::WaitForBytesTo(int port, uint64_t count) const {
  return ComesTrue([&] { return Port(port).at("in").get<uint64_t>() >= count; });
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
