// SPDX-License-Identifier: Apache-2.0
#include "wifi/removing.h"

#include "wifi/network_commands.h"
#include "wifi/ssid.h"
#include "wifi/stored_listing.h"
#include "wifi/wifi_error.h"

namespace wifi {
namespace {

nwl::Expected<int32_t> IdOf(WifiControlClient& client, const Network& network) {
  if (network.idValid) {
    return network.networkId;
  }
  const eastl::string* const ssid = network.FindProperty("ssid");
  if (ssid == nullptr) {
    return MakeError(WifiError::InvalidArgument);
  }
  const auto networks = ListStoredNetworks(client);
  if (!networks.has_value()) {
    return networks.error();
  }
  const nwl::Expected<Network> found = FindNetworkBySsid(*networks.value(), *ssid);
  if (!found.has_value()) {
    return found.error();
  }
  return found.value().networkId;
}

}  // namespace

nwl::error_code RemoveNetwork(WifiControlClient& client, const Network& network) {
  const nwl::Expected<int32_t> id = IdOf(client, network);
  if (!id.has_value()) {
    return id.error();
  }
  nwl::error_code error = DisableNetwork(client, id.value());
  if (error) {
    return error;
  }
  error = TakeOutNetwork(client, id.value());
  return error ? error : SaveConfiguration(client);
}

}  // namespace wifi
