// SPDX-License-Identifier: Apache-2.0
// Ports that are joined, and one that does not keep its speed.
#include <errno.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <future>

#include "serial_port.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

constexpr size_t kMebibyte = size_t{1024} * 1024;

/// A mebibyte in which every value occurs, also next to every other. With `start`, two calls give
/// different ones.
std::string Mebibyte(uint32_t start, bool without_flow_characters) {
  std::string bytes;
  bytes.reserve(kMebibyte);
  uint32_t state = start;
  while (bytes.size() < kMebibyte) {
    state = state * 1664525 + 1013904223;
    const auto byte = static_cast<char>(state >> 24);
    if (!without_flow_characters || (byte != 0x11 && byte != 0x13)) {
      bytes.push_back(byte);
    }
  }
  return bytes;
}

/// Whether all of `sent` arrives at `to` when it is written to `from`.
bool Arrives(int from, int to, const std::string& sent) {
  std::future<bool> written = std::async(std::launch::async, WriteTo, from, std::cref(sent));
  const bool arrived = ReadFrom(to, sent.size()) == sent;
  return written.get() && arrived;
}

class UartCable : public testing::TestWithParam<UartFlowControl> {};

INSTANTIATE_TEST_SUITE_P(EachFlowControl, UartCable,
                         testing::Values(UartFlowControl_None, UartFlowControl_RtsCts,
                                         UartFlowControl_XonXoff));

TEST_P(UartCable, CarriesAMebibyteEachWayAtTheSameTime) {
  const UartConfigRecord config = PortConfig(GetParam());
  const int left = z__UART_Open(0, &config);
  const int right = z__UART_Open(1, &config);
  const bool in_band = GetParam() == UartFlowControl_XonXoff;
  const std::string to_right = Mebibyte(1, in_band);
  const std::string to_left = Mebibyte(2, in_band);
  std::future<bool> rightward =
      std::async(std::launch::async, Arrives, left, right, std::cref(to_right));
  EXPECT_TRUE(Arrives(right, left, to_left));
  EXPECT_TRUE(rightward.get());
  close(left);
  close(right);
}

TEST(UartLoopback, BringsBackWhatIsWritten) {
  const int port = OpenPort(2);
  const std::string sent = Mebibyte(3, false);
  EXPECT_TRUE(Arrives(port, port, sent));
  close(port);
}

TEST(UartPort, WithTheHighestNumberOpens) {
  EXPECT_THAT(Observe([] {
                const int port = OpenPort(255);
                return port < 0 ? -1 : close(port);
              }),
              Returns(0));
}

TEST(UartPort, ThatForgetsItsSpeedCannotBeSet) {
  EXPECT_THAT(Observe([] { return OpenPort(7); }),
              Fails(kUntouched, "[Kestrel:UART] Could not set the attributes of the device.\n"));
}

TEST(UartPort, ThatForgetsItsSpeedOpensAtTheOneItHas) {
  UartConfigRecord config = PortConfig();
  config.baudRate = 9600;
  const int port = z__UART_Open(7, &config);
  EXPECT_GE(port, 0);
  close(port);
}

}  // namespace
}  // namespace kestrel::test
