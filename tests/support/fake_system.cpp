// SPDX-License-Identifier: Apache-2.0
#include "support/fake_system.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>

namespace kestrel::test {
namespace {

std::atomic<FakeSystem*> g_installed{nullptr};

class Installation {
 public:
  explicit Installation(FakeSystem& system) { g_installed = &system; }
  ~Installation() { g_installed = nullptr; }
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
};

/// The definition of `name` that follows this program's own: the C library's or a sanitizer's.
template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Passes a call to the installed stand-in, or on to the system.
template <typename Function, auto Method, typename... Arguments>
auto Call(const char* name, Arguments... arguments) {
  FakeSystem* const system = g_installed;
  return system != nullptr ? (system->*Method)(arguments...) : Next<Function>(name)(arguments...);
}

}  // namespace

int RunOn(FakeSystem& system, const std::function<int()>& function) {
  const Installation installation(system);
  return function();
}

Observed ObserveOn(FakeSystem& system, const std::function<int()>& function) {
  return Observe([&] { return RunOn(system, function); });
}

}  // namespace kestrel::test

using kestrel::test::Call;
using kestrel::test::FakeSystem;
using kestrel::test::g_installed;
using kestrel::test::Next;

extern "C" {

int open(const char* path, int flags, ...) {
  FakeSystem* const system = g_installed;
  if (system != nullptr) {
    return system->Open(path, flags);
  }
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Next<int(const char*, int, ...)>("open")(path, flags, mode);
}

int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return Call<int(int, unsigned long, ...), &FakeSystem::Ioctl>("ioctl", fd, request, argument);
}

int fcntl(int fd, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  return Call<int(int, int, ...), &FakeSystem::Fcntl>("fcntl", fd, command, argument);
}

int close(int fd) { return Call<int(int), &FakeSystem::Close>("close", fd); }

ssize_t read(int fd, void* buffer, size_t size) {
  return Call<ssize_t(int, void*, size_t), &FakeSystem::Read>("read", fd, buffer, size);
}

int flock(int fd, int operation) noexcept {
  return Call<int(int, int), &FakeSystem::Flock>("flock", fd, operation);
}

int tcgetattr(int fd, termios* settings) noexcept {
  return Call<int(int, termios*), &FakeSystem::Tcgetattr>("tcgetattr", fd, settings);
}

int tcsetattr(int fd, int when, const termios* settings) noexcept {
  return Call<int(int, int, const termios*), &FakeSystem::Tcsetattr>("tcsetattr", fd, when,
                                                                     settings);
}

int cfsetospeed(termios* settings, speed_t speed) noexcept {
  return Call<int(termios*, speed_t), &FakeSystem::Cfsetospeed>("cfsetospeed", settings, speed);
}

int cfsetispeed(termios* settings, speed_t speed) noexcept {
  return Call<int(termios*, speed_t), &FakeSystem::Cfsetispeed>("cfsetispeed", settings, speed);
}

int socket(int domain, int type, int protocol) noexcept {
  return Call<int(int, int, int), &FakeSystem::Socket>("socket", domain, type, protocol);
}

int connect(int fd, const sockaddr* address, socklen_t length) {
  return Call<int(int, const sockaddr*, socklen_t), &FakeSystem::Connect>("connect", fd, address,
                                                                          length);
}

ssize_t writev(int fd, const iovec* vectors, int count) {
  return Call<ssize_t(int, const iovec*, int), &FakeSystem::Writev>("writev", fd, vectors, count);
}

int setsockopt(int fd, int level, int option, const void* value, socklen_t length) noexcept {
  return Call<int(int, int, int, const void*, socklen_t), &FakeSystem::Setsockopt>(
      "setsockopt", fd, level, option, value, length);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  return Call<int(clockid_t, timespec*), &FakeSystem::ClockGettime>("clock_gettime", clock, time);
}

}  // extern "C"
