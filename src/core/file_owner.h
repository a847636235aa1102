// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_CORE_FILE_OWNER_H
#define KESTREL_CORE_FILE_OWNER_H

#include <stdint.h>
#include <unistd.h>

#include <utility>

#include "core/kept_errno.h"

namespace kestrel {

/// Owns a descriptor, or -1 for none, and closes it at the end of its scope at the latest. Closing
/// leaves errno alone, so that it can come after the errno of a failure has been set.
class FileOwner {
 public:
  explicit FileOwner(int32_t fd) : fd_(fd) {}
  ~FileOwner() { Close(); }
  FileOwner(const FileOwner&) = delete;
  FileOwner& operator=(const FileOwner&) = delete;

  int32_t get() const { return fd_; }

  /// Gives the descriptor away: whoever takes it closes it.
  int32_t Release() { return std::exchange(fd_, -1); }

  void Close() {
    if (fd_ != -1) {
      const KeptErrno kept;
      close(fd_);
      fd_ = -1;
    }
  }

 private:
  int32_t fd_;
};

}  // namespace kestrel

#endif  // KESTREL_CORE_FILE_OWNER_H
