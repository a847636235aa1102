// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_config.h"

#include <algorithm>
#include <chrono>
#include <set>

#include "host/error.h"
#include "host/hex_text.h"

namespace kestrel::board::wifi {
namespace {

constexpr int64_t kLongestDuration = 600000;
constexpr int64_t kHighestChannel = 1000;

/// In the order of DaemonSocket::Presence.
const std::vector<std::string> kPresences = {"absent", "refusing", "running"};

void ReadDuration(ConfigReader& reader, const char* key, std::chrono::milliseconds* duration) {
  *duration =
      std::chrono::milliseconds(reader.Integer(key, 0, kLongestDuration, duration->count()));
}

std::string ReadName(ConfigReader& reader) {
  if (!reader.Has("name-hex")) {
    return reader.Text("name", "", kLongestName);
  }
  if (reader.Has("name")) {
    reader.Refuse("name-hex", "an access point has one name");
  }
  const std::optional<std::vector<uint8_t>> bytes = FromHex(reader.Text("name-hex", ""));
  if (!bytes.has_value() || bytes->size() > kLongestName) {
    reader.Refuse("name-hex", "a name is at most " + std::to_string(kLongestName) +
                                  " bytes, in pairs of hexadecimal digits");
  }
  return std::string(bytes->begin(), bytes->end());
}

int ReadFrequency(ConfigReader& reader) {
  if (reader.Has("frequency")) {
    if (reader.Has("channel")) {
      reader.Refuse("channel", "an access point has a channel or a frequency, not both");
    }
    return static_cast<int>(reader.Integer("frequency", 1, 100000, 0));
  }
  try {
    return FrequencyOf(static_cast<int>(reader.Integer("channel", 1, kHighestChannel, 1)));
  } catch (const UsageError& error) {
    reader.Refuse("channel", error.what());
  }
}

void ReadAccessPoint(ConfigReader& reader, Air& air) {
  AccessPoint point;
  point.name = ReadName(reader);
  point.bssid = reader.Text("bssid", "");
  point.security = FindSecurity(reader.Choice("security", SecurityNames(), "wpa2"));
  point.frequency = ReadFrequency(reader);
  point.signal = static_cast<int>(reader.Integer("signal", -128, 127, -50));
  point.hidden = reader.Boolean("hidden", false);
  point.passphrase = reader.Text("passphrase", "");
  reader.RefuseUnknownKeys();
  const std::string problem = CheckAccessPoint(point);
  if (!problem.empty()) {
    reader.Refuse(IsBssid(point.bssid) || point.bssid.empty() ? "passphrase" : "bssid", problem);
  }
  try {
    air.Add(point);
  } catch (const UsageError& error) {
    reader.Refuse("bssid", error.what());
  }
}

void ReadAir(ConfigReader& reader, Air& air) {
  if (!reader.Has("access-point")) {
    for (const AccessPoint& point : DefaultAccessPoints()) {
      air.Add(point);
    }
    return;
  }
  for (ConfigReader& table : reader.Tables("access-point")) {
    ReadAccessPoint(table, air);
  }
}

}  // namespace

const std::vector<std::string>& PresenceNames() { return kPresences; }

std::optional<DaemonSocket::Presence> PresenceOf(const std::string& name) {
  const auto found = std::find(kPresences.begin(), kPresences.end(), name);
  if (found == kPresences.end()) {
    return std::nullopt;
  }
  return static_cast<DaemonSocket::Presence>(found - kPresences.begin());
}

const std::string& NameOf(DaemonSocket::Presence presence) {
  return kPresences.at(static_cast<size_t>(presence));
}

WifiConfig ReadWifiConfig(ConfigReader& reader) {
  WifiConfig config;
  config.daemon = *PresenceOf(reader.Choice("daemon", PresenceNames(), NameOf(config.daemon)));
  ReadDuration(reader, "scan-time", &config.durations.scan);
  ReadDuration(reader, "association-time", &config.durations.association);
  ReadDuration(reader, "retry-time", &config.durations.retry);
  config.ip_address = reader.Text("ip-address", "192.168.77.2", 63);
  if (reader.Has("networks-file")) {
    config.networks_file = reader.Text("networks-file", "");
  }
  ReadAir(reader, config.air);
  config.rules = ReadRules(reader);
  reader.RefuseUnknownKeys();
  return config;
}

}  // namespace kestrel::board::wifi
