// SPDX-License-Identifier: Apache-2.0
#include "wifi/adding.h"

#include <errno.h>
#include <kestrel/wificonfig.h>

#include "wifi/network_commands.h"
#include "wifi/ssid.h"
#include "wifi/stored_listing.h"
#include "wifi/wifi_error.h"
#include "wifi/wipe.h"

namespace wifi {
namespace {

constexpr size_t kLongestKey = 64;
constexpr size_t kShortestPassphrase = 8;
constexpr size_t kLongestPassphrase = 63;

/// A key of 64 hexadecimal digits is no passphrase, although its length gets this far.
bool IsValidPassphrase(const eastl::string* psk) {
  return psk != nullptr && psk->size() >= kShortestPassphrase &&
         psk->size() <= kLongestPassphrase && IsPrintable(*psk);
}

bool CanBeStored(const Network& network) {
  const eastl::string* const ssid = network.FindProperty("ssid");
  if (ssid == nullptr || !IsValidSsid(*ssid) || network.security == WifiSecurity_Unknown) {
    return false;
  }
  return network.security != WifiSecurity_Wpa2Psk || IsValidPassphrase(network.FindProperty("psk"));
}

/// A daemon that does not tell its networks has none: callers count on being able to add one even
/// so.
bool IsStored(WifiControlClient& client, const eastl::string& ssid) {
  const auto networks = ListStoredNetworks(client);
  return networks.has_value() && FindNetworkBySsid(*networks.value(), ssid).has_value();
}

}  // namespace

int PrepareNetwork(Network& network, const uint8_t* ssid, size_t ssidLength, const char* psk,
                   size_t pskLength) {
  network.SetProperty("ssid", eastl::string(reinterpret_cast<const char*>(ssid), ssidLength));
  network.enabledState = kEnabled;
  if (psk == nullptr) {
    if (pskLength != 0) {
      errno = EFAULT;
      return EINVAL;
    }
    network.security = WifiSecurity_Open;
    return 0;
  }
  if (pskLength == 0 || pskLength > kLongestKey) {
    errno = ERANGE;
    return EINVAL;
  }
  eastl::string passphrase(psk);
  const WipeAtEnd wipe(passphrase);
  network.SetProperty("psk", passphrase);
  network.security = WifiSecurity_Wpa2Psk;
  return 0;
}

nwl::error_code AddNetwork(WifiControlClient& client, Network& network) {
  if (!CanBeStored(network)) {
    return MakeError(WifiError::InvalidArgument);
  }
  const eastl::string ssid = *network.FindProperty("ssid");
  if (IsStored(client, ssid)) {
    return MakeError(WifiError::NetworkAlreadyExists);
  }
  nwl::error_code error = CreateNetwork(client, network);
  if (error) {
    return error;
  }
  error = SetSsid(client, network, ssid);
  if (error) {
    return error;
  }
  if (network.enabledState == 0) {
    network.enabledState = kDisabled;
  }
  // Callers count on a network being added even if its passphrase was not taken.
  SetSecurity(client, network);
  error = ApplyEnabledState(client, network);
  return error ? error : SaveConfiguration(client);
}

}  // namespace wifi
