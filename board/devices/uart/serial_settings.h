// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_SERIAL_SETTINGS_H
#define KESTREL_BOARD_DEVICES_UART_SERIAL_SETTINGS_H

#include <termios.h>

#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>
#include <vector>

#include "protocol/wire.h"

namespace kestrel::board::uart {

/// The settings of a serial port that nobody has opened yet: those of a fresh terminal at 9600 bits
/// per second, 8 data bits, no parity, one stop bit.
termios FreshSettings(const termios& fresh_terminal);

/// Whether a port still has those.
bool AreFresh(const termios& settings);

/// Speed, framing and flow control for `kestrel-board show`.
nlohmann::json Describe(const termios& settings);

/// Names of settings that a port can be told not to keep, such as "speed".
using SettingNames = std::set<std::string>;
const std::vector<std::string>& KnownSettings();

/// The bits that make up the named settings.
wire::TerminalBits BitsOf(const SettingNames& names);

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_SERIAL_SETTINGS_H
