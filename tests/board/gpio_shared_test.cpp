// SPDX-License-Identifier: Apache-2.0
// Lines and descriptors that several threads and processes share.
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/gpio.h>
#include <signal.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "support/in_child.h"

namespace kestrel::test {
namespace {

int OpenErrno(GpioLineId line) {
  const int fd = GPIO_OpenAsInput(line);
  if (fd < 0) {
    return errno;
  }
  close(fd);
  return 0;
}

TEST(GpioShared, LineOfAnotherProcessIsBusy) {
  const int line = GPIO_OpenAsInput(3);
  EXPECT_EQ(InChild([] { return OpenErrno(3); }), EBUSY);
  close(line);
  EXPECT_EQ(InChild([] { return OpenErrno(3); }), 0);
}

TEST(GpioShared, ChangesOfAnotherProcessAreVisibleAtOnce) {
  const int line = GPIO_OpenAsOutput(3, GpioDriveMode_PushPull, GpioLevel_Low);
  EXPECT_EQ(InChild([&] { return GPIO_SetValue(line, GpioLevel_High); }), 0);
  GpioLevel level = 77;
  EXPECT_EQ(GPIO_GetValue(line, &level), 0);
  EXPECT_EQ(level, GpioLevel_High);
  close(line);
}

TEST(GpioShared, LineIsFreeWhenItsProgramIsKilled) {
  const int status = InChild([] {
    GPIO_OpenAsInput(3);
    raise(SIGKILL);
    return 0;
  });
  EXPECT_EQ(status, 128 + SIGKILL);
  EXPECT_EQ(OpenErrno(3), 0);
}

TEST(GpioShared, LineStaysBusyWhileAnyCopyOfItsDescriptorIsOpen) {
  const int line = GPIO_OpenAsInput(3);
  const int copy = dup(line);
  close(line);
  EXPECT_EQ(OpenErrno(3), EBUSY);
  GpioLevel level = 77;
  EXPECT_EQ(GPIO_GetValue(copy, &level), 0);
  close(copy);
  EXPECT_EQ(OpenErrno(3), 0);
}

TEST(GpioShared, ThreadsOnOneDescriptorGetTheirOwnAnswers) {
  const int output = GPIO_OpenAsOutput(3, GpioDriveMode_PushPull, GpioLevel_High);
  const int input = GPIO_OpenAsInput(4);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) {
        GpioLevel level = 77;
        EXPECT_EQ(GPIO_GetValue(output, &level), 0);
        EXPECT_EQ(level, GpioLevel_High);
        EXPECT_EQ(GPIO_GetValue(input, &level), 0);
        EXPECT_EQ(level, GpioLevel_Low);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  close(output);
  close(input);
}

}  // namespace
}  // namespace kestrel::test
