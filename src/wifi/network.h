// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_NETWORK_H
#define KESTREL_WIFI_NETWORK_H

#include <EASTL/hash_map.h>
#include <EASTL/string.h>
#include <EASTL/vector.h>
#include <stdint.h>

#include <nwl/expected>

namespace wifi {

// Values of Network::enabledState; 0 is "not set".
inline constexpr int32_t kEnabled = 1;
inline constexpr int32_t kDisabled = 2;
inline constexpr int32_t kTemporarilyDisabled = 3;

// Values of Network::connectionState; 0 is "not set".
inline constexpr int32_t kNotConnected = 1;
inline constexpr int32_t kConnected = 2;

/// One network as read from a reply of the daemon, or as it is to be stored there.
struct Network {
  /// Always succeeds.
  nwl::error_code SetProperty(const eastl::string& key, const eastl::string& value);

  nwl::Expected<eastl::string> GetProperty(const eastl::string& key) const;

  /// The property itself, or null. For those who must not leave copies of it behind.
  const eastl::string* FindProperty(const eastl::string& key) const;

  eastl::hash_map<eastl::string, eastl::string> properties;
  int32_t networkId = 0;  ///< the daemon's, when idValid
  bool idValid = false;
  int32_t enabledState = 0;
  int32_t connectionState = 0;
  int32_t security = 0;  ///< a WifiSecurity constant
};

using NetworkList = eastl::vector<Network>;

/// Moves the property `key` into `value` and returns 0. When it is missing, prints so, sets errno
/// to ENODATA and returns -1.
int ReadNetworkProperty(const Network& network, const eastl::string& key, eastl::string& value);

}  // namespace wifi

#endif  // KESTREL_WIFI_NETWORK_H
