// SPDX-License-Identifier: Apache-2.0
#include "wifi/record_fields.h"

#include <errno.h>
#include <limits.h>
#include <stddef.h>
#include <stdlib.h>

#include "wifi/bssid.h"
#include "wifi/ssid_copy.h"

namespace wifi {
namespace {

// The records are part of the binary interface, on 32-bit and 64-bit machines alike.
static_assert(sizeof(WifiScannedNetworkRecord) == 52);
static_assert(offsetof(WifiScannedNetworkRecord, ssid) == 4);
static_assert(offsetof(WifiScannedNetworkRecord, bssid) == 36);
static_assert(offsetof(WifiScannedNetworkRecord, ssidLength) == 42);
static_assert(offsetof(WifiScannedNetworkRecord, security) == 43);
static_assert(offsetof(WifiScannedNetworkRecord, frequencyMhz) == 44);
static_assert(offsetof(WifiScannedNetworkRecord, signalDbm) == 48);

static_assert(sizeof(WifiCurrentNetworkRecord) == 52);
static_assert(offsetof(WifiCurrentNetworkRecord, ssid) == 4);
static_assert(offsetof(WifiCurrentNetworkRecord, bssid) == 36);
static_assert(offsetof(WifiCurrentNetworkRecord, ssidLength) == 42);
static_assert(offsetof(WifiCurrentNetworkRecord, security) == 43);
static_assert(offsetof(WifiCurrentNetworkRecord, frequencyMhz) == 44);
static_assert(offsetof(WifiCurrentNetworkRecord, signalDbm) == 48);

static_assert(sizeof(WifiStoredNetworkRecord) == 40);
static_assert(offsetof(WifiStoredNetworkRecord, ssid) == 4);
static_assert(offsetof(WifiStoredNetworkRecord, ssidLength) == 36);
static_assert(offsetof(WifiStoredNetworkRecord, enabled) == 37);
static_assert(offsetof(WifiStoredNetworkRecord, connected) == 38);
static_assert(offsetof(WifiStoredNetworkRecord, security) == 39);

bool OutOfRange() {
  errno = ERANGE;
  return false;
}

}  // namespace

bool FillSsid(const Network& network, const void* array_end, uint8_t* ssid, uint8_t* ssid_length) {
  eastl::string text;
  if (ReadNetworkProperty(network, "ssid", text) != 0) {
    return false;
  }
  *ssid_length = CopySsid(text, ssid, array_end);
  return true;
}

bool FillBssid(const Network& network, uint8_t bssid[6]) {
  eastl::string text;
  return ReadNetworkProperty(network, "bssid", text) == 0 && ParseBssid(text, bssid) == 0;
}

bool FillFrequency(const Network& network, uint32_t* frequency_mhz) {
  eastl::string text;
  if (ReadNetworkProperty(network, "freq", text) != 0) {
    return false;
  }
  // Base 0: texts like 0x96C and 02412 are read as C would, and callers' test set-ups use them.
  const unsigned long number = strtoul(text.c_str(), nullptr, 0);
  if (number == 0 || number == ULONG_MAX) {
    return OutOfRange();
  }
  *frequency_mhz = static_cast<uint32_t>(number);
  return true;
}

bool FillSignal(const Network& network, int8_t* signal_dbm) {
  eastl::string text;
  if (ReadNetworkProperty(network, "signal_level", text) != 0) {
    return false;
  }
  // Base 0, as for the frequency.
  const long number = strtol(text.c_str(), nullptr, 0);
  if (number == 0 || number < INT8_MIN || number > INT8_MAX) {
    return OutOfRange();
  }
  *signal_dbm = static_cast<int8_t>(number);
  return true;
}

WifiSecurity PublicSecurity(const Network& network) {
  if (network.security != WifiSecurity_Open && network.security != WifiSecurity_Wpa2Psk) {
    return WifiSecurity_Unknown;
  }
  return static_cast<WifiSecurity>(network.security);
}

}  // namespace wifi
