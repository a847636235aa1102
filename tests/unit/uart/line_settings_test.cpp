// SPDX-License-Identifier: Apache-2.0
#include "uart/line_settings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace kestrel::test {
namespace {

using uart::kLineSettings;
using uart::LineSetting;
using uart::MakeRaw;

termios Filled(int byte) {
  termios settings;
  memset(&settings, byte, sizeof settings);
  return settings;
}

bool AreEqual(const termios& left, const termios& right) {
  return std::string(reinterpret_cast<const char*>(&left), sizeof left) ==
         std::string(reinterpret_cast<const char*>(&right), sizeof right);
}

TEST(RawLine, ClearsWhatIsSet) {
  termios settings = Filled(0xFF);
  MakeRaw(&settings);
  termios expected = Filled(0xFF);
  expected.c_iflag = 0xFFFFA005;  // all but 5FFA
  expected.c_oflag = 0xFFFFFF08;  // OCRNL stays
  expected.c_cflag = 0x7FFFFCBF;
  expected.c_lflag = 0xFFFF3800;  // ECHOKE and FLUSHO stay
  for (int character = 0; character <= 16; ++character) {
    expected.c_cc[character] = 0;
  }
  EXPECT_TRUE(AreEqual(settings, expected));
}

TEST(RawLine, SetsWhatIsClear) {
  termios settings = Filled(0);
  MakeRaw(&settings);
  termios expected = Filled(0);
  expected.c_iflag = 0x0005;
  expected.c_cflag = 0x0CB0;
  EXPECT_TRUE(AreEqual(settings, expected));
}

const LineSetting& Named(const std::string& name) {
  for (const LineSetting& setting : kLineSettings) {
    if (setting.name == name) {
      return setting;
    }
  }
  throw std::out_of_range(name);
}

termios After(const std::string& name, uint8_t value, int byte) {
  termios settings = Filled(byte);
  EXPECT_TRUE(Named(name).set(value, &settings));
  return settings;
}

constexpr int kStart = 8;
constexpr int kStop = 9;

TEST(FlowControl, NoneTurnsBothKindsOff) {
  termios expected = Filled(0xFF);
  expected.c_iflag = 0xFFFFEBFF;
  expected.c_cflag = 0x7FFFFFFF;
  expected.c_cc[kStart] = 0;
  expected.c_cc[kStop] = 0;
  EXPECT_TRUE(AreEqual(After("flow control", 0, 0xFF), expected));
  EXPECT_TRUE(AreEqual(After("flow control", 0, 0), Filled(0)));
}

TEST(FlowControl, RtsCtsIsTheOnlyKindThen) {
  termios expected = Filled(0xFF);
  expected.c_iflag = 0xFFFFEBFF;
  expected.c_cc[kStart] = 0;
  expected.c_cc[kStop] = 0;
  EXPECT_TRUE(AreEqual(After("flow control", 1, 0xFF), expected));
  expected = Filled(0);
  expected.c_cflag = 0x80000000;
  EXPECT_TRUE(AreEqual(After("flow control", 1, 0), expected));
}

TEST(FlowControl, XonXoffIsTheOnlyKindThenAndHasItsCharacters) {
  termios expected = Filled(0xFF);
  expected.c_cflag = 0x7FFFFFFF;
  expected.c_cc[kStart] = 0x11;
  expected.c_cc[kStop] = 0x13;
  EXPECT_TRUE(AreEqual(After("flow control", 2, 0xFF), expected));
  expected = Filled(0);
  expected.c_iflag = 0x1400;
  expected.c_cc[kStart] = 0x11;
  expected.c_cc[kStop] = 0x13;
  EXPECT_TRUE(AreEqual(After("flow control", 2, 0), expected));
}

TEST(Framing, EightDataBitsAreSet) {
  termios expected = Filled(0);
  expected.c_cflag = 0x30;
  EXPECT_TRUE(AreEqual(After("data bits", 8, 0), expected));
  EXPECT_TRUE(AreEqual(After("data bits", 8, 0xFF), Filled(0xFF)));
}

TEST(Framing, OneStopBitClearsTheSecond) {
  termios expected = Filled(0xFF);
  expected.c_cflag = 0xFFFFFFBF;
  EXPECT_TRUE(AreEqual(After("stop bits", 1, 0xFF), expected));
  EXPECT_TRUE(AreEqual(After("stop bits", 1, 0), Filled(0)));
}

TEST(Framing, NoParityClearsItAndTheSecondStopBit) {
  termios expected = Filled(0xFF);
  expected.c_cflag = 0xFFFFFCBF;
  EXPECT_TRUE(AreEqual(After("parity", 0, 0xFF), expected));
  EXPECT_TRUE(AreEqual(After("parity", 0, 0), Filled(0)));
}

TEST(BlockingMode, NonBlockingReadsReturnAtOnce) {
  termios expected = Filled(0xFF);
  expected.c_lflag = 0xFFFFFFFD;
  expected.c_cc[5] = 0;  // VTIME
  expected.c_cc[6] = 0;  // VMIN
  EXPECT_TRUE(AreEqual(After("blocking mode", 0, 0xFF), expected));
  EXPECT_TRUE(AreEqual(After("blocking mode", 0, 0), Filled(0)));
}

TEST(LineSettings, ComeInTheirOrder) {
  const char* const order[] = {"flow control", "data bits", "stop bits", "parity", "blocking mode"};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_STREQ(kLineSettings[i].name, order[i]);
  }
}

TEST(LineSettings, RefuseUnknownValuesAndChangeNothing) {
  const struct {
    const char* name;
    uint8_t unknown;
  } cases[] = {{"flow control", 3}, {"flow control", 255}, {"data bits", 7},
               {"data bits", 0},    {"stop bits", 2},      {"stop bits", 0},
               {"parity", 1},       {"parity", 255},       {"blocking mode", 1}};
  for (const auto& [name, unknown] : cases) {
    termios settings = Filled(0x5A);
    EXPECT_FALSE(Named(name).set(unknown, &settings)) << name;
    EXPECT_TRUE(AreEqual(settings, Filled(0x5A))) << name;
  }
}

}  // namespace
}  // namespace kestrel::test
