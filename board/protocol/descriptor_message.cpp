// SPDX-License-Identifier: Apache-2.0
#include "protocol/descriptor_message.h"

#include <errno.h>
#include <string.h>

namespace kestrel::board::wire {

DescriptorMessage::DescriptorMessage(void* header, size_t header_size, void* data, size_t data_size)
    : pieces_{{header, header_size}, {data, data_size}} {
  message_.msg_iov = pieces_;
  message_.msg_iovlen = data_size == 0 ? 1 : 2;
}

ssize_t DescriptorMessage::Send(int socket, int descriptor, int flags) {
  if (descriptor >= 0) {
    message_.msg_control = control_;
    message_.msg_controllen = sizeof control_;
    cmsghdr* control = CMSG_FIRSTHDR(&message_);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof descriptor);
    memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  }
  ssize_t sent;
  do {
    sent = sendmsg(socket, &message_, MSG_NOSIGNAL | flags);
  } while (sent < 0 && errno == EINTR);
  return sent;
}

ssize_t DescriptorMessage::Receive(int socket) {
  message_.msg_control = control_;
  // Not CMSG_SPACE, whose padding has room for a second descriptor that nobody would close.
  message_.msg_controllen = CMSG_LEN(sizeof descriptor_);
  ssize_t received;
  do {
    received = recvmsg(socket, &message_, MSG_CMSG_CLOEXEC);
  } while (received < 0 && errno == EINTR);
  const cmsghdr* control = received > 0 ? CMSG_FIRSTHDR(&message_) : nullptr;
  if (control != nullptr && control->cmsg_level == SOL_SOCKET && control->cmsg_type == SCM_RIGHTS) {
    memcpy(&descriptor_, CMSG_DATA(control), sizeof descriptor_);
  }
  return received;
}

}  // namespace kestrel::board::wire
