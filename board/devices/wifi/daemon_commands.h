// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_DAEMON_COMMANDS_H
#define KESTREL_BOARD_DEVICES_WIFI_DAEMON_COMMANDS_H

#include <string>

#include "devices/wifi/network_store.h"
#include "devices/wifi/supplicant.h"

namespace kestrel::board::wifi {

/// The commands that programs send, with the replies that the daemon gives.
class DaemonCommands {
 public:
  /// `ip_address` is what a connection gets. Both must outlive it.
  DaemonCommands(Supplicant& supplicant, NetworkStore& store, std::string ip_address)
      : supplicant_(supplicant), store_(store), ip_address_(std::move(ip_address)) {}

  std::string Answer(const std::string& command);

 private:
  struct Command;
  static const Command* Find(const std::string& command);

  std::string Ping(const std::string& arguments);
  std::string Scan(const std::string& arguments);
  std::string ScanResults(const std::string& arguments);
  std::string Status(const std::string& arguments);
  std::string ListNetworks(const std::string& arguments);
  std::string AddNetwork(const std::string& arguments);
  std::string SetNetwork(const std::string& arguments);
  std::string GetNetwork(const std::string& arguments);
  std::string EnableNetwork(const std::string& arguments);
  std::string DisableNetwork(const std::string& arguments);
  std::string SelectNetwork(const std::string& arguments);
  std::string RemoveNetwork(const std::string& arguments);
  std::string SaveConfig(const std::string& arguments);
  std::string Reconfigure(const std::string& arguments);
  std::string Disconnect(const std::string& arguments);
  std::string Reconnect(const std::string& arguments);

  std::string Flags(const StoredNetwork& network) const;
  /// Does something with the network of that number, or with each of them.
  template <typename Action>
  std::string ForEach(const std::string& which, const char* all, Action action);

  Supplicant& supplicant_;
  NetworkStore& store_;
  std::string ip_address_;
};

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_DAEMON_COMMANDS_H
