// SPDX-License-Identifier: Apache-2.0
#include "relay_socket.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "host/error.h"
#include "unix_address.h"

namespace kestrel::relay {
namespace {

using board::BoardError;
using board::ThrowErrno;
using board::UniqueFd;

/// Makes room at the path, which nobody else who keeps to the lock uses.
void RemoveStaleSocket(const std::string& path) {
  struct stat file {};
  if (lstat(path.c_str(), &file) != 0) {
    return;
  }
  if (!S_ISSOCK(file.st_mode)) {
    throw BoardError(path + ": is there already, and no socket");
  }
  if (HasListener(path, SOCK_SEQPACKET)) {
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
