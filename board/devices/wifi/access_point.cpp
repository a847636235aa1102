// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/access_point.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <utility>

#include "devices/wifi/stored_network.h"
#include "devices/wifi/wifi_text.h"
#include "host/error.h"

namespace kestrel::board::wifi {
namespace {

constexpr Security kSecurities[] = {
    {"open", "[ESS]", "NONE", "NONE", "NONE", "NONE"},
    {"wep", "[WEP][ESS]", "", "", "", ""},
    {"wpa", "[WPA-PSK-TKIP][ESS]", "WPA-PSK", "WPA-PSK", "TKIP", "TKIP"},
    {"wpa2", "[WPA2-PSK-CCMP][ESS]", "WPA-PSK", "WPA2-PSK", "CCMP", "CCMP"},
    {"wpa-wpa2", "[WPA-PSK-TKIP][WPA2-PSK-CCMP][ESS]", "WPA-PSK", "WPA2-PSK", "CCMP", "TKIP"},
    {"wpa2-eap", "[WPA2-EAP-CCMP][ESS]", "", "", "", ""},
    {"wpa2-wpa3", "[WPA2-PSK+SAE-CCMP][ESS]", "WPA-PSK", "WPA2-PSK", "CCMP", "CCMP"},
    {"wpa3", "[WPA2-SAE-CCMP][ESS]", "SAE", "SAE", "CCMP", "CCMP"},
};

bool SameText(const std::string& one, const std::string& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](unsigned char a, unsigned char b) { return tolower(a) == tolower(b); });
}

}  // namespace

bool Security::IsOpen() const { return this == &kSecurities[0]; }

const Security* FindSecurity(const std::string& name) {
  for (const Security& security : kSecurities) {
    if (name == security.name) {
      return &security;
    }
  }
  return nullptr;
}

std::vector<std::string> SecurityNames() {
  std::vector<std::string> names;
  for (const Security& security : kSecurities) {
    names.emplace_back(security.name);
  }
  return names;
}

int FrequencyOf(int channel) {
  if (channel >= 1 && channel <= 13) {
    return 2407 + 5 * channel;
  }
  if (channel == 14) {
    return 2484;
  }
  if (channel >= 32 && channel <= 177) {
    return 5000 + 5 * channel;
  }
  throw UsageError("there is no channel " + std::to_string(channel) +
                   " (known: 1 to 14, and 32 to 177 at 5 GHz)");
}

bool IsBssid(const std::string& text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (i % 3 == 2 ? c != ':' : isxdigit(c) == 0) {
      return false;
    }
  }
  return text.size() == 17;
}

std::string CheckAccessPoint(const AccessPoint& point) {
  if (point.name.size() > kLongestName) {
    return "a name has at most " + std::to_string(kLongestName) + " bytes";
  }
  if (!point.bssid.empty() && !IsBssid(point.bssid)) {
    return "an address is written like 02:00:00:00:00:01, not '" + point.bssid + "'";
  }
  if (point.passphrase.empty()) {
    return "";
  }
  if (*point.security->needed == '\0' || point.security->IsOpen()) {
    return std::string("with security ") + point.security->name + " there is no passphrase";
  }
  return IsPassphrase(point.passphrase) ? ""
                                        : "a passphrase has 8 to 63 bytes, none a control byte";
}

void Air::Add(AccessPoint point) {
  std::transform(point.bssid.begin(), point.bssid.end(), point.bssid.begin(),
                 [](unsigned char c) { return static_cast<char>(tolower(c)); });
  if (point.bssid.empty()) {
    point.bssid = FreeBssid();
  }
  if (FindByBssid(point.bssid) != nullptr) {
    throw UsageError("there is an access point with address " + point.bssid + " already");
  }
  points_.push_back(std::move(point));
  Tell();
}

void Air::Remove(const std::string& name) {
  const std::vector<size_t> found = Find(name);
  for (auto index = found.rbegin(); index != found.rend(); ++index) {
    points_.erase(points_.begin() + static_cast<std::ptrdiff_t>(*index));
  }
  Tell();
}

void Air::SetSignal(const std::string& name, int signal) {
  for (const size_t index : Find(name)) {
    points_[index].signal = signal;
  }
  Tell();
}

const AccessPoint* Air::FindByBssid(const std::string& bssid) const {
  for (const AccessPoint& point : points_) {
    if (SameText(point.bssid, bssid)) {
      return &point;
    }
  }
  return nullptr;
}

std::string Air::FreeBssid() const {
  for (unsigned number = 0;; ++number) {
    char text[18];
    snprintf(text, sizeof text, "02:00:00:00:%02x:%02x", number / 256 % 256, number % 256);
    if (FindByBssid(text) == nullptr) {
      return text;
    }
  }
}

std::vector<size_t> Air::Find(const std::string& name) const {
  std::vector<size_t> found;
  for (size_t i = 0; i < points_.size(); ++i) {
    if (points_[i].name == name || SameText(points_[i].bssid, name)) {
      found.push_back(i);
    }
  }
  if (found.empty()) {
    throw UsageError("there is no access point '" + Escape(name) + "'");
  }
  return found;
}

void Air::Tell() const {
  if (listener_) {
    listener_();
  }
}

std::vector<AccessPoint> DefaultAccessPoints() {
  AccessPoint lab;
  lab.name = "Kestrel Lab";
  lab.security = FindSecurity("wpa2");
  lab.frequency = FrequencyOf(6);
  lab.signal = -48;
  lab.passphrase = "kestrel-lab";
  AccessPoint guest;
  guest.name = "Kestrel Guest";
  guest.security = FindSecurity("open");
  guest.frequency = FrequencyOf(1);
  guest.signal = -61;
  return {lab, guest};
}

}  // namespace kestrel::board::wifi
