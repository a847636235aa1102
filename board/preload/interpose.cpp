// SPDX-License-Identifier: Apache-2.0
// The object that is preloaded into a program on a board: it stands in for the calls with which
// programs reach devices and hands on every one that is not the board's.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <termios.h>
#include <unistd.h>

#include "preload/board_client.h"
#include "preload/redirected_file.h"

namespace {

using kestrel::board::preload::CloseConnection;
using kestrel::board::preload::CloseFault;
using kestrel::board::preload::FileFault;
using kestrel::board::preload::FindSocketOnBoard;
using kestrel::board::preload::IoctlOnBoard;
using kestrel::board::preload::IsBoardDescriptor;
using kestrel::board::preload::IsBoardPath;
using kestrel::board::preload::kRedirected;
using kestrel::board::preload::OpenOnBoard;
using kestrel::board::preload::RedirectedPath;
using kestrel::board::preload::Restore;
using kestrel::board::wire::TerminalBits;

/// The definition of `name` that this object stands in front of.
template <typename Function>
Function* Next(const char* name) {
  void* const symbol = dlsym(RTLD_NEXT, name);
  if (symbol == nullptr) {
    abort();
  }
  return reinterpret_cast<Function*>(symbol);
}

bool TakesMode(int flags) { return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE; }

/// Opens a path of the board, or calls `next` with the path that the program is to get.
template <typename OpenNext>
int OpenInsteadOf(const char* path, int flags, OpenNext next) {
  if (!IsBoardPath(path)) {
    return next(path);
  }
  RedirectedPath redirected;
  const int result = OpenOnBoard(path, flags, &redirected);
  if (result != kRedirected) {
    return result;
  }
  const int descriptor = next(redirected.text);
  CloseConnection(redirected.connection);
  return descriptor;
}

using OpenFunction = int(const char*, int, ...);
using OpenAtFunction = int(int, const char*, int, ...);

int Open(OpenFunction* next, const char* path, int flags, mode_t mode) {
  return OpenInsteadOf(path, flags, [&](const char* actual) { return next(actual, flags, mode); });
}

int OpenAt(OpenAtFunction* next, int directory, const char* path, int flags, mode_t mode) {
  return OpenInsteadOf(path, flags,
                       [&](const char* actual) { return next(directory, actual, flags, mode); });
}

/// Requests that the kernel answers for every descriptor, whatever the device.
bool IsForEveryDescriptor(unsigned long request) {
  return request == FIOCLEX || request == FIONCLEX || request == FIONBIO || request == FIOASYNC;
}

bool IsBoardRequest(int descriptor, unsigned long request) {
  return !IsForEveryDescriptor(request) && IsBoardDescriptor(descriptor);
}

/// Calls `next` unless the board lets `call` fail on the file that the descriptor is of.
template <typename CallNext>
auto UnlessFaulty(const char* call, int descriptor, CallNext next) -> decltype(next()) {
  const int fault = FileFault(call, descriptor);
  if (fault != 0) {
    errno = fault;
    return -1;
  }
  return next();
}

/// Whether an address names a socket that the board stands in for; `path` is then its path. The
/// path in an address need not end in a NUL.
bool IsBoardAddress(const sockaddr* address, socklen_t length,
                    char (&path)[sizeof(sockaddr_un::sun_path) + 1]) {
  if (address == nullptr || length <= offsetof(sockaddr_un, sun_path) ||
      length > sizeof(sockaddr_un) || address->sa_family != AF_UNIX) {
    return false;
  }
  const size_t size = length - offsetof(sockaddr_un, sun_path);
  memcpy(path, reinterpret_cast<const sockaddr_un*>(address)->sun_path, size);
  path[size] = '\0';
  return IsBoardPath(path);
}

mode_t ModeArgument(int flags, va_list arguments) {
  return TakesMode(flags) ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

// One definition for each name under which the C library offers the two calls. Fortified programs
// call those that end in _2, which take no mode; no header declares them.
#define KESTREL_INTERPOSE_OPEN(name)                             \
  int name(const char* path, int flags, ...) {                   \
    static OpenFunction* const next = Next<OpenFunction>(#name); \
    va_list arguments;                                           \
    va_start(arguments, flags);                                  \
    const mode_t mode = ModeArgument(flags, arguments);          \
    va_end(arguments);                                           \
    return Open(next, path, flags, mode);                        \
  }                                                              \
  int __##name##_2(const char* path, int flags);                 \
  int __##name##_2(const char* path, int flags) { return name(path, flags); }
#define KESTREL_INTERPOSE_OPENAT(name)                               \
  int name(int directory, const char* path, int flags, ...) {        \
    static OpenAtFunction* const next = Next<OpenAtFunction>(#name); \
    va_list arguments;                                               \
    va_start(arguments, flags);                                      \
    const mode_t mode = ModeArgument(flags, arguments);              \
    va_end(arguments);                                               \
    return OpenAt(next, directory, path, flags, mode);               \
  }                                                                  \
  int __##name##_2(int directory, const char* path, int flags);      \
  int __##name##_2(int directory, const char* path, int flags) {     \
    return name(directory, path, flags);                             \
  }

#define KESTREL_INTERPOSE_IOCTL(name)                                                        \
  int name(int descriptor, unsigned long request, ...) noexcept {                            \
    using Function = int(int, unsigned long, ...);                                           \
    static Function* const next = Next<Function>(#name);                                     \
    va_list arguments;                                                                       \
    va_start(arguments, request);                                                            \
    void* const argument = va_arg(arguments, void*);                                         \
    va_end(arguments);                                                                       \
    return IsBoardRequest(descriptor, request) ? IoctlOnBoard(descriptor, request, argument) \
                                               : next(descriptor, request, argument);        \
  }

// Whatever the third argument is, passing it on as a pointer passes all of it on.
#define KESTREL_INTERPOSE_FCNTL(name)                                                              \
  int name(int descriptor, int command, ...) {                                                     \
    using Function = int(int, int, ...);                                                           \
    static Function* const next = Next<Function>(#name);                                           \
    va_list arguments;                                                                             \
    va_start(arguments, command);                                                                  \
    void* const argument = va_arg(arguments, void*);                                               \
    va_end(arguments);                                                                             \
    return UnlessFaulty("fcntl", descriptor, [&] { return next(descriptor, command, argument); }); \
  }

#define KESTREL_INTERPOSE_SETSOCKOPT(name)                                                      \
  int name(int descriptor, int level, int option, const void* value, socklen_t size) noexcept { \
    using Function = int(int, int, int, const void*, socklen_t);                                \
    static Function* const next = Next<Function>(#name);                                        \
    return UnlessFaulty("setsockopt", descriptor,                                               \
                        [&] { return next(descriptor, level, option, value, size); });          \
  }

#pragma GCC visibility push(default)
extern "C" {

KESTREL_INTERPOSE_OPEN(open)
KESTREL_INTERPOSE_OPEN(open64)
KESTREL_INTERPOSE_OPENAT(openat)
KESTREL_INTERPOSE_OPENAT(openat64)

KESTREL_INTERPOSE_IOCTL(ioctl)
// What ioctl becomes in 32-bit programs that are built for 64-bit time. Elsewhere nobody calls it.
int __ioctl_time64(int descriptor, unsigned long request, ...) noexcept;
KESTREL_INTERPOSE_IOCTL(__ioctl_time64)

KESTREL_INTERPOSE_FCNTL(fcntl)
KESTREL_INTERPOSE_FCNTL(fcntl64)
// What fcntl becomes in 32-bit programs that are built for 64-bit time. Elsewhere nobody calls it.
int __fcntl_time64(int descriptor, int command, ...);
KESTREL_INTERPOSE_FCNTL(__fcntl_time64)

ssize_t read(int descriptor, void* buffer, size_t size) {
  using Function = ssize_t(int, void*, size_t);
  static Function* const next = Next<Function>("read");
  return UnlessFaulty("read", descriptor, [&] { return next(descriptor, buffer, size); });
}

// What read becomes in fortified programs; no header declares it.
ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t room);
ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t room) {
  using Function = ssize_t(int, void*, size_t, size_t);
  static Function* const next = Next<Function>("__read_chk");
  return UnlessFaulty("read", descriptor, [&] { return next(descriptor, buffer, size, room); });
}

ssize_t write(int descriptor, const void* data, size_t size) {
  using Function = ssize_t(int, const void*, size_t);
  static Function* const next = Next<Function>("write");
  return UnlessFaulty("write", descriptor, [&] { return next(descriptor, data, size); });
}

ssize_t writev(int descriptor, const iovec* pieces, int count) {
  using Function = ssize_t(int, const iovec*, int);
  static Function* const next = Next<Function>("writev");
  return UnlessFaulty("writev", descriptor, [&] { return next(descriptor, pieces, count); });
}

int connect(int descriptor, const sockaddr* address, socklen_t length) {
  using Function = int(int, const sockaddr*, socklen_t);
  static Function* const next = Next<Function>("connect");
  char path[sizeof(sockaddr_un::sun_path) + 1];
  if (!IsBoardAddress(address, length, path)) {
    return next(descriptor, address, length);
  }
  sockaddr_un there;
  return FindSocketOnBoard(path, &there) != 0
             ? -1
             : next(descriptor, reinterpret_cast<const sockaddr*>(&there), sizeof there);
}

KESTREL_INTERPOSE_SETSOCKOPT(setsockopt)
// What setsockopt becomes in 32-bit programs that are built for 64-bit time. Elsewhere nobody calls
// it.
int __setsockopt64(int descriptor, int level, int option, const void* value,
                   socklen_t size) noexcept;
KESTREL_INTERPOSE_SETSOCKOPT(__setsockopt64)

int flock(int descriptor, int operation) noexcept {
  using Function = int(int, int);
  static Function* const next = Next<Function>("flock");
  return UnlessFaulty("flock", descriptor, [&] { return next(descriptor, operation); });
}

int tcgetattr(int descriptor, termios* settings) noexcept {
  using Function = int(int, termios*);
  static Function* const next = Next<Function>("tcgetattr");
  return UnlessFaulty("tcgetattr", descriptor, [&] { return next(descriptor, settings); });
}

int tcsetattr(int descriptor, int actions, const termios* settings) noexcept {
  using Function = int(int, int, const termios*);
  static Function* const next = Next<Function>("tcsetattr");
  static auto* const get = Next<int(int, termios*)>("tcgetattr");
  TerminalBits not_kept;
  const int fault = FileFault("tcsetattr", descriptor, &not_kept);
  if (fault != 0) {
    errno = fault;
    return -1;
  }
  termios current;
  if (!not_kept.Any() || get(descriptor, &current) != 0) {
    return next(descriptor, actions, settings);
  }
  termios changed = *settings;
  Restore(not_kept, current, &changed);
  return next(descriptor, actions, &changed);
}

int close(int descriptor) {
  const int fault =
      IsBoardDescriptor(descriptor) ? CloseFault(descriptor) : FileFault("close", descriptor);
  using Function = int(int);
  static Function* const next = Next<Function>("close");
  const int result = next(descriptor);
  if (fault == 0) {
    return result;
  }
  // The kernel lets go of a descriptor also when closing it fails, so it is closed all the same.
  errno = fault;
  return -1;
}

}  // extern "C"
#pragma GCC visibility pop
