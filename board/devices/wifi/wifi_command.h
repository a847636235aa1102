// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_WIFI_COMMAND_H
#define KESTREL_BOARD_DEVICES_WIFI_WIFI_COMMAND_H

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "devices/wifi/reply_script.h"

namespace CLI {
class App;
}

namespace kestrel::board {
class CommandContext;
}

namespace kestrel::board::wifi {

inline constexpr char kDeviceName[] = "wifi";

/// The request that gives the daemon a script.
nlohmann::json ScriptRequest(const std::vector<ReplyRule>& rules);

/// Prints access points, stored networks, clients and the last commands.
void PrintState(const nlohmann::json& state, std::ostream& out);

/// Adds `kestrel-board wifi`.
void AddWifiCommand(CLI::App& app, const CommandContext& context);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_WIFI_COMMAND_H
