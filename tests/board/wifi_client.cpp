// SPDX-License-Identifier: Apache-2.0
#include "wifi_client.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <vector>

namespace kestrel::test {
namespace {

constexpr size_t kLongestReply = 131072;
constexpr std::chrono::seconds kPatience{20};
constexpr int kLookIntervalMilliseconds = 5;

/// The events that have come to a socket until `limit` has passed.
short Await(int socket, short events, std::chrono::milliseconds limit) {
  pollfd watched = {socket, events, 0};
  poll(&watched, 1, static_cast<int>(limit.count()));
  return watched.revents;
}

}  // namespace

WifiClient::WifiClient(const std::string& path)
    : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)), error_(0) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    error_ = errno;
  }
}

WifiClient::~WifiClient() { close(socket_); }

bool WifiClient::Send(const std::string& bytes) const {
  return send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

std::optional<std::string> WifiClient::Receive(std::chrono::milliseconds limit) const {
  const short events = Await(socket_, POLLIN | POLLRDHUP, limit);
  if ((events & POLLIN) == 0) {
    return std::nullopt;
  }
  std::vector<char> buffer(kLongestReply);
  const ssize_t size = recv(socket_, buffer.data(), buffer.size(), 0);
  // An empty reply and the end of the connection are both read as nothing.
  if (size < 0 || (size == 0 && (events & POLLRDHUP) != 0)) {
    return std::nullopt;
  }
  return std::string(buffer.data(), static_cast<size_t>(size));
}

std::string WifiClient::Ask(const std::string& command) const {
  return Send(command + '\0') ? Receive().value_or("(none)") : "(not sent)";
}

std::string WifiClient::AskUntil(const std::string& command, const std::string& text) const {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  std::string reply = Ask(command);
  while (reply.find(text) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
    poll(nullptr, 0, kLookIntervalMilliseconds);
    reply = Ask(command);
  }
  return reply;
}

bool WifiClient::SeesTheEnd() const {
  const short events = Await(socket_, POLLIN | POLLRDHUP, kPatience);
  char byte = 0;
  return (events & (POLLRDHUP | POLLHUP)) != 0 && recv(socket_, &byte, 1, MSG_DONTWAIT) <= 0;
}

}  // namespace kestrel::test
