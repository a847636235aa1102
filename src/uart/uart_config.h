// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_UART_CONFIG_H
#define KESTREL_UART_UART_CONFIG_H

#include <kestrel/uart.h>
#include <stdint.h>

namespace kestrel::uart {

/// A configuration that has passed the checks.
struct UartConfigWrapper {
  virtual ~UartConfigWrapper() = default;

  uint32_t speed = 0;  ///< the terminal's code of the speed, not bits per second
  UartBlockingMode blockingMode = 0;
  UartDataBits dataBits = 0;
  UartParity parity = 0;
  UartStopBits stopBits = 0;
  UartFlowControl flowControl = 0;
};

/// Writes the defaults into every field of `record` and leaves its padding alone.
void WriteDefaults(UartConfigRecord* record);

/// Copies the fields of `record` into `checked` one by one, as far as they pass. Returns whether
/// all did.
bool CheckConfig(const UartConfigRecord& record, UartConfigWrapper* checked);

}  // namespace kestrel::uart

#endif  // KESTREL_UART_UART_CONFIG_H
