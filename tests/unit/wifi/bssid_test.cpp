// SPDX-License-Identifier: Apache-2.0
#include "wifi/bssid.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <string>

#include "support/outcome.h"
#include "unit/wifi/recorded_reply.h"

namespace kestrel::test {
namespace {

using Octets = std::array<uint8_t, 6>;

class Bssid : public testing::Test {
 protected:
  Observed Parse(const std::string& text) {
    return Observe([&] { return wifi::ParseBssid(Text(text), octets_.data()); });
  }

  Octets octets_{0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA};
};

TEST_F(Bssid, HasItsFirstOctetFirst) {
  EXPECT_THAT(Parse("00:11:22:33:44:55"), Returns(0));
  EXPECT_EQ(octets_, (Octets{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
}

TEST_F(Bssid, MayBeInEitherCase) {
  EXPECT_THAT(Parse("aB:Cd:eF:0a:9F:ff"), Returns(0));
  EXPECT_EQ(octets_, (Octets{0xAB, 0xCD, 0xEF, 0x0A, 0x9F, 0xFF}));
}

TEST_F(Bssid, NeedsColons) { EXPECT_THAT(Parse("00-11-22-33-44-55"), IsRefused(EINVAL)); }

TEST_F(Bssid, KeepsTheOctetsBeforeTheFault) {
  EXPECT_THAT(Parse("00:11:22.33:44:55"), IsRefused(EINVAL));
  EXPECT_EQ(octets_, (Octets{0x00, 0x11, 0x22, 0xAA, 0xAA, 0xAA}));
}

TEST_F(Bssid, NeedsEachOfItsColons) {
  for (size_t position = 2; position < 17; position += 3) {
    std::string text = "00:11:22:33:44:55";
    text[position] = ' ';
    EXPECT_THAT(Parse(text), IsRefused(EINVAL)) << text;
  }
}

TEST_F(Bssid, Has17Characters) {
  for (const char* const text : {"", "00:11:22:33:44:5", "00:11:22:33:44:555", "00:11:22:33:44"}) {
    EXPECT_THAT(Parse(text), IsRefused(EINVAL)) << text;
  }
  EXPECT_EQ(octets_, (Octets{0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA}));
}

TEST_F(Bssid, TakesWhatIsNoNumberForZero) {
  EXPECT_THAT(Parse("zz:11:22:33:44:55"), Returns(0));
  EXPECT_EQ(octets_, (Octets{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
}

TEST_F(Bssid, TakesALeadingDigitForTheWholeOctet) {
  EXPECT_THAT(Parse("1z:z1:22:33:44:5-"), Returns(0));
  EXPECT_EQ(octets_, (Octets{0x01, 0x00, 0x22, 0x33, 0x44, 0x05}));
}

TEST_F(Bssid, TakesSignsAndBlanksAsNumbersHaveThem) {
  EXPECT_THAT(Parse("-1:+2: 3:0x:44:55"), Returns(0));
  EXPECT_EQ(octets_, (Octets{0xFF, 0x02, 0x03, 0x00, 0x44, 0x55}));
}

TEST_F(Bssid, MayHoldNulBytes) {
  EXPECT_THAT(Parse(std::string("\0\0:11:22:33:44:55", 17)), Returns(0));
  EXPECT_EQ(octets_, (Octets{0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
}

}  // namespace
}  // namespace kestrel::test
