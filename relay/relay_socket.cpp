// SPDX-License-Identifier: Apache-2.0
#include "relay_socket.h"

#include <fcntl.h>
#include <grp.h>
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

std::string LockPathOf(const std::string& path) { return path + ".lock"; }

/// Whether the file is still the one that is found at the path.
bool IsAt(int descriptor, const std::string& path) {
  struct stat held {};
  struct stat found {};
  return fstat(descriptor, &held) == 0 && stat(path.c_str(), &found) == 0 &&
         held.st_dev == found.st_dev && held.st_ino == found.st_ino;
}

/// In a folder where others may write, somebody may have put a link to a file of ours.
void CheckIsOwn(int descriptor, const std::string& path) {
  struct stat file {};
  if (fstat(descriptor, &file) != 0) {
    ThrowErrno(path);
  }
  if (!S_ISREG(file.st_mode) || file.st_nlink > 1 || file.st_uid != geteuid()) {
    throw BoardError(path + ": is no lock of a relay of this user");
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

/// Makes room at the path, which nobody else who keeps to the lock uses.
void RemoveStaleSocket(const std::string& path) {
  struct stat file {};
  if (lstat(path.c_str(), &file) != 0) {
    return;
  }
  if (!S_ISSOCK(file.st_mode)) {
    throw BoardError(path + ": is there already, and no socket");
  }
  const UnixAddress address(path);
  const UniqueFd probe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!probe.valid()) {
    ThrowErrno(path);
  }
  if (connect(probe.get(), address.get(), UnixAddress::size()) == 0 || errno != ECONNREFUSED) {
    throw BoardError(path + ": another program listens there");
  }
  if (unlink(path.c_str()) != 0) {
    ThrowErrno(path);
  }
}

gid_t GroupNumber(const std::string& name) {
  const group* const entry = getgrnam(name.c_str());
  if (entry != nullptr) {
    return entry->gr_gid;
  }
  if (name.find_first_not_of("0123456789") == std::string::npos && name.size() < 10) {
    return static_cast<gid_t>(std::stoul(name));
  }
  throw BoardError("there is no group '" + name + "'");
}

/// The mode of what is bound in this scope.
class CreationMode {
 public:
  explicit CreationMode(mode_t mode) : previous_(umask(~mode & 0777)) {}
  ~CreationMode() { umask(previous_); }
  CreationMode(const CreationMode&) = delete;
  CreationMode& operator=(const CreationMode&) = delete;

 private:
  mode_t previous_;
};

UniqueFd Bind(const std::string& path, mode_t mode) {
  const UnixAddress address(path);
  UniqueFd bound(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const CreationMode creation_mode(mode);
  if (!bound.valid() || bind(bound.get(), address.get(), UnixAddress::size()) != 0) {
    ThrowErrno(path);
  }
  return bound;
}

}  // namespace

PathLock::PathLock(const std::string& served_path) : path_(LockPathOf(served_path)) {
  // One that ends may remove the file between its being opened and locked here.
  while (!TryTake(served_path)) {
  }
  WriteProcess(file_.get(), path_);
}

bool PathLock::TryTake(const std::string& served_path) {
  file_ = UniqueFd(open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
  if (!file_.valid()) {
    ThrowErrno(path_);
  }
  CheckIsOwn(file_.get(), path_);
  if (flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) {
      ThrowErrno(path_);
    }
    throw BoardError(served_path + ": a relay serves it already, process " + Content(file_.get()));
  }
  return IsAt(file_.get(), path_);
}

PathLock::~PathLock() { unlink(path_.c_str()); }

RelaySocket::RelaySocket(const std::string& path, mode_t mode, const std::string& group)
    : path_(path), lock_(path) {
  RemoveStaleSocket(path);
  const gid_t group_number = group.empty() ? static_cast<gid_t>(-1) : GroupNumber(group);
  listener_ = Bind(path, mode);
  // Nobody can connect before the socket listens.
  if (lchown(path.c_str(), static_cast<uid_t>(-1), group_number) != 0 ||
      listen(listener_.get(), SOMAXCONN) != 0) {
    const int saved_errno = errno;
    unlink(path.c_str());
    errno = saved_errno;
    ThrowErrno(path);
  }
}

RelaySocket::~RelaySocket() { unlink(path_.c_str()); }

}  // namespace kestrel::relay
