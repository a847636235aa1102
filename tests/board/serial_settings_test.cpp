// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/serial_settings.h"

#include <gtest/gtest.h>
#include <termios.h>

#include <nlohmann/json.hpp>

namespace kestrel::test {
namespace {

struct NamedSpeed {
  speed_t code;
  int speed;
};

void PrintTo(const NamedSpeed& named, std::ostream* out) { *out << named.speed; }

/// The number of a speed is in its name.
#define KESTREL_SPEED(number) \
  NamedSpeed { B##number, number }

class SerialSpeed : public testing::TestWithParam<NamedSpeed> {};

TEST_P(SerialSpeed, IsShownAsItsNumber) {
  termios settings{};
  ASSERT_EQ(cfsetospeed(&settings, GetParam().code), 0);
  EXPECT_EQ(board::uart::Describe(settings).at("speed"), GetParam().speed);
}

INSTANTIATE_TEST_SUITE_P(
    All, SerialSpeed,
    testing::Values(KESTREL_SPEED(0), KESTREL_SPEED(50), KESTREL_SPEED(75), KESTREL_SPEED(110),
                    KESTREL_SPEED(134), KESTREL_SPEED(150), KESTREL_SPEED(200), KESTREL_SPEED(300),
                    KESTREL_SPEED(600), KESTREL_SPEED(1200), KESTREL_SPEED(1800),
                    KESTREL_SPEED(2400), KESTREL_SPEED(4800), KESTREL_SPEED(9600),
                    KESTREL_SPEED(19200), KESTREL_SPEED(38400), KESTREL_SPEED(57600),
                    KESTREL_SPEED(115200), KESTREL_SPEED(230400), KESTREL_SPEED(460800),
                    KESTREL_SPEED(500000), KESTREL_SPEED(576000), KESTREL_SPEED(921600),
                    KESTREL_SPEED(1000000), KESTREL_SPEED(1152000), KESTREL_SPEED(1500000),
                    KESTREL_SPEED(2000000), KESTREL_SPEED(2500000), KESTREL_SPEED(3000000),
                    KESTREL_SPEED(3500000), KESTREL_SPEED(4000000)));

}  // namespace
}  // namespace kestrel::test
