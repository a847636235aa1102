// SPDX-License-Identifier: Apache-2.0
#include "uart/uart_config.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "support/outcome.h"

namespace kestrel::test {
namespace {

using uart::CheckConfig;
using uart::UartConfigWrapper;

std::vector<uint8_t> Bytes(const UartConfigRecord& record) {
  std::vector<uint8_t> bytes(sizeof record);
  memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

UartConfigRecord RecordOf(uint8_t byte) {
  UartConfigRecord record;
  memset(&record, byte, sizeof record);
  return record;
}

TEST(UartInitConfig, WritesTheDefaultsAndLeavesThePaddingAlone) {
  UartConfigRecord record = RecordOf(0xA5);
  EXPECT_THAT(Observe([&] { return z__UART_InitConfig(&record, 1); }), Returns(0));
  EXPECT_EQ(Bytes(record), (std::vector<uint8_t>{0x01, 0x00, 0x2A, 0xDE,  // tag
                                                 0x00, 0xC2, 0x01, 0x00,  // 115200
                                                 0, 8, 0, 1, 0,           // the five fields
                                                 0xA5, 0xA5, 0xA5}));
}

TEST(UartInitConfig, WritesNothingBehindTheRecord) {
  UartConfigRecord records[2] = {RecordOf(0xA5), RecordOf(0xA5)};
  EXPECT_EQ(z__UART_InitConfig(&records[0], 1), 0);
  EXPECT_EQ(Bytes(records[1]), Bytes(RecordOf(0xA5)));
}

class UartInitConfigVersion : public testing::TestWithParam<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Other, UartInitConfigVersion,
                         testing::Values(0, 2, 0x100, 0x10001, 0xDE2A0001, 0xFFFFFFFF));

TEST_P(UartInitConfigVersion, IsRefusedAndTheRecordUntouched) {
  UartConfigRecord record = RecordOf(0x5A);
  EXPECT_THAT(Observe([&] { return z__UART_InitConfig(&record, GetParam()); }), IsRefused(EINVAL));
  EXPECT_EQ(Bytes(record), Bytes(RecordOf(0x5A)));
}

TEST(UartInitConfig, ChecksTheVersionBeforeItWrites) {
  EXPECT_THAT(Observe([] { return z__UART_InitConfig(nullptr, 2); }), IsRefused(EINVAL));
}

UartConfigRecord Defaults() {
  UartConfigRecord record;
  z__UART_InitConfig(&record, UART_CONFIG_VERSION);
  return record;
}

bool Passes(const UartConfigRecord& record) {
  UartConfigWrapper checked;
  return CheckConfig(record, &checked);
}

TEST(UartConfig, IsZeroBeforeItsCheck) {
  const UartConfigWrapper checked;
  EXPECT_EQ(checked.speed, 0u);
  EXPECT_EQ(checked.blockingMode, 0);
  EXPECT_EQ(checked.dataBits, 0);
  EXPECT_EQ(checked.parity, 0);
  EXPECT_EQ(checked.stopBits, 0);
  EXPECT_EQ(checked.flowControl, 0);
}

TEST(UartConfig, OfTheDefaultsIsCopied) {
  UartConfigWrapper checked;
  ASSERT_TRUE(CheckConfig(Defaults(), &checked));
  EXPECT_EQ(checked.speed, 0x1002u);
  EXPECT_EQ(checked.blockingMode, 0);
  EXPECT_EQ(checked.dataBits, 8);
  EXPECT_EQ(checked.parity, 0);
  EXPECT_EQ(checked.stopBits, 1);
  EXPECT_EQ(checked.flowControl, 0);
}

class UartConfigTag : public testing::TestWithParam<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Wrong, UartConfigTag,
                         testing::Values(0, 1, 0xDE2A0000, 0xDE2A0002, 0xDE2A0101, 0xDE2B0001,
                                         0xDE290001, 0x0001DE2A, 0x00002ADE, 0xDE2A8001,
                                         0xFFFFFFFF));

TEST_P(UartConfigTag, IsRefused) {
  UartConfigRecord record = Defaults();
  record.versionTag = GetParam();
  EXPECT_FALSE(Passes(record));
}

struct SpeedCode {
  uint32_t baud_rate;
  uint32_t code;
};

class UartSpeed : public testing::TestWithParam<SpeedCode> {};

INSTANTIATE_TEST_SUITE_P(Each, UartSpeed,
                         testing::Values(SpeedCode{9600, 0x000D}, SpeedCode{19200, 0x000E},
                                         SpeedCode{38400, 0x000F}, SpeedCode{57600, 0x1001},
                                         SpeedCode{115200, 0x1002}, SpeedCode{230400, 0x1003},
                                         SpeedCode{460800, 0x1004}, SpeedCode{500000, 0x1005},
                                         SpeedCode{576000, 0x1006}, SpeedCode{921600, 0x1007},
                                         SpeedCode{1000000, 0x1008}, SpeedCode{1152000, 0x1009},
                                         SpeedCode{1500000, 0x100A}, SpeedCode{2000000, 0x100B}),
                         [](const auto& test) { return std::to_string(test.param.baud_rate); });

TEST_P(UartSpeed, BecomesItsCode) {
  UartConfigRecord record = Defaults();
  record.baudRate = GetParam().baud_rate;
  UartConfigWrapper checked;
  ASSERT_TRUE(CheckConfig(record, &checked));
  EXPECT_EQ(checked.speed, GetParam().code);
}

TEST_P(UartSpeed, HasNoSupportedNeighbours) {
  UartConfigRecord record = Defaults();
  record.baudRate = GetParam().baud_rate - 1;
  EXPECT_FALSE(Passes(record));
  record.baudRate = GetParam().baud_rate + 1;
  EXPECT_FALSE(Passes(record));
}

TEST_P(UartSpeed, IsNotGivenByItsCode) {
  UartConfigRecord record = Defaults();
  record.baudRate = GetParam().code;
  EXPECT_FALSE(Passes(record));
}

TEST(UartConfig, RefusesSpeedsThatOnlyOthersHave) {
  for (const uint32_t baud_rate :
       {0u, 50u, 300u, 1200u, 2400u, 4800u, 2500000u, 3000000u, 3500000u, 4000000u, 0xFFFFFFFFu}) {
    UartConfigRecord record = Defaults();
    record.baudRate = baud_rate;
    EXPECT_FALSE(Passes(record)) << baud_rate;
  }
}

struct ByteField {
  const char* name;
  uint8_t UartConfigRecord::*field;
  uint8_t UartConfigWrapper::*copy;
  std::vector<uint8_t> accepted;
};

void PrintTo(const ByteField& field, std::ostream* stream) { *stream << field.name; }

const std::vector<ByteField>& Fields() {
  static const std::vector<ByteField> fields = {
      {"blockingMode", &UartConfigRecord::blockingMode, &UartConfigWrapper::blockingMode, {0}},
      {"dataBits", &UartConfigRecord::dataBits, &UartConfigWrapper::dataBits, {8}},
      {"parity", &UartConfigRecord::parity, &UartConfigWrapper::parity, {0}},
      {"stopBits", &UartConfigRecord::stopBits, &UartConfigWrapper::stopBits, {1}},
      {"flowControl", &UartConfigRecord::flowControl, &UartConfigWrapper::flowControl, {0, 1, 2}},
  };
  return fields;
}

bool IsAccepted(const ByteField& field, int value) {
  return std::find(field.accepted.begin(), field.accepted.end(), value) != field.accepted.end();
}

class UartField : public testing::TestWithParam<ByteField> {};

INSTANTIATE_TEST_SUITE_P(Each, UartField, testing::ValuesIn(Fields()),
                         [](const auto& test) { return test.param.name; });

TEST_P(UartField, AcceptsItsValuesAndNoOther) {
  for (int value = 0; value <= 255; ++value) {
    UartConfigRecord record = Defaults();
    record.*GetParam().field = static_cast<uint8_t>(value);
    UartConfigWrapper checked;
    const bool accepted = IsAccepted(GetParam(), value);
    EXPECT_EQ(CheckConfig(record, &checked), accepted) << value;
    EXPECT_EQ(checked.*GetParam().copy, accepted ? value : 0) << value;
  }
}

/// A record in which every field has a value that shows in its copy.
UartConfigRecord TellingRecord() {
  UartConfigRecord record = Defaults();
  record.flowControl = UartFlowControl_XonXoff;
  return record;
}

TEST_P(UartField, IsCheckedAfterThoseBeforeItAndBeforeThoseBehindIt) {
  UartConfigRecord record = TellingRecord();
  record.*GetParam().field = 99;
  UartConfigWrapper checked;
  ASSERT_FALSE(CheckConfig(record, &checked));
  EXPECT_EQ(checked.speed, 0x1002u);
  bool before = true;
  for (const ByteField& field : Fields()) {
    before = before && field.field != GetParam().field;
    EXPECT_EQ(checked.*field.copy, before ? record.*field.field : 0) << field.name;
  }
}

TEST(UartConfig, ChecksTheTagBeforeTheSpeedAndTheSpeedBeforeTheFields) {
  UartConfigRecord record = TellingRecord();
  record.baudRate = 4800;
  UartConfigWrapper checked;
  ASSERT_FALSE(CheckConfig(record, &checked));
  EXPECT_EQ(checked.dataBits, 0);
  record = TellingRecord();
  record.versionTag = 0xDE2A0002;
  ASSERT_FALSE(CheckConfig(record, &checked));
  EXPECT_EQ(checked.speed, 0u);
}

TEST(UartConfig, IgnoresThePadding) {
  UartConfigRecord record = RecordOf(0xFF);
  z__UART_InitConfig(&record, UART_CONFIG_VERSION);
  EXPECT_TRUE(Passes(record));
}

}  // namespace
}  // namespace kestrel::test
