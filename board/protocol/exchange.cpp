// SPDX-License-Identifier: Apache-2.0
#include "protocol/exchange.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "protocol/descriptor_message.h"

namespace kestrel::board::wire {
namespace {

int Send(int connection, const Request& request, int descriptor) {
  RequestHeader header;
  header.operation = request.operation;
  header.number = request.number;
  header.size = request.size;
  DescriptorMessage message(&header, sizeof header, const_cast<void*>(request.data), request.size);
  if (message.Send(connection, descriptor) >= 0) {
    return 0;
  }
  return errno == EFAULT || errno == EMSGSIZE ? errno : ENODEV;
}

int Receive(int socket, Reply* reply) {
  DescriptorMessage message(&reply->header, sizeof reply->header, reply->data, reply->capacity);
  const ssize_t received = message.Receive(socket);
  reply->descriptor = message.descriptor();
  if (received < 0) {
    return errno == EFAULT ? EFAULT : ENODEV;
  }
  const bool complete = static_cast<size_t>(received) >= sizeof reply->header;
  return complete && reply->header.magic == kMagic ? 0 : ENODEV;
}

}  // namespace

int Connect(const char* socket_path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const size_t length = strlen(socket_path);
  if (length >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  memcpy(address.sun_path, socket_path, length);
  const int connection = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (connection < 0) {
    return -1;
  }
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int saved_errno = errno;
    close(connection);
    errno = saved_errno;
    return -1;
  }
  return connection;
}

int Exchange(int connection, const Request& request, Reply* reply) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return errno;
  }
  int error = Send(connection, request, ends[1]);
  // The board must hold the only copy, so that its end is seen as the end of the reply socket.
  close(ends[1]);
  if (error == 0) {
    error = Receive(ends[0], reply);
  }
  close(ends[0]);
  return error;
}

int SendFile(int connection, Operation operation, int file) {
  return Send(connection, {operation, 0, nullptr, 0}, file);
}

int SendReply(int reply_socket, const ReplyHeader& header, const void* data, int descriptor) {
  ReplyHeader copy = header;
  DescriptorMessage message(&copy, sizeof copy, const_cast<void*>(data), header.size);
  return message.Send(reply_socket, descriptor, MSG_DONTWAIT) < 0 ? errno : 0;
}

}  // namespace kestrel::board::wire
