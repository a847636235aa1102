// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_WIFI_SECURITY_H
#define KESTREL_TOOLS_KESTRELCTL_WIFI_SECURITY_H

#include <kestrel/wificonfig.h>

#include <optional>
#include <string>

namespace kestrelctl {

const char* SecurityName(WifiSecurity security);
std::optional<WifiSecurity> SecurityOf(const std::string& text);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_WIFI_SECURITY_H
