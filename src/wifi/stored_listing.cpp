// SPDX-License-Identifier: Apache-2.0
#include "wifi/stored_listing.h"

#include <kestrel/wificonfig.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <utility>

#include "wifi/reply_text.h"
#include "wifi/status_reply.h"

namespace wifi {
namespace {

struct FlagsMeaning {
  char flags[sizeof "[TEMP-DISABLED]"];
  int32_t enabled_state;
};

constexpr FlagsMeaning kFlagsMeanings[] = {
    {"", kEnabled},
    {"[DISABLED]", kDisabled},
    {"[CURRENT]", kEnabled},
    {"[TEMP-DISABLED]", kTemporarilyDisabled},
};

int32_t EnabledState(const eastl::string& flags) {
  for (const FlagsMeaning& meaning : kFlagsMeanings) {
    if (flags == meaning.flags) {
      return meaning.enabled_state;
    }
  }
  return 0;
}

eastl::string TrailingFlags(const eastl::string& line) {
  const size_t bracket = line.rfind('[');
  const bool has_flags = bracket != eastl::string::npos && line.data()[line.size() - 1] == ']';
  return has_flags ? line.substr(bracket) : eastl::string();
}

bool ParseId(const eastl::string& line, int32_t* id) {
  const size_t delimiter = FindFirstOf(line, kFieldDelimiters, 0, strlen(kFieldDelimiters));
  if (delimiter == eastl::string::npos) {
    return false;
  }
  unsigned int number = 0;
  if (sscanf(line.substr(0, delimiter + 1).c_str(), "%u", &number) != 1) {
    return false;
  }
  *id = static_cast<int32_t>(number);
  return true;
}

/// The networks that the reply to LIST_NETWORKS names, without the lines that name none.
NetworkList ParseList(const eastl::string& reply) {
  const eastl::vector<eastl::string> lines = SplitLines(reply);
  NetworkList networks;
  // The first line is a header.
  for (size_t i = 1; i < lines.size(); ++i) {
    Network network;
    if (!ParseId(lines[i], &network.networkId)) {
      continue;
    }
    network.idValid = true;
    const eastl::string flags = TrailingFlags(lines[i]);
    network.enabledState = EnabledState(flags);
    network.SetProperty("flags", flags);
    networks.push_back(std::move(network));
  }
  return networks;
}

nwl::Expected<eastl::string> AskFor(const char* property, const Network& network,
                                    WifiControlClient& client) {
  return client.Request(eastl::string(eastl::string::CtorSprintf(), "%s %i %s", "GET_NETWORK",
                                      network.networkId, property));
}

void ReadSsid(WifiControlClient& client, Network& network) {
  const nwl::Expected<eastl::string> reply = AskFor("ssid", network, client);
  if (!reply.has_value()) {
    // Callers count on finding such a network in the list, under this name.
    network.SetProperty("ssid", "NONE");
  } else if (reply.value().size() > 1) {
    // Without the daemon's quotes, or whatever stands in their place.
    network.SetProperty("ssid", reply.value().substr(1, reply.value().size() - 2));
  }
}

nwl::error_code ReadSecurity(WifiControlClient& client, Network& network) {
  const nwl::Expected<eastl::string> reply = AskFor("key_mgmt", network, client);
  if (!reply.has_value()) {
    return reply.error();
  }
  if (reply.value() == "NONE") {
    network.security = WifiSecurity_Open;
  } else if (ContainsPsk(reply.value())) {
    network.security = WifiSecurity_Wpa2Psk;
  }
  return {};
}

/// Marks every network that has the name of the current one, so two of the same name are both
/// connected.
void MarkConnected(const eastl::string& status, NetworkList& networks) {
  Network current;
  // One that cannot be parsed has no name either.
  ParseStatusReply(current, status);
  const eastl::string* const current_ssid = current.FindProperty("ssid");
  for (Network& network : networks) {
    const eastl::string* const ssid = network.FindProperty("ssid");
    const bool is_current = current_ssid != nullptr && ssid != nullptr && *ssid == *current_ssid;
    network.connectionState = is_current ? kConnected : kNotConnected;
  }
}

}  // namespace

nwl::Expected<eastl::shared_ptr<NetworkList>> ListStoredNetworks(WifiControlClient& client) {
  const nwl::Expected<eastl::string> reply = client.Request("LIST_NETWORKS");
  if (!reply.has_value()) {
    return reply.error();
  }
  const auto networks = eastl::make_shared<NetworkList>(ParseList(reply.value()));
  for (Network& network : *networks) {
    ReadSsid(client, network);
    const nwl::error_code error = ReadSecurity(client, network);
    if (error) {
      return error;
    }
  }
  const nwl::Expected<eastl::string> status = client.Request("STATUS");
  if (!status.has_value()) {
    return status.error();
  }
  MarkConnected(status.value(), *networks);
  return networks;
}

}  // namespace wifi
