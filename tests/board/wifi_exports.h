// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_WIFI_EXPORTS_H
#define KESTREL_TESTS_BOARD_WIFI_EXPORTS_H

#include <kestrel/wificonfig.h>

#include <string>
#include <vector>

namespace kestrel::test {

inline constexpr char kWifiSocketPath[] = "/var/volatile/tmp/wlan0_request_socket";

// The library's Wi-Fi functions with names and records as C++ has them.

int StoreWpa2(const std::string& name, const std::string& passphrase);
int StoreOpen(const std::string& name);

/// Asks for the stored networks and returns their records.
std::vector<WifiStoredNetworkRecord> Stored();

template <typename Record>
std::string NameOf(const Record& record) {
  return {reinterpret_cast<const char*>(record.ssid), record.ssidLength};
}

/// Waits until the radio of the board that this test runs on is on a network.
void AwaitConnection();

/// Scans until there are results; how many, or 0 when patience ends.
int AwaitScan();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_WIFI_EXPORTS_H
