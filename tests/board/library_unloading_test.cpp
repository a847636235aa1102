// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <kestrel/wificonfig.h>

#include "support/counted_memory.h"
#include "support/observed_call.h"

namespace kestrel::test {
namespace {

using testing::SizeIs;

using WifiCall = decltype(&WifiConfig_GetStoredNetworkCount);

WifiCall WifiFunction(void* library, const char* name) {
  return reinterpret_cast<WifiCall>(dlsym(library, name));
}

TEST(UnloadedLibrary, ClosesTheChipAndLeavesTheLine) {
  void* const library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  auto* const open_as_input =
      reinterpret_cast<decltype(&GPIO_OpenAsInput)>(dlsym(library, "GPIO_OpenAsInput"));
  const Observed open = Observe([&] { return open_as_input(3); });
  ASSERT_THAT(open.new_descriptors, SizeIs(2)) << open;
  const Observed unload = Observe([&] { return dlclose(library); });
  EXPECT_EQ(unload.result, 0);
  EXPECT_EQ(unload.standard_error, "");
  EXPECT_THAT(unload.lost_descriptors, SizeIs(1)) << "the line is the program's: " << unload;
  EXPECT_EQ(dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(UnloadedLibrary, ClosesTheConnectionToTheWifiDaemon) {
  void* const library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const Observed count = Observe(WifiFunction(library, "WifiConfig_GetStoredNetworkCount"));
  EXPECT_EQ(count.result, 0) << count;
  ASSERT_THAT(count.new_descriptors, SizeIs(1)) << count;
  const Observed unload = Observe([&] { return dlclose(library); });
  EXPECT_EQ(unload.result, 0);
  EXPECT_EQ(unload.standard_error, "");
  EXPECT_EQ(unload.lost_descriptors, count.new_descriptors) << unload;
  EXPECT_EQ(dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(UnloadedLibrary, GivesBackTheMemoryOfTheWifiLists) {
  const int live = g_live;
  void* const library = dlopen(KESTREL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  auto* const store = reinterpret_cast<decltype(&WifiConfig_StoreOpenNetwork)>(
      dlsym(library, "WifiConfig_StoreOpenNetwork"));
  const uint8_t name[] = {'A', 't', 't', 'i', 'c'};
  EXPECT_EQ(store(name, sizeof name), 0);
  EXPECT_EQ(WifiFunction(library, "WifiConfig_GetStoredNetworkCount")(), 1);
  EXPECT_GE(WifiFunction(library, "WifiConfig_TriggerScanAndGetScannedNetworkCount")(), 0);
  EXPECT_EQ(WifiFunction(library, "WifiConfig_ForgetAllNetworks")(), 0);
  EXPECT_GT(g_live, live) << "the list of stored networks is kept";
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_EQ(g_live, live);
}

}  // namespace
}  // namespace kestrel::test
