// SPDX-License-Identifier: Apache-2.0
#include "raw_port.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace kestrel::test {
namespace {

void WaitFor(int descriptor, short events) {
  pollfd watched{descriptor, events, 0};
  poll(&watched, 1, 100);
}

}  // namespace

int OpenPort(int number) {
  const std::string path = "/dev/ttyS" + std::to_string(number);
  return open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
}

RawPort::RawPort(int number) : descriptor_(OpenPort(number)) {
  if (descriptor_ < 0) {
    throw std::runtime_error("port " + std::to_string(number) + " cannot be opened");
  }
}

RawPort::~RawPort() { close(descriptor_); }

void RawPort::MakeRaw() const {
  termios settings{};
  tcgetattr(descriptor_, &settings);
  cfmakeraw(&settings);
  tcsetattr(descriptor_, TCSANOW, &settings);
}

std::string RawPort::Receive(size_t size) const {
  std::string received;
  Eventually([&] {
    WaitFor(descriptor_, POLLIN);
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor_, buffer.data(), buffer.size());
    received.append(buffer.data(), count > 0 ? static_cast<size_t>(count) : 0);
    return received.size() >= size;
  });
  return received;
}

void RawPort::Send(const std::string& bytes) const {
  size_t sent = 0;
  Eventually([&] {
    const ssize_t count = write(descriptor_, bytes.data() + sent, bytes.size() - sent);
    sent += count > 0 ? static_cast<size_t>(count) : 0;
    if (count < 0) {
      WaitFor(descriptor_, POLLOUT);
    }
    return sent == bytes.size();
  });
}

std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(i + i / 256 + i / 65536);
  }
  return bytes;
}

}  // namespace kestrel::test
