// SPDX-License-Identifier: Apache-2.0
#include "wifi/wifi_context.h"

#include <exception>

namespace wifi {

// The handler, and not noexcept alone, is what makes sure that everything built is released first.
WifiContext::WifiContext() noexcept try
    : storedNetworks(eastl::make_shared<NetworkList>()),
      scannedNetworks(eastl::make_shared<NetworkList>()) {
  client = std::make_unique<WifiControlClient>(eastl::shared_ptr<vestaipc::IpcClient>());
} catch (...) {
  std::terminate();
}

WifiContext& GetWifiContext() {
  static WifiContext instance;
  return instance;
}

}  // namespace wifi
