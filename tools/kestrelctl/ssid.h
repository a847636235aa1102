// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_SSID_H
#define KESTREL_TOOLS_KESTRELCTL_SSID_H

#include <kestrel/wificonfig.h>

#include <string>

namespace kestrelctl {

/// The name of a network.
struct Ssid {
  std::string bytes;
  bool is_cut = false;  ///< there is more of it than fits into a record

  /// An access point that hides its name sends none, or as many NUL bytes.
  bool IsHidden() const { return !is_cut && bytes.find_first_not_of('\0') == std::string::npos; }
};

// The daemon's text for a name of a scan or of a connection has escapes, which are undone. That for
// a stored network has none.
Ssid SsidOf(const WifiScannedNetworkRecord& network);
Ssid SsidOf(const WifiCurrentNetworkRecord& network);
Ssid SsidOf(const WifiStoredNetworkRecord& network);

/// The name for people: in quotation marks, safe for a terminal.
std::string Shown(const Ssid& ssid);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_SSID_H
