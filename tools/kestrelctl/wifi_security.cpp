// SPDX-License-Identifier: Apache-2.0
#include "wifi_security.h"

namespace kestrelctl {
namespace {

struct Name {
  WifiSecurity security;
  const char* text;
};

constexpr Name kNames[] = {
    {WifiSecurity_Open, "open"},
    {WifiSecurity_Wpa2Psk, "wpa2"},
    {WifiSecurity_Unknown, "unknown"},
};

}  // namespace

const char* SecurityName(WifiSecurity security) {
  for (const Name& name : kNames) {
    if (security == name.security) {
      return name.text;
    }
  }
  return SecurityName(WifiSecurity_Unknown);
}

std::optional<WifiSecurity> SecurityOf(const std::string& text) {
  for (const Name& name : kNames) {
    if (text == name.text) {
      return name.security;
    }
  }
  return std::nullopt;
}

}  // namespace kestrelctl
