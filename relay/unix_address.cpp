// SPDX-License-Identifier: Apache-2.0
#include "unix_address.h"

#include <cerrno>

#include "host/unique_fd.h"

namespace kestrel::relay {

bool HasListener(const std::string& path, int type) {
  const UnixAddress address(path);
  const board::UniqueFd probe(socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  return !probe.valid() || connect(probe.get(), address.get(), UnixAddress::size()) == 0 ||
         (errno != ECONNREFUSED && errno != ENOENT);
}

}  // namespace kestrel::relay
