// SPDX-License-Identifier: Apache-2.0
// What the board cannot do as real parts do it and the library does not need, so that the list of
// differences stays true.
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/uart.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "board/raw_gpio.h"
#include "rig.h"
#include "visitor.h"

namespace kestrel::test {
namespace {

int ErrnoOf(int result) { return result == 0 ? 0 : errno; }

TEST(DeviceDifferences, KindOfTheChip) {
  const int chip = OpenChipDevice(0);
  struct stat status {};
  ASSERT_EQ(fstat(chip, &status), 0);
  EXPECT_EQ(status.st_mode & S_IFMT, TheRig().Of(kKindOfChip));
  close(chip);
}

TEST(DeviceDifferences, NameOfAPort) {
  const Visitor visitor(kLeftPort);
  const char* name = ttyname(visitor.get());
  ASSERT_NE(name, nullptr);
  const char* begin = TheRig().Of(kNameOfPort);
  EXPECT_EQ(std::string(name, strlen(begin)), begin);
}

TEST(DeviceDifferences, ModemLines) {
  const Visitor visitor(kLeftPort);
  int lines = 0;
  EXPECT_EQ(ErrnoOf(ioctl(visitor.get(), TIOCMGET, &lines)), TheRig().Of(kModemLines));
}

TEST(DeviceDifferences, SevenDataBits) {
  const Visitor visitor(kLeftPort);
  termios settings{};
  ASSERT_EQ(tcgetattr(visitor.get(), &settings), 0);
  termios changed = settings;
  changed.c_cflag = (changed.c_cflag & ~tcflag_t{CSIZE}) | CS7;
  EXPECT_EQ(ErrnoOf(tcsetattr(visitor.get(), TCSANOW, &changed)), TheRig().Of(kSevenDataBits));
  EXPECT_EQ(tcsetattr(visitor.get(), TCSANOW, &settings), 0);
}

/// As <kestrel/uart.h> shows it for a port that the library has opened.
TEST(DeviceDifferences, EvenParity) {
  UartConfigRecord config;
  ASSERT_EQ(z__UART_InitConfig(&config, UART_CONFIG_VERSION), 0);
  const int port = z__UART_Open(kLeftPort, &config);
  ASSERT_GE(port, 0);
  termios settings{};
  ASSERT_EQ(tcgetattr(port, &settings), 0);
  settings.c_iflag |= INPCK;
  settings.c_cflag &= ~static_cast<tcflag_t>(PARODD | CMSPAR);
  settings.c_cflag |= PARENB;
  EXPECT_EQ(tcsetattr(port, TCSANOW, &settings), 0);
  ASSERT_EQ(tcgetattr(port, &settings), 0);
  EXPECT_EQ((settings.c_cflag & PARENB) != 0, TheRig().Of(kKeepsParity));
  close(port);
}

}  // namespace
}  // namespace kestrel::test
