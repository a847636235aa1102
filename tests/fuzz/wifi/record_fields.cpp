// SPDX-License-Identifier: Apache-2.0
#include "wifi/record_fields.h"

#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "fuzz/wifi/record_memory.h"
#include "fuzz/wifi/text.h"

namespace {

constexpr const char* kProperties[] = {"ssid", "bssid", "freq", "signal_level"};

}  // namespace

/// The properties of a network; those that are not there at the end are missing in the network too.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  kestrel::fuzz::Input input(data, size);
  wifi::Network network;
  for (const char* const key : kProperties) {
    if (!input.AtEnd()) {
      const std::string section = input.TakeSection().substr(0, wifi::kReplyBufferSize);
      network.SetProperty(key, kestrel::fuzz::Text(section));
    }
  }
  kestrel::fuzz::RecordMemory<WifiCurrentNetworkRecord> memory(1);
  WifiCurrentNetworkRecord& record = *memory.records();
  Promise(wifi::FillSsid(network, &record + 1, record.ssid, &record.ssidLength) ==
          (network.FindProperty("ssid") != nullptr));
  wifi::FillBssid(network, record.bssid);
  wifi::FillFrequency(network, &record.frequencyMhz);
  if (wifi::FillSignal(network, &record.signalDbm)) {
    Promise(record.signalDbm != 0);
  }
  return 0;
}
