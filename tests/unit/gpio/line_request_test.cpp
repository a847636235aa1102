// SPDX-License-Identifier: Apache-2.0
#include "gpio/line_request.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

namespace kestrel::gpio {
namespace {

constexpr uint8_t kBefore = 0xAA;
constexpr size_t kFlags = 256;
constexpr size_t kDefaultValues = 260;
constexpr size_t kConsumerLabel = 324;
constexpr size_t kLines = 356;

using Bytes = std::map<size_t, uint8_t>;  // by offset

/// The bytes of a request full of kBefore that FillLineRequest writes. Every byte that it may
/// write is given here as something else than kBefore.
Bytes Written(GpioLineId line, uint32_t flags, GpioLevel level) {
  gpiohandle_request request;
  memset(&request, kBefore, sizeof request);
  FillLineRequest(line, flags, level, &request);
  Bytes written;
  const auto* const bytes = reinterpret_cast<const uint8_t*>(&request);
  for (size_t offset = 0; offset < sizeof request; ++offset) {
    if (bytes[offset] != kBefore) {
      written[offset] = bytes[offset];
    }
  }
  return written;
}

void AddNumber(Bytes& bytes, size_t offset, uint32_t number) {
  for (size_t i = 0; i < sizeof number; ++i) {
    bytes[offset + i] = static_cast<uint8_t>(number >> (8 * i));
  }
}

Bytes Expected(uint32_t line, uint32_t flags) {
  Bytes bytes;
  AddNumber(bytes, 0, line);
  AddNumber(bytes, kFlags, flags);
  AddNumber(bytes, kLines, 1);
  const std::string label = "kestrel";
  for (size_t i = 0; i < 31; ++i) {
    bytes[kConsumerLabel + i] = i < label.size() ? static_cast<uint8_t>(label[i]) : 0;
  }
  return bytes;
}

TEST(LineRequest, WritesTheFieldsOfOneLineAndNothingElse) {
  EXPECT_EQ(Written(5, 0x1, kNoLevel), Expected(5, 0x1));
}

TEST(LineRequest, WritesWholeNumbers) {
  EXPECT_EQ(Written(0x01020304, 0x11121314, kNoLevel), Expected(0x01020304, 0x11121314));
}

TEST(LineRequest, SetsTheFirstDefaultValueForALevel) {
  for (const GpioLevel level : {GpioLevel_Low, GpioLevel_High}) {
    Bytes expected = Expected(3, 0x2);
    expected[kDefaultValues] = level;
    EXPECT_EQ(Written(3, 0x2, level), expected);
  }
}

TEST(LineRequest, LeavesTheDefaultValueAloneForAnythingElse) {
  for (const int level : {2, 3, 127, 128, 254, 255}) {
    EXPECT_EQ(Written(3, 0x2, static_cast<GpioLevel>(level)), Expected(3, 0x2)) << level;
  }
}

TEST(LineRequest, EndsTheLabelWithinItsLimit) {
  gpiohandle_request request;
  memset(&request, kBefore, sizeof request);
  FillLineRequest(0, 0x1, kNoLevel, &request);
  EXPECT_STREQ(request.consumer_label, "kestrel");
  EXPECT_EQ(static_cast<uint8_t>(request.consumer_label[31]), kBefore);
}

TEST(OutputFlags, FollowTheDriveMode) {
  EXPECT_EQ(OutputFlags(GpioDriveMode_PushPull), 0x2U);
  EXPECT_EQ(OutputFlags(GpioDriveMode_OpenDrain), 0xAU);
  EXPECT_EQ(OutputFlags(GpioDriveMode_OpenSource), 0x12U);
}

TEST(OutputFlags, AreNoneForAnyOtherMode) {
  for (const GpioDriveMode mode : {3U, 4U, 255U, 256U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(OutputFlags(mode), 0U) << mode;
  }
}

}  // namespace
}  // namespace kestrel::gpio
