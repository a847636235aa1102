// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_PROTOCOL_EXCHANGE_H
#define KESTREL_BOARD_PROTOCOL_EXCHANGE_H

#include <stddef.h>

#include "protocol/wire.h"

namespace kestrel::board::wire {

struct Request {
  Operation operation{};
  uint32_t number = 0;
  const void* data = nullptr;
  uint32_t size = 0;
};

struct Reply {
  void* data = nullptr;  ///< where the payload goes, at most `capacity` bytes of it
  size_t capacity = 0;
  ReplyHeader header{};
  int descriptor = -1;  ///< a descriptor that came along, close-on-exec; the receiver owns it
};

/// Connects to the board that listens at `socket_path`. Returns a close-on-exec descriptor, or -1
/// with errno set.
int Connect(const char* socket_path);

/// Sends one request over a connection and waits for the reply. Returns 0 or an errno value; ENODEV
/// means that the board has gone. Uses nothing but system calls, so that it can run inside any
/// program at any point.
int Exchange(int connection, const Request& request, Reply* reply);

/// Sends a message that has no reply, and a file with it. Returns 0 or an errno value as Exchange.
int SendFile(int connection, Operation operation, int file);

/// Sends a reply on the socket that came with a request, with `descriptor` unless that is -1.
/// Returns 0 or an errno value.
int SendReply(int reply_socket, const ReplyHeader& header, const void* data, int descriptor);

}  // namespace kestrel::board::wire

#endif  // KESTREL_BOARD_PROTOCOL_EXCHANGE_H
