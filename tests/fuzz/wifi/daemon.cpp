// SPDX-License-Identifier: Apache-2.0
#include "fuzz/wifi/daemon.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "command_filter.h"
#include "fuzz/support/promise.h"

namespace kestrel::fuzz {
namespace {

constexpr int kConnection = 700;  ///< the descriptor that every connection gets

Daemon* g_daemon = nullptr;

int FailWith(int error) {
  errno = error;
  return -1;
}

/// Fails with the errno that a section names.
int FailAsTold(const std::string& told) {
  const auto error = told.empty() ? '\0' : told.front();
  return FailWith(error == '\0' ? EIO : static_cast<unsigned char>(error));
}

}  // namespace

Daemon::Daemon(Input& input) : input_(input) { g_daemon = this; }

Daemon::~Daemon() {
  Promise(!is_open_);
  g_daemon = nullptr;
}

int Daemon::Socket() {
  Promise(!is_open_);
  if (const std::optional<std::string> failure = input_.TakeBehind("!s")) {
    return FailAsTold(*failure);
  }
  is_open_ = true;
  return kConnection;
}

int Daemon::Connect() {
  const std::optional<std::string> failure = input_.TakeBehind("!c");
  return failure ? FailAsTold(*failure) : 0;
}

ssize_t Daemon::Take(std::string_view command) {
  // A daemon must be able to tell what is asked of it, whatever the names and replies are; and one
  // behind the relay must be asked.
  Promise(is_open_ && command.size() > 1 && command.back() == '\0');
  Promise(relay::Judge(command.substr(0, command.size() - 1)) == relay::Verdict::kAllowed);
  const std::optional<std::string> failure = input_.TakeBehind("!w");
  return failure ? FailAsTold(*failure) : static_cast<ssize_t>(command.size());
}

ssize_t Daemon::Reply(void* buffer, size_t size) {
  Promise(is_open_);
  if (input_.AtEnd()) {
    return FailWith(EAGAIN);
  }
  if (const std::optional<std::string> failure = input_.TakeBehind("!r")) {
    return FailAsTold(*failure);
  }
  const std::string reply = input_.TakeSection();
  const size_t received = std::min(reply.size(), size);
  memcpy(buffer, reply.data(), received);
  return static_cast<ssize_t>(received);
}

int Daemon::Close() {
  Promise(is_open_);
  is_open_ = false;
  return 0;
}

}  // namespace kestrel::fuzz

using kestrel::fuzz::FailWith;
using kestrel::fuzz::g_daemon;
using kestrel::fuzz::kConnection;
using kestrel::fuzz::Promise;

extern "C" {

int socket(int /*domain*/, int /*type*/, int /*protocol*/) noexcept {
  return g_daemon != nullptr ? g_daemon->Socket() : FailWith(EMFILE);
}

int connect(int /*fd*/, const sockaddr* /*address*/, socklen_t /*length*/) {
  return g_daemon != nullptr ? g_daemon->Connect() : FailWith(ENOENT);
}

int setsockopt(int /*fd*/, int /*level*/, int /*option*/, const void* /*value*/,
               socklen_t /*length*/) noexcept {
  return 0;
}

// The fuzzer has files of its own.
ssize_t writev(int fd, const iovec* vectors, int count) {
  if (fd != kConnection) {
    return syscall(SYS_writev, fd, vectors, count);
  }
  Promise(count == 1);
  return g_daemon->Take({static_cast<const char*>(vectors->iov_base), vectors->iov_len});
}

ssize_t read(int fd, void* buffer, size_t size) {
  return fd == kConnection ? g_daemon->Reply(buffer, size) : syscall(SYS_read, fd, buffer, size);
}

int close(int fd) {
  return fd == kConnection ? g_daemon->Close() : static_cast<int>(syscall(SYS_close, fd));
}

}  // extern "C"
