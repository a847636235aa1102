// SPDX-License-Identifier: Apache-2.0
#include "wifi_exports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "wifi_client.h"

namespace kestrel::test {

int StoreWpa2(const std::string& name, const std::string& passphrase) {
  return WifiConfig_StoreWpa2Network(reinterpret_cast<const uint8_t*>(name.data()), name.size(),
                                     passphrase.c_str(), passphrase.size());
}

int StoreOpen(const std::string& name) {
  return WifiConfig_StoreOpenNetwork(reinterpret_cast<const uint8_t*>(name.data()), name.size());
}

std::vector<WifiStoredNetworkRecord> Stored() {
  std::vector<WifiStoredNetworkRecord> records(10);
  EXPECT_GE(WifiConfig_GetStoredNetworkCount(), 0);
  const int count =
      z__WifiConfig_GetStoredNetworks(records.data(), records.size(), WifiConfig_StructVersion);
  EXPECT_GE(count, 0);
  records.resize(static_cast<size_t>(std::max(count, 0)));
  return records;
}

void AwaitConnection() {
  EXPECT_NE(WifiClient(kWifiSocketPath).AskUntil("STATUS", "COMPLETED").find("COMPLETED"),
            std::string::npos);
}

int AwaitScan() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  int count = 0;
  // The list is that of the scan before, and while one is running another one is refused.
  while (count <= 0 && std::chrono::steady_clock::now() < deadline) {
    count = WifiConfig_TriggerScanAndGetScannedNetworkCount();
  }
  return std::max(count, 0);
}

}  // namespace kestrel::test
