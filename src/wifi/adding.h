// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_ADDING_H
#define KESTREL_WIFI_ADDING_H

#include <stddef.h>
#include <stdint.h>

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

/// Describes the network that an application wants to store: with a passphrase, or open when `psk`
/// is null. Returns 0, or the errno for arguments that no exported function lets through.
///
/// All of `psk` up to its NUL is taken; callers count on `pskLength` being no more than a check.
int PrepareNetwork(Network& network, const uint8_t* ssid, size_t ssidLength, const char* psk,
                   size_t pskLength);

/// Stores `network` in the daemon, saves it there and records its id. Nothing is undone when a step
/// fails.
nwl::error_code AddNetwork(WifiControlClient& client, Network& network);

}  // namespace wifi

#endif  // KESTREL_WIFI_ADDING_H
