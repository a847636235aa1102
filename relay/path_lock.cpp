// SPDX-License-Identifier: Apache-2.0
#include "path_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "host/error.h"
#include "unix_address.h"

namespace kestrel::relay {
namespace {

using board::BoardError;
using board::ThrowErrno;
using board::UniqueFd;

/// In a folder where others may write, somebody can remove the file again and again.
constexpr int kMostAttempts = 100;

/// Whether the file is still the one that is found at the path.
bool IsAt(int descriptor, const std::string& path) {
  struct stat held {};
  struct stat found {};
  return fstat(descriptor, &held) == 0 && stat(path.c_str(), &found) == 0 &&
         held.st_dev == found.st_dev && held.st_ino == found.st_ino;
}

struct stat StatusOf(int descriptor, const std::string& path) {
  struct stat file {};
  if (fstat(descriptor, &file) != 0) {
    ThrowErrno(path);
  }
  return file;
}

/// In a folder where others may write, somebody may have put a link to a file of ours.
void CheckIsOwn(const struct stat& file, const std::string& path) {
  const std::string cannot = "cannot lock " + path + ": it ";
  if (!S_ISREG(file.st_mode)) {
    throw BoardError(cannot + "is not a regular file");
  }
  if (file.st_uid != geteuid()) {
    throw BoardError(cannot + "belongs to user " + std::to_string(file.st_uid));
  }
  if (file.st_nlink > 1) {
    throw BoardError(cannot + "has another name, too");
  }
}

std::string Content(int descriptor) {
  std::array<char, 16> buffer;
  const ssize_t size = pread(descriptor, buffer.data(), buffer.size(), 0);
  return {buffer.data(), size > 0 ? static_cast<size_t>(size) : 0};
}

void WriteProcess(int descriptor, const std::string& path) {
  const std::string process = std::to_string(getpid());
  if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, process.data(), process.size(), 0) !=
                                           static_cast<ssize_t>(process.size())) {
    ThrowErrno(path);
  }
}

}  // namespace

PathLock::PathLock(const std::string& served_path) : path_(served_path + ".lock") {
  int attempts = 1;
  while (!TryTake(served_path)) {
    if (++attempts > kMostAttempts) {
      throw BoardError("cannot lock " + path_ + ": somebody keeps removing it");
    }
  }
  WriteProcess(file_.get(), path_);
}

bool PathLock::TryTake(const std::string& served_path) {
  file_ = UniqueFd(open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file_.valid()) {
    ThrowErrno(path_);
  }
  const struct stat file = StatusOf(file_.get(), path_);
  CheckIsOwn(file, path_);
  const bool is_open_to_others = (file.st_mode & 077) != 0;
  if (flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) {
      ThrowErrno(path_);
    }
    // What others can open may be locked by anybody, but then nobody listens.
    if (!is_open_to_others || HasListener(served_path, SOCK_SEQPACKET)) {
      throw BoardError(served_path + ": a relay serves it already, process " +
                       Content(file_.get()));
    }
  }
  // One that ends may remove the file between its being opened and locked here.
  if (!IsAt(file_.get(), path_)) {
    return false;
  }
  if (is_open_to_others) {
    // Another mode would not take it from those who have opened it before.
    unlink(path_.c_str());
  }
  return !is_open_to_others;
}

PathLock::~PathLock() { unlink(path_.c_str()); }

}  // namespace kestrel::relay
