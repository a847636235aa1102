// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_SERVICE_MANAGER_H
#define KESTREL_RELAY_SERVICE_MANAGER_H

#include <string>

namespace kestrel::relay {

/// Tells the service manager, when there is one that wants to know, such as "READY=1".
void TellServiceManager(const std::string& state);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_SERVICE_MANAGER_H
