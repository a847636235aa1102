// SPDX-License-Identifier: Apache-2.0
// GPIO lines as applications and somebody with a meter see them.
#include <errno.h>
#include <fcntl.h>
#include <kestrel/gpio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

#include "rig.h"
#include "support/descriptors.h"
#include "support/in_child.h"
#include "support/outcome.h"
#include "support/threads.h"

namespace kestrel::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr char kBusy[] = "[Kestrel:GPIO] Problem opening GPIO: Device or resource busy (16)\n";
constexpr char kDenied[] = "[Kestrel:GPIO] Problem opening GPIO chip: Permission denied (13)\n";

GpioLevel ReadLevel(int fd) {
  GpioLevel level = 77;
  EXPECT_EQ(GPIO_GetValue(fd, &level), 0);
  return level;
}

std::string TextOf(GpioLevel level) { return level == GpioLevel_High ? "high" : "low"; }

MATCHER_P2(IsOutput, level, drive, "") {
  return arg.level == level && arg.direction == "output" && arg.drive == drive;
}

MATCHER_P(IsInput, level, "") { return arg.level == level && arg.direction == "input"; }

TEST(DeviceGpio, OutputStartsAtTheLevelThatIsAsked) {
  const int high = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_High);
  const int low = GPIO_OpenAsOutput(5, GpioDriveMode_PushPull, GpioLevel_Low);
  EXPECT_THAT(TheRig().LookAtLine(4), IsOutput("high", "push-pull"));
  EXPECT_THAT(TheRig().LookAtLine(5), IsOutput("low", "push-pull"));
  EXPECT_EQ(close(high), 0);
  EXPECT_EQ(close(low), 0);
}

TEST(DeviceGpio, OutputIsSeenOutsideAndReadBack) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
  for (const GpioLevel level : {GpioLevel_High, GpioLevel_Low, GpioLevel_High}) {
    EXPECT_THAT(Observe([&] { return GPIO_SetValue(line, level); }), Returns(0));
    EXPECT_EQ(TheRig().LookAtLine(4).level, TextOf(level));
    EXPECT_EQ(ReadLevel(line), level);
  }
  close(line);
}

TEST(DeviceGpio, OutputIsNotMovedFromOutside) {
  const int line = GPIO_OpenAsOutput(4, GpioDriveMode_PushPull, GpioLevel_Low);
  TheRig().DriveLine(4, GpioLevel_High);
  EXPECT_EQ(ReadLevel(line), GpioLevel_Low);
  EXPECT_EQ(TheRig().LookAtLine(4).level, "low");
  TheRig().DriveLine(4, GpioLevel_Low);
  close(line);
}

TEST(DeviceGpio, InputFollowsTheOutsideWorld) {
  const int line = GPIO_OpenAsInput(7);
  for (const GpioLevel level : {GpioLevel_High, GpioLevel_Low, GpioLevel_High, GpioLevel_Low}) {
    TheRig().DriveLine(7, level);
    EXPECT_EQ(ReadLevel(line), level);
    EXPECT_THAT(TheRig().LookAtLine(7), IsInput(TextOf(level)));
  }
  close(line);
}

TEST(DeviceGpio, FirstAndLastLineWorkLikeTheOthers) {
  for (const int offset : {0, kLineCount - 1}) {
    const int line = GPIO_OpenAsInput(offset);
    TheRig().DriveLine(offset, GpioLevel_High);
    EXPECT_EQ(ReadLevel(line), GpioLevel_High) << offset;
    TheRig().DriveLine(offset, GpioLevel_Low);
    EXPECT_EQ(ReadLevel(line), GpioLevel_Low) << offset;
    close(line);
  }
}

