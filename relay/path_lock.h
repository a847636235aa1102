// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_PATH_LOCK_H
#define KESTREL_RELAY_PATH_LOCK_H

#include <string>

#include "host/unique_fd.h"

namespace kestrel::relay {

/// The right to serve a path, which one process has at a time: a locked file beside it, in which is
/// the number of the process. Removed at the end. Only its user can open the file, because whoever
/// can open a file can lock it.
class PathLock {
 public:
  /// Throws BoardError when another relay has it.
  explicit PathLock(const std::string& served_path);
  ~PathLock();
  PathLock(const PathLock&) = delete;
  PathLock& operator=(const PathLock&) = delete;

 private:
  bool TryTake(const std::string& served_path);

  std::string path_;
  board::UniqueFd file_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_PATH_LOCK_H
