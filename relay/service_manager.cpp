// SPDX-License-Identifier: Apache-2.0
#include "service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>

#include "host/unique_fd.h"

namespace kestrel::relay {

void TellServiceManager(const std::string& state) {
  const char* const variable = getenv("NOTIFY_SOCKET");
  std::string name = variable == nullptr ? "" : variable;
  sockaddr_un address{};
  if (name.empty() || name.size() >= sizeof address.sun_path) {
    return;
  }
  // The name of a socket that is no file begins with a NUL, and its length tells where it ends.
  if (name.front() == '@') {
    name.front() = '\0';
  }
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path, name.size());
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
  const board::UniqueFd sender(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sendto(sender.get(), state.data(), state.size(), MSG_NOSIGNAL | MSG_DONTWAIT,
         reinterpret_cast<const sockaddr*>(&address), size);
}

}  // namespace kestrel::relay
