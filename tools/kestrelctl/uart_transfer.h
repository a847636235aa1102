// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_H
#define KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_H

#include <poll.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>

#include "arguments.h"
#include "changed_terminal.h"
#include "interruption.h"
#include "job_control.h"
#include "progress_line.h"
#include "uart_receiver.h"
#include "uart_sender.h"

namespace kestrelctl {

/// What ends a transfer besides its bytes.
struct TransferLimits {
  bool ends_with_input = false;      ///< what is received does not matter
  std::optional<Milliseconds> time;  ///< to receive, from when all has been sent
  bool shows_progress = false;
};

/// Sends and receives at the same time; it waits in poll alone.
class Transfer {
 public:
  Transfer(int port, UartSender& sender, UartReceiver& receiver, const TransferLimits& limits,
           const Interruption& interruption);

  /// For a transfer that a person follows in a terminal of another mode.
  void StopAndContinueWith(const JobControl& job_control, const ChangedTerminal& terminal);

  TransferEnd Run();

 private:
  using Clock = std::chrono::steady_clock;

  enum Source : size_t { kSignals, kInput, kPort, kOutput, kJobControl, kSourceCount };
  /// What is waited for; what is of no use at the moment has the descriptor -1.
  using Events = std::array<pollfd, kSourceCount>;

  void FindEnd();
  bool ShowsProgress() const;
  bool IsTimeUp() const { return time_is_up_ && Clock::now() >= *time_is_up_; }
  Events EventsToWaitFor() const;
  int TimeToWait() const;
  std::optional<TransferEnd> Handle(const Events& events);
  /// Takes what a port still has that has hung up.
  void NoteHangUp();
  /// How a call on the port ended the transfer, unless the port hung up just before.
  std::optional<TransferEnd> UnlessHungUp(const std::optional<TransferEnd>& end);
  std::optional<TransferEnd> HandlePort(short events);
  std::optional<TransferEnd> MoveBytes(short events);
  std::optional<TransferEnd> HandleOutput(short events);
  void ShowProgress();
  TransferEnd Ended(const TransferEnd& end);

  int port_;
  UartSender& sender_;
  UartReceiver& receiver_;
  TransferLimits limits_;
  const Interruption& interruption_;
  const JobControl* job_control_ = nullptr;
  const ChangedTerminal* terminal_ = nullptr;
  ProgressLine progress_;
  bool has_hung_up_ = false;
  Clock::time_point next_progress_;
  std::optional<Clock::time_point> time_is_up_;
  std::optional<TransferEnd> end_;  ///< found; what has been received may still have to be written
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_H