TEST(DeviceGpio, LineIsWhatItWasOpenedAsLast) {
  close(GPIO_OpenAsOutput(6, GpioDriveMode_PushPull, GpioLevel_High));
  const int input = GPIO_OpenAsInput(6);
  TheRig().DriveLine(6, GpioLevel_Low);
  EXPECT_THAT(TheRig().LookAtLine(6), IsInput("low"));
  close(input);
  const int output = GPIO_OpenAsOutput(6, GpioDriveMode_OpenSource, GpioLevel_High);
  EXPECT_THAT(TheRig().LookAtLine(6), IsOutput("high", "open-source"));
  close(output);
}

TEST(DeviceGpio, ReleasedOutputKeepsItsLevel) {
  close(GPIO_OpenAsOutput(6, GpioDriveMode_PushPull, GpioLevel_High));
  EXPECT_EQ(TheRig().LookAtLine(6).level, "high");
  close(GPIO_OpenAsOutput(6, GpioDriveMode_PushPull, GpioLevel_Low));
  EXPECT_EQ(TheRig().LookAtLine(6).level, "low");
}

/// An output that drives one level and lets the line go at the other.
struct OpenOutput {
  GpioDriveMode mode;
  std::string drive;
  GpioLevel driven;
  GpioLevel released;
};

class DeviceGpioOpenOutput : public testing::TestWithParam<OpenOutput> {
 protected:
  void TearDown() override { TheRig().DriveLine(8, GpioLevel_Low); }
};

INSTANTIATE_TEST_SUITE_P(Each, DeviceGpioOpenOutput,
                         testing::Values(OpenOutput{GpioDriveMode_OpenDrain, "open-drain",
                                                    GpioLevel_Low, GpioLevel_High},
                                         OpenOutput{GpioDriveMode_OpenSource, "open-source",
                                                    GpioLevel_High, GpioLevel_Low}),
                         [](const auto& test) {
                           return test.param.mode == GpioDriveMode_OpenDrain ? "Drain" : "Source";
                         });

TEST_P(DeviceGpioOpenOutput, FollowsTheOutsideWorldWhenReleased) {
  const int line = GPIO_OpenAsOutput(8, GetParam().mode, GetParam().released);
  for (const GpioLevel level : {GpioLevel_Low, GpioLevel_High, GpioLevel_Low}) {
    TheRig().DriveLine(8, level);
    EXPECT_EQ(ReadLevel(line), level);
  }
  EXPECT_EQ(TheRig().LookAtLine(8).drive, GetParam().drive);
  close(line);
}

TEST_P(DeviceGpioOpenOutput, IsNotMovedWhileItDrives) {
  const int line = GPIO_OpenAsOutput(8, GetParam().mode, GetParam().driven);
  for (const GpioLevel level : {GpioLevel_Low, GpioLevel_High, GpioLevel_Low}) {
    TheRig().DriveLine(8, level);
    EXPECT_EQ(ReadLevel(line), GetParam().driven);
    EXPECT_THAT(TheRig().LookAtLine(8), IsOutput(TextOf(GetParam().driven), GetParam().drive));
  }
  close(line);
}

TEST_P(DeviceGpioOpenOutput, IsReleasedAndDrivenAgain) {
  const int line = GPIO_OpenAsOutput(8, GetParam().mode, GetParam().driven);
  TheRig().DriveLine(8, GetParam().released);
  EXPECT_EQ(GPIO_SetValue(line, GetParam().released), 0);
  EXPECT_EQ(TheRig().LookAtLine(8).level, TextOf(GetParam().released));
  EXPECT_EQ(GPIO_SetValue(line, GetParam().driven), 0);
  EXPECT_EQ(TheRig().LookAtLine(8).level, TextOf(GetParam().driven));
  EXPECT_EQ(ReadLevel(line), GetParam().driven);
  close(line);
}

TEST(DeviceGpio, LineOfTheKernelIsBusy) {
  EXPECT_EQ(close(GPIO_OpenAsInput(0)), 0) << "the chip is open from now on";
  EXPECT_THAT(Observe([] { return GPIO_OpenAsInput(kBusyLine); }), Fails(EBUSY, kBusy));
  EXPECT_THAT(
      Observe([] { return GPIO_OpenAsOutput(kBusyLine, GpioDriveMode_PushPull, GpioLevel_High); }),
      Fails(EBUSY, kBusy));
}

