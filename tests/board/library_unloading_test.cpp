// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>

#include "support/observed_call.h"

namespace kestrel::test {
namespace {

using testing::SizeIs;

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

}  // namespace
}  // namespace kestrel::test
