// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_UART_COMMAND_H
#define KESTREL_BOARD_DEVICES_UART_UART_COMMAND_H

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

namespace CLI {
class App;
}

namespace kestrel::board {
class CommandContext;
}

namespace kestrel::board::uart {

inline constexpr char kDeviceName[] = "uart";

/// Prints those of the ports with which something has been done.
void PrintState(const nlohmann::json& state, std::ostream& out);

/// Adds `kestrel-board uart`.
void AddUartCommand(CLI::App& app, const CommandContext& context);

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_UART_COMMAND_H
