// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_WIFI_ERROR_H
#define KESTREL_WIFI_WIFI_ERROR_H

#include <stdint.h>

#include <nwl/error_code>

#include "wifi/wifi_category.h"

namespace wifi {

/// The codes of the Wi-Fi category. Callers see some of their numbers in messages.
enum class WifiError : int32_t {
  ParseFailed = 2,
  ClientUnavailable = 3,
  PropertyMissing = 4,
  InvalidArgument = 5,
  CommandFailed = 6,
  NetworkIdOutOfRange = 7,
  NetworkNotFound = 8,
  NetworkAlreadyExists = 9,
  InvalidEnabledState = 10,
};

inline nwl::error_code MakeError(WifiError code) {
  return {static_cast<int32_t>(code), &wifi_category()};
}

}  // namespace wifi

#endif  // KESTREL_WIFI_WIFI_ERROR_H
