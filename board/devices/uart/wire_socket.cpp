// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/wire_socket.h"

#include <sys/socket.h>

#include <utility>
#include <vector>

namespace kestrel::board::uart {
namespace {

size_t CountOf(ssize_t result) { return result < 0 ? 0 : static_cast<size_t>(result); }

}  // namespace

WireSocket::WireSocket(UniqueFd socket, std::function<void()> gone)
    : socket_(std::move(socket)), gone_(std::move(gone)) {}

size_t WireSocket::Take(char* buffer, size_t size) {
  // Bytes stay in the socket until they have arrived: that is how the command knows.
  return CountOf(recv(socket_.get(), buffer, size, MSG_PEEK | MSG_DONTWAIT));
}

size_t WireSocket::Give(const char* data, size_t size) {
  return CountOf(send(socket_.get(), data, size, MSG_DONTWAIT | MSG_NOSIGNAL));
}

void WireSocket::Arrived(size_t count) {
  std::vector<char> arrived(count);
  static_cast<void>(recv(socket_.get(), arrived.data(), count, MSG_DONTWAIT));
}

bool WireSocket::HungUp() {
  // It takes this object away, too.
  const std::function<void()> gone = gone_;
  gone();
  return false;
}

}  // namespace kestrel::board::uart
