// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_ATTACHMENT_H
#define KESTREL_BOARD_DEVICES_UART_ATTACHMENT_H

#include <poll.h>
#include <signal.h>
#include <termios.h>

#include <chrono>
#include <optional>
#include <string>

#include "host/unique_fd.h"

namespace kestrel::board::uart {

/// Standard input as a terminal that hands on every key; the settings that it had come back at the
/// end. Does nothing when it is no terminal.
class RawTerminal {
 public:
  RawTerminal();
  ~RawTerminal() { Restore(); }
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

  bool is_terminal() const { return is_terminal_; }
  void MakeRaw() const;
  void Restore() const;

 private:
  termios before_{};
  bool is_terminal_;
};

/// Standard input and output at the other end of a serial port's wire.
class Attachment {
 public:
  /// `linger`: how many seconds to stay after the end of the input while nothing comes.
  Attachment(UniqueFd wire, std::optional<double> linger);
  ~Attachment();
  Attachment(const Attachment&) = delete;
  Attachment& operator=(const Attachment&) = delete;

  /// Moves bytes until the user leaves, the input has ended and nothing comes any more, nobody
  /// reads the output and there is no input to send, or a signal comes, whose number it returns;
  /// otherwise 0. Throws BoardError.
  int Run();

 private:
  using Clock = std::chrono::steady_clock;

  pollfd WatchInput() const;
  pollfd WatchWire() const;
  pollfd WatchOutput() const;
  int Timeout() const;
  void MoveWire(short events);
  /// Each of these is false when the attachment is over.
  bool HandleSignal();
  bool ReadInput();

  void WriteOutput(short events);
  void LoseOutput();

  /// Whether the input has ended and nothing has come since for long enough.
  bool IsDone();
  bool IsSilent() const;
  bool AllHasArrived() const;

  UniqueFd wire_;
  std::optional<double> linger_;
  sigset_t signals_before_{};
  UniqueFd signals_;
  int signal_number_ = 0;
  RawTerminal terminal_;
  bool input_ended_ = false;
  bool had_input_ = false;
  bool output_lost_ = false;  ///< nobody reads it any more
  std::string to_wire_;
  std::string to_output_;
  Clock::time_point last_moved_ = Clock::now();
};

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_ATTACHMENT_H
