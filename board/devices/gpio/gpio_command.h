// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_GPIO_COMMAND_H
#define KESTREL_BOARD_DEVICES_GPIO_GPIO_COMMAND_H

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

namespace CLI {
class App;
}

namespace kestrel::board {
class CommandContext;
}

namespace kestrel::board::gpio {

inline constexpr char kDeviceName[] = "gpio";

/// Prints the chip and those of its lines that are not idle inputs.
void PrintState(const nlohmann::json& state, std::ostream& out);

/// Adds `kestrel-board line`.
void AddLineCommand(CLI::App& app, const CommandContext& context);

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_GPIO_COMMAND_H
