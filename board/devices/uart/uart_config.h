// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_UART_CONFIG_H
#define KESTREL_BOARD_DEVICES_UART_UART_CONFIG_H

#include <map>
#include <optional>

#include "config/config_reader.h"
#include "devices/uart/serial_settings.h"

namespace kestrel::board::uart {

struct PortConfig {
  std::optional<int>
      other_end;           ///< the port at the other end of its wire; it may be the port itself
  SettingNames forgotten;  ///< settings that it does not keep
};

/// The ports of a board by their numbers.
using UartConfig = std::map<int, PortConfig>;

/// Reads the [uart] table; throws ConfigError.
UartConfig ReadUartConfig(ConfigReader& reader);

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_UART_CONFIG_H
