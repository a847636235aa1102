// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_SERIAL_PORT_H
#define KESTREL_TESTS_BOARD_SERIAL_PORT_H

#include <kestrel/uart.h>

#include <string>

namespace kestrel::test {

/// The defaults with another kind of flow control.
UartConfigRecord PortConfig(UartFlowControl flow_control = UartFlowControl_None);

/// Opens a port with the defaults.
int OpenPort(uint32_t number);

/// Reads `size` bytes; fewer when none come for ten seconds.
std::string ReadFrom(int port, size_t size);

/// Writes all of `text`; returns whether it went out before nothing moved for ten seconds.
bool WriteTo(int port, const std::string& text);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_SERIAL_PORT_H
