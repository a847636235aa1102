// SPDX-License-Identifier: Apache-2.0
#include "wifi/ssid.h"

#include <stddef.h>

#include "wifi/wifi_error.h"

namespace wifi {
namespace {

constexpr size_t kLongestSsid = 32;
constexpr char kEscapedQuote[] = "\\x22";

}  // namespace

bool IsPrintable(const eastl::string& text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text.data()[i];
    if (c < 0x20 || c > 0x7E) {
      return false;
    }
  }
  return true;
}

bool IsValidSsid(const eastl::string& ssid) {
  return !ssid.empty() && ssid.size() <= kLongestSsid && IsPrintable(ssid);
}

eastl::string EscapeQuotes(const eastl::string& text) {
  eastl::string escaped;
  // For the worst case: a passphrase that grew on its way would leave copies behind.
  escaped.reserve(text.size() * (sizeof kEscapedQuote - 1));
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text.data()[i];
    if (c == '"') {
      escaped.append(kEscapedQuote);
    } else {
      escaped.push_back(c);
    }
  }
  return escaped;
}

nwl::Expected<Network> FindNetworkBySsid(const eastl::vector<Network>& networks,
                                         const eastl::string& ssid) {
  if (!IsValidSsid(ssid)) {
    return MakeError(WifiError::InvalidArgument);
  }
  for (const Network& network : networks) {
    const eastl::string* const stored = network.FindProperty("ssid");
    if (stored != nullptr && *stored == ssid) {
      return network;
    }
  }
  return MakeError(WifiError::NetworkNotFound);
}

}  // namespace wifi
