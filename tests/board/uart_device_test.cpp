// SPDX-License-Identifier: Apache-2.0
// Ports as the kernel has them: what their settings, locks and descriptors are like.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include "outside_world.h"
#include "serial_port.h"
#include "support/in_child.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

using testing::IsEmpty;

constexpr char kExclusively[] =
    "[Kestrel:UART] Unable to open device exclusively: Resource temporarily unavailable (11).\n";

int OpenErrno(uint32_t number) {
  const int port = OpenPort(number);
  if (port < 0) {
    return errno;
  }
  close(port);
  return 0;
}

termios SettingsOf(int port) {
  termios settings{};
  EXPECT_EQ(tcgetattr(port, &settings), 0);
  return settings;
}

TEST(UartPort, IsOneOpenDescriptor) {
  const Observed open = Observe([] { return OpenPort(0); });
  EXPECT_GE(open.result, 0);
  EXPECT_EQ(open.standard_error, "");
  EXPECT_THAT(open.new_descriptors, testing::ElementsAre(open.result));
  EXPECT_THAT(open.lost_descriptors, IsEmpty());
  EXPECT_EQ(fcntl(open.result, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(fcntl(open.result, F_GETFD), 0);
  EXPECT_EQ(close(open.result), 0);
}

TEST(UartPort, IsRaw) {
  const int port = OpenPort(0);
  const termios settings = SettingsOf(port);
  EXPECT_EQ(settings.c_iflag & 0x5FFFu, 0x0005u);
  EXPECT_EQ(settings.c_oflag & 0xF7u, 0u);
  EXPECT_EQ(settings.c_cflag & 0x80000FF0u, 0x0CB0u);
  EXPECT_EQ(settings.c_lflag & 0xC7FFu, 0u);
  for (int character = 0; character <= 16; ++character) {
    EXPECT_EQ(settings.c_cc[character], 0) << character;
  }
  close(port);
}

TEST(UartPort, DoesNotBecomeTheControllingTerminal) {
  EXPECT_EQ(InChild([] {
              setsid();
              OpenPort(0);
              return open("/dev/tty", O_RDWR) < 0 && errno == ENXIO ? 0 : 1;
            }),
            0);
}

TEST(UartPort, HasNothingToReadAtFirst) {
  const int port = OpenPort(0);
  char byte = 0;
  const ssize_t count = read(port, &byte, 1);
  EXPECT_TRUE(count == 0 || (count == -1 && errno == EAGAIN)) << count;
  close(port);
}

TEST(UartPort, TakesWhatIsWrittenAlsoWithNothingAtItsEnd) {
  const int port = OpenPort(0);
  EXPECT_TRUE(WriteTo(port, std::string(100000, 'x')));
  close(port);
}

struct SpeedCode {
  uint32_t baud_rate;
  speed_t code;
};

class UartPortSpeed : public testing::TestWithParam<SpeedCode> {};

INSTANTIATE_TEST_SUITE_P(Each, UartPortSpeed,
                         testing::Values(SpeedCode{9600, B9600}, SpeedCode{19200, B19200},
                                         SpeedCode{38400, B38400}, SpeedCode{57600, B57600},
                                         SpeedCode{115200, B115200}, SpeedCode{230400, B230400},
                                         SpeedCode{460800, B460800}, SpeedCode{500000, B500000},
                                         SpeedCode{576000, B576000}, SpeedCode{921600, B921600},
                                         SpeedCode{1000000, B1000000}, SpeedCode{1152000, B1152000},
                                         SpeedCode{1500000, B1500000},
                                         SpeedCode{2000000, B2000000}),
                         [](const auto& test) { return std::to_string(test.param.baud_rate); });

TEST_P(UartPortSpeed, IsSetInBothDirections) {
  UartConfigRecord config = PortConfig();
  config.baudRate = GetParam().baud_rate;
  const int port = z__UART_Open(1, &config);
  const termios settings = SettingsOf(port);
  EXPECT_EQ(cfgetospeed(&settings), GetParam().code);
  EXPECT_EQ(cfgetispeed(&settings), GetParam().code);
  close(port);
}

struct FlowControl {
  UartFlowControl asked;
  tcflag_t input;
  tcflag_t control;
  cc_t start;
  cc_t stop;
};

class UartPortFlowControl : public testing::TestWithParam<FlowControl> {};

INSTANTIATE_TEST_SUITE_P(Each, UartPortFlowControl,
                         testing::Values(FlowControl{UartFlowControl_None, 0, 0, 0, 0},
                                         FlowControl{UartFlowControl_RtsCts, 0, CRTSCTS, 0, 0},
                                         FlowControl{UartFlowControl_XonXoff, IXON | IXOFF, 0, 0x11,
                                                     0x13}));

TEST_P(UartPortFlowControl, IsReadBack) {
  const UartConfigRecord config = PortConfig(GetParam().asked);
  const int port = z__UART_Open(1, &config);
  const termios settings = SettingsOf(port);
  EXPECT_EQ(settings.c_iflag & (IXON | IXOFF), GetParam().input);
  EXPECT_EQ(settings.c_cflag & CRTSCTS, GetParam().control);
  EXPECT_EQ(settings.c_cc[VSTART], GetParam().start);
  EXPECT_EQ(settings.c_cc[VSTOP], GetParam().stop);
  close(port);
}

TEST(UartPort, OpensAgainWithOtherSettings) {
  const UartConfigRecord first = PortConfig(UartFlowControl_XonXoff);
  EXPECT_EQ(close(z__UART_Open(1, &first)), 0);
  const int port = OpenPort(1);
  EXPECT_EQ(SettingsOf(port).c_iflag & (IXON | IXOFF), 0u);
  close(port);
}

TEST(UartLock, KeepsOutASecondOpenOfTheProcess) {
  const int port = OpenPort(2);
  EXPECT_THAT(Observe([] { return OpenPort(2); }), Fails(EWOULDBLOCK, kExclusively));
  close(port);
  EXPECT_EQ(OpenErrno(2), 0);
}

TEST(UartLock, KeepsOutAnotherProcess) {
  const int port = OpenPort(2);
  EXPECT_EQ(InChild([] { return OpenErrno(2); }), EWOULDBLOCK);
  close(port);
  EXPECT_EQ(InChild([] { return OpenErrno(2); }), 0);
}

TEST(UartLock, IsHeldByEveryCopyOfTheDescriptor) {
  const int port = OpenPort(2);
  const int copy = dup(port);
  close(port);
  EXPECT_EQ(OpenErrno(2), EWOULDBLOCK);
  close(copy);
  EXPECT_EQ(OpenErrno(2), 0);
}

TEST(UartLock, EndsWithItsProcess) {
  EXPECT_EQ(InChild([] { return OpenPort(2) >= 0 ? 0 : 1; }), 0);
  EXPECT_EQ(OpenErrno(2), 0);
}

TEST(UartLock, IsOnePortsAlone) {
  const int port = OpenPort(2);
  EXPECT_EQ(OpenErrno(3), 0);
  close(port);
}

TEST(UartLock, OfSomebodyElseCounts) {
  const int other = open("/dev/ttyS2", O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_GE(other, 0);
  ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
  EXPECT_THAT(Observe([] { return OpenPort(2); }), Fails(EWOULDBLOCK, kExclusively));
  close(other);
}

TEST(UartLock, LeavesTheSettingsOfItsHolderAlone) {
  const UartConfigRecord config = PortConfig(UartFlowControl_XonXoff);
  const int port = z__UART_Open(2, &config);
  EXPECT_EQ(OpenErrno(2), EWOULDBLOCK);
  EXPECT_EQ(SettingsOf(port).c_iflag & (IXON | IXOFF), tcflag_t{IXON | IXOFF});
  close(port);
}

TEST(UartPort, ThatTheBoardLacksDoesNotExist) {
  for (const uint32_t number : {4u, 9u, 31u, 255u}) {
    EXPECT_THAT(
        Observe([number] { return OpenPort(number); }),
        Fails(ENOENT, "[Kestrel:UART] Unable to open device: No such file or directory (2).\n"));
  }
}

struct PortFault {
  std::string fault;
  int error;
  std::string printed;
};

class UartPortFault : public testing::TestWithParam<PortFault> {
 protected:
  ~UartPortFault() override { ClearFaults(); }
};

TEST_P(UartPortFault, IsReportedAndTheNextOpenWorks) {
  AddFault(GetParam().fault);
  EXPECT_THAT(Observe([] { return OpenPort(3); }),
              Fails(GetParam().error, "[Kestrel:UART] " + GetParam().printed));
  ClearFaults();
  EXPECT_EQ(OpenErrno(3), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Each, UartPortFault,
    testing::Values(
        PortFault{"open:/dev/ttyS3=EACCES", EACCES,
                  "Unable to open device: Permission denied (13).\n"},
        PortFault{"open:/dev/ttyS3=EPERM", EIO,
                  "Unable to open device: Operation not permitted (1).\n"},
        PortFault{"flock:/dev/ttyS3=ENOLCK", ENOLCK,
                  "Unable to open device exclusively: No locks available (37).\n"},
        PortFault{"tcgetattr:/dev/ttyS3=ENOTTY@1", ENOTTY,
                  "Unable to get attributes of device: Inappropriate ioctl for device (25).\n"},
        PortFault{"fcntl:/dev/ttyS3=EINVAL", EIO,
                  "Unable to set device to non-blocking: Invalid argument (22).\n"},
        PortFault{"tcsetattr:/dev/ttyS3=EIO", EIO,
                  "Unable to set attributes of device: Input/output error (5).\n"},
        PortFault{"tcgetattr:/dev/ttyS3=ENODEV@2", EIO,
                  "Unable to confirm attributes of device: No such device (19).\n"}));

TEST_F(UartPortFault, OfTheCloseIsPrintedAfterThatOfTheLock) {
  AddFault("flock:/dev/ttyS3=EBADF");
  AddFault("close:/dev/ttyS3=EINTR");
  EXPECT_THAT(Observe([] { return OpenPort(3); }),
              Fails(EBADF,
                    "[Kestrel:UART] Unable to open device exclusively: Bad file descriptor (9).\n"
                    "[Kestrel:UART] Error closing the device: Interrupted system call (4).\n"));
}

TEST_F(UartPortFault, OfTheCloseIsWhatTheCallerSees) {
  AddFault("tcsetattr:/dev/ttyS3=ENOTTY");
  AddFault("close:/dev/ttyS3=EINTR");
  EXPECT_THAT(
      Observe([] { return OpenPort(3); }),
      Fails(EINTR,
            "[Kestrel:UART] Unable to set attributes of device: Inappropriate ioctl for device "
            "(25).\n[Kestrel:UART] Error closing device: Interrupted system call (4).\n"));
}

}  // namespace
}  // namespace kestrel::test
