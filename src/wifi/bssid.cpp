// SPDX-License-Identifier: Apache-2.0
#include "wifi/bssid.h"

#include <errno.h>
#include <stddef.h>
#include <stdlib.h>

#include "core/refuse.h"

namespace wifi {
namespace {

constexpr size_t kOctets = 6;
constexpr size_t kTextLength = 17;

}  // namespace

int ParseBssid(const eastl::string& text, uint8_t bssid[6]) {
  if (text.size() != kTextLength) {
    return kestrel::Refuse(EINVAL);
  }
  for (size_t i = 0; i < kOctets; ++i) {
    const char* const octet = text.data() + 3 * i;
    const char digits[] = {octet[0], octet[1], '\0'};
    bssid[i] = static_cast<uint8_t>(strtoul(digits, nullptr, 16));
    if (i + 1 < kOctets && octet[2] != ':') {
      return kestrel::Refuse(EINVAL);
    }
  }
  return 0;
}

}  // namespace wifi
