// SPDX-License-Identifier: Apache-2.0
#include "core/test_placeholder.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "gpio/gpio_manager.h"
#include "log/debug_log.h"
#include "unit/vtable_slot.h"

namespace {

using vesta::test::support::test_placeholder;

static_assert(std::has_virtual_destructor_v<test_placeholder>);
static_assert(sizeof(test_placeholder) == sizeof(void*));
static_assert(!std::is_abstract_v<test_placeholder>);

static_assert(std::is_base_of_v<test_placeholder, kestrel::log::Log>);
static_assert(sizeof(kestrel::log::Log) == sizeof(void*));
static_assert(!std::is_base_of_v<test_placeholder, kestrel::gpio::GpioManager>);
static_assert(std::has_virtual_destructor_v<kestrel::gpio::GpioManager>);

struct Stand : test_placeholder {
  virtual void First() {}
};

struct LogStand : kestrel::log::Log {
  virtual void First() {}
};

struct DestroyedStand : test_placeholder {
  explicit DestroyedStand(bool* destroyed) : destroyed_(destroyed) {}
  ~DestroyedStand() override { *destroyed_ = true; }
  bool* destroyed_;
};

TEST(TestPlaceholder, HasNoVirtualMethodButTheDestructors) {
  EXPECT_EQ(kestrel::test::VtableSlot(&Stand::First), 2);
}

TEST(TestPlaceholder, LogAddsNoVirtualMethod) {
  EXPECT_EQ(kestrel::test::VtableSlot(&LogStand::First), 2);
}

TEST(TestPlaceholder, DestroysWhatStandsInItsPlace) {
  bool destroyed = false;
  const test_placeholder* placeholder = new DestroyedStand(&destroyed);
  delete placeholder;
  EXPECT_TRUE(destroyed);
}

}  // namespace
