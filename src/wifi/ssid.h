// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_SSID_H
#define KESTREL_WIFI_SSID_H

#include <EASTL/string.h>
#include <EASTL/vector.h>

#include <nwl/expected>

#include "wifi/network.h"

namespace wifi {

/// Whether all bytes are printable ASCII, which is all that commands can carry.
bool IsPrintable(const eastl::string& text);

/// Whether a network of this name can be stored: 1 to 32 bytes, all printable.
bool IsValidSsid(const eastl::string& ssid);

/// `text` with "\x22" in place of every double quote. Backslashes are not doubled: what the daemon
/// makes of them is known to callers.
eastl::string EscapeQuotes(const eastl::string& text);

/// A copy of the first network of this name; or InvalidArgument for a name that cannot be stored,
/// or NetworkNotFound.
nwl::Expected<Network> FindNetworkBySsid(const eastl::vector<Network>& networks,
                                         const eastl::string& ssid);

}  // namespace wifi

#endif  // KESTREL_WIFI_SSID_H
