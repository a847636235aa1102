// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kestrel/networking.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace {

std::atomic<mode_t> g_mode{0};

TEST(NetworkStatusFile, IsOpenedWithAModeThatHasNoEffect) {
  bool ready = true;
  EXPECT_EQ(Networking_IsNetworkingReady(&ready), -1);
  EXPECT_EQ(errno, EBUSY);
  EXPECT_EQ(g_mode, 0704u);
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
  const bool is_status = strcmp(path, "/var/run/network_status") == 0;
  mode_t mode = 0;
  if (is_status || (flags & (O_CREAT | O_TMPFILE)) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  if (is_status) {
    g_mode = mode;
    errno = ENOENT;
    return -1;
  }
  using Function = int(const char*, int, ...);
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "open"))(path, flags, mode);
}
