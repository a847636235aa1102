// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_UART_DEVICE_H
#define KESTREL_BOARD_DEVICES_UART_UART_DEVICE_H

#include "devices/device.h"

namespace kestrel::board::uart {

/// "/dev/ttyS0" and the serial ports beside it, each a pseudo-terminal with a wire.
DeviceKind Kind();

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_UART_DEVICE_H
