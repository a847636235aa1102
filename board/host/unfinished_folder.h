// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_HOST_UNFINISHED_FOLDER_H
#define KESTREL_BOARD_HOST_UNFINISHED_FOLDER_H

#include <string>

#include "host/unique_fd.h"

namespace kestrel::board {

/// Whether this is the name of a folder that is no board yet. No board's name begins so.
bool IsUnfinished(const std::string& name);

/// A folder with a lock in it, made under another name, so that one with the name of a board is a
/// board's from its first moment on. It goes unless it gets that name.
class UnfinishedFolder {
 public:
  /// Makes it in the common folder, which must stay open.
  explicit UnfinishedFolder(int common);
  ~UnfinishedFolder();
  UnfinishedFolder(const UnfinishedFolder&) = delete;
  UnfinishedFolder& operator=(const UnfinishedFolder&) = delete;

  /// Makes its lock and gives it the name of a board, where nothing but an empty folder may be.
  /// Returns 0 or an errno value.
  int Finish(const std::string& name);

  UniqueFd TakeFolder() { return std::move(folder_); }
  UniqueFd TakeLock() { return std::move(lock_); }

 private:
  int common_;
  int error_ = 0;
  std::string name_;  ///< empty when there is nothing to remove
  UniqueFd folder_;
  UniqueFd lock_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_HOST_UNFINISHED_FOLDER_H
