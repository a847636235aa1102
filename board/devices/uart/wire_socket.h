// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_UART_WIRE_SOCKET_H
#define KESTREL_BOARD_DEVICES_UART_WIRE_SOCKET_H

#include <functional>

#include "devices/uart/shuttle.h"
#include "host/unique_fd.h"

namespace kestrel::board::uart {

/// The end of a wire to which a `kestrel-board uart` is attached.
class WireSocket : public WireEnd {
 public:
  /// `gone` is called when the command has ended, and takes the wire away.
  WireSocket(UniqueFd socket, std::function<void()> gone);

  int descriptor() const override { return socket_.get(); }
  size_t Take(char* buffer, size_t size) override;
  size_t Give(const char* data, size_t size) override;
  void Arrived(size_t count) override;
  bool HungUp() override;

 private:
  UniqueFd socket_;
  std::function<void()> gone_;
};

}  // namespace kestrel::board::uart

#endif  // KESTREL_BOARD_DEVICES_UART_WIRE_SOCKET_H
