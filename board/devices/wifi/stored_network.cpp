// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/stored_network.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

#include "devices/wifi/wifi_text.h"
#include "host/hex_text.h"
#include "host/text.h"

namespace kestrel::board::wifi {
namespace {

constexpr size_t kKeyDigits = 64;

/// The words of key_mgmt, in the order in which they are told.
constexpr const char* kKeyManagement[] = {
    "WPA-PSK",        "WPA-EAP",        "IEEE8021X", "NONE",   "WPA-NONE", "FT-PSK", "FT-EAP",
    "WPA-PSK-SHA256", "WPA-EAP-SHA256", "SAE",       "FT-SAE", "OWE",      "DPP"};

bool IsKeyManagement(const std::string& word) {
  return std::find(std::begin(kKeyManagement), std::end(kKeyManagement), word) !=
         std::end(kKeyManagement);
}

bool ParseNumber(const std::string& text, int least, int most, int* number) {
  int value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end || value < least || value > most) {
    return false;
  }
  *number = value;
  return true;
}

}  // namespace

bool IsPassphrase(const std::string& text) {
  return text.size() >= 8 && text.size() <= 63 &&
         std::none_of(text.begin(), text.end(),
                      [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

bool StoredNetwork::SetSsid(const std::string& value) {
  const std::optional<std::string> bytes = ParseBytes(value);
  if (!bytes.has_value() || bytes->size() > kLongestName) {
    return false;
  }
  ssid_ = bytes;
  return true;
}

bool StoredNetwork::SetKey(const std::string& value) {
  if (value.rfind('"', 0) != 0) {
    if (value.size() != kKeyDigits || !FromHex(value).has_value()) {
      return false;
    }
    key_ = value;
    return true;
  }
  // The first quote may be the only one.
  const size_t last = value.rfind('"');
  const std::string text = last == 0 ? value.substr(1) : value.substr(1, last - 1);
  if (!IsPassphrase(text)) {
    return false;
  }
  key_ = '"' + text + '"';
  return true;
}

bool StoredNetwork::SetKeyManagement(const std::string& value) {
  std::istringstream stream(value);
  const std::set<std::string> words{std::istream_iterator<std::string>(stream), {}};
  if (words.empty() || !std::all_of(words.begin(), words.end(), IsKeyManagement)) {
    return false;
  }
  key_management_ = words;
  return true;
}

bool StoredNetwork::SetBssid(const std::string& value) {
  if (value == "any") {
    bssid_.reset();
    return true;
  }
  if (!IsBssid(value)) {
    return false;
  }
  bssid_ = value;
  return true;
}

bool StoredNetwork::SetScanSsid(const std::string& value) {
  return ParseNumber(value, 0, 1, &scan_ssid_);
}

bool StoredNetwork::SetPriority(const std::string& value) {
  return ParseNumber(value, 0, 255, &priority_);
}

bool StoredNetwork::SetDisabledText(const std::string& value) {
  return ParseNumber(value, 0, 1, &disabled_);
}

std::optional<std::string> StoredNetwork::GetSsid() const {
  return ssid_.has_value() ? std::optional(FormatBytes(*ssid_)) : std::nullopt;
}

std::optional<std::string> StoredNetwork::GetKeyManagement() const {
  std::vector<std::string> words;
  std::copy_if(std::begin(kKeyManagement), std::end(kKeyManagement), std::back_inserter(words),
               [this](const char* word) { return key_management_.count(word) != 0; });
  return Join(words, " ");
}

struct StoredNetwork::Variable {
  const char* name;
  bool (StoredNetwork::*set)(const std::string& value);
  std::optional<std::string> (StoredNetwork::*get)() const;
};

const std::vector<StoredNetwork::Variable>& StoredNetwork::Table() {
  using Self = StoredNetwork;
  static const std::vector<Variable> variables = {
      {"ssid", &Self::SetSsid, &Self::GetSsid},
      {"psk", &Self::SetKey, &Self::GetKey},
      {"key_mgmt", &Self::SetKeyManagement, &Self::GetKeyManagement},
      {"bssid", &Self::SetBssid, &Self::GetBssid},
      {"scan_ssid", &Self::SetScanSsid, &Self::GetScanSsid},
      {"priority", &Self::SetPriority, &Self::GetPriority},
      {"disabled", &Self::SetDisabledText, &Self::GetDisabled},
  };
  return variables;
}

bool StoredNetwork::Set(const std::string& variable, const std::string& value) {
  for (const Variable& known : Table()) {
    if (variable == known.name) {
      return (this->*known.set)(value);
    }
  }
  return false;
}

std::optional<std::string> StoredNetwork::Get(const std::string& variable) const {
  for (const Variable& known : Table()) {
    if (variable == known.name) {
      return (this->*known.get)();
    }
  }
  return std::nullopt;
}

std::vector<std::string> StoredNetwork::Variables() {
  std::vector<std::string> names;
  for (const Variable& known : Table()) {
    names.emplace_back(known.name);
  }
  return names;
}

bool StoredNetwork::Matches(const AccessPoint& point) const {
  const char* needed = point.security->needed;
  return ssid_.has_value() && !ssid_->empty() && *ssid_ == point.name &&
         (!point.hidden || scan_ssid_ == 1) && (!bssid_.has_value() || *bssid_ == point.bssid) &&
         *needed != '\0' && key_management_.count(needed) != 0 &&
         (point.security->IsOpen() || has_key());
}

bool StoredNetwork::OpensWith(const AccessPoint& point) const {
  return point.security->IsOpen() || key_ == '"' + point.passphrase + '"';
}

bool StoredNetwork::LacksKey() const { return key_management_.count("WPA-PSK") != 0 && !has_key(); }

}  // namespace kestrel::board::wifi
