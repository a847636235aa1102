// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_RECEIVER_H
#define KESTREL_TOOLS_KESTRELCTL_UART_RECEIVER_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "hex_view.h"
#include "uart_transfer_end.h"

namespace kestrelctl {

struct ReceiverPlan {
  bool receive = false;
  std::optional<uint64_t> bytes;  ///< how many, where there is an end to it
  bool hex = false;               ///< shown in hexadecimal
};

/// Moves what comes from a port to standard output. It does not wait in its functions: they are to
/// be called when their descriptor is ready.
class UartReceiver {
 public:
  UartReceiver(int port, std::string port_name, const ReceiverPlan& plan);

  /// Whether as many bytes have come as were asked for.
  bool has_finished() const { return plan_.bytes && received_ >= *plan_.bytes; }
  uint64_t received() const { return received_; }

  bool WantsToRead() const;
  bool WantsToWrite() const { return !pending_.empty(); }
  /// Milliseconds after which ShowPause() is to be called; -1 for no need to.
  int TimeToWait() const;

  std::optional<TransferEnd> Read();
  /// Reads what a port still has that has hung up.
  void ReadRest();
  std::optional<TransferEnd> Write();
  /// Ends a line of the hexadecimal view when nothing has come for a while.
  void ShowPause();
  void EndLine() { pending_ += hex_.EndLine(); }
  /// Writes what is left, unless whoever reads it takes too long.
  void WriteRest();

 private:
  using Clock = std::chrono::steady_clock;

  /// One read; what the system call returned.
  ssize_t ReadSome();
  void Take(std::string_view bytes);

  int port_;
  std::string port_name_;
  ReceiverPlan plan_;
  bool shows_pauses_;
  HexView hex_;
  std::string pending_;
  uint64_t received_ = 0;
  Clock::time_point latest_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_RECEIVER_H
