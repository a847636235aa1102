// SPDX-License-Identifier: Apache-2.0
#include "wifi/network_commands.h"

#include <kestrel/wificonfig.h>
#include <stdio.h>

#include "wifi/ssid.h"
#include "wifi/wifi_error.h"
#include "wifi/wipe.h"

namespace wifi {
namespace {

constexpr unsigned int kMaxNetworkId = 100;

/// More than the longest command without its escaped text.
constexpr size_t kCommandOverhead = 64;

eastl::string Command(const char* word, int32_t id) {
  return eastl::string(eastl::string::CtorSprintf(), "%s %i", word, id);
}

/// Formatting the passphrase itself would leave parts of it in buffers of the formatter.
void SetPassphrase(WifiControlClient& client, int32_t id, const eastl::string& psk) {
  eastl::string escaped = EscapeQuotes(psk);
  const WipeAtEnd wipe_escaped(escaped);
  eastl::string command;
  const WipeAtEnd wipe_command(command);
  command.reserve(escaped.size() + kCommandOverhead);
  command.append_sprintf("%s %i psk \"", "SET_NETWORK", id);
  command.append(escaped);
  command.push_back('"');
  client.Send(command);
}

}  // namespace

nwl::error_code CreateNetwork(WifiControlClient& client, Network& network) {
  const nwl::Expected<eastl::string> reply = client.Request("ADD_NETWORK");
  if (!reply.has_value()) {
    return reply.error();
  }
  unsigned int id = 0;
  if (sscanf(reply.value().c_str(), "%u", &id) != 1) {
    return MakeError(WifiError::ParseFailed);
  }
  if (id > kMaxNetworkId) {
    return MakeError(WifiError::NetworkIdOutOfRange);
  }
  network.networkId = static_cast<int32_t>(id);
  network.idValid = true;
  return {};
}

nwl::error_code SetSsid(WifiControlClient& client, const Network& network,
                        const eastl::string& ssid) {
  if (!network.idValid) {
    return MakeError(WifiError::InvalidArgument);
  }
  return client.Send(eastl::string(eastl::string::CtorSprintf(), "%s %i ssid \"%s\"", "SET_NETWORK",
                                   network.networkId, EscapeQuotes(ssid).c_str()));
}

void SetSecurity(WifiControlClient& client, const Network& network) {
  if (network.security == WifiSecurity_Wpa2Psk) {
    const eastl::string* const psk = network.FindProperty("psk");
    if (psk != nullptr) {
      SetPassphrase(client, network.networkId, *psk);
    }
  } else if (network.security == WifiSecurity_Open) {
    client.Send(Command("SET_NETWORK", network.networkId) + " key_mgmt NONE");
  }
}

nwl::error_code ApplyEnabledState(WifiControlClient& client, const Network& network) {
  if (!network.idValid) {
    return MakeError(WifiError::InvalidArgument);
  }
  switch (network.enabledState) {
    case kEnabled:
      return client.Send(Command("ENABLE_NETWORK", network.networkId));
    case kDisabled:
      return DisableNetwork(client, network.networkId);
    default:
      return MakeError(WifiError::InvalidEnabledState);
  }
}

nwl::error_code DisableNetwork(WifiControlClient& client, int32_t networkId) {
  return client.Send(Command("DISABLE_NETWORK", networkId));
}

nwl::error_code TakeOutNetwork(WifiControlClient& client, int32_t networkId) {
  return client.Send(Command("REMOVE_NETWORK", networkId));
}

nwl::error_code SaveConfiguration(WifiControlClient& client) { return client.Send("SAVE_CONFIG"); }

}  // namespace wifi
