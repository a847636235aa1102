// SPDX-License-Identifier: Apache-2.0
// Calls that fail on serial ports, and settings that do not stick.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "outside_world.h"
#include "raw_port.h"
#include "support/descriptors.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

struct FailingCall {
  const char* name;
  std::function<long(int port)> call;
};

void PrintTo(const FailingCall& call, std::ostream* stream) { *stream << call.name; }

long SetSettings(int port) {
  termios settings{};
  cfmakeraw(&settings);
  settings.c_cflag |= CREAD;
  return tcsetattr(port, TCSANOW, &settings);
}

long GetSettings(int port) {
  termios settings{};
  return tcgetattr(port, &settings);
}

long ReadByte(int port) {
  char byte = 0;
  return read(port, &byte, 1);
}

const FailingCall kCalls[] = {
    {"flock", [](int port) -> long { return flock(port, LOCK_EX | LOCK_NB); }},
    {"tcgetattr", GetSettings},
    {"tcsetattr", SetSettings},
    {"fcntl", [](int port) -> long { return fcntl(port, F_SETFL, O_NONBLOCK); }},
    {"read", ReadByte},
    {"write", [](int port) -> long { return write(port, "x", 1); }}};

class UartFault : public testing::TestWithParam<FailingCall> {
 protected:
  ~UartFault() override { ClearFaults(); }

  std::string On(const std::string& path, const std::string& error) const {
    return GetParam().name + std::string(":") + path + "=" + error;
  }
  void ExpectFailure(int descriptor) const {
    errno = 0;
    EXPECT_EQ(GetParam().call(descriptor), -1);
    EXPECT_EQ(errno, ENOSPC);
  }
  /// Reading fails for want of something to read.
  void ExpectNoFault(int descriptor) const {
    errno = 0;
    const long result = GetParam().call(descriptor);
    EXPECT_TRUE(result >= 0 || errno == EAGAIN) << errno;
  }
};

TEST_P(UartFault, HitsTheNthCallOnThatPort) {
  const RawPort port(3);
  const RawPort other(255);
  AddFault(On("/dev/ttyS3", "ENOSPC@2"));
  ExpectNoFault(other.get());
  ExpectNoFault(other.get());
  ExpectNoFault(port.get());
  ExpectFailure(port.get());
  ExpectNoFault(port.get());
}

