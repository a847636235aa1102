// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_COMMAND_GROUPS_H
#define KESTREL_TOOLS_KESTRELCTL_COMMAND_GROUPS_H

#include <CLI/CLI.hpp>
#include <functional>

namespace kestrelctl {

/// What the arguments ask for: set by the command that they name, run once all have been checked.
/// Returns the exit status.
using Action = std::function<int()>;

// Each adds the commands of one family to the program; the table in command_line.cpp lists them.
void AddGpioCommands(CLI::App& program, Action& action);
void AddUartCommands(CLI::App& program, Action& action);
void AddNetworkingCommands(CLI::App& program, Action& action);
void AddWifiCommands(CLI::App& program, Action& action);
void AddManufacturingCommands(CLI::App& program, Action& action);
void AddLogCommands(CLI::App& program, Action& action);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_COMMAND_GROUPS_H
