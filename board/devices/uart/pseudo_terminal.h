// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_PSEUDO_TERMINAL_H
#define KESTREL_BOARD_DEVICES_UART_PSEUDO_TERMINAL_H

#include <termios.h>

#include <string>

#include "host/unique_fd.h"

namespace kestrel::board::uart {

/// A pair of terminals: programs have one side open, which they take for a serial port, and the
/// board has the other, which is the wire.
class PseudoTerminal {
 public:
  /// Throws BoardError.
  PseudoTerminal();

  /// The file that programs open.
  const std::string& path() const { return path_; }

  /// The wire: what programs write is read here, and what is written here programs read. It does
  /// not block.
  int wire() const { return wire_.get(); }

  /// Whether anybody has the programs' side open.
  bool IsOpen() const;

  /// Opens the programs' side; invalid with errno set when that fails. A first open meets nothing
  /// of what the programs before left there but the settings, as with a port of the kernel.
  UniqueFd Open() const;

  termios Settings() const;

 private:
  UniqueFd OpenFile() const;

  UniqueFd wire_;
  std::string path_;
};

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_PSEUDO_TERMINAL_H
