// SPDX-License-Identifier: Apache-2.0
#include "preload/board_client.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/ioctl.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "preload/surroundings.h"
#include "protocol/exchange.h"
#include "protocol/path_list.h"

namespace kestrel::board::preload {
namespace {

using wire::Exchange;
using wire::Operation;
using wire::Outcome;
using wire::Reply;
using wire::Request;

/// Empty when the program runs on no board.
const char* SocketPath() { return OurSurroundings().socket_path; }

int Fail(int error) {
  errno = error;
  return -1;
}

int CloseAndFail(int descriptor, int error) {
  close(descriptor);
  return Fail(error);
}

bool SetStatusFlags(int descriptor, int flags) {
  if ((flags & O_CLOEXEC) == 0 && fcntl(descriptor, F_SETFD, 0) != 0) {
    return false;
  }
  return (flags & O_NONBLOCK) == 0 || fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0;
}

/// The same connection under a higher number, so that the program's open gets the lowest one that
/// is free, as it may rely on.
int MoveUp(int connection) {
  const int moved = fcntl(connection, F_DUPFD_CLOEXEC, connection + 1);
  CloseConnection(connection);
  return moved;
}

int AcceptOpen(int connection, int flags, const Reply& reply, RedirectedPath* redirected) {
  switch (reply.header.outcome) {
    case Outcome::kDone:
      return SetStatusFlags(connection, flags) ? connection : CloseAndFail(connection, errno);
    case Outcome::kRedirect:
      if (reply.header.size >= sizeof redirected->text) {
        return CloseAndFail(connection, ENAMETOOLONG);
      }
      redirected->text[reply.header.size] = '\0';
      redirected->connection = MoveUp(connection);
      return redirected->connection < 0 ? -1 : kRedirected;
    case Outcome::kText:
      return CloseAndFail(connection, ENODEV);
    case Outcome::kFailed:
      break;
  }
  return CloseAndFail(connection, reply.header.error);
}

/// Puts the descriptor that came with a reply where the program looks for its number. False when it
/// was lost on the way because the program may have no more of them.
bool DeliverDescriptor(const Reply& reply, void* argument) {
  const int32_t offset = reply.header.descriptor_offset;
  if (offset < 0) {
    return true;
  }
  memcpy(static_cast<char*>(argument) + offset, &reply.descriptor, sizeof reply.descriptor);
  return reply.descriptor >= 0;
}

}  // namespace

bool IsBoardPath(const char* path) {
  return path != nullptr && IsOnBoard() && wire::IsListed(OurSurroundings().paths, path);
}

bool IsBoardDescriptor(int descriptor) {
  const char* path = SocketPath();
  if (*path == '\0') {
    return false;
  }
  const int saved_errno = errno;
  sockaddr_un peer{};
  socklen_t length = sizeof peer;
  const bool named = getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) == 0 &&
                     peer.sun_family == AF_UNIX &&
                     strncmp(peer.sun_path, path, sizeof peer.sun_path) == 0;
  errno = saved_errno;
  return named;
}

int OpenOnBoard(const char* path, int flags, RedirectedPath* redirected) {
  // Their values differ between machines, so the server cannot look at them.
  if ((flags & O_DIRECTORY) != 0) {
    return Fail(ENOTDIR);
  }
  if ((flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
    return Fail(EEXIST);
  }
  const int saved_errno = errno;
  const int connection = wire::Connect(SocketPath());
  if (connection < 0) {
    return Fail(errno == EMFILE || errno == ENFILE ? errno : ENODEV);
  }
  const Request request{Operation::kOpen, static_cast<uint32_t>(flags), path,
                        static_cast<uint32_t>(strlen(path))};
  Reply reply;
  reply.data = redirected->text;
  reply.capacity = sizeof redirected->text - 1;
  const int error = Exchange(connection, request, &reply);
  if (error != 0) {
    return CloseAndFail(connection, error);
  }
  const int result = AcceptOpen(connection, flags, reply, redirected);
  if (result != -1) {
    errno = saved_errno;
  }
  return result;
}

int FindSocketOnBoard(const char* path, sockaddr_un* address) {
  const int saved_errno = errno;
  const int connection = wire::Connect(SocketPath());
  if (connection < 0) {
    return Fail(errno == EMFILE || errno == ENFILE ? errno : ECONNREFUSED);
  }
  *address = {};
  address->sun_family = AF_UNIX;
  const Request request{Operation::kConnect, 0, path, static_cast<uint32_t>(strlen(path))};
  Reply reply;
  reply.data = address->sun_path;
  reply.capacity = sizeof address->sun_path;
  const int error = Exchange(connection, request, &reply);
  CloseConnection(connection);
  if (error != 0) {
    return Fail(error == ENODEV ? ECONNREFUSED : error);
  }
  if (reply.header.outcome != Outcome::kRedirect) {
    return Fail(reply.header.error);
  }
  errno = saved_errno;
  return 0;
}

void CloseConnection(int connection) {
  const int saved_errno = errno;
  // close() would ask the board whether closing it is to fail.
  syscall(SYS_close, connection);
  errno = saved_errno;
}

int IoctlOnBoard(int descriptor, unsigned long request_number, void* argument) {
  const auto number = static_cast<uint32_t>(request_number);
  const uint32_t size = _IOC_SIZE(number);
  Request request{Operation::kIoctl, number, nullptr, 0};
  if ((_IOC_DIR(number) & _IOC_WRITE) != 0) {
    request.data = argument;
    request.size = size;
  }
  Reply reply;
  if ((_IOC_DIR(number) & _IOC_READ) != 0) {
    reply.data = argument;
    reply.capacity = size;
  }
  const int saved_errno = errno;
  const int error = Exchange(descriptor, request, &reply);
  if (error != 0 || reply.header.outcome != Outcome::kDone) {
    return Fail(error != 0 ? error : reply.header.error);
  }
  if (!DeliverDescriptor(reply, argument)) {
    return Fail(EMFILE);
  }
  errno = saved_errno;
  return reply.header.result;
}

int CloseFault(int descriptor) {
  const int saved_errno = errno;
  Reply reply;
  const int error = Exchange(descriptor, Request{Operation::kClose, 0, nullptr, 0}, &reply);
  errno = saved_errno;
  return error == 0 && reply.header.outcome == Outcome::kFailed ? reply.header.error : 0;
}

}  // namespace kestrel::board::preload
