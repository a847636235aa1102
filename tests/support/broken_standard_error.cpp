// SPDX-License-Identifier: Apache-2.0
#include "support/broken_standard_error.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace kestrel::test {
namespace {

int SavedStandardError() {
  const int saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (saved < 0) {
    abort();
  }
  return saved;
}

void RestoreStandardError(int saved) {
  dup2(saved, STDERR_FILENO);
  close(saved);
}

}  // namespace

ClosedStandardError::ClosedStandardError() : saved_(SavedStandardError()) { close(STDERR_FILENO); }

ClosedStandardError::~ClosedStandardError() { RestoreStandardError(saved_); }

FullStandardError::FullStandardError() : saved_(SavedStandardError()) {
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full < 0 || dup2(full, STDERR_FILENO) < 0) {
    abort();
  }
  close(full);
}

FullStandardError::~FullStandardError() { RestoreStandardError(saved_); }

PacketStandardError::PacketStandardError() : saved_(SavedStandardError()) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) < 0 ||
      dup2(ends[1], STDERR_FILENO) < 0) {
    abort();
  }
  reader_ = ends[0];
  close(ends[1]);
}

PacketStandardError::~PacketStandardError() {
  RestoreStandardError(saved_);
  close(reader_);
}

std::vector<std::string> PacketStandardError::Received() const {
  std::vector<std::string> packets;
  std::array<char, 4096> packet{};
  for (;;) {
    const ssize_t size = recv(reader_, packet.data(), packet.size(), MSG_DONTWAIT);
    if (size <= 0) {
      return packets;
    }
    packets.emplace_back(packet.data(), static_cast<size_t>(size));
  }
}

BufferedStandardError::BufferedStandardError() : saved_(stderr) {
  stderr = fdopen(SavedStandardError(), "w");
  if (stderr == nullptr) {
    abort();
  }
}

BufferedStandardError::~BufferedStandardError() {
  fclose(stderr);
  stderr = saved_;
}

}  // namespace kestrel::test
