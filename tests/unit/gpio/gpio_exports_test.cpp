// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>

#include "gpio/chip_fixture.h"

namespace kestrel::test {
namespace {

/// Arguments that are refused before any system call, which the fixture would not let pass.
class GpioArguments : public ChipTest {};

TEST_F(GpioArguments, ModeIsAnEnumeratedValue) {
  for (const GpioDriveMode mode : {3U, 4U, 255U, 256U, 0x80000000U, UINT_MAX}) {
    EXPECT_THAT(Call([mode] { return GPIO_OpenAsOutput(3, mode, 0); }), IsRefused(EINVAL)) << mode;
  }
}

TEST_F(GpioArguments, InitialLevelIsAnEnumeratedValue) {
  for (const int level : {2, 3, 127, 128, 254, 255}) {
    const auto initial = static_cast<GpioLevel>(level);
    EXPECT_THAT(Call([initial] { return GPIO_OpenAsOutput(3, 0, initial); }), IsRefused(EINVAL))
        << level;
  }
}

TEST_F(GpioArguments, ModeAndLevelAreCheckedBeforeTheLine) {
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(-1, 3, 0); }), IsRefused(EINVAL));
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(-1, 0, 2); }), IsRefused(EINVAL));
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(-1, 3, 2); }), IsRefused(EINVAL));
}

TEST_F(GpioArguments, ValueToSetIsAnEnumeratedValue) {
  for (const int level : {2, 3, 127, 128, 254, 255}) {
    const auto value = static_cast<GpioLevel>(level);
    EXPECT_THAT(Call([value] { return GPIO_SetValue(kLine, value); }), IsRefused(EINVAL)) << level;
  }
}

TEST_F(GpioArguments, ValueToSetIsCheckedBeforeTheDescriptor) {
  EXPECT_THAT(Call([] { return GPIO_SetValue(-1, 2); }), IsRefused(EINVAL));
}

TEST_F(GpioArguments, DescriptorToSetIsNotNegative) {
  for (const int fd : {-1, -2, INT_MIN}) {
    EXPECT_THAT(Call([fd] { return GPIO_SetValue(fd, 1); }), IsRefused(EBADF)) << fd;
  }
}

TEST_F(GpioArguments, PlaceForTheValueIsNotNull) {
  EXPECT_THAT(Call([] { return GPIO_GetValue(kLine, nullptr); }), IsRefused(EFAULT));
}

TEST_F(GpioArguments, PlaceForTheValueIsCheckedBeforeTheDescriptor) {
  EXPECT_THAT(Call([] { return GPIO_GetValue(-1, nullptr); }), IsRefused(EFAULT));
}

TEST_F(GpioArguments, DescriptorToGetIsNotNegative) {
  for (const int fd : {-1, -2, INT_MIN}) {
    GpioLevel value = 77;
    EXPECT_THAT(Call([&] { return GPIO_GetValue(fd, &value); }), IsRefused(EBADF)) << fd;
    EXPECT_EQ(value, 77);
  }
}

TEST_F(GpioArguments, RefusalLeavesTheNextCallAlone) {
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(3, 3, 0); }), IsRefused(EINVAL));
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(3, 0, 0); }), Returns(kLine));
}

}  // namespace
}  // namespace kestrel::test
