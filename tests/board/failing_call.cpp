// SPDX-License-Identifier: Apache-2.0
#include "failing_call.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kestrel::test {
namespace {

const char* g_name = nullptr;
int g_error = 0;
bool g_failed = false;

/// The definition of `name` that follows this program's own: the C library's or a sanitizer's.
template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Whether the call that is being made is the one that is to fail.
bool Fails(const char* name) {
  if (g_name == nullptr || g_failed || strcmp(name, g_name) != 0) {
    return false;
  }
  g_failed = true;
  errno = g_error;
  return true;
}

/// Where a long has 32 bits, the headers give these calls other names.
constexpr bool kHasLongNames = sizeof(long) < sizeof(time_t);
constexpr const char* kFstat = kHasLongNames ? "__fstat64_time64" : "fstat";
constexpr const char* kFstatat = kHasLongNames ? "__fstatat64_time64" : "fstatat";
constexpr const char* kPwrite = sizeof(long) < sizeof(off_t) ? "pwrite64" : "pwrite";

mode_t ModeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

FailingCall::FailingCall(const char* name, int error) {
  g_failed = false;
  g_error = error;
  g_name = name;
}

FailingCall::~FailingCall() { g_name = nullptr; }

bool FailingCall::HasFailed() { return g_failed; }

}  // namespace kestrel::test

using kestrel::test::Fails;
using kestrel::test::kFstat;
using kestrel::test::kFstatat;
using kestrel::test::kPwrite;
using kestrel::test::ModeOf;
using kestrel::test::Next;

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  return Fails("open") ? -1 : Next<int(const char*, int, ...)>("open")(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  // A board's lock is made and opened by the same call as its folder.
  const char* name = strcmp(path, "lock") == 0 ? "openat lock" : "openat";
  return Fails(name) ? -1
                     : Next<int(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
}

int mkdir(const char* path, mode_t mode) noexcept {
  return Fails("mkdir") ? -1 : Next<int(const char*, mode_t)>("mkdir")(path, mode);
}

char* mkdtemp(char* path) noexcept {
  return Fails("mkdtemp") ? nullptr : Next<char*(char*)>("mkdtemp")(path);
}

int flock(int fd, int operation) noexcept {
  return Fails("flock") ? -1 : Next<int(int, int)>("flock")(fd, operation);
}

int fstat(int fd, struct stat* status) noexcept {
  return Fails("fstat") ? -1 : Next<int(int, struct stat*)>(kFstat)(fd, status);
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return Fails("fstatat") ? -1
                          : Next<int(int, const char*, struct stat*, int)>(kFstatat)(folder, path,
                                                                                     status, flags);
}

ssize_t pwrite(int fd, const void* data, size_t size, off_t offset) {
  const auto next = Next<ssize_t(int, const void*, size_t, off_t)>(kPwrite);
  if (Fails("pwrite half")) {
    errno = 0;
    return next(fd, data, size / 2, offset);
  }
  return Fails("pwrite") ? -1 : next(fd, data, size, offset);
}

ssize_t write(int fd, const void* data, size_t size) {
  return Fails("write") ? -1 : Next<ssize_t(int, const void*, size_t)>("write")(fd, data, size);
}

int unlinkat(int folder, const char* path, int flags) noexcept {
  const int result = Next<int(int, const char*, int)>("unlinkat")(folder, path, flags);
  if (Fails("unlinkat and end")) {
    _exit(0);
  }
  return result;
}

int memfd_create(const char* name, unsigned flags) noexcept {
  return Fails("memfd_create") ? -1 : Next<int(const char*, unsigned)>("memfd_create")(name, flags);
}

int rename(const char* from, const char* to) noexcept {
  return Fails("rename") ? -1 : Next<int(const char*, const char*)>("rename")(from, to);
}

int renameat(int from_folder, const char* from, int to_folder, const char* to) noexcept {
  return Fails("renameat") ? -1
                           : Next<int(int, const char*, int, const char*)>("renameat")(
                                 from_folder, from, to_folder, to);
}

}  // extern "C"
