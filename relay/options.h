// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_OPTIONS_H
#define KESTREL_RELAY_OPTIONS_H

#include <sys/types.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstddef>
#include <string>

namespace kestrel::relay {

/// What the relay is told on its command line.
struct Options {
  std::string socket_path = "/var/volatile/tmp/wlan0_request_socket";
  std::string supplicant_path = "/run/wpa_supplicant/wlan0";
  std::string client_folder = "/run/kestrel-wifi-relay";
  std::string mode = "0660";
  std::string group;
  size_t most_clients = 64;
  size_t most_clients_per_user = 0;  ///< 0: as many as leave room for others
  double timeout_seconds = 10;
  bool allow_all = false;
  bool strict = false;
  bool verbose = false;

  mode_t Mode() const { return static_cast<mode_t>(std::stoul(mode, nullptr, 8)); }
  /// By default three quarters, so that no user can take all places.
  size_t MostClientsPerUser() const {
    return most_clients_per_user != 0 ? most_clients_per_user : (3 * most_clients + 3) / 4;
  }
  std::chrono::milliseconds Timeout() const {
    return std::chrono::milliseconds(static_cast<int64_t>(timeout_seconds * 1000));
  }
};

/// Adds the options to a command line whose parsing fills `options`.
void AddOptions(CLI::App& app, Options& options);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_OPTIONS_H
