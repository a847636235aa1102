// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_UART_SYSCALL_SHIM_H
#define KESTREL_UART_UART_SYSCALL_SHIM_H

#include <fcntl.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include "core/test_placeholder.h"

namespace kestrel::uart {

/// Every system call with which a port is opened, each going straight to the C library.
class UartSyscallShim : public vesta::test::support::test_placeholder {
 public:
  constexpr UartSyscallShim() = default;

  int Open(const char* path, int flags) const { return open(path, flags); }
  int Close(int fd) const { return close(fd); }
  int Lock(int fd, int operation) const { return flock(fd, operation); }
  int SetStatusFlags(int fd, int flags) const { return fcntl(fd, F_SETFL, flags); }
  int GetAttributes(int fd, termios* attributes) const { return tcgetattr(fd, attributes); }
  int SetAttributes(int fd, const termios& attributes) const {
    return tcsetattr(fd, TCSANOW, &attributes);
  }
  int SetOutputSpeed(termios* attributes, speed_t speed) const {
    return cfsetospeed(attributes, speed);
  }
  int SetInputSpeed(termios* attributes, speed_t speed) const {
    return cfsetispeed(attributes, speed);
  }
};

}  // namespace kestrel::uart

#endif  // KESTREL_UART_UART_SYSCALL_SHIM_H
