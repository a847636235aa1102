// SPDX-License-Identifier: Apache-2.0
#include "wifi/network.h"

#include <errno.h>
#include <stdio.h>

#include <utility>

#include "core/refuse.h"
#include "wifi/wifi_error.h"

namespace wifi {

nwl::error_code Network::SetProperty(const eastl::string& key, const eastl::string& value) {
  properties.insert_or_assign(key, value);
  return {};
}

const eastl::string* Network::FindProperty(const eastl::string& key) const {
  const auto found = properties.find(key);
  return found == properties.end() ? nullptr : &found->second;
}

nwl::Expected<eastl::string> Network::GetProperty(const eastl::string& key) const {
  const eastl::string* const value = FindProperty(key);
  if (value == nullptr) {
    return MakeError(WifiError::PropertyMissing);
  }
  return *value;
}

int ReadNetworkProperty(const Network& network, const eastl::string& key, eastl::string& value) {
  nwl::Expected<eastl::string> property = network.GetProperty(key);
  if (!property.has_value()) {
    fprintf(stderr, "[Kestrel:WifiConfig] Error parsing network property: %d\n",
            property.error().value);
    return kestrel::Refuse(ENODATA);
  }
  value = std::move(property).value();
  return 0;
}

}  // namespace wifi
