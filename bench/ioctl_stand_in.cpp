// SPDX-License-Identifier: Apache-2.0
// In a file of its own, so that no call of it is inlined.
#include "ioctl_stand_in.h"

#include <sys/ioctl.h>

int g_ioctl_calls = 0;

extern "C" int ioctl(int, unsigned long, ...) noexcept {
  ++g_ioctl_calls;
  return 0;
}
