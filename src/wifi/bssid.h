// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_BSSID_H
#define KESTREL_WIFI_BSSID_H

#include <EASTL/string.h>
#include <stdint.h>

namespace wifi {

/// Converts text like "02:00:00:00:01:00" and returns 0. Otherwise sets errno to EINVAL and returns
/// -1, with the bytes before the fault written. Length and colons alone are checked: what is no
/// hexadecimal number counts as 0, which callers have seen before and live with.
int ParseBssid(const eastl::string& text, uint8_t bssid[6]);

}  // namespace wifi

#endif  // KESTREL_WIFI_BSSID_H
