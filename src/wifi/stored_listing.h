// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_STORED_LISTING_H
#define KESTREL_WIFI_STORED_LISTING_H

#include <EASTL/shared_ptr.h>

#include <nwl/expected>

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

/// Asks the daemon for all stored networks: their names, security and state, and which of them it
/// is connected to. In the daemon's order.
nwl::Expected<eastl::shared_ptr<NetworkList>> ListStoredNetworks(WifiControlClient& client);

}  // namespace wifi

#endif  // KESTREL_WIFI_STORED_LISTING_H
