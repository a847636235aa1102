// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_WIFI_CONFIG_H
#define KESTREL_BOARD_DEVICES_WIFI_WIFI_CONFIG_H

#include <optional>
#include <string>
#include <vector>

#include "config/config_reader.h"
#include "devices/wifi/access_point.h"
#include "devices/wifi/daemon_socket.h"
#include "devices/wifi/reply_script.h"
#include "devices/wifi/supplicant.h"

namespace kestrel::board::wifi {

struct WifiConfig {
  DaemonSocket::Presence daemon = DaemonSocket::Presence::kListening;
  Durations durations;
  std::string ip_address;
  std::optional<std::string> networks_file;
  Air air;
  std::vector<ReplyRule> rules;
};

/// Reads the [wifi] table; throws ConfigError.
WifiConfig ReadWifiConfig(ConfigReader& reader);

/// What stands at the daemon's path, by the names that configuration and commands have for it.
const std::vector<std::string>& PresenceNames();
std::optional<DaemonSocket::Presence> PresenceOf(const std::string& name);
const std::string& NameOf(DaemonSocket::Presence presence);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_WIFI_CONFIG_H
