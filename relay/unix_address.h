// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_UNIX_ADDRESS_H
#define KESTREL_RELAY_UNIX_ADDRESS_H

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

namespace kestrel::relay {

/// The longest path that a socket can have, without the terminating NUL.
inline constexpr size_t kLongestSocketPath = sizeof(sockaddr_un::sun_path) - 1;

/// The address of a path, of which as much is taken as there is room for.
class UnixAddress {
 public:
  explicit UnixAddress(const std::string& path) {
    address_.sun_family = AF_UNIX;
    path.copy(address_.sun_path, kLongestSocketPath);
  }

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
  static constexpr socklen_t size() { return sizeof(sockaddr_un); }

 private:
  sockaddr_un address_{};
};

/// Whether somebody has a socket of this type at the path. Only a refusal tells that nobody has.
bool HasListener(const std::string& path, int type);

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_UNIX_ADDRESS_H
