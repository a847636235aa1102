// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_RECORD_FIELDS_H
#define KESTREL_WIFI_RECORD_FIELDS_H

#include <kestrel/wificonfig.h>

#include "wifi/network.h"

namespace wifi {

// Each of these fills in one thing of a public record and returns true. When the network lacks it,
// or has it in a form that cannot be read, errno is set and the caller leaves the network out.

/// `array_end` is where the caller's array of records ends.
bool FillSsid(const Network& network, const void* array_end, uint8_t* ssid, uint8_t* ssid_length);

bool FillBssid(const Network& network, uint8_t bssid[6]);
bool FillFrequency(const Network& network, uint32_t* frequency_mhz);
bool FillSignal(const Network& network, int8_t* signal_dbm);

/// What applications see of Network::security.
WifiSecurity PublicSecurity(const Network& network);

}  // namespace wifi

#endif  // KESTREL_WIFI_RECORD_FIELDS_H
