// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_ACTIONS_H
#define KESTREL_TOOLS_KESTRELCTL_UART_ACTIONS_H

#include <optional>
#include <string>

#include "arguments.h"
#include "uart_port.h"
#include "uart_receiver.h"

namespace kestrelctl {

/// What goes over a port without anybody at the keyboard.
struct UartJob {
  std::optional<std::string> file;  ///< to be sent; "-" is standard input
  ReceiverPlan receiver;
  std::optional<Milliseconds> time;  ///< to receive
};

// Each does its work over a port, reports what fails, and returns the exit status.
int TalkOverUart(const UartSettings& settings, bool hex);
int TransferOverUart(const UartSettings& settings, const UartJob& job);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_ACTIONS_H
