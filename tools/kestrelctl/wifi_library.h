// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_LIBRARY_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_LIBRARY_H

#include <kestrel/wificonfig.h>

#include <vector>

#include "library_diagnostics.h"

namespace kestrelctl {

// The library's functions that write records, with room for names of whatever length.

/// The networks of a scan that found `count`. Each scan can be read once.
std::vector<WifiScannedNetworkRecord> ReadScannedNetworks(int count);

struct StoredNetworks {
  LibraryAnswer
      answer;  ///< the number of networks, also of those that have no record; or a failure
  std::vector<WifiStoredNetworkRecord> records;
};
StoredNetworks ReadStoredNetworks();

struct CurrentNetwork {
  LibraryAnswer answer;
  WifiCurrentNetworkRecord record;  ///< of meaning where the answer is no failure
};
CurrentNetwork ReadCurrentNetwork();

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_LIBRARY_H
