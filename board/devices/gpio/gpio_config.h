// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_GPIO_CONFIG_H
#define KESTREL_BOARD_DEVICES_GPIO_GPIO_CONFIG_H

#include <memory>
#include <string>

#include "config/config_reader.h"
#include "devices/gpio/gpio_chip.h"

namespace kestrel::board::gpio {

struct GpioConfig {
  bool present = true;
  std::string replaced_by;  ///< a file that stands in the chip's place, if any
  std::shared_ptr<GpioChip> chip;
};

/// Reads the [gpio] table; throws ConfigError.
GpioConfig ReadGpioConfig(ConfigReader& reader);

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_GPIO_CONFIG_H
