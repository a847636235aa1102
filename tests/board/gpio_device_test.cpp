// SPDX-License-Identifier: Apache-2.0
// What applications see of a real chip through the library's functions.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "outside_world.h"
#include "support/observed_call.h"

namespace kestrel::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr int kLineCount = 32;

GpioLevel ReadLevel(int fd) {
  GpioLevel level = 77;
  EXPECT_EQ(GPIO_GetValue(fd, &level), 0);
  return level;
}

TEST(GpioDevice, OutputIsDrivenToItsInitialLevelAtOnce) {
  const int high = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_High);
  const int low = GPIO_OpenAsOutput(5, GpioDriveMode_PushPull, GpioLevel_Low);
  EXPECT_EQ(LevelSeenOutside(4), "high");
  EXPECT_EQ(LevelSeenOutside(5), "low");
  close(high);
  close(low);
}

TEST(GpioDevice, OutputFollowsSetValueAndReadsBack) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
  for (const GpioLevel level : {GpioLevel_High, GpioLevel_Low, GpioLevel_High}) {
    EXPECT_EQ(GPIO_SetValue(line, level), 0);
    EXPECT_EQ(ReadLevel(line), level);
    EXPECT_EQ(LevelSeenOutside(4), level == GpioLevel_High ? "high" : "low");
  }
  close(line);
}

TEST(GpioDevice, InputFollowsTheOutsideWorld) {
  const int line = GPIO_OpenAsInput(7);
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  DriveFromOutside(7, "high");
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  DriveFromOutside(7, "low");
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  close(line);
}

TEST(GpioDevice, OpenDrainLineFollowsTheOutsideWorldWhenReleased) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_OpenDrain, GpioLevel_High);
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  DriveFromOutside(4, "low");
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  DriveFromOutside(4, "high");
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  EXPECT_EQ(GPIO_SetValue(line, GpioLevel_Low), 0);
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  close(line);
}

TEST(GpioDevice, OpenSourceLineFollowsTheOutsideWorldWhenReleased) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_OpenSource, GpioLevel_Low);
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  DriveFromOutside(4, "high");
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  DriveFromOutside(4, "low");
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  EXPECT_EQ(GPIO_SetValue(line, GpioLevel_High), 0);
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  close(line);
}

TEST(GpioDevice, PushPullOutputIsNotMovedFromOutside) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
  DriveFromOutside(4, "high");
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  close(line);
}

TEST(GpioDevice, RequestedLineIsBusyUntilItIsClosed) {
  const int line = GPIO_OpenAsInput(9);
  const Observed second = Observe([] { return GPIO_OpenAsInput(9); });
  EXPECT_EQ(second.result, -1);
  EXPECT_EQ(second.error, EBUSY);
  EXPECT_EQ(second.standard_error,
            "[Kestrel:GPIO] Problem opening GPIO: Device or resource busy (16)\n");
  EXPECT_THAT(second.new_descriptors, IsEmpty());
  close(line);
  const int again = GPIO_OpenAsOutput(9, GpioDriveMode_PushPull, GpioLevel_Low);
  EXPECT_GE(again, 0);
  close(again);
}

TEST(GpioDevice, LineIsFreeAtOnceHoweverOftenItIsReopened) {
  for (int i = 0; i < 200; ++i) {
    const int line = GPIO_OpenAsInput(9);
    ASSERT_GE(line, 0) << "round " << i;
    close(line);
  }
}

TEST(GpioDevice, SettingAnInputFailsWithEperm) {
  const int line = GPIO_OpenAsInput(9);
  const Observed set = Observe([&] { return GPIO_SetValue(line, GpioLevel_High); });
  EXPECT_EQ(set.result, -1);
  EXPECT_EQ(set.error, EPERM);
  EXPECT_EQ(set.standard_error,
            "[Kestrel:GPIO] Problem setting GPIO value: Operation not permitted (1)\n");
  close(line);
}

TEST(GpioDevice, LinesBeyondTheChipAreEnodevInSilence) {
  for (const GpioLineId line : {-1, kLineCount, INT32_MAX, INT32_MIN}) {
    const Observed open = Observe([&] { return GPIO_OpenAsInput(line); });
    EXPECT_EQ(open.result, -1);
    EXPECT_EQ(open.error, ENODEV);
    EXPECT_EQ(open.standard_error, "");
  }
  const int last = GPIO_OpenAsInput(kLineCount - 1);
  EXPECT_GE(last, 0);
  close(last);
}

TEST(GpioDevice, FirstOpenKeepsOneDescriptorOfTheLibrarysOwn) {
  const Observed first = Observe([] { return GPIO_OpenAsInput(1); });
  EXPECT_THAT(first.new_descriptors, SizeIs(2)) << first;
  const Observed second = Observe([] { return GPIO_OpenAsInput(2); });
  EXPECT_THAT(second.new_descriptors, testing::ElementsAre(second.result)) << second;
}

TEST(GpioDevice, LineDescriptorsAreCloseOnExec) {
  const int line = GPIO_OpenAsInput(1);
  EXPECT_EQ(fcntl(line, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  close(line);
}

TEST(GpioDevice, LevelsPersistAfterRelease) {
  close(GPIO_OpenAsOutput(6, GpioDriveMode_PushPull, GpioLevel_High));
  EXPECT_EQ(LevelSeenOutside(6), "high");
  const int line = GPIO_OpenAsInput(6);
  EXPECT_EQ(ReadLevel(line), GpioLevel_High);
  close(line);
}

TEST(GpioDevice, DescriptorThatIsNotOpenIsAnInputOutputError) {
  constexpr int kNotOpen = 900;
  GpioLevel level = 77;
  const Observed get = Observe([&] { return GPIO_GetValue(kNotOpen, &level); });
  EXPECT_EQ(get.result, -1);
  EXPECT_EQ(get.error, EIO);
  EXPECT_EQ(get.standard_error,
            "[Kestrel:GPIO] Problem getting GPIO value: Bad file descriptor (9)\n");
  EXPECT_EQ(level, 77);
}

TEST(GpioDevice, DescriptorOfAnotherKindIsRefusedByTheKernel) {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  const Observed set = Observe([&] { return GPIO_SetValue(null, GpioLevel_High); });
  EXPECT_EQ(set.error, ENOTTY);
  EXPECT_EQ(set.standard_error,
            "[Kestrel:GPIO] Problem setting GPIO value: Inappropriate ioctl for device (25)\n");
  close(null);
}

TEST(GpioDevice, EightThreadsEachHaveTheirLine) {
  const Observed all = Observe([] {
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([i] {
        const int line = GPIO_OpenAsOutput(i, GpioDriveMode_PushPull, GpioLevel_Low);
        for (int round = 0; round < 50; ++round) {
          const auto level = static_cast<GpioLevel>((round + i) % 2);
          EXPECT_EQ(GPIO_SetValue(line, level), 0);
          EXPECT_EQ(ReadLevel(line), level);
        }
        close(line);
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    return 0;
  });
  EXPECT_EQ(all.standard_error, "");
  EXPECT_THAT(all.new_descriptors, SizeIs(1)) << "the chip is opened once: " << all;
}

}  // namespace
}  // namespace kestrel::test
