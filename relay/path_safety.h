// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_PATH_SAFETY_H
#define KESTREL_RELAY_PATH_SAFETY_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace kestrel::relay {

/// Whether a user can be trusted with what the relay can do: root, and the user of the relay.
bool IsTrusted(uid_t user);

enum class GroupWriting { kIsARisk, kIsIntended };

/// Why others than the trusted users could put a file of theirs into a folder, or put another
/// folder in its place: a text for each folder on the way that lets them. `of_the_last` tells
/// whether the group of the folder itself may write there; a missing folder is judged by where it
/// would be.
std::vector<std::string> RisksOf(const std::string& folder,
                                 GroupWriting of_the_last = GroupWriting::kIsARisk);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_PATH_SAFETY_H