TEST(DeviceGpio, OpenLineIsBusyForThisProcessAndOthersUntilItIsClosed) {
  const int line = GPIO_OpenAsInput(9);
  const auto open_again = [] {
    return Observe([] { return GPIO_OpenAsOutput(9, GpioDriveMode_PushPull, GpioLevel_High); });
  };
  EXPECT_THAT(open_again(), Fails(EBUSY, kBusy));
  EXPECT_EQ(InChild([&] { return open_again().error; }), EBUSY);
  EXPECT_THAT(TheRig().LookAtLine(9), IsInput("low"));
  close(line);
  const Observed again = open_again();
  EXPECT_GE(again.result, 0) << again;
  EXPECT_THAT(TheRig().LookAtLine(9), IsOutput("high", "push-pull"));
  close(again.result);
}

TEST(DeviceGpio, LineIsBusyAsLongAsACopyOfItsDescriptorIsOpen) {
  const int line = GPIO_OpenAsInput(9);
  const int copy = dup(line);
  close(line);
  EXPECT_THAT(Observe([] { return GPIO_OpenAsInput(9); }), Fails(EBUSY, kBusy));
  EXPECT_EQ(ReadLevel(copy), GpioLevel_Low);
  close(copy);
  EXPECT_EQ(close(GPIO_OpenAsInput(9)), 0);
}

TEST(DeviceGpio, LineIsFreeWhenItsProcessHasEnded) {
  EXPECT_EQ(InChild([] { return GPIO_OpenAsInput(9) >= 0 ? 0 : 1; }), 0);
  EXPECT_EQ(close(GPIO_OpenAsInput(9)), 0);
}

TEST(DeviceGpio, FirstOpenKeepsOneDescriptorAndLaterOnesNone) {
  const Observed first = Observe([] { return GPIO_OpenAsInput(1); });
  EXPECT_GE(first.result, 0);
  EXPECT_THAT(first.new_descriptors, SizeIs(2)) << first;
  const Observed second = Observe([] { return GPIO_OpenAsInput(2); });
  EXPECT_THAT(second.new_descriptors, ElementsAre(second.result)) << second;
  EXPECT_EQ(fcntl(second.result, F_GETFD), FD_CLOEXEC);
  close(first.result);
  close(second.result);
}

