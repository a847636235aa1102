// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_FOLDER_CONTENT_H
#define KESTREL_BOARD_HOST_FOLDER_CONTENT_H

#include <string>
#include <vector>

#include "host/unique_fd.h"

namespace kestrel::board {

/// Opens the folder called `name` in `common`, but nothing that a symbolic link leads to. Invalid
/// with errno set when it is none, or not this user's.
UniqueFd OpenFolder(int common, const std::string& name);

/// The names of all that is in a folder, sorted.
std::vector<std::string> NamesIn(int folder);

/// Removes `files` and then the lock from the folder called `name` in `common`, which is open as
/// `folder`, and the folder itself if that was all. Returns the names of what else is there.
std::vector<std::string> RemoveFolder(int common, const std::string& name, int folder,
                                      const std::vector<std::string>& files);

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_FOLDER_CONTENT_H
