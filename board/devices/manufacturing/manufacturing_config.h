// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_CONFIG_H
#define KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_CONFIG_H

#include <string>

#include "config/config_reader.h"
#include "devices/manufacturing/device_state.h"

namespace kestrel::board::manufacturing {

struct ManufacturingConfig {
  bool warden_present = true;
  bool lodestone_present = true;
  DeviceState state{};
};

/// Reads the [manufacturing] table; throws ConfigError. Without an identifier there, the one of
/// `board` is taken.
ManufacturingConfig ReadManufacturingConfig(ConfigReader& reader, const std::string& board);

}  // namespace kestrel::board::manufacturing

#endif  // KESTREL_BOARD_DEVICES_MANUFACTURING_MANUFACTURING_CONFIG_H
