// SPDX-License-Identifier: Apache-2.0
#include "preload/board_client.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/ioctl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "protocol/exchange.h"

namespace kestrel::board::preload {
namespace {

using wire::Exchange;
using wire::Operation;
using wire::Outcome;
using wire::Reply;
using wire::Request;

/// What the environment said when the program started. A program may change or clear its
/// environment, and stays on its board all the same.
struct Surroundings {
  char socket_path[sizeof(sockaddr_un::sun_path)];
  char paths[4096];
};

void Copy(const char* variable, char* text, size_t size) {
  const char* value = getenv(variable);
  if (value != nullptr && strlen(value) < size) {
    strncpy(text, value, size - 1);
  }
}

/// Filled in before main runs, or by the first call of another object's constructor.
const Surroundings& OurSurroundings() {
  static Surroundings surroundings;
  static bool known = false;
  if (!known) {
    Copy(wire::kSocketVariable, surroundings.socket_path, sizeof surroundings.socket_path);
    Copy(wire::kPathsVariable, surroundings.paths, sizeof surroundings.paths);
    known = true;
  }
  return surroundings;
}

__attribute__((constructor)) void LookAround() { OurSurroundings(); }

/// Empty when the program runs on no board.
const char* SocketPath() { return OurSurroundings().socket_path; }

/// Whether `path` is an entry of the colon-separated `list`.
bool IsListed(const char* list, const char* path) {
  const size_t length = strlen(path);
  for (const char* entry = list; *entry != '\0';) {
    const size_t entry_length = strcspn(entry, ":");
    if (entry_length == length && memcmp(entry, path, length) == 0) {
      return true;
    }
    entry += entry_length;
    entry += *entry == ':' ? 1 : 0;
  }
  return false;
}

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

int AcceptOpen(int connection, int flags, const Reply& reply, RedirectedPath* redirected) {
  switch (reply.header.outcome) {
    case Outcome::kDone:
      return SetStatusFlags(connection, flags) ? connection : CloseAndFail(connection, errno);
    case Outcome::kRedirect:
      if (reply.header.size >= sizeof redirected->text) {
        return CloseAndFail(connection, ENAMETOOLONG);
      }
      redirected->text[reply.header.size] = '\0';
      close(connection);
      return kRedirected;
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
  return path != nullptr && *SocketPath() != '\0' && IsListed(OurSurroundings().paths, path);
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
