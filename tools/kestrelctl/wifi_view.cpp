// SPDX-License-Identifier: Apache-2.0
#include "wifi_view.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>

#include "ssid.h"
#include "terminal_text.h"
#include "utf8.h"
#include "wifi_security.h"

namespace kestrelctl {
namespace {

using Json = nlohmann::ordered_json;

/// Channels whose frequencies are so many MHz from each other.
struct Band {
  uint32_t first_mhz;
  uint32_t last_mhz;
  uint32_t first_channel;
  uint32_t step_mhz;
};

constexpr Band kBands[] = {
    {2412, 2472, 1, 5}, {2484, 2484, 14, 1}, {4915, 4980, 183, 5},
    {5035, 5895, 7, 5}, {5935, 5935, 2, 1},  {5955, 7115, 1, 5},
};

std::optional<uint32_t> ChannelOf(uint32_t mhz) {
  for (const Band& band : kBands) {
    if (mhz >= band.first_mhz && mhz <= band.last_mhz &&
        (mhz - band.first_mhz) % band.step_mhz == 0) {
      return band.first_channel + (mhz - band.first_mhz) / band.step_mhz;
    }
  }
  return std::nullopt;
}

struct Strength {
  int least_dbm;
  const char* bars;
};

constexpr Strength kStrengths[] = {
    {-55, "####"}, {-67, "###-"}, {-78, "##--"}, {-88, "#---"}, {INT8_MIN, "----"},
};

const char* BarsOf(int dbm) {
  const Strength* strength = kStrengths;
  while (dbm < strength->least_dbm) {
    ++strength;
  }
  return strength->bars;
}

std::string AddressText(const uint8_t (&address)[6]) {
  char text[24];
  snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", address[0], address[1], address[2],
           address[3], address[4], address[5]);
  return text;
}

std::string ChannelText(uint32_t mhz) {
  const std::optional<uint32_t> channel = ChannelOf(mhz);
  return channel ? std::to_string(*channel) : "-";
}

const char* YesOrNo(uint8_t flag) { return flag != 0 ? "yes" : "no"; }

/// Names are bytes. Those that are text are given as such, and all of them in digits.
Json ToJson(const Ssid& ssid) {
  return {{"ssid", IsUtf8(ssid.bytes) ? Json(ssid.bytes) : Json()},
          {"ssid_hex", Hex(ssid.bytes)},
          {"ssid_cut", ssid.is_cut}};
}

Json FrequencyJson(uint32_t mhz) {
  const std::optional<uint32_t> channel = ChannelOf(mhz);
  return {{"channel", channel ? Json(*channel) : Json()}, {"frequency_mhz", mhz}};
}

/// In ASCII alone, which any terminal shows as it is.
std::string Dump(const Json& json) { return json.dump(-1, ' ', true) + "\n"; }

Json ToJson(const WifiScannedNetworkRecord& network) {
  const Ssid ssid = SsidOf(network);
  Json json = ToJson(ssid);
  json["hidden"] = ssid.IsHidden();
  json["bssid"] = AddressText(network.bssid);
  json["security"] = SecurityName(network.security);
  json.update(FrequencyJson(network.frequencyMhz));
  json["signal_dbm"] = network.signalDbm;
  return json;
}

Json ToJson(const WifiStoredNetworkRecord& network) {
  Json json = ToJson(SsidOf(network));
  json["security"] = SecurityName(network.security);
  json["enabled"] = network.enabled != 0;
  json["connected"] = network.connected != 0;
  return json;
}

Json ToJson(const WifiCurrentNetworkRecord& network) {
  Json json = ToJson(SsidOf(network));
  json["bssid"] = AddressText(network.bssid);
  json["security"] = SecurityName(network.security);
  json.update(FrequencyJson(network.frequencyMhz));
  return json;
}

// The name comes last, so that its width does not matter.

std::string RowOf(const WifiScannedNetworkRecord& network) {
  char row[128];
  snprintf(row, sizeof row, "%s  %4d dBm  %7s  %5u MHz  %-8s  %s  ", BarsOf(network.signalDbm),
           network.signalDbm, ChannelText(network.frequencyMhz).c_str(), network.frequencyMhz,
           SecurityName(network.security), AddressText(network.bssid).c_str());
  return row + Shown(SsidOf(network)) + "\n";
}

std::string RowOf(const WifiStoredNetworkRecord& network) {
  char row[64];
  snprintf(row, sizeof row, "%-8s  %-7s  %-9s  ", SecurityName(network.security),
           YesOrNo(network.enabled), YesOrNo(network.connected));
  return row + Shown(SsidOf(network)) + "\n";
}

template <typename Record>
std::string ListView(const char* header, const std::vector<Record>& networks, Format format) {
  std::string text = header;
  Json list = Json::array();
  for (const Record& network : networks) {
    text += RowOf(network);
    list.push_back(ToJson(network));
  }
  return format == Format::kText ? text : Dump({{"networks", list}});
}

}  // namespace

std::string ViewOf(const std::vector<WifiScannedNetworkRecord>& networks, Format format) {
  return ListView("SIGNAL          CHANNEL  FREQUENCY  SECURITY  ADDRESS            NAME\n",
                  networks, format);
}

std::string ViewOf(const std::vector<WifiStoredNetworkRecord>& networks, Format format) {
  return ListView("SECURITY  ENABLED  CONNECTED  NAME\n", networks, format);
}

std::string ViewOf(const WifiCurrentNetworkRecord& network, Format format) {
  if (format == Format::kJson) {
    return Dump({{"current", ToJson(network)}});
  }
  return "name       " + Shown(SsidOf(network)) +            //
         "\nsecurity   " + SecurityName(network.security) +  //
         "\naddress    " + AddressText(network.bssid) +      //
         "\nchannel    " + ChannelText(network.frequencyMhz) + "\nfrequency  " +
         std::to_string(network.frequencyMhz) + " MHz\n";
}

std::string ViewOfNoCurrentNetwork(Format format) {
  return format == Format::kText ? "not connected\n" : Dump({{"current", nullptr}});
}

std::string ViewOfAdded(const std::string& ssid, WifiSecurity security, Format format) {
  if (format == Format::kJson) {
    Json json = ToJson(Ssid{ssid});
    json["security"] = SecurityName(security);
    return Dump({{"added", json}});
  }
  return "added " + Quoted(ssid) + ", " + SecurityName(security) + "\n";
}

std::string ViewOfForgotten(int count, Format format) {
  const std::string number = std::to_string(count);
  return format == Format::kJson ? Dump({{"forgotten", count}})
                                 : "forgot " + number + (count == 1 ? " network\n" : " networks\n");
}

}  // namespace kestrelctl
