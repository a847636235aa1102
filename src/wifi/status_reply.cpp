// SPDX-License-Identifier: Apache-2.0
#include "wifi/status_reply.h"

#include <kestrel/wificonfig.h>
#include <stddef.h>

#include <algorithm>
#include <iterator>

#include "wifi/reply_text.h"
#include "wifi/wifi_error.h"

namespace wifi {
namespace {

constexpr size_t kFewestLines = 2;

constexpr char kStatusKeys[][sizeof "signal_level"] = {
    "bssid",    "freq",      "signal_level", "ssid",    "mode",
    "key_mgmt", "wpa_state", "ip_address",   "address",
};

bool IsStatusKey(const eastl::string& key) {
  return std::any_of(std::begin(kStatusKeys), std::end(kStatusKeys),
                     [&key](const char* known) { return key == known; });
}

void KeepStatusLine(Network& network, const eastl::string& line) {
  const size_t equals = FindChar(line, '=', 0);
  if (equals == eastl::string::npos) {
    return;
  }
  const eastl::string key = line.substr(0, equals);
  if (IsStatusKey(key)) {
    network.SetProperty(key, line.substr(equals + 1));
  }
}

void SetConnectionState(Network& network) {
  const eastl::string* const state = network.FindProperty("wpa_state");
  if (state == nullptr) {
    return;
  }
  if (*state == "COMPLETED") {
    network.enabledState = kEnabled;
    network.connectionState = kConnected;
  } else {
    network.connectionState = kNotConnected;
  }
}

void SetSecurity(Network& network) {
  const eastl::string* const key_management = network.FindProperty("key_mgmt");
  if (key_management == nullptr) {
    return;
  }
  if (ContainsPsk(*key_management)) {
    network.security = WifiSecurity_Wpa2Psk;
  } else if (*key_management == "NONE") {
    network.security = WifiSecurity_Open;
  }
}

}  // namespace

nwl::Expected<void> ParseStatusReply(Network& network, const eastl::string& reply) {
  const eastl::vector<eastl::string> lines = SplitLines(reply);
  if (lines.size() < kFewestLines) {
    return MakeError(WifiError::ParseFailed);
  }
  for (const eastl::string& line : lines) {
    KeepStatusLine(network, line);
  }
  SetConnectionState(network);
  SetSecurity(network);
  return {};
}

}  // namespace wifi
