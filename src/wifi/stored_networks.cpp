// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/wificonfig.h>

#include "core/refuse.h"
#include "wifi/error_to_errno.h"
#include "wifi/record_array.h"
#include "wifi/record_fields.h"
#include "wifi/stored_listing.h"
#include "wifi/wifi_context.h"

using kestrel::Refuse;

namespace {

constexpr uint32_t kUnfinished = 0xB22E0000;

bool FillStoredRecord(const wifi::Network& network, const void* array_end,
                      WifiStoredNetworkRecord& record) {
  record.recordTag = kUnfinished;
  if (!wifi::FillSsid(network, array_end, record.ssid, &record.ssidLength)) {
    return false;
  }
  record.enabled = network.enabledState == wifi::kEnabled ? 1 : 0;
  record.connected = network.connectionState == wifi::kConnected ? 1 : 0;
  record.security = wifi::PublicSecurity(network);
  record.recordTag = WifiStoredNetworkRecord_Complete;
  return true;
}

}  // namespace

int WifiConfig_GetStoredNetworkCount(void) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  const auto networks = wifi::ListStoredNetworks(*context.client);
  if (!networks.has_value()) {
    return wifi::Fail(networks.error());
  }
  eastl::atomic_store(&context.storedNetworks, networks.value());
  return static_cast<int>(networks.value()->size());
}

int z__WifiConfig_GetStoredNetworks(WifiStoredNetworkRecord* records, size_t recordCount,
                                    uint32_t structVersion) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (records == nullptr) {
    return Refuse(EFAULT);
  }
  if (recordCount == 0) {
    return Refuse(ERANGE);
  }
  const auto networks = eastl::atomic_load(&context.storedNetworks);
  if (structVersion != WifiConfig_StructVersion) {
    return Refuse(EINVAL);
  }
  return wifi::FillRecords(*networks, records, recordCount, FillStoredRecord);
}
