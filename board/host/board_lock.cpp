// SPDX-License-Identifier: Apache-2.0
#include "host/board_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace kestrel::board {
namespace {

constexpr char kText[] = "\nkestrel-board made this folder and removes it when the board ends.\n";
/// The number of the process, with blanks in front.
constexpr size_t kNumberSize = 10;
constexpr size_t kSize = kNumberSize + sizeof kText - 1;

bool HasContent(int lock) {
  std::array<char, kSize + 1> bytes{};
  const ssize_t count = pread(lock, bytes.data(), bytes.size(), 0);
  const std::string content(bytes.data(), count < 0 ? 0 : static_cast<size_t>(count));
  return content.size() == kSize && strspn(content.c_str(), " 0123456789") == kNumberSize &&
         content.substr(kNumberSize) == kText;
}

bool IsRegularFile(int descriptor, off_t* size) {
  struct stat status {};
  const bool is_known = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  *size = status.st_size;
  return is_known;
}

/// Whether the file that `lock` has open is still the one in the folder.
bool IsIn(int folder, int lock) {
  struct stat open_file {};
  struct stat named_file {};
  return fstat(lock, &open_file) == 0 &&
         fstatat(folder, kLockFile, &named_file, AT_SYMLINK_NOFOLLOW) == 0 &&
         open_file.st_ino == named_file.st_ino && open_file.st_dev == named_file.st_dev;
}

UniqueFd Open(int folder, bool may_be_empty) {
  // Somebody else's file of that name may be a pipe, which must not make an open wait.
  UniqueFd lock(openat(folder, kLockFile, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  off_t size = 0;
  if (lock.valid() && IsRegularFile(lock.get(), &size) &&
      (HasContent(lock.get()) || (may_be_empty && size == 0))) {
    return lock;
  }
  return UniqueFd();
}

}  // namespace

UniqueFd CreateLock(int folder) {
  UniqueFd lock(
      openat(folder, kLockFile, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!lock.valid()) {
    return lock;
  }
  const bool locked = flock(lock.get(), LOCK_EX | LOCK_NB) == 0;
  if (!locked && errno != EWOULDBLOCK) {
    return UniqueFd();
  }
  if (!locked || !IsIn(folder, lock.get())) {
    // Whoever clears away what killed boards left has taken it for one of these.
    errno = ENOENT;
    return UniqueFd();
  }
  return lock;
}

bool WriteLock(int lock, pid_t process) {
  std::array<char, kSize + 1> text{};
  snprintf(text.data(), text.size(), "%*d%s", static_cast<int>(kNumberSize), process, kText);
  const ssize_t written = pwrite(lock, text.data(), kSize, 0);
  if (written >= 0 && static_cast<size_t>(written) < kSize) {
    errno = ENOSPC;
  }
  return written == static_cast<ssize_t>(kSize);
}

UniqueFd OpenLock(int folder) { return Open(folder, false); }

UniqueFd OpenUnfinishedLock(int folder) { return Open(folder, true); }

bool IsHeld(const UniqueFd& lock) {
  return lock.valid() && flock(lock.get(), LOCK_SH | LOCK_NB) != 0;
}

bool TakeAbandoned(const UniqueFd& lock, int folder) {
  return flock(lock.get(), LOCK_EX | LOCK_NB) == 0 && IsIn(folder, lock.get());
}

}  // namespace kestrel::board
