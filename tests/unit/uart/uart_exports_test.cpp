// SPDX-License-Identifier: Apache-2.0
// Arguments that are refused before any system call is made.
#include <gtest/gtest.h>

#include <cerrno>

#include "support/scarce_memory.h"
#include "uart/port_fixture.h"

namespace kestrel::test {
namespace {

class RefusedPort : public PortTest {
 protected:
  Observed Open(uint32_t uart_id) {
    return ObserveOn(system_, [this, uart_id] { return z__UART_Open(uart_id, &config_); });
  }
};

constexpr uint32_t kNumbers[] = {0, 255, 256, 1000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

TEST_F(RefusedPort, HasANumberAbove255) {
  for (const uint32_t number : {256u, 257u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_THAT(Open(number), IsRefused(ENODEV)) << number;
  }
}

TEST_F(RefusedPort, HasNoRecordWhateverItsNumber) {
  for (const uint32_t number : kNumbers) {
    EXPECT_THAT(ObserveOn(system_, [number] { return z__UART_Open(number, nullptr); }),
                IsRefused(EFAULT))
        << number;
  }
}

TEST_F(RefusedPort, HasABadRecordWhateverItsNumber) {
  config_.dataBits = 7;
  for (const uint32_t number : kNumbers) {
    EXPECT_THAT(Open(number), IsRefused(EINVAL)) << number;
  }
}

TEST_F(RefusedPort, HasARecordThatWasNeverInitialised) {
  config_ = UartConfigRecord{};
  EXPECT_THAT(Open(0), IsRefused(EINVAL));
}

TEST_F(RefusedPort, HasARecordOfAnotherVersionOrKind) {
  for (const uint32_t tag : {0xDE2A0002u, 0xDE2A0000u, 0xDE2B0001u}) {
    config_.versionTag = tag;
    EXPECT_THAT(Open(0), IsRefused(EINVAL)) << tag;
  }
}

/// One field out of its set.
struct Fault {
  const char* name;
  void (*break_it)(UartConfigRecord& config);
};

const Fault kFaults[] = {
    {"Tag", [](UartConfigRecord& config) { config.versionTag = 0xDE2A0002; }},
    {"Speed", [](UartConfigRecord& config) { config.baudRate = 4800; }},
    {"BlockingMode", [](UartConfigRecord& config) { config.blockingMode = 1; }},
    {"DataBits", [](UartConfigRecord& config) { config.dataBits = 7; }},
    {"Parity", [](UartConfigRecord& config) { config.parity = 1; }},
    {"StopBits", [](UartConfigRecord& config) { config.stopBits = 2; }},
    {"FlowControl", [](UartConfigRecord& config) { config.flowControl = 3; }},
};

using Pair = std::tuple<Fault, Fault>;
class RefusedRecord : public RefusedPort, public testing::WithParamInterface<Pair> {};

INSTANTIATE_TEST_SUITE_P(Each, RefusedRecord,
                         testing::Combine(testing::ValuesIn(kFaults), testing::ValuesIn(kFaults)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + "And" +
                                  std::get<1>(test.param).name;
                         });

TEST_P(RefusedRecord, IsInvalid) {
  std::get<0>(GetParam()).break_it(config_);
  std::get<1>(GetParam()).break_it(config_);
  const UartConfigRecord before = config_;
  EXPECT_THAT(Open(3), IsRefused(EINVAL));
  EXPECT_THAT(Open(256), IsRefused(EINVAL));
  EXPECT_EQ(config_.versionTag, before.versionTag);
  EXPECT_EQ(config_.baudRate, before.baudRate);
}

TEST_F(RefusedPort, FindsNoMemory) {
  const ScarceMemory scarce;
  EXPECT_THAT(Open(0), IsRefused(ENOMEM));
}

}  // namespace
}  // namespace kestrel::test
