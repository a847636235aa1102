// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_SENDER_H
#define KESTREL_TOOLS_KESTRELCTL_UART_SENDER_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "uart_transfer_end.h"

namespace kestrelctl {

/// Where what is sent comes from.
struct SenderInput {
  int descriptor = -1;            ///< -1: nothing is sent
  std::string name;               ///< for messages
  std::optional<uint64_t> size;   ///< where it is known
  std::optional<char> leave_key;  ///< a character that ends the input and is not sent
};

/// Moves what comes from an input to a port, and waits until it has left that. It does not wait in
/// its functions: they are to be called when their descriptor is ready.
class UartSender {
 public:
  UartSender(int port, std::string port_name, SenderInput input);
  /// Drops what has not left the port, for which closing it would wait.
  ~UartSender();
  UartSender(const UartSender&) = delete;
  UartSender& operator=(const UartSender&) = delete;

  /// Whether the input has ended and all of it has left the port.
  bool has_finished() const { return has_finished_; }
  uint64_t sent() const { return sent_; }
  /// "sent 4096 of 16384 bytes"
  std::string Progress() const;

  /// The descriptor to be read next; -1 while there is enough to be written.
  int WantsToRead() const { return is_open_ && pending_.empty() ? input_.descriptor : -1; }
  bool WantsToWrite() const { return !pending_.empty(); }
  /// Milliseconds after which Finish() is to be called; -1 for no need to.
  int TimeToWait() const;

  std::optional<TransferEnd> Read();
  std::optional<TransferEnd> Write();
  /// Looks whether the driver has sent what it was given.
  std::optional<TransferEnd> Finish();

 private:
  using Clock = std::chrono::steady_clock;

  void Take(const std::string& bytes);
  bool IsWaitingForDriver() const { return !is_open_ && pending_.empty() && !has_finished_; }

  int port_;
  std::string port_name_;
  SenderInput input_;
  bool is_open_;
  bool has_finished_;
  bool has_drained_ = true;
  std::string pending_;
  uint64_t sent_ = 0;
  std::optional<Clock::time_point> leave_by_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_SENDER_H
