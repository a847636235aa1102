// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_CLIENT_FOLDER_H
#define KESTREL_RELAY_CLIENT_FOLDER_H

#include <string>

namespace kestrel::relay {

/// Makes the folder of the links where it is missing, and removes the sockets in it whose process
/// was killed. Returns how many they were. Throws BoardError, also for a folder of somebody else's,
/// who could take the links away.
int PrepareClientFolder(const std::string& folder);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_CLIENT_FOLDER_H
