// SPDX-License-Identifier: Apache-2.0
#include "relay/unix_sockets.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>
#include <vector>

namespace kestrel::test {
namespace {

/// More than any message of these tests.
constexpr size_t kBufferSize = 16384;

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

const sockaddr* Generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

bool IsReady(int descriptor, short events) {
  pollfd watched = {descriptor, events, 0};
  return poll(&watched, 1, static_cast<int>(Patience().count())) == 1;
}

/// Whoever does not read what is sent, or does not accept connections, must not keep a test.
void LimitSending(int descriptor) {
  const auto patience = static_cast<long>(Patience().count());
  const timeval limit = {patience / 1000, (patience % 1000) * 1000};
  setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

}  // namespace

std::chrono::milliseconds Patience() {
  return testing::Test::HasFailure() ? std::chrono::milliseconds(100) : kPatience;
}

DatagramSocket::DatagramSocket(std::string path)
    : path_(std::move(path)), socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  unlink(path_.c_str());
  const sockaddr_un address = AddressOf(path_);
  if (bind(socket_, Generic(address), sizeof address) != 0) {
    throw std::runtime_error("cannot bind " + path_);
  }
}

DatagramSocket::~DatagramSocket() {
  if (socket_ >= 0) {
    unlink(path_.c_str());
    close(socket_);
  }
}

void DatagramSocket::Vanish() {
  close(socket_);
  socket_ = -1;
}

std::optional<Command> DatagramSocket::Receive() const {
  if (!IsReady(socket_, POLLIN)) {
    return std::nullopt;
  }
  std::vector<char> buffer(kBufferSize);
  sockaddr_un sender{};
  socklen_t length = sizeof sender;
  const ssize_t size = recvfrom(socket_, buffer.data(), buffer.size(), 0,
                                reinterpret_cast<sockaddr*>(&sender), &length);
  if (size < 0) {
    return std::nullopt;
  }
  return Command{{buffer.data(), static_cast<size_t>(size)}, sender.sun_path};
}

bool DatagramSocket::Send(const std::string& receiver, const std::string& text) const {
  const sockaddr_un address = AddressOf(receiver);
  LimitSending(socket_);
  return sendto(socket_, text.data(), text.size(), 0, Generic(address), sizeof address) >= 0;
}

void DatagramSocket::Expect(const std::string& command, const std::string& reply) const {
  const std::optional<Command> received = Receive();
  ASSERT_TRUE(received.has_value()) << "no command has come, but " << command << " was to";
  EXPECT_EQ(received->text, command);
  EXPECT_TRUE(Send(received->sender, reply));
}

int DatagramSocket::Fill() const {
  const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const sockaddr_un address = AddressOf(path_);
  int count = 0;
  while (sendto(sender, "x", 1, 0, Generic(address), sizeof address) == 1) {
    ++count;
  }
  close(sender);
  return count;
}

Program::Program(const std::string& path)
    : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
  const sockaddr_un address = AddressOf(path);
  LimitSending(socket_);
  EXPECT_EQ(connect(socket_, Generic(address), sizeof address), 0) << "nobody listens at " << path;
}

Program::~Program() { Leave(); }

void Program::Leave() {
  if (socket_ >= 0) {
    close(socket_);
    socket_ = -1;
  }
}

void Program::Send(const std::string& command) const { SendBytes(command + '\0'); }

void Program::SendBytes(const std::string& bytes) const {
  LimitSending(socket_);
  EXPECT_EQ(send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
            static_cast<ssize_t>(bytes.size()));
}

std::optional<std::string> Program::Receive() const {
  if (!IsReady(socket_, POLLIN)) {
    ADD_FAILURE() << "no reply has come";
    return std::nullopt;
  }
  std::vector<char> buffer(kBufferSize);
  const ssize_t size = recv(socket_, buffer.data(), buffer.size(), 0);
  pollfd watched = {socket_, POLLIN, 0};
  const bool ended = size <= 0 && poll(&watched, 1, 0) == 1 && (watched.revents & POLLHUP) != 0;
  if (size < 0 || ended) {
    return std::nullopt;
  }
  return std::string(buffer.data(), static_cast<size_t>(size));
}

bool Program::SeesTheEnd() const { return IsReady(socket_, 0); }

}  // namespace kestrel::test
