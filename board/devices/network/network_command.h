// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_NETWORK_NETWORK_COMMAND_H
#define KESTREL_BOARD_DEVICES_NETWORK_NETWORK_COMMAND_H

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

namespace CLI {
class App;
}

namespace kestrel::board {
class CommandContext;
}

namespace kestrel::board::network {

inline constexpr char kDeviceName[] = "network";

/// Prints the state of networking and the status file's bytes.
void PrintState(const nlohmann::json& state, std::ostream& out);

/// Adds `kestrel-board network`.
void AddNetworkCommand(CLI::App& app, const CommandContext& context);

}  // namespace kestrel::board::network

#endif  // KESTREL_BOARD_DEVICES_NETWORK_NETWORK_COMMAND_H
