// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_SUPPORT_FAKE_SYSTEM_H
#define KESTREL_TESTS_SUPPORT_FAKE_SYSTEM_H

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <termios.h>
#include <time.h>

#include <functional>

#include "support/observed_call.h"

namespace kestrel::test {

/// Stands in for the system calls that the library makes. While one is installed, every such call
/// of the process comes here; otherwise the calls go on to the system. To add a call, add its
/// method here and its one-line definition at the end of fake_system.cpp.
class FakeSystem {
 public:
  MOCK_METHOD(int, Open, (const char* path, int flags));
  MOCK_METHOD(int, Close, (int fd));
  MOCK_METHOD(int, Ioctl, (int fd, unsigned long request, void* argument));
  MOCK_METHOD(ssize_t, Read, (int fd, void* buffer, size_t size));
  MOCK_METHOD(int, Fcntl, (int fd, int command, long argument));
  MOCK_METHOD(int, Flock, (int fd, int operation));
  MOCK_METHOD(int, Tcgetattr, (int fd, termios* settings));
  MOCK_METHOD(int, Tcsetattr, (int fd, int when, const termios* settings));
  MOCK_METHOD(int, Cfsetospeed, (termios * settings, speed_t speed));
  MOCK_METHOD(int, Cfsetispeed, (termios * settings, speed_t speed));
  MOCK_METHOD(int, Socket, (int domain, int type, int protocol));
  MOCK_METHOD(int, Connect, (int fd, const sockaddr* address, socklen_t length));
  MOCK_METHOD(ssize_t, Writev, (int fd, const iovec* vectors, int count));
  MOCK_METHOD(int, Setsockopt,
              (int fd, int level, int option, const void* value, socklen_t length));
  MOCK_METHOD(int, ClockGettime, (clockid_t clock, timespec* time));
};

/// Runs `function` with `system` in place of the system's calls, and returns its result with errno
/// as `function` left it.
int RunOn(FakeSystem& system, const std::function<int()>& function);

/// Observe() with `system` in place of the system's calls, for the length of `function` alone.
Observed ObserveOn(FakeSystem& system, const std::function<int()>& function);

/// The action of a call that fails.
inline auto FailWith(int error) { return testing::SetErrnoAndReturn(error, -1); }

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_SUPPORT_FAKE_SYSTEM_H
