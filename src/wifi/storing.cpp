// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/wificonfig.h>

#include "core/refuse.h"
#include "wifi/adding.h"
#include "wifi/error_to_errno.h"
#include "wifi/wifi_context.h"
#include "wifi/wipe.h"

using kestrel::Refuse;

namespace {

bool IsBetween(size_t lowest, size_t number, size_t highest) {
  return number >= lowest && number <= highest;
}

bool IsSsidLength(size_t length) { return IsBetween(1, length, 32); }

bool IsPassphraseLength(size_t length) { return IsBetween(1, length, 64); }

int Store(wifi::WifiContext& context, const uint8_t* ssid, size_t ssid_length, const char* psk,
          size_t psk_length) {
  wifi::Network network;
  const wifi::WipePassphraseAtEnd wipe(network);
  const int refusal = wifi::PrepareNetwork(network, ssid, ssid_length, psk, psk_length);
  if (refusal != 0) {
    return Refuse(refusal);
  }
  const nwl::error_code error = wifi::AddNetwork(*context.client, network);
  return error ? wifi::Fail(error) : 0;
}

}  // namespace

int WifiConfig_StoreWpa2Network(const uint8_t* ssid, size_t ssidLength, const char* psk,
                                size_t pskLength) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (ssid == nullptr) {
    return Refuse(EFAULT);
  }
  if (!IsSsidLength(ssidLength)) {
    return Refuse(ERANGE);
  }
  if (psk == nullptr) {
    return Refuse(EFAULT);
  }
  if (!IsPassphraseLength(pskLength)) {
    return Refuse(ERANGE);
  }
  return Store(context, ssid, ssidLength, psk, pskLength);
}

int WifiConfig_StoreOpenNetwork(const uint8_t* ssid, size_t ssidLength) {
  wifi::WifiContext& context = wifi::GetWifiContext();
  if (ssid == nullptr) {
    return Refuse(EFAULT);
  }
  if (!IsSsidLength(ssidLength)) {
    return Refuse(ERANGE);
  }
  return Store(context, ssid, ssidLength, nullptr, 0);
}
