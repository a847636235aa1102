// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_TOOLS_UART_BOARD_H
#define KESTREL_TESTS_TOOLS_UART_BOARD_H

#include <nlohmann/json.hpp>
#include <string>

#include "on_board.h"

namespace kestrel::test {

/// A board whose ports 0 and 1 are joined by a cable, and whose port 2 answers itself.
class UartBoard : public SharedBoard {
 public:
  UartBoard() : SharedBoard({"--config", UART_BOARD_CONFIG}) {}

  /// The command `kestrelctl uart ARGUMENT…` on this board.
  Words Uart(const Words& arguments) const;
  /// What the board tells about a port.
  nlohmann::json Port(int port) const;
  /// Waits until a program has the port open, for what comes to a closed port is lost.
  bool WaitUntilOpen(int port) const;
  /// Waits until so many bytes have come to a port; false when 20 seconds pass first.
  bool WaitForBytesTo(int port, uint64_t count) const;
  /// The command of a program that has the port open and takes nothing from it, until it is killed.
  Words HoldOpen(int port) const;
  /// Sends a text over a port, which must succeed.
  void Send(int port, const std::string& text) const;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_TOOLS_UART_BOARD_H
