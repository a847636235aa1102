// SPDX-License-Identifier: Apache-2.0
// The settings that a port is given, from what its driver had and what the record asks for.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "uart/port_fixture.h"

namespace kestrel::test {
namespace {

class PortSettings : public PortTest {
 protected:
  /// The settings that a driver has after an open with `config_`.
  termios Apply(speed_t speed = 0x1002) {
    ExpectLockedPort();
    ExpectGet();
    ExpectOutputSpeed(speed);
    ExpectInputSpeed(speed);
    ExpectNonBlocking();
    ExpectAppliedAndConfirmed();
    EXPECT_THAT(Open(), Returns(kPort));
    return driver_;
  }
};

TEST_F(PortSettings, OfAFreshDriverAreRaw) {
  const termios applied = Apply();
  EXPECT_EQ(applied.c_iflag, 0x0005u);
  EXPECT_EQ(applied.c_oflag, 0u);
  EXPECT_EQ(applied.c_cflag, 0x0CB0u);
  EXPECT_EQ(applied.c_lflag, 0u);
  EXPECT_EQ(applied.c_line, 0);
  for (const cc_t character : applied.c_cc) {
    EXPECT_EQ(character, 0);
  }
}

TEST_F(PortSettings, KeepWhatTheLibraryHasNoSayIn) {
  memset(&driver_, 0xFF, sizeof driver_);
  const termios applied = Apply();
  EXPECT_EQ(applied.c_iflag, 0xFFFFA005u);
  EXPECT_EQ(applied.c_oflag, 0xFFFFFF08u);
  EXPECT_EQ(applied.c_cflag, 0x7FFFFCBFu);
  EXPECT_EQ(applied.c_lflag, 0xFFFF3800u);
  EXPECT_EQ(applied.c_line, 0xFF);
  for (int character = 0; character < 32; ++character) {
    EXPECT_EQ(applied.c_cc[character], character <= 16 ? 0 : 0xFF) << character;
  }
}

TEST_F(PortSettings, HaveHardwareFlowControl) {
  config_.flowControl = UartFlowControl_RtsCts;
  memset(&driver_, 0xFF, sizeof driver_);
  const termios applied = Apply();
  EXPECT_EQ(applied.c_iflag, 0xFFFFA005u);
  EXPECT_EQ(applied.c_cflag, 0xFFFFFCBFu);
  EXPECT_EQ(applied.c_cc[VSTART], 0);
  EXPECT_EQ(applied.c_cc[VSTOP], 0);
}

TEST_F(PortSettings, HaveSoftwareFlowControl) {
  config_.flowControl = UartFlowControl_XonXoff;
  const termios applied = Apply();
  EXPECT_EQ(applied.c_iflag, 0x1405u);
  EXPECT_EQ(applied.c_cflag, 0x0CB0u);
  EXPECT_EQ(applied.c_cc[VSTART], 0x11);
  EXPECT_EQ(applied.c_cc[VSTOP], 0x13);
}

TEST_F(PortSettings, HaveTheSpeedInBothDirections) {
  config_.baudRate = 2000000;
  const termios applied = Apply(0x100B);
  EXPECT_EQ(applied.c_ospeed, 0x100Bu);
  EXPECT_EQ(applied.c_ispeed, 0x100Bu);
}

}  // namespace
}  // namespace kestrel::test
