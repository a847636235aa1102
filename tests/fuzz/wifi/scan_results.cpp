// SPDX-License-Identifier: Apache-2.0
#include "wifi/scan_results.h"

#include "fuzz/support/promise.h"
#include "fuzz/wifi/record_memory.h"
#include "fuzz/wifi/text.h"
#include "wifi/record_array.h"

namespace kestrel::fuzz {
namespace {

void Fill(const wifi::NetworkList& networks, size_t count) {
  RecordMemory<WifiScannedNetworkRecord> memory(count);
  const int filled = wifi::FillRecords(networks, memory.records(), count, wifi::FillScannedRecord);
  memory.CheckTags(filled, WifiScannedNetworkRecord_Complete);
}

}  // namespace
}  // namespace kestrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  const wifi::NetworkList networks = wifi::ParseScanResults(kestrel::fuzz::Reply(data, size));
  Promise(networks.size() <= wifi::kScanResultLimit);
  for (const wifi::Network& network : networks) {
    Promise(network.properties.size() == 5 && !network.FindProperty("ssid")->empty());
  }
  kestrel::fuzz::Fill(networks, 1);
  kestrel::fuzz::Fill(networks, networks.size() + 1);
  return 0;
}