TEST_P(UartFault, HitsCopiesOfTheDescriptorAsWell) {
  const RawPort port(3);
  const int copy = dup(port.get());
  AddFault(On("/dev/ttyS3", "ENOSPC"));
  ExpectFailure(copy);
  const pid_t child = fork();
  if (child == 0) {
    _exit(GetParam().call(copy) == -1 && errno == ENOSPC ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  close(copy);
}

TEST_P(UartFault, LeavesOtherFilesAlone) {
  const TemporaryDirectory folder;
  const RawPort port(3);
  AddFault(std::string(GetParam().name) + "=ENOSPC");
  const int file = open(folder.Write("file", "text").c_str(), O_RDWR);
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  errno = 4242;
  GetParam().call(file);
  EXPECT_NE(errno, ENOSPC);
  GetParam().call(terminal);
  EXPECT_NE(errno, ENOSPC);
  close(file);
  close(terminal);
}

TEST_P(UartFault, LooksAtADescriptorWithoutTouchingErrno) {
  const RawPort port(2);
  port.MakeRaw();
  port.Send("x");
  EXPECT_TRUE(Eventually([] { return PortOutside(2).find("in 1, out 1;") != std::string::npos; }));
  errno = 4242;
  EXPECT_GE(GetParam().call(port.get()), 0);
  EXPECT_EQ(errno, 4242);
}

INSTANTIATE_TEST_SUITE_P(Calls, UartFault, testing::ValuesIn(kCalls),
                         [](const auto& call) { return std::string(call.param.name); });

class UartFaults : public testing::Test {
 protected:
  ~UartFaults() override { ClearFaults(); }
};

TEST_F(UartFaults, OpenFails) {
  AddFault("open:/dev/ttyS3=EACCES@1");
  const std::set<int> before = OpenDescriptors();
  EXPECT_EQ(OpenPort(3), -1);
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(OpenDescriptors(), before);
  const RawPort other(0);
  const RawPort port(3);
}

/// A call under a name that no source can write.
template <typename Function>
Function* Called(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

TEST_F(UartFaults, HitTheOtherNamesOfTheCalls) {
  const RawPort port(3);
  AddFault("read:/dev/ttyS3=ENOSPC");
  AddFault("fcntl:/dev/ttyS3=ENOLCK");
  char byte = 0;
  EXPECT_EQ(Called<ssize_t(int, void*, size_t, size_t)>("__read_chk")(port.get(), &byte, 1, 1), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ((Called<int(int, int, ...)>("fcntl64")(port.get(), F_GETFL)), -1);
  EXPECT_EQ(errno, ENOLCK);
}

TEST_F(UartFaults, FailingCloseStillCloses) {
  const int port = OpenPort(3);
  AddFault("close:/dev/ttyS3=EIO@1");
  EXPECT_EQ(close(port), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(fcntl(port, F_GETFD), -1);
  EXPECT_TRUE(Eventually([] { return PortOutside(3).find(" open ") == std::string::npos; }));
}

TEST_F(UartFaults, OpeningIsNoCallOnTheOpenPort) {
  AddFault("close:/dev/ttyS3=EIO@1");
  const int port = OpenPort(3);
  ASSERT_GE(port, 0);
  EXPECT_EQ(close(port), -1);
}

class ForgetfulPort : public testing::Test {
 protected:
  ~ForgetfulPort() override { KeepAllSettings(3); }

  termios Set(speed_t speed, tcflag_t control, tcflag_t input) const {
    termios settings{};
    tcgetattr(port_.get(), &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, speed);
    settings.c_cflag |= control;
    settings.c_iflag |= input;
    settings.c_cc[VMIN] = 7;
    errno = 4242;
    EXPECT_EQ(tcsetattr(port_.get(), TCSANOW, &settings), 0);
    EXPECT_EQ(errno, 4242);
    tcgetattr(port_.get(), &settings);
    return settings;
  }

  const RawPort port_{3};
};

TEST_F(ForgetfulPort, DoesNotKeepTheSpeedButTheRest) {
  ForgetSettings(3, "speed");
  const termios settings = Set(B115200, CRTSCTS, IXON);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B9600));
  EXPECT_EQ(cfgetispeed(&settings), static_cast<speed_t>(B9600));
  EXPECT_NE(settings.c_cflag & CRTSCTS, 0U);
  EXPECT_NE(settings.c_iflag & IXON, 0U);
  EXPECT_EQ(settings.c_lflag & ICANON, 0U);
  EXPECT_EQ(settings.c_cc[VMIN], 7);
}

TEST_F(ForgetfulPort, DoesNotKeepFlowControlOrCharacters) {
  ForgetSettings(3, "rts-cts");
  ForgetSettings(3, "min-time");
  const termios settings = Set(B115200, CRTSCTS | CSTOPB, 0);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
  EXPECT_EQ(settings.c_cflag & (CRTSCTS | CSTOPB), static_cast<tcflag_t>(CSTOPB));
  EXPECT_EQ(settings.c_cc[VMIN], 1);
}

TEST_F(ForgetfulPort, DoesNotBecomeRaw) {
  ForgetSettings(3, "raw");
  const termios settings = Set(B115200, 0, 0);
  EXPECT_NE(settings.c_lflag & ICANON, 0U);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
}

TEST_F(ForgetfulPort, KeepsAllAgainWhenToldSo) {
  ForgetSettings(3, "speed");
  KeepAllSettings(3);
  const termios settings = Set(B115200, 0, 0);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
}

TEST_F(ForgetfulPort, ForgetsOnlyWhatIsItsOwn) {
  ForgetSettings(255, "speed");
  const termios settings = Set(B115200, 0, 0);
  EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B115200));
  KeepAllSettings(255);
}

}  // namespace
}  // namespace kestrel::test
