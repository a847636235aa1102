// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PROTOCOL_DESCRIPTOR_MESSAGE_H
#define KESTREL_BOARD_PROTOCOL_DESCRIPTOR_MESSAGE_H

#include <stddef.h>
#include <sys/socket.h>
#include <sys/types.h>

namespace kestrel::board::wire {

/// A socket message in up to two pieces that may carry one descriptor.
class DescriptorMessage {
 public:
  DescriptorMessage(void* header, size_t header_size, void* data, size_t data_size);
  DescriptorMessage(const DescriptorMessage&) = delete;
  DescriptorMessage& operator=(const DescriptorMessage&) = delete;

  /// As sendmsg and recvmsg, without SIGPIPE and begun again when a signal interrupts them.
  ssize_t Send(int socket, int descriptor, int flags = 0);
  ssize_t Receive(int socket);

  /// The descriptor that was received, or -1.
  int descriptor() const { return descriptor_; }

 private:
  iovec pieces_[2];
  msghdr message_{};
  alignas(cmsghdr) char control_[CMSG_SPACE(sizeof(int))] = {};
  int descriptor_ = -1;
};

}  // namespace kestrel::board::wire

#endif  // KESTREL_BOARD_PROTOCOL_DESCRIPTOR_MESSAGE_H
