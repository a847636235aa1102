// SPDX-License-Identifier: Apache-2.0
#include "support/fake_system.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
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

int close(int fd) { return Call<int(int), &FakeSystem::Close>("close", fd); }

}  // extern "C"
