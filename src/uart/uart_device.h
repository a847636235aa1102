// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_UART_DEVICE_H
#define KESTREL_UART_UART_DEVICE_H

#include <stdint.h>
#include <termios.h>

#include "core/test_placeholder.h"
#include "uart/uart_config.h"
#include "uart/uart_syscall_shim.h"

namespace kestrel::uart {

/// One serial port on its way to being open. An open descriptor outlives it and is the caller's.
class UartDevice : public vesta::test::support::test_placeholder {
 public:
  /// `syscalls` stays the caller's.
  explicit UartDevice(const UartSyscallShim* syscalls) : syscalls_(syscalls) {}

  /// Opens port `uart_id`, locks it and sets it up. Returns its descriptor, or -1 with errno set
  /// after printing what went wrong; the port is then closed again.
  int32_t Open(uint32_t uart_id, const UartConfigWrapper& config);

 private:
  bool OpenNode(uint32_t uart_id);
  bool Lock();
  bool Configure(const UartConfigWrapper& config);
  bool SetSpeed(speed_t speed, termios* settings) const;
  bool SetNonBlocking() const;
  bool ApplyAndConfirm(const termios& settings) const;
  void Close(const char* problem);

  int32_t fd_ = -1;
  const UartSyscallShim* syscalls_;
};

}  // namespace kestrel::uart

#endif  // KESTREL_UART_UART_DEVICE_H
