// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/wificonfig.h>
#include <stdio.h>

#include "core/refuse.h"
#include "wifi/error_to_errno.h"
#include "wifi/record_fields.h"
#include "wifi/status_reply.h"
#include "wifi/wifi_context.h"

using kestrel::Refuse;

namespace {

constexpr uint32_t kUnfinished = 0x09EF0000;

nwl::error_code ReadStatus(wifi::WifiControlClient& client, wifi::Network& network) {
  const nwl::Expected<eastl::string> reply = client.Request("STATUS");
  return reply.has_value() ? wifi::ParseStatusReply(network, reply.value()).error() : reply.error();
}

int FailWithStatus(nwl::error_code error) {
  // In this order: the translation prints a line of its own, and it comes first.
  const int translation = wifi::ErrorToErrno(error);
  fprintf(stderr, "[Kestrel:WifiConfig] Failure getting status of current network: %d\n",
          error.value);
  return Refuse(translation);
}

int FillRecord(const wifi::Network& network, WifiCurrentNetworkRecord& record) {
  if (!wifi::FillSsid(network, &record + 1, record.ssid, &record.ssidLength) ||
      !wifi::FillBssid(network, record.bssid) ||
      !wifi::FillFrequency(network, &record.frequencyMhz)) {
    return -1;
  }
  record.signalDbm = 0;
  record.security = wifi::PublicSecurity(network);
  record.recordTag = WifiCurrentNetworkRecord_Complete;
  return 0;
}

}  // namespace

int z__WifiConfig_GetCurrentNetwork(WifiCurrentNetworkRecord* connectedNetwork,
                                    uint32_t structVersion) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (connectedNetwork == nullptr) {
    return Refuse(EFAULT);
  }
  if (structVersion != WifiConfig_StructVersion) {
    return Refuse(EINVAL);
  }
  connectedNetwork->recordTag = kUnfinished;
  wifi::Network network;
  const nwl::error_code error = ReadStatus(*context.client, network);
  if (error) {
    return FailWithStatus(error);
  }
  return FillRecord(network, *connectedNetwork);
}
