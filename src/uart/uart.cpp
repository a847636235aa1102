// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <kestrel/uart.h>

#include <memory>
#include <new>

#include "core/refuse.h"
#include "uart/uart_config.h"
#include "uart/uart_device.h"
#include "uart/uart_manager.h"
#include "uart/uart_syscall_shim.h"

using kestrel::Refuse;

namespace {

constexpr uint32_t kHighestUartId = 255;

}  // namespace

int z__UART_InitConfig(UartConfigRecord* config, uint32_t structVersion) {
  kestrel::uart::GetUartManager();
  if (structVersion != UART_CONFIG_VERSION) {
    return Refuse(EINVAL);
  }
  kestrel::uart::WriteDefaults(config);
  return 0;
}

int z__UART_Open(uint32_t uartId, const UartConfigRecord* config) {
  const kestrel::uart::UartSyscallShim syscalls;
  kestrel::uart::UartDevice device(&syscalls);
  kestrel::uart::GetUartManager();
  const std::unique_ptr<kestrel::uart::UartConfigWrapper> checked(
      new (std::nothrow) kestrel::uart::UartConfigWrapper());
  if (checked == nullptr) {
    return Refuse(ENOMEM);
  }
  if (config == nullptr) {
    return Refuse(EFAULT);
  }
  if (!kestrel::uart::CheckConfig(*config, checked.get())) {
    return Refuse(EINVAL);
  }
  if (uartId > kHighestUartId) {
    return Refuse(ENODEV);
  }
  return device.Open(uartId, *checked);
}
