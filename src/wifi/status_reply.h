// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_WIFI_STATUS_REPLY_H
#define KESTREL_WIFI_STATUS_REPLY_H

#include <EASTL/string.h>

#include <nwl/expected>

#include "wifi/network.h"

namespace wifi {

/// Fills in a network from the reply to STATUS, or fails with ParseFailed.
nwl::Expected<void> ParseStatusReply(Network& network, const eastl::string& reply);

}  // namespace wifi

#endif  // KESTREL_WIFI_STATUS_REPLY_H
