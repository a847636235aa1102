// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_REMOVING_H
#define KESTREL_WIFI_REMOVING_H

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

/// Disables and removes a stored network and saves the daemon's configuration, in this order. The
/// network is found by its id, or by its name when it has none. Nothing is undone when a step
/// fails.
nwl::error_code RemoveNetwork(WifiControlClient& client, const Network& network);

}  // namespace wifi

#endif  // KESTREL_WIFI_REMOVING_H
