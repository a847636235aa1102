// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_END_H
#define KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_END_H

#include <cerrno>
#include <string>

namespace kestrelctl {

/// How a transfer over a port ended.
struct TransferEnd {
  enum class Kind { kDone, kTime, kSignal, kHangUp, kLostReader, kFailure };

  Kind kind = Kind::kDone;
  std::string failed = {};  ///< what failed, and its errno
  int error = 0;

  /// The failure that errno tells of.
  static TransferEnd Failure(const std::string& failed) { return {Kind::kFailure, failed, errno}; }
};

/// Whether a read or write that failed is to be tried again when the descriptor is ready.
inline bool IsToBeTriedAgain(int error) { return error == EAGAIN || error == EINTR; }

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_UART_TRANSFER_END_H
