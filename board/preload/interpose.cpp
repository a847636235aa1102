// SPDX-License-Identifier: Apache-2.0
// The object that is preloaded into a program on a board: it stands in for the calls with which
// programs reach devices and hands on every one that is not the board's.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

#include "preload/board_client.h"

namespace {

using kestrel::board::preload::CloseFault;
using kestrel::board::preload::IoctlOnBoard;
using kestrel::board::preload::IsBoardDescriptor;
using kestrel::board::preload::IsBoardPath;
using kestrel::board::preload::kRedirected;
using kestrel::board::preload::OpenOnBoard;
using kestrel::board::preload::RedirectedPath;

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
  return result == kRedirected ? next(redirected.text) : result;
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

int close(int descriptor) {
  const int fault = IsBoardDescriptor(descriptor) ? CloseFault(descriptor) : 0;
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
