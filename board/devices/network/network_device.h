// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_NETWORK_NETWORK_DEVICE_H
#define KESTREL_BOARD_DEVICES_NETWORK_NETWORK_DEVICE_H

#include "devices/device.h"

namespace kestrel::board::network {

/// "/var/run/network_status", the file in which the networking service tells its state.
DeviceKind Kind();

}  // namespace kestrel::board::network

#endif  // KESTREL_BOARD_DEVICES_NETWORK_NETWORK_DEVICE_H
