// SPDX-License-Identifier: Apache-2.0
// What the kernel tells others of a line that the library has opened.
#include <kestrel/gpio.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string>

#include "board/raw_gpio.h"
#include "rig.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

constexpr int kLine = 11;

class DeviceGpioInfo : public testing::Test {
 protected:
  void TearDown() override { close(chip_); }

  gpioline_info Info(uint32_t line = kLine) const { return LineInfo(chip_, line); }

  const int chip_ = OpenChipDevice(0);
};

TEST_F(DeviceGpioInfo, ChipHasItsLines) {
  gpiochip_info info{};
  ASSERT_EQ(ioctl(chip_, GPIO_GET_CHIPINFO_IOCTL, &info), 0);
  EXPECT_EQ(info.lines, static_cast<uint32_t>(kLineCount));
  EXPECT_STREQ(info.name, "gpiochip0");
}

TEST_F(DeviceGpioInfo, LineOfTheKernelIsMarked) {
  EXPECT_EQ(Info(kBusyLine).flags & GPIOLINE_FLAG_KERNEL, GPIOLINE_FLAG_KERNEL);
  EXPECT_STRNE(Info(kBusyLine).consumer, "");
}

TEST_F(DeviceGpioInfo, InputIsTheLibrarys) {
  const int line = GPIO_OpenAsInput(kLine);
  EXPECT_EQ(Info().flags, GPIOLINE_FLAG_KERNEL);
  EXPECT_STREQ(Info().consumer, "kestrel");
  close(line);
  EXPECT_EQ(Info().flags, 0U);
  EXPECT_STREQ(Info().consumer, "");
}

struct Mode {
  std::string name;
  GpioDriveMode mode;
  uint32_t flag;
};

class DeviceGpioOutputInfo : public DeviceGpioInfo, public testing::WithParamInterface<Mode> {};

INSTANTIATE_TEST_SUITE_P(
    Each, DeviceGpioOutputInfo,
    testing::Values(Mode{"PushPull", GpioDriveMode_PushPull, 0},
                    Mode{"OpenDrain", GpioDriveMode_OpenDrain, GPIOLINE_FLAG_OPEN_DRAIN},
                    Mode{"OpenSource", GpioDriveMode_OpenSource, GPIOLINE_FLAG_OPEN_SOURCE}),
    [](const auto& test) { return test.param.name; });

TEST_P(DeviceGpioOutputInfo, TellsTheDriveModeUntilTheLineIsReleased) {
  const int line = GPIO_OpenAsOutput(kLine, GetParam().mode, GpioLevel_Low);
  EXPECT_EQ(Info().flags, GPIOLINE_FLAG_KERNEL | GPIOLINE_FLAG_IS_OUT | GetParam().flag);
  EXPECT_STREQ(Info().consumer, "kestrel");
  close(line);
  EXPECT_EQ(Info().flags, GPIOLINE_FLAG_IS_OUT);
  EXPECT_STREQ(Info().consumer, "");
}

}  // namespace
}  // namespace kestrel::test
