// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_WIFI_DEVICE_H
#define KESTREL_BOARD_DEVICES_WIFI_WIFI_DEVICE_H

#include "devices/device.h"

namespace kestrel::board::wifi {

/// The Wi-Fi daemon behind "/var/volatile/tmp/wlan0_request_socket", with access points to join.
DeviceKind Kind();

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_WIFI_DEVICE_H
