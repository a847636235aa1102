// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "gpio/chip_fixture.h"
#include "support/broken_standard_error.h"

namespace kestrel::test {
namespace {

using testing::_;

constexpr GpioLevel kUnset = 77;

int SetHigh() { return GPIO_SetValue(kLine, GpioLevel_High); }

/// Leaves bytes on the stack where the next call has its variables.
[[gnu::noinline]] void LitterTheStack() {
  volatile uint8_t litter[4096];
  for (volatile uint8_t& byte : litter) {
    byte = 0xAA;
  }
}

/// No line is opened here: a line's descriptor is all that its value needs.
class LineValues : public ChipTest {
 protected:
  void ExpectSet(int fd, uint8_t value) {
    EXPECT_CALL(system_, Ioctl(fd, GPIOHANDLE_SET_LINE_VALUES_IOCTL, _))
        .WillOnce([value](int, unsigned long, void* argument) {
          gpiohandle_data expected{};
          expected.values[0] = value;
          EXPECT_EQ(memcmp(argument, &expected, sizeof expected), 0);
          return 0;
        });
  }

  void ExpectGet(int fd, uint8_t value) {
    EXPECT_CALL(system_, Ioctl(fd, GPIOHANDLE_GET_LINE_VALUES_IOCTL, _))
        .WillOnce([value](int, unsigned long, void* argument) {
          static_cast<gpiohandle_data*>(argument)->values[0] = value;
          return 0;
        });
  }

  void ExpectFailure(unsigned long request, int error) {
    EXPECT_CALL(system_, Ioctl(kLine, request, _)).WillOnce(FailWith(error));
  }
};

TEST_F(LineValues, ReachTheKernel) {
  for (const GpioLevel value : {GpioLevel_Low, GpioLevel_High}) {
    ExpectSet(kLine, value);
    EXPECT_THAT(Call([value] {
                  LitterTheStack();
                  return GPIO_SetValue(kLine, value);
                }),
                Returns(0));
  }
}

TEST_F(LineValues, AreReadAsOneWhenNotZero) {
  for (const int level : {1, 2, 127, 128, 255}) {
    ExpectGet(kLine, static_cast<uint8_t>(level));
    GpioLevel value = kUnset;
    EXPECT_THAT(Call([&] { return GPIO_GetValue(kLine, &value); }), Returns(0));
    EXPECT_EQ(value, GpioLevel_High) << level;
  }
}

TEST_F(LineValues, AreReadAsZeroWhenZero) {
  ExpectGet(kLine, 0);
  GpioLevel value = kUnset;
  EXPECT_THAT(Call([&] { return GPIO_GetValue(kLine, &value); }), Returns(0));
  EXPECT_EQ(value, GpioLevel_Low);
}

TEST_F(LineValues, AcceptDescriptorZero) {
  ExpectSet(0, 1);
  ExpectGet(0, 1);
  GpioLevel value = kUnset;
  EXPECT_THAT(Call([] { return GPIO_SetValue(0, 1); }), Returns(0));
  EXPECT_THAT(Call([&] { return GPIO_GetValue(0, &value); }), Returns(0));
}

class LineValueErrors : public LineValues, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, LineValueErrors, kDeviceErrors, ErrorName);

TEST_P(LineValueErrors, OfSettingAreReported) {
  ExpectFailure(GPIOHANDLE_SET_LINE_VALUES_IOCTL, GetParam());
  ExpectSet(kLine, 1);
  EXPECT_THAT(Call(SetHigh),
              Fails(Normalized(GetParam()), Problem("setting GPIO value", GetParam())));
  EXPECT_THAT(Call(SetHigh), Returns(0));
}

TEST_P(LineValueErrors, OfGettingAreReportedAndLeaveTheOutputAlone) {
  ExpectFailure(GPIOHANDLE_GET_LINE_VALUES_IOCTL, GetParam());
  GpioLevel value = kUnset;
  EXPECT_THAT(Call([&] { return GPIO_GetValue(kLine, &value); }),
              Fails(Normalized(GetParam()), Problem("getting GPIO value", GetParam())));
  EXPECT_EQ(value, kUnset);
}

TEST_F(LineValues, ReportTheErrnoOfThePrintWhenStandardErrorIsClosed) {
  ExpectFailure(GPIOHANDLE_SET_LINE_VALUES_IOCTL, EPERM);
  const Observed observed = Observe([&] {
    const ClosedStandardError closed;
    return RunOn(system_, SetHigh);
  });
  EXPECT_THAT(observed, Fails(EBADF, ""));
}

}  // namespace
}  // namespace kestrel::test
