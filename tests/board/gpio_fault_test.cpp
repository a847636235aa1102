// SPDX-License-Identifier: Apache-2.0
// Every failing path of the GPIO functions, on a chip that fails.
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <unistd.h>

#include <string>

#include "outside_world.h"
#include "support/observed_call.h"

namespace kestrel::test {
namespace {

using testing::IsEmpty;

void ExpectFailure(const Observed& observed, int error, const std::string& printed) {
  EXPECT_EQ(observed.result, -1);
  EXPECT_EQ(observed.error, error);
  EXPECT_EQ(observed.standard_error, printed);
  EXPECT_THAT(observed.lost_descriptors, IsEmpty());
}

struct OpenFault {
  std::string fault;
  int error;
  std::string printed;
};

class GpioOpenFault : public testing::TestWithParam<OpenFault> {
 protected:
  ~GpioOpenFault() override { ClearFaults(); }
};

/// Both opens share their failing paths; the first call also opens the chip, so it may keep that.
TEST_P(GpioOpenFault, IsReportedAndTheNextCallWorks) {
  close(GPIO_OpenAsInput(2));
  AddFault(GetParam().fault);
  const Observed input = Observe([] { return GPIO_OpenAsInput(2); });
  ExpectFailure(input, GetParam().error, GetParam().printed);
  EXPECT_THAT(input.new_descriptors, IsEmpty());
  const Observed output =
      Observe([] { return GPIO_OpenAsOutput(2, GpioDriveMode_OpenDrain, GpioLevel_High); });
  ExpectFailure(output, GetParam().error, GetParam().printed);
  ClearFaults();
  EXPECT_GE(GPIO_OpenAsInput(2), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Ioctls, GpioOpenFault,
    testing::Values(
        OpenFault{"ioctl:GPIO_GET_CHIPINFO_IOCTL=ENODEV", ENODEV,
                  "[Kestrel:GPIO] Problem getting GPIO info: No such device (19)\n"},
        OpenFault{"ioctl:GPIO_GET_CHIPINFO_IOCTL=EBADF", EIO,
                  "[Kestrel:GPIO] Problem getting GPIO info: Bad file descriptor (9)\n"},
        OpenFault{"ioctl:GPIO_GET_CHIPINFO_IOCTL=EFAULT", EIO,
                  "[Kestrel:GPIO] Problem getting GPIO info: Bad address (14)\n"},
        OpenFault{"ioctl:0x8044B401=EINVAL", EIO,
                  "[Kestrel:GPIO] Problem getting GPIO info: Invalid argument (22)\n"},
        OpenFault{"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EMFILE", EMFILE,
                  "[Kestrel:GPIO] Problem opening GPIO: Too many open files (24)\n"},
        OpenFault{"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EINVAL", EIO,
                  "[Kestrel:GPIO] Problem opening GPIO: Invalid argument (22)\n"},
        OpenFault{"ioctl=ENOMEM", ENOMEM,
                  "[Kestrel:GPIO] Problem getting GPIO info: Cannot allocate memory (12)\n"}));

class GpioChipFault : public testing::TestWithParam<OpenFault> {
 protected:
  ~GpioChipFault() override { ClearFaults(); }
};

TEST_P(GpioChipFault, IsReportedByEveryOpenUntilItIsGone) {
  AddFault(GetParam().fault);
  for (int i = 0; i < 2; ++i) {
    const Observed open = Observe([] { return GPIO_OpenAsInput(2); });
    ExpectFailure(open, GetParam().error, GetParam().printed);
    EXPECT_THAT(open.new_descriptors, IsEmpty());
  }
  ClearFaults();
  EXPECT_GE(GPIO_OpenAsInput(2), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Opens, GpioChipFault,
    testing::Values(
        OpenFault{"open:/dev/gpiochip0=ENOENT", ENOENT,
                  "[Kestrel:GPIO] Problem opening GPIO chip: No such file or directory (2)\n"},
        OpenFault{"open=EACCES", EACCES,
                  "[Kestrel:GPIO] Problem opening GPIO chip: Permission denied (13)\n"},
        OpenFault{"open=EINVAL", EIO,
                  "[Kestrel:GPIO] Problem opening GPIO chip: Invalid argument (22)\n"}));

class GpioValueFault : public testing::Test {
 protected:
  ~GpioValueFault() override { ClearFaults(); }
  const int line_ = GPIO_OpenAsOutput(2, GpioDriveMode_PushPull, GpioLevel_Low);
};

TEST_F(GpioValueFault, FailingSetIsReportedAndTheNextWorks) {
  AddFault("ioctl:GPIOHANDLE_SET_LINE_VALUES_IOCTL=EINVAL@1");
  const Observed set = Observe([this] { return GPIO_SetValue(line_, GpioLevel_High); });
  ExpectFailure(set, EIO, "[Kestrel:GPIO] Problem setting GPIO value: Invalid argument (22)\n");
  EXPECT_EQ(GPIO_SetValue(line_, GpioLevel_High), 0);
  EXPECT_EQ(LevelSeenOutside(2), "high");
}

TEST_F(GpioValueFault, FailingGetIsReportedAndLeavesTheValueAlone) {
  AddFault("ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL=ENODEV@2");
  GpioLevel level = 77;
  EXPECT_EQ(GPIO_GetValue(line_, &level), 0);
  level = 77;
  const Observed get = Observe([&] { return GPIO_GetValue(line_, &level); });
  ExpectFailure(get, ENODEV, "[Kestrel:GPIO] Problem getting GPIO value: No such device (19)\n");
  EXPECT_EQ(level, 77);
}

TEST_F(GpioValueFault, FailingCloseStillReleasesTheLine) {
  AddFault("close:line=EIO@1");
  EXPECT_EQ(close(line_), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_GE(GPIO_OpenAsInput(2), 0);
}

}  // namespace
}  // namespace kestrel::test
