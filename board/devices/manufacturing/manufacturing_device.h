// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_DEVICE_H
#define KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_DEVICE_H

#include "devices/device.h"

namespace kestrel::board::manufacturing {

/// "/dev/warden", which tells the device's state, and "/dev/lodestone", which is only held open.
DeviceKind Kind();

}  // namespace kestrel::board::manufacturing

#endif  // KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_DEVICE_H
