// SPDX-License-Identifier: Apache-2.0
// The serial ports of the board, by plain system calls.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "outside_world.h"
#include "raw_port.h"
#include "support/descriptors.h"

namespace kestrel::test {
namespace {

constexpr size_t kMebibyte = size_t{1024} * 1024;

termios SettingsOf(int port) {
  termios settings{};
  EXPECT_EQ(tcgetattr(port, &settings), 0);
  return settings;
}

TEST(SerialPort, IsATerminal) {
  const RawPort port(0);
  EXPECT_EQ(isatty(port.get()), 1);
  struct stat status {};
  ASSERT_EQ(fstat(port.get(), &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST(SerialPort, KeepsTheFlagsThatItIsOpenedWith) {
  const int port = open("/dev/ttyS3", O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(port, 0);
  EXPECT_EQ(fcntl(port, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(fcntl(port, F_GETFD), FD_CLOEXEC);
  close(port);
}

TEST(SerialPort, GetsTheLowestFreeDescriptorAndLeaksNone) {
  const int lowest = dup(STDOUT_FILENO);
  close(lowest);
  const std::set<int> before = OpenDescriptors();
  const int port = OpenPort(3);
  EXPECT_EQ(port, lowest);
  close(port);
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(SerialPort, OpeningLeavesErrnoAlone) {
  errno = 4242;
  const RawPort port(3);
  EXPECT_EQ(errno, 4242);
}

TEST(SerialPort, NumbersThatTheBoardHasNotAreEnoent) {
  for (const char* path : {"/dev/ttyS4", "/dev/ttyS254", "/dev/ttyS256", "/dev/ttyS00",
                           "/dev/ttyS99999999999999999999"}) {
    errno = 0;
    EXPECT_EQ(open(path, O_RDWR | O_NOCTTY | O_NONBLOCK), -1) << path;
    EXPECT_EQ(errno, ENOENT) << path;
  }
  const RawPort highest(255);
  EXPECT_EQ(isatty(highest.get()), 1);
}

TEST(SerialPort, StartsAtNineThousandSixHundredBitsCooked) {
  const RawPort port(3);
  const termios settings = SettingsOf(port.get());
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B9600));
  EXPECT_EQ(settings.c_cflag & (CSIZE | CSTOPB | PARENB | CREAD | HUPCL | CLOCAL | CRTSCTS),
            static_cast<tcflag_t>(CS8 | CREAD | HUPCL | CLOCAL));
  EXPECT_NE(settings.c_lflag & ICANON, 0U);
}

TEST(SerialPort, KeepsItsSettingsForTheNextProgram) {
  {
    const RawPort port(3);
    termios settings = SettingsOf(port.get());
    cfsetspeed(&settings, B115200);
    settings.c_cflag |= CRTSCTS;
    ASSERT_EQ(tcsetattr(port.get(), TCSANOW, &settings), 0);
  }
  const RawPort port(3);
  const termios settings = SettingsOf(port.get());
  EXPECT_EQ(cfgetispeed(&settings), static_cast<speed_t>(B115200));
  EXPECT_NE(settings.c_cflag & CRTSCTS, 0U);
}

TEST(SerialPort, WritingIntoNothingNeverWaits) {
  const RawPort port(3);
  port.MakeRaw();
  port.Send(Pattern(kMebibyte));
  EXPECT_TRUE(Eventually([] {
    return PortOutside(3).find("in 0, out 1048576;") != std::string::npos;
  })) << PortOutside(3);
  char byte = 0;
  EXPECT_EQ(read(port.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EAGAIN);
}

TEST(SerialPort, CableMovesEveryByteBothWaysAtOnce) {
  const RawPort left(0);
  const RawPort right(1);
  left.MakeRaw();
  right.MakeRaw();
  const std::string rightwards = Pattern(kMebibyte);
  const std::string leftwards(rightwards.rbegin(), rightwards.rend());
  std::thread left_sender([&] { left.Send(rightwards); });
  std::thread right_sender([&] { right.Send(leftwards); });
  std::string at_left;
  std::thread left_receiver([&] { at_left = left.Receive(kMebibyte); });
  const std::string at_right = right.Receive(kMebibyte);
  left_sender.join();
  right_sender.join();
  left_receiver.join();
  EXPECT_TRUE(at_right == rightwards);
  EXPECT_TRUE(at_left == leftwards);
}

TEST(SerialPort, WhoeverWritesTooFastMustWaitAndNothingIsLost) {
  const RawPort left(0);
  const RawPort right(1);
  left.MakeRaw();
  right.MakeRaw();
  const std::string pattern = Pattern(4 * kMebibyte);
  size_t sent = 0;
  // The writer is stopped for good when it is still stopped after the board has had its turn.
  for (int stops = 0; stops < 20 && sent < pattern.size();) {
    const ssize_t count = write(left.get(), pattern.data() + sent, pattern.size() - sent);
    sent += count > 0 ? static_cast<size_t>(count) : 0;
    stops = count > 0 ? 0 : stops + 1;
    PortOutside(0);
  }
  EXPECT_LT(sent, kMebibyte);
  EXPECT_TRUE(right.Receive(sent) == pattern.substr(0, sent));
  EXPECT_TRUE(Eventually([&] { return write(left.get(), "x", 1) == 1; }));
}

TEST(SerialPort, LoopbackReturnsEveryByte) {
  const RawPort port(2);
  port.MakeRaw();
  const std::string pattern = Pattern(kMebibyte);
  std::thread sender([&] { port.Send(pattern); });
  EXPECT_TRUE(port.Receive(kMebibyte) == pattern);
  sender.join();
}

TEST(SerialPort, BytesThatComeWhileNobodyHasItOpenAreLost) {
  const RawPort left(0);
  left.MakeRaw();
  left.Send(Pattern(kMebibyte));
  EXPECT_TRUE(Eventually([] {
    return PortOutside(1).find("in 0, out 0, lost 1048576;") != std::string::npos;
  })) << PortOutside(1);
  const RawPort right(1);
  right.MakeRaw();
  left.Send("heard");
  EXPECT_EQ(right.Receive(5), "heard");
}

TEST(SerialPort, ReaderThatLeavesLetsTheWriterGoOn) {
  const RawPort left(0);
  left.MakeRaw();
  {
    const RawPort right(1);
    right.MakeRaw();
    while (write(left.get(), Pattern(4096).data(), 4096) > 0) {
    }
  }
  left.Send(Pattern(kMebibyte));
  EXPECT_TRUE(Eventually([] { return PortOutside(1).find("lost") != std::string::npos; }));
}

TEST(SerialPort, FreshOpenMeetsNothingUnread) {
  const RawPort left(0);
  left.MakeRaw();
  {
    const RawPort right(1);
    right.MakeRaw();
    left.Send("old");
    EXPECT_TRUE(Eventually([] { return PortOutside(1).find("in 3,") != std::string::npos; }));
  }
  const RawPort right(1);
  left.Send("new");
  EXPECT_EQ(right.Receive(3), "new");
}

TEST(SerialPort, WhatWasWrittenBeforeTheCloseArrives) {
  const RawPort right(1);
  right.MakeRaw();
  {
    const RawPort left(0);
    left.MakeRaw();
    ASSERT_EQ(write(left.get(), "farewell", 8), 8);
  }
  EXPECT_EQ(right.Receive(8), "farewell");
}

TEST(SerialPort, XoffStopsAndXonStartsTheOutput) {
  const RawPort left(0);
  const RawPort right(1);
  left.MakeRaw();
  right.MakeRaw();
  termios settings = SettingsOf(right.get());
  settings.c_iflag |= IXON;
  settings.c_cc[VSTART] = 0x11;
  settings.c_cc[VSTOP] = 0x13;
  ASSERT_EQ(tcsetattr(right.get(), TCSANOW, &settings), 0);
  left.Send("\x13");
  EXPECT_TRUE(Eventually([&] { return write(right.get(), "a", 1) == -1 && errno == EAGAIN; }));
  left.Send("\x11");
  EXPECT_TRUE(Eventually([&] { return write(right.get(), "z", 1) == 1; }));
}

TEST(SerialPort, OutputThatWasStoppedStartsAgainWithAFreshOpen) {
  const RawPort left(0);
  left.MakeRaw();
  {
    const RawPort right(1);
    left.Send("\x13");
    EXPECT_TRUE(Eventually([&] { return write(right.get(), "a", 1) == -1; }));
  }
  const RawPort right(1);
  EXPECT_EQ(write(right.get(), "z", 1), 1);
}

TEST(SerialPort, LockIsSharedWithOtherProcesses) {
  const RawPort port(3);
  ASSERT_EQ(flock(port.get(), LOCK_EX | LOCK_NB), 0);
  const pid_t child = fork();
  if (child == 0) {
    const int other = OpenPort(3);
    const bool busy = flock(other, LOCK_EX | LOCK_NB) == -1 && errno == EWOULDBLOCK;
    _exit(busy ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  const int second = OpenPort(3);
  EXPECT_EQ(flock(second, LOCK_EX | LOCK_NB), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  close(second);
}

TEST(SerialPort, StaysOpenInACopyOfItsDescriptor) {
  const RawPort right(1);
  right.MakeRaw();
  const int left = OpenPort(0);
  const int copy = dup(left);
  close(left);
  ASSERT_EQ(write(copy, "still here\n", 11), 11);
  EXPECT_EQ(right.Receive(11).substr(0, 10), "still here");
  close(copy);
}

}  // namespace
}  // namespace kestrel::test
