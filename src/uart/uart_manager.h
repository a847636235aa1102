// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_UART_MANAGER_H
#define KESTREL_UART_UART_MANAGER_H

namespace kestrel::uart {

/// Stands for the UART family in the process. It holds nothing: ports belong to whoever opened
/// them.
class UartManager {
 public:
  constexpr UartManager() = default;
  virtual ~UartManager() = default;
};

UartManager& GetUartManager();

}  // namespace kestrel::uart

#endif  // KESTREL_UART_UART_MANAGER_H
