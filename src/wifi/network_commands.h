// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_NETWORK_COMMANDS_H
#define KESTREL_WIFI_NETWORK_COMMANDS_H

#include <stdint.h>

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

// The commands that change one stored network. None of them is saved before SaveConfiguration().

/// Makes a network in the daemon and records its id in `network`.
nwl::error_code CreateNetwork(WifiControlClient& client, Network& network);

/// Gives it the name `ssid`. InvalidArgument for a network without an id.
nwl::error_code SetSsid(WifiControlClient& client, const Network& network,
                        const eastl::string& ssid);

/// Gives it its passphrase, or none for an open network.
void SetSecurity(WifiControlClient& client, const Network& network);

/// Enables or disables it as its enabledState says; InvalidEnabledState when that says neither,
/// InvalidArgument for a network without an id.
nwl::error_code ApplyEnabledState(WifiControlClient& client, const Network& network);

nwl::error_code DisableNetwork(WifiControlClient& client, int32_t networkId);

/// Takes a network with the id `networkId` out of the daemon's running configuration.
nwl::error_code TakeOutNetwork(WifiControlClient& client, int32_t networkId);

/// Makes the daemon write its configuration file.
nwl::error_code SaveConfiguration(WifiControlClient& client);

}  // namespace wifi

#endif  // KESTREL_WIFI_NETWORK_COMMANDS_H
