// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_SCAN_RESULTS_H
#define KESTREL_WIFI_SCAN_RESULTS_H

#include <kestrel/wificonfig.h>
#include <stddef.h>

#include "wifi/control_client.h"
#include "wifi/network.h"

namespace wifi {

/// The most networks that are taken from one reply.
inline constexpr size_t kScanResultLimit = 100;

/// One line of the reply to SCAN_RESULTS, or the error ParseFailed.
nwl::Expected<Network> ParseScanLine(const eastl::string& line);

/// The networks of a reply to SCAN_RESULTS, without the lines that cannot be parsed.
NetworkList ParseScanResults(const eastl::string& reply);

/// Starts a scan and gives the networks that the daemon holds at that moment.
nwl::Expected<NetworkList> Scan(WifiControlClient& client);

/// Fills in one record. Returns false for a network that has to be left out: the record keeps its
/// unfinished tag then, and is there for the next network.
bool FillScannedRecord(const Network& network, const void* array_end,
                       WifiScannedNetworkRecord& record);

}  // namespace wifi

#endif  // KESTREL_WIFI_SCAN_RESULTS_H
