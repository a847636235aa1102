// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/wificonfig.h>

#include "core/refuse.h"
#include "wifi/error_to_errno.h"
#include "wifi/removing.h"
#include "wifi/stored_listing.h"
#include "wifi/wifi_context.h"

using kestrel::Refuse;

namespace {

/// The name in a record, whose length callers answer for: it may run over the record's end.
eastl::string SsidOf(const WifiStoredNetworkRecord& record) {
  const char* const bytes = reinterpret_cast<const char*>(&record);
  return eastl::string(bytes + offsetof(WifiStoredNetworkRecord, ssid), record.ssidLength);
}

const wifi::Network* FindMatch(const wifi::NetworkList& networks,
                               const WifiStoredNetworkRecord& record) {
  const eastl::string ssid = SsidOf(record);
  for (const wifi::Network& network : networks) {
    const eastl::string* const stored = network.FindProperty("ssid");
    if (stored != nullptr && *stored == ssid &&
        static_cast<uint8_t>(network.security) == record.security) {
      return &network;
    }
  }
  return nullptr;
}

}  // namespace

int z__WifiConfig_ForgetNetwork(const WifiStoredNetworkRecord* storedNetwork) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (storedNetwork == nullptr) {
    return Refuse(EFAULT);
  }
  if (storedNetwork->recordTag != WifiStoredNetworkRecord_Complete) {
    return Refuse(EINVAL);
  }
  const auto networks = wifi::ListStoredNetworks(*context.client);
  if (!networks.has_value()) {
    return wifi::Fail(networks.error());
  }
  const wifi::Network* const match = FindMatch(*networks.value(), *storedNetwork);
  if (match == nullptr) {
    return Refuse(ENOENT);
  }
  const nwl::error_code error = wifi::RemoveNetwork(*context.client, *match);
  return error ? wifi::Fail(error) : 0;
}

int WifiConfig_ForgetAllNetworks(void) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  const auto networks = wifi::ListStoredNetworks(*context.client);
  if (!networks.has_value()) {
    return wifi::Fail(networks.error());
  }
  for (const wifi::Network& network : *networks.value()) {
    const nwl::error_code error = wifi::RemoveNetwork(*context.client, network);
    // Callers count on the networks behind a failure being untouched.
    if (error) {
      return wifi::Fail(error);
    }
  }
  return 0;
}