TEST(DeviceGpio, TwoHundredOpensLeaveNothingOpen) {
  close(GPIO_OpenAsInput(9));
  const std::set<int> before = OpenDescriptors();
  for (int round = 0; round < 200; ++round) {
    const int line = round % 2 == 0 ? GPIO_OpenAsInput(9)
                                    : GPIO_OpenAsOutput(9, GpioDriveMode_PushPull, GpioLevel_Low);
    ASSERT_GE(line, 0) << "round " << round;
    close(line);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(DeviceGpio, LineThatTheChipLacksIsRefusedInSilence) {
  EXPECT_EQ(close(GPIO_OpenAsInput(0)), 0);
  for (const GpioLineId line : {-1, kLineCount, INT32_MAX, INT32_MIN}) {
    EXPECT_THAT(Observe([&] { return GPIO_OpenAsInput(line); }), IsRefused(ENODEV));
  }
}

TEST(DeviceGpio, RefusedArgumentsLeaveTheLineAlone) {
  const LineOutside before = TheRig().LookAtLine(10);
  EXPECT_THAT(Observe([] { return GPIO_OpenAsOutput(10, 3, GpioLevel_High); }), IsRefused(EINVAL));
  EXPECT_THAT(Observe([] { return GPIO_OpenAsOutput(10, GpioDriveMode_PushPull, 2); }),
              IsRefused(EINVAL));
  EXPECT_EQ(TheRig().LookAtLine(10).direction, before.direction);
}

TEST(DeviceGpio, InputCannotBeSet) {
  const int line = GPIO_OpenAsInput(9);
  EXPECT_THAT(
      Observe([&] { return GPIO_SetValue(line, GpioLevel_High); }),
      Fails(EPERM, "[Kestrel:GPIO] Problem setting GPIO value: Operation not permitted (1)\n"));
  EXPECT_THAT(TheRig().LookAtLine(9), IsInput("low"));
  close(line);
}

TEST(DeviceGpio, ClosedDescriptorIsAnInputOutputError) {
  const int line = fcntl(GPIO_OpenAsInput(9), F_DUPFD_CLOEXEC, 200);
  close(line);
  GpioLevel level = 77;
  EXPECT_THAT(Observe([&] { return GPIO_GetValue(line, &level); }),
              Fails(EIO, "[Kestrel:GPIO] Problem getting GPIO value: Bad file descriptor (9)\n"));
  EXPECT_EQ(level, 77);
}

TEST(DeviceGpio, DescriptorOfAnotherDeviceIsNoLine) {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  EXPECT_THAT(Observe([&] { return GPIO_SetValue(null, GpioLevel_High); }),
              Fails(ENOTTY,
                    "[Kestrel:GPIO] Problem setting GPIO value: Inappropriate ioctl for device "
                    "(25)\n"));
  close(null);
}

TEST(DeviceGpio, UserWhoMayNotOpenTheChipIsTold) {
  EXPECT_EQ(TheRig().AsUserWhoMayNotOpen(kChipPath,
                                         [] {
                                           EXPECT_THAT(Observe([] { return GPIO_OpenAsInput(9); }),
                                                       Fails(EACCES, kDenied));
                                           return testing::Test::HasFailure() ? 1 : 0;
                                         }),
            0);
  EXPECT_EQ(close(GPIO_OpenAsInput(9)), 0);
}

TEST(DeviceGpio, EightThreadsEachHaveTheirLine) {
  constexpr std::array<int, 8> kLines = {0, 1, 2, 4, 5, 6, 7, 63};
  const Observed all = Observe([&] {
    OnThreads(8, [&](size_t thread) {
      const int line = GPIO_OpenAsOutput(kLines.at(thread), GpioDriveMode_PushPull, GpioLevel_Low);
      for (size_t round = 0; round < 200; ++round) {
        const auto level = static_cast<GpioLevel>((round + thread) % 2);
        EXPECT_EQ(GPIO_SetValue(line, level), 0);
        EXPECT_EQ(ReadLevel(line), level) << "thread " << thread << ", round " << round;
      }
      close(line);
    });
    return 0;
  });
  EXPECT_EQ(all.standard_error, "");
  EXPECT_THAT(all.new_descriptors, SizeIs(1)) << "the chip is opened once: " << all;
  for (size_t thread = 0; thread < kLines.size(); ++thread) {
    EXPECT_EQ(TheRig().LookAtLine(kLines.at(thread)).level, thread % 2 == 0 ? "high" : "low");
  }
}

TEST(DeviceGpio, OfEightThreadsOneGetsTheLine) {
  close(GPIO_OpenAsInput(1));
  std::array<int, 8> lines{};
  const Observed all = Observe([&] {
    OnThreads(8, [&](size_t thread) { lines.at(thread) = GPIO_OpenAsInput(9); });
    return 0;
  });
  EXPECT_EQ(std::count(lines.begin(), lines.end(), -1), 7);
  EXPECT_THAT(all.new_descriptors, ElementsAre(*std::max_element(lines.begin(), lines.end())));
  std::string seven;
  for (int i = 0; i < 7; ++i) {
    seven += kBusy;
  }
  EXPECT_EQ(all.standard_error, seven);
  close(*all.new_descriptors.begin());
}

}  // namespace
}  // namespace kestrel::test
