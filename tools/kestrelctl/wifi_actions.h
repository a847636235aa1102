// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_ACTIONS_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_ACTIONS_H

#include <kestrel/wificonfig.h>

#include <optional>
#include <string>

#include "arguments.h"
#include "output.h"

namespace kestrelctl {

/// Where a passphrase comes from.
enum class PassphraseFrom { kNowhere, kFile, kTerminal };

struct NetworkToAdd {
  std::string ssid;
  PassphraseFrom from = PassphraseFrom::kNowhere;
  std::string file;
};

struct NetworkToForget {
  std::string ssid;
  std::optional<WifiSecurity> security;
};

// Each does the work of one command, reports what fails, and returns the exit status.
/// Shows what the daemon knows at once where `wait` is no time at all.
int ScanForNetworks(Milliseconds wait, Format format);
int ListNetworks(Format format);
int TellCurrentNetwork(Format format);
int AddNetwork(const NetworkToAdd& network, Format format);
int ForgetNetwork(const NetworkToForget& network, Format format);
int ForgetAllNetworks(bool asks_first, Format format);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_ACTIONS_H
