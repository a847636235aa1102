// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/wificonfig.h>
#include <stdio.h>

#include <utility>

#include "core/refuse.h"
#include "wifi/error_to_errno.h"
#include "wifi/record_array.h"
#include "wifi/scan_results.h"
#include "wifi/wifi_context.h"

using kestrel::Refuse;

int WifiConfig_TriggerScanAndGetScannedNetworkCount(void) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  nwl::Expected<wifi::NetworkList> networks = wifi::Scan(*context.client);
  if (!networks.has_value()) {
    fprintf(stderr, "[Kestrel:WifiConfig] Failure performing scan: %d\n", networks.error().value);
    return wifi::Fail(networks.error());
  }
  const auto kept = eastl::make_shared<wifi::NetworkList>(std::move(networks).value());
  eastl::atomic_store(&context.scannedNetworks, kept);
  return static_cast<int>(kept->size());
}

int z__WifiConfig_GetScannedNetworks(WifiScannedNetworkRecord* networkArray,
                                     size_t networkArrayCount, uint32_t structVersion) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (networkArray == nullptr) {
    return Refuse(EFAULT);
  }
  if (networkArrayCount == 0) {
    return Refuse(ERANGE);
  }
  // Taken out whole, so that a scan is read once and no other thread has hold of what is read here.
  // Callers count on it: whoever asks with the wrong version has used the scan up all the same.
  const auto networks =
      eastl::atomic_exchange(&context.scannedNetworks, eastl::make_shared<wifi::NetworkList>());
  if (structVersion != WifiConfig_StructVersion) {
    return Refuse(EINVAL);
  }
  return wifi::FillRecords(*networks, networkArray, networkArrayCount, wifi::FillScannedRecord);
}
