// SPDX-License-Identifier: Apache-2.0
// What the kernel is asked by one call of each function that asks it: no more than is needed.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kestrel/kestrel.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

#include "system_calls/system_call_trace.h"

namespace kestrel::test {
namespace {

using Calls = std::vector<long>;

/// Where opens of the library's paths lead: the path of a terminal, or a device that does nothing.
std::string g_terminal;

const char* Actual(const char* path) {
  if (strcmp(path, "/dev/ttyS3") == 0) {
    return g_terminal.c_str();
  }
  const bool is_status = strcmp(path, "/var/run/network_status") == 0;
  const bool is_security = strcmp(path, "/dev/warden") == 0 || strcmp(path, "/dev/lodestone") == 0;
  return is_status || is_security ? "/dev/null" : path;
}

void Require(bool holds) {
  if (!holds) {
    _exit(1);
  }
}

void OpenPortThroughTheLibrary() {
  UartConfigRecord config;
  z__UART_InitConfig(&config, UART_CONFIG_VERSION);
  Require(close(z__UART_Open(3, &config)) == 0);
}

/// The calls that opening a port takes, one each; the C library may need several of the kernel for
/// one of its own.
void OpenPortByHand() {
  const int port = open("/dev/ttyS3", O_RDWR | O_NOCTTY | O_NONBLOCK);
  termios settings{};
  termios confirmed{};
  Require(flock(port, LOCK_EX | LOCK_NB) == 0);
  Require(tcgetattr(port, &settings) == 0);
  Require(fcntl(port, F_SETFL, O_NONBLOCK) == 0);
  Require(tcsetattr(port, TCSANOW, &settings) == 0);
  Require(tcgetattr(port, &confirmed) == 0);
  Require(close(port) == 0);
}

TEST(SystemCalls, OfOpeningAPortAreThoseOfSixCallsByHand) {
  const int other_end = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(unlockpt(other_end), 0);
  g_terminal = ptsname(other_end);
  const Calls calls = SystemCallsOf(OpenPortThroughTheLibrary);
  EXPECT_EQ(calls, SystemCallsOf(OpenPortByHand));
  EXPECT_GE(calls.size(), 7u);
  close(other_end);
}

TEST(SystemCalls, OfAReadinessQueryAreThree) {
  const Calls calls = SystemCallsOf([] {
    bool ready = true;
    Require(Networking_IsNetworkingReady(&ready) == 0);
  });
  EXPECT_EQ(calls, (Calls{SYS_openat, SYS_read, SYS_close}));
}

TEST(SystemCalls, OfReadingTheIdentifierAreFive) {
  const Calls calls = SystemCallsOf([] {
    char id[129];
    Require(Manufacturing_GetDeviceId(id, sizeof id) == sizeof id);
  });
  EXPECT_EQ(calls, (Calls{SYS_openat, SYS_openat, SYS_ioctl, SYS_close, SYS_close}));
}

}  // namespace
}  // namespace kestrel::test

extern "C" int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  using Function = int(const char*, int, ...);
  static auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "open"));
  return next(kestrel::test::Actual(path), flags, mode);
}

/// The security device's answer, after the system call that brings it.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  using Function = int(int, unsigned long, ...);
  static auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "ioctl"));
  const int result = next(fd, request, argument);
  return request == 0xC0847001 ? 0 : result;
}
