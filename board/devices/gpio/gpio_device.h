// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_GPIO_DEVICE_H
#define KESTREL_BOARD_DEVICES_GPIO_GPIO_DEVICE_H

#include "devices/device.h"

namespace kestrel::board::gpio {

/// "/dev/gpiochip0" with the version 1 line-handle requests.
DeviceKind Kind();

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_GPIO_DEVICE_H
