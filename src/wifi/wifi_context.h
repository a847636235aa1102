// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_WIFI_CONTEXT_H
#define KESTREL_WIFI_WIFI_CONTEXT_H

#include <EASTL/shared_ptr.h>

#include <memory>

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

/// What all Wi-Fi functions of the process share. The lists are never null. Threads read, replace
/// and take them with the atomic operations of shared pointers, and change no list that is kept
/// here.
struct WifiContext {
  /// Connects to the daemon. Memory that runs out here ends the process.
  WifiContext() noexcept;

  std::unique_ptr<WifiControlClient> client;
  eastl::shared_ptr<NetworkList> storedNetworks;
  eastl::shared_ptr<NetworkList> scannedNetworks;
};

WifiContext& GetWifiContext();

}  // namespace wifi

#endif  // KESTREL_WIFI_WIFI_CONTEXT_H
