// SPDX-License-Identifier: Apache-2.0
#include "devices/device.h"
#include "devices/gpio/gpio_device.h"

namespace kestrel::board {

const std::vector<DeviceKind>& DeviceKinds() {
  static const std::vector<DeviceKind> kinds = {gpio::Kind()};
  return kinds;
}

}  // namespace kestrel::board
