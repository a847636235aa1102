// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <kestrel/log.h>

#include <fstream>
#include <string>

namespace {

bool IsMapped() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("libkestrel.so") != std::string::npos) {
      return true;
    }
  }
  return false;
}

TEST(Unloading, LeavesNothingMapped) {
  void* library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_TRUE(IsMapped());
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_FALSE(IsMapped());
}

TEST(Unloading, LeavesNothingMappedAfterCalls) {
  void* library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto log = reinterpret_cast<decltype(&Log_Debug)>(dlsym(library, "Log_Debug"));
  const auto set = reinterpret_cast<decltype(&GPIO_SetValue)>(dlsym(library, "GPIO_SetValue"));
  EXPECT_EQ(log(nullptr), -1);
  EXPECT_EQ(set(-1, GpioLevel_Low), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_FALSE(IsMapped());
  EXPECT_EQ(dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(Unloading, CanBeRepeated) {
  for (int round = 0; round < 3; ++round) {
    void* library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto log = reinterpret_cast<decltype(&Log_Debug)>(dlsym(library, "Log_Debug"));
    EXPECT_EQ(log(""), 0);
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_FALSE(IsMapped());
  }
}

}  // namespace
