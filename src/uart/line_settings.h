// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_UART_LINE_SETTINGS_H
#define KESTREL_UART_LINE_SETTINGS_H

#include <stdint.h>
#include <termios.h>

#include "uart/uart_config.h"

namespace kestrel::uart {

/// Turns off all that a terminal does to the bytes that pass through it. What the driver had in
/// IMAXBEL, OCRNL, ECHOKE, FLUSHO, the line discipline and the control characters beyond VEOL2
/// stays.
void MakeRaw(termios* settings);

/// One field of a configuration and what it does to the settings of a terminal.
struct LineSetting {
  char name[sizeof "blocking mode"];  ///< in the record: a pointer would have to be relocated
  uint8_t UartConfigWrapper::*value;
  bool (*set)(uint8_t value, termios* settings);  ///< false, and nothing done, for unknown values
};

/// In the order in which they are set. Of the blocking mode, these are the terminal's part.
extern const LineSetting kLineSettings[5];

}  // namespace kestrel::uart

#endif  // KESTREL_UART_LINE_SETTINGS_H
