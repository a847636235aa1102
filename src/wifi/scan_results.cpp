// SPDX-License-Identifier: Apache-2.0
#include "wifi/scan_results.h"

#include <stdio.h>

#include <utility>

#include "wifi/record_fields.h"
#include "wifi/reply_text.h"
#include "wifi/wifi_error.h"

namespace wifi {
namespace {

constexpr uint32_t kUnfinished = 0x7EB10000;

// In the order of a line; the name follows them.
constexpr char kLeadingFields[][sizeof "signal_level"] = {"bssid", "freq", "signal_level", "flags"};

WifiSecurity SecurityOf(const eastl::string& flags) {
  if (flags == "[ESS]") {
    return WifiSecurity_Open;
  }
  return ContainsPsk(flags) ? WifiSecurity_Wpa2Psk : WifiSecurity_Unknown;
}

}  // namespace

nwl::Expected<Network> ParseScanLine(const eastl::string& line) {
  Network network;
  eastl::string field;
  size_t position = 0;
  for (const char* const key : kLeadingFields) {
    position = NextField(position, kFieldDelimiters, line, field);
    if (position == eastl::string::npos) {
      return MakeError(WifiError::ParseFailed);
    }
    network.SetProperty(key, field);
  }
  network.SetProperty("ssid", line.substr(position));
  network.connectionState = kNotConnected;
  network.security = SecurityOf(field);
  return network;
}

NetworkList ParseScanResults(const eastl::string& reply) {
  const eastl::vector<eastl::string> lines = SplitLines(reply);
  NetworkList networks;
  // The first line is a header.
  for (size_t i = 1; i < lines.size(); ++i) {
    if (i > kScanResultLimit) {
      fputs("Number of networks from scan exceeded the limit.", stderr);
      break;
    }
    nwl::Expected<Network> network = ParseScanLine(lines[i]);
    if (network.has_value()) {
      networks.push_back(std::move(network).value());
    }
  }
  return networks;
}

nwl::Expected<NetworkList> Scan(WifiControlClient& client) {
  if (client.unavailable) {
    return MakeError(WifiError::ClientUnavailable);
  }
  const nwl::error_code error = client.Send("SCAN");
  if (error) {
    return error;
  }
  // At once: what the daemon holds now is as a rule what the scan before has found.
  const nwl::Expected<eastl::string> reply = client.Request("SCAN_RESULTS");
  if (!reply.has_value()) {
    return reply.error();
  }
  // A reply without a single line is a success too: callers count on it to empty the kept list.
  return ParseScanResults(reply.value());
}

bool FillScannedRecord(const Network& network, const void* array_end,
                       WifiScannedNetworkRecord& record) {
  record.recordTag = kUnfinished;
  if (!FillSsid(network, array_end, record.ssid, &record.ssidLength) ||
      !FillBssid(network, record.bssid) || !FillFrequency(network, &record.frequencyMhz) ||
      !FillSignal(network, &record.signalDbm)) {
    return false;
  }
  record.security = PublicSecurity(network);
  record.recordTag = WifiScannedNetworkRecord_Complete;
  return true;
}

}  // namespace wifi
