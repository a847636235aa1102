// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>

#include <cstdarg>

#include "unit/nwl/pthread_stand_in.h"

namespace kestrel::test {
namespace {

constexpr int kChip = 700;
constexpr int kLine = 701;

int g_locks_held_at_open = -1;

/// The locks that opening a line takes, -1 when it does not give them all back or fails.
int LocksOfAnOpen() {
  const int locks = g_all_locks;
  const int unlocks = g_all_unlocks;
  const int line = GPIO_OpenAsInput(3);
  const int taken = g_all_locks - locks;
  return line == kLine && g_all_unlocks - unlocks == taken ? taken : -1;
}

TEST(ChipLock, IsTakenByTheFirstLineAlone) {
  EXPECT_EQ(LocksOfAnOpen(), 1);
  EXPECT_EQ(g_locks_held_at_open, 1);
  EXPECT_EQ(LocksOfAnOpen(), 0);
  EXPECT_EQ(LocksOfAnOpen(), 0);
}

}  // namespace
}  // namespace kestrel::test

using kestrel::test::g_all_locks;
using kestrel::test::g_all_unlocks;

// Plain functions in the place of the C library's: a mock would take locks of its own.
extern "C" int open(const char*, int, ...) {
  kestrel::test::g_locks_held_at_open = g_all_locks - g_all_unlocks;
  return kestrel::test::kChip;
}

extern "C" int ioctl(int, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == GPIO_GET_CHIPINFO_IOCTL) {
    static_cast<gpiochip_info*>(argument)->lines = 32;
  } else if (request == GPIO_GET_LINEHANDLE_IOCTL) {
    static_cast<gpiohandle_request*>(argument)->fd = kestrel::test::kLine;
  }
  return 0;
}
