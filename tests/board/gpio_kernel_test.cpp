// SPDX-License-Identifier: Apache-2.0
// The device as the kernel's own line-handle interface behaves.
#include <errno.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string>

#include "outside_world.h"
#include "raw_gpio.h"

namespace kestrel::test {
namespace {

constexpr uint32_t kInput = GPIOHANDLE_REQUEST_INPUT;
constexpr uint32_t kOutput = GPIOHANDLE_REQUEST_OUTPUT;
constexpr uint32_t kOpenDrain = GPIOHANDLE_REQUEST_OPEN_DRAIN;
constexpr uint32_t kOpenSource = GPIOHANDLE_REQUEST_OPEN_SOURCE;
constexpr uint32_t kActiveLow = GPIOHANDLE_REQUEST_ACTIVE_LOW;
constexpr uint32_t kPullUp = GPIOHANDLE_REQUEST_BIAS_PULL_UP;
constexpr uint32_t kPullDown = GPIOHANDLE_REQUEST_BIAS_PULL_DOWN;

class GpioKernel : public testing::Test {
 protected:
  const int chip_ = OpenChipDevice();
};

TEST_F(GpioKernel, ChipTellsNameLabelAndLineCount) {
  gpiochip_info info{};
  ASSERT_EQ(ioctl(chip_, GPIO_GET_CHIPINFO_IOCTL, &info), 0);
  EXPECT_STREQ(info.name, "gpiochip0");
  EXPECT_STREQ(info.label, "test bench");
  EXPECT_EQ(info.lines, 8U);
}

TEST_F(GpioKernel, LineInfoTellsNamesAndUse) {
  EXPECT_STREQ(LineInfo(chip_, 1).name, "LED");
  EXPECT_EQ(LineInfo(chip_, 1).flags, 0U);
  const int line = RequestLine(chip_, 1, kOutput | kOpenDrain);
  EXPECT_STREQ(LineInfo(chip_, 1).consumer, "tester");
  EXPECT_EQ(LineInfo(chip_, 1).flags,
            GPIOLINE_FLAG_KERNEL | GPIOLINE_FLAG_IS_OUT | GPIOLINE_FLAG_OPEN_DRAIN);
  close(line);
  EXPECT_EQ(LineInfo(chip_, 8).flags, UINT32_MAX);
}

TEST_F(GpioKernel, LineInfoTellsEveryFlagUntilTheRelease) {
  const int input = RequestLine(chip_, 5, kInput | kActiveLow | kPullUp);
  EXPECT_EQ(LineInfo(chip_, 5).flags,
            GPIOLINE_FLAG_KERNEL | GPIOLINE_FLAG_ACTIVE_LOW | GPIOLINE_FLAG_BIAS_PULL_UP);
  close(input);
  EXPECT_EQ(LineInfo(chip_, 5).flags, 0U);
  const int output = RequestLine(chip_, 5, kOutput | kOpenSource | kPullDown);
  EXPECT_EQ(LineInfo(chip_, 5).flags, GPIOLINE_FLAG_KERNEL | GPIOLINE_FLAG_IS_OUT |
                                          GPIOLINE_FLAG_OPEN_SOURCE | GPIOLINE_FLAG_BIAS_PULL_DOWN);
  close(output);
  EXPECT_EQ(LineInfo(chip_, 5).flags, static_cast<uint32_t>(GPIOLINE_FLAG_IS_OUT));
}

/// The consumer that the chip reports for a line that was requested with `label`.
std::string ConsumerFor(int chip, const std::string& label) {
  gpiohandle_request request{};
  request.lineoffsets[0] = 6;
  request.lines = 1;
  label.copy(request.consumer_label, sizeof request.consumer_label);
  EXPECT_EQ(ioctl(chip, GPIO_GET_LINEHANDLE_IOCTL, &request), 0);
  std::string consumer = LineInfo(chip, 6).consumer;
  EXPECT_EQ(LevelSeenOutside(6), "low") << "the board is still there";
  close(request.fd);
  return consumer;
}

TEST_F(GpioKernel, ConsumersAreWhateverProgramsSay) {
  EXPECT_EQ(ConsumerFor(chip_, "me"), "me");
  EXPECT_EQ(ConsumerFor(chip_, ""), "?");
  EXPECT_EQ(ConsumerFor(chip_, "\xff\xfe bad"), "\xff\xfe bad") << "not UTF-8";
  EXPECT_EQ(ConsumerFor(chip_, std::string(32, 'x')), std::string(31, 'x'));
}

TEST_F(GpioKernel, LineUsedByTheKernelIsBusy) {
  EXPECT_EQ(RequestLine(chip_, 3, kInput), -EBUSY);
  EXPECT_EQ(LineInfo(chip_, 3).flags, static_cast<uint32_t>(GPIOLINE_FLAG_KERNEL));
}

TEST_F(GpioKernel, OffsetOutOfRangeIsInvalid) {
  EXPECT_EQ(RequestLine(chip_, 8, kInput), -EINVAL);
  EXPECT_EQ(RequestLine(chip_, UINT32_MAX, kInput), -EINVAL);
}

struct FlagCase {
  uint32_t flags;
  bool valid;
};

class GpioKernelFlags : public testing::TestWithParam<FlagCase> {};

TEST_P(GpioKernelFlags, AreRefusedOrNot) {
  const int line = RequestLine(OpenChipDevice(), 0, GetParam().flags);
  EXPECT_EQ(line >= 0, GetParam().valid) << "flags " << GetParam().flags << " gave " << line;
  EXPECT_TRUE(line >= 0 || line == -EINVAL);
}

INSTANTIATE_TEST_SUITE_P(
    Combinations, GpioKernelFlags,
    testing::Values(FlagCase{0, true}, FlagCase{kInput, true}, FlagCase{kOutput, true},
                    FlagCase{kInput | kOutput, false}, FlagCase{kOpenDrain, false},
                    FlagCase{kOpenSource, false}, FlagCase{kInput | kOpenDrain, false},
                    FlagCase{kInput | kOpenSource, false}, FlagCase{kOutput | kOpenDrain, true},
                    FlagCase{kOutput | kOpenSource, true},
                    FlagCase{kOutput | kOpenDrain | kOpenSource, false}, FlagCase{kPullUp, false},
                    FlagCase{kInput | kPullUp, true}, FlagCase{kInput | kPullUp | kPullDown, false},
                    FlagCase{kInput | kActiveLow, true}, FlagCase{1U << 20, false}));

TEST_F(GpioKernel, NoLinesOrTooManyAreInvalid) {
  gpiohandle_request request{};
  request.flags = kInput;
  EXPECT_EQ(ioctl(chip_, GPIO_GET_LINEHANDLE_IOCTL, &request), -1);
  EXPECT_EQ(errno, EINVAL);
  request.lines = GPIOHANDLES_MAX + 1;
  EXPECT_EQ(ioctl(chip_, GPIO_GET_LINEHANDLE_IOCTL, &request), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(GpioKernel, HandleOfSeveralLinesDrivesThemTogether) {
  const int handle = RequestLines(chip_, {5, 7}, kOutput, {1, 0});
  EXPECT_EQ(LevelSeenOutside(5), "high");
  EXPECT_EQ(LevelSeenOutside(7), "low");
  gpiohandle_data data{};
  data.values[1] = 200;
  EXPECT_EQ(ioctl(handle, GPIOHANDLE_SET_LINE_VALUES_IOCTL, &data), 0);
  EXPECT_EQ(LevelSeenOutside(5), "low");
  EXPECT_EQ(LevelSeenOutside(7), "high");
}

TEST_F(GpioKernel, FailedRequestOfSeveralLinesTakesNone) {
  EXPECT_EQ(RequestLines(chip_, {5, 3}, kInput), -EBUSY);
  EXPECT_EQ(RequestLines(chip_, {5, 5}, kInput), -EBUSY);
  EXPECT_GE(RequestLine(chip_, 5, kInput), 0);
}

TEST_F(GpioKernel, ActiveLowInvertsWhatTheProgramSees) {
  const int output = RequestLine(chip_, 5, kOutput | kActiveLow, 1);
  EXPECT_EQ(LevelSeenOutside(5), "low");
  EXPECT_EQ(GetLine(output), 1);
  EXPECT_EQ(SetLine(output, 0), 0);
  EXPECT_EQ(LevelSeenOutside(5), "high");
}

TEST_F(GpioKernel, InputsReadTheirConfiguredLevels) {
  EXPECT_EQ(GetLine(RequestLine(chip_, 2, kInput)), 1) << "pulled up";
  EXPECT_EQ(GetLine(RequestLine(chip_, 4, kInput)), 1) << "driven high";
  EXPECT_EQ(GetLine(RequestLine(chip_, 5, kInput)), 0) << "never driven";
  EXPECT_EQ(GetLine(RequestLine(chip_, 6, kInput | kPullUp)), 1) << "biased up";
}

TEST_F(GpioKernel, RequestWithoutDirectionLeavesTheLineAsItIs) {
  close(RequestLine(chip_, 5, kOutput, 1));
  const int line = RequestLine(chip_, 5, 0);
  EXPECT_EQ(GetLine(line), 1);
  EXPECT_EQ(SetLine(line, 0), 0);
  EXPECT_EQ(LevelSeenOutside(5), "low");
}

TEST_F(GpioKernel, UnknownRequestsAreInvalid) {
  EXPECT_EQ(ioctl(chip_, _IO(0xB4, 0x7F)), -1);
  EXPECT_EQ(errno, EINVAL);
  const int line = RequestLine(chip_, 5, kInput);
  gpiochip_info info{};
  EXPECT_EQ(ioctl(line, GPIO_GET_CHIPINFO_IOCTL, &info), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(GpioKernel, BadPointersAreFaultsAndHarmless) {
  void* const nowhere = reinterpret_cast<void*>(8);
  EXPECT_EQ(ioctl(chip_, GPIO_GET_CHIPINFO_IOCTL, nowhere), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(ioctl(chip_, GPIO_GET_LINEHANDLE_IOCTL, nowhere), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_GE(RequestLine(chip_, 0, kInput), 0);
}

}  // namespace
}  // namespace kestrel::test
