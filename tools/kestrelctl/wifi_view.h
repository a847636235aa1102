// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_VIEW_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_VIEW_H

#include <kestrel/wificonfig.h>

#include <string>
#include <vector>

#include "output.h"

namespace kestrelctl {

// What the commands print, for people or for programs.
std::string ViewOf(const std::vector<WifiScannedNetworkRecord>& networks, Format format);
std::string ViewOf(const std::vector<WifiStoredNetworkRecord>& networks, Format format);
std::string ViewOf(const WifiCurrentNetworkRecord& network, Format format);
std::string ViewOfNoCurrentNetwork(Format format);
std::string ViewOfAdded(const std::string& ssid, WifiSecurity security, Format format);
std::string ViewOfForgotten(int count, Format format);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_VIEW_H
