// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>

#include "devices/device.h"
#include "devices/gpio/gpio_device.h"
#include "devices/manufacturing/manufacturing_device.h"
#include "devices/network/network_device.h"
#include "devices/uart/uart_device.h"
#include "devices/wifi/wifi_device.h"
#include "host/error.h"

namespace kestrel::board {

nlohmann::json Device::Attach(const nlohmann::json& /*request*/, UniqueFd* /*descriptor*/) {
  throw BoardError("nothing can be attached to this device");
}

const std::vector<DeviceKind>& DeviceKinds() {
  static const std::vector<DeviceKind> kinds = {gpio::Kind(), uart::Kind(), network::Kind(),
                                                manufacturing::Kind(), wifi::Kind()};
  return kinds;
}

std::vector<std::string> DeviceFiles() {
  std::vector<std::string> files;
  for (const DeviceKind& kind : DeviceKinds()) {
    files.insert(files.end(), kind.files.begin(), kind.files.end());
  }
  return files;
}

}  // namespace kestrel::board
