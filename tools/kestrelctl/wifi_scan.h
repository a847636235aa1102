// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_SCAN_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_SCAN_H

#include <kestrel/wificonfig.h>

#include <optional>
#include <vector>

#include "arguments.h"

namespace kestrelctl {

using ScannedNetworks = std::vector<WifiScannedNetworkRecord>;

// Each reports its failure before it returns nothing.

/// Starts a scan. Returns what the daemon knows already.
std::optional<ScannedNetworks> Scan();

/// Waits until a scan has ended. Returns what it found.
std::optional<ScannedNetworks> ScanFreshly(Milliseconds limit);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_SCAN_H
