// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_PORT_H
#define KESTREL_TOOLS_KESTRELCTL_UART_PORT_H

#include <kestrel/uart.h>

#include <cstdint>
#include <optional>
#include <string>

#include "descriptor.h"

namespace kestrelctl {

struct UartSettings {
  uint32_t number;
  uint32_t baud;
  UartFlowControl flow;
};

/// "UART 0", as messages call a port.
std::string UartName(uint32_t number);

/// An open port, or nothing after reporting why not.
std::optional<Descriptor> OpenUart(const UartSettings& settings);

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_PORT_H
