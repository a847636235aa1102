// SPDX-License-Identifier: Apache-2.0
// The rules by which a wire takes its level.
#include "devices/gpio/gpio_chip.h"

#include <gtest/gtest.h>
#include <linux/gpio.h>

namespace kestrel::board::gpio {
namespace {

constexpr uint32_t kInput = GPIOHANDLE_REQUEST_INPUT;
constexpr uint32_t kPushPull = GPIOHANDLE_REQUEST_OUTPUT;
constexpr uint32_t kOpenDrain = GPIOHANDLE_REQUEST_OUTPUT | GPIOHANDLE_REQUEST_OPEN_DRAIN;
constexpr uint32_t kOpenSource = GPIOHANDLE_REQUEST_OUTPUT | GPIOHANDLE_REQUEST_OPEN_SOURCE;

/// What drives a wire, and the level that it has to take.
struct Wiring {
  uint32_t flags;
  bool driven;
  std::optional<bool> outside;
  Pull pull;
  bool level;
};

class WireLevel : public testing::TestWithParam<Wiring> {};

TEST_P(WireLevel, FollowsTheStrongestDriver) {
  GpioChip chip("chip", "label", 1);
  chip.line(0).pull = GetParam().pull;
  chip.Drive(0, GetParam().outside);
  chip.Configure(0, GetParam().flags, GetParam().driven);
  EXPECT_EQ(chip.Value(0), GetParam().level);
}

constexpr std::optional<bool> kNobody = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Wirings, WireLevel,
    testing::Values(
        // An input follows the outside world, then resistors.
        Wiring{kInput, false, true, Pull::kNone, true},
        Wiring{kInput, false, false, Pull::kUp, false},
        Wiring{kInput, false, kNobody, Pull::kUp, true},
        Wiring{kInput, false, kNobody, Pull::kDown, false},
        Wiring{kInput, false, kNobody, Pull::kNone, false},
        Wiring{kInput | GPIOHANDLE_REQUEST_BIAS_PULL_UP, false, kNobody, Pull::kNone, true},
        Wiring{kInput | GPIOHANDLE_REQUEST_BIAS_PULL_DOWN, false, kNobody, Pull::kNone, false},
        // A push-pull output wins over everything.
        Wiring{kPushPull, true, false, Pull::kDown, true},
        Wiring{kPushPull, false, true, Pull::kUp, false},
        // Open drain drives low and lets go of high.
        Wiring{kOpenDrain, false, true, Pull::kUp, false},
        Wiring{kOpenDrain, true, false, Pull::kUp, false},
        Wiring{kOpenDrain, true, true, Pull::kNone, true},
        Wiring{kOpenDrain, true, kNobody, Pull::kNone, true},
        Wiring{kOpenDrain, true, kNobody, Pull::kDown, false},
        // Open source drives high and lets go of low.
        Wiring{kOpenSource, true, false, Pull::kDown, true},
        Wiring{kOpenSource, false, true, Pull::kDown, true},
        Wiring{kOpenSource, false, kNobody, Pull::kNone, false},
        Wiring{kOpenSource, false, kNobody, Pull::kUp, true}));

TEST(GpioChip, UndrivenWireKeepsItsLevel) {
  GpioChip chip("chip", "label", 1);
  chip.Configure(0, kPushPull, true);
  chip.Configure(0, kInput, false);
  EXPECT_TRUE(chip.Value(0));
  chip.Drive(0, false);
  chip.Drive(0, std::nullopt);
  EXPECT_FALSE(chip.Value(0));
}

TEST(GpioChip, ReleasedOpenDrainLineStaysLetGo) {
  GpioChip chip("chip", "label", 1);
  chip.Configure(0, kOpenDrain, true);
  chip.Release(0);
  chip.Drive(0, false);
  EXPECT_FALSE(chip.Value(0));
}

TEST(GpioChip, ReleasedLineKeepsDirectionAndLevel) {
  GpioChip chip("chip", "label", 1);
  chip.Take(0, "me");
  chip.Configure(0, kPushPull, true);
  chip.Release(0);
  EXPECT_FALSE(chip.lines()[0].IsBusy());
  EXPECT_TRUE(chip.lines()[0].IsOutput());
  EXPECT_TRUE(chip.lines()[0].level);
  EXPECT_EQ(chip.lines()[0].consumer, "");
}

}  // namespace
}  // namespace kestrel::board::gpio
