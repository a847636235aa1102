// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>

#include "gpio/chip_fixture.h"
#include "support/broken_standard_error.h"

namespace kestrel::test {
namespace {

int OpenInput() { return GPIO_OpenAsInput(3); }
int OpenOutput() { return GPIO_OpenAsOutput(3, GpioDriveMode_PushPull, GpioLevel_Low); }

class LineOpening : public ChipTest {
 protected:
  void ExpectNoSuchLine(GpioLineId line, uint32_t lines_of_chip) {
    ExpectChipInfo(lines_of_chip);
    EXPECT_THAT(Call([line] { return GPIO_OpenAsInput(line); }), IsRefused(ENODEV)) << line;
    ExpectChipInfo(lines_of_chip);
    EXPECT_THAT(Call([line] { return GPIO_OpenAsOutput(line, 0, 0); }), IsRefused(ENODEV)) << line;
  }

  void ExpectLineOfChip(GpioLineId line, uint32_t lines_of_chip) {
    ExpectChipInfo(lines_of_chip);
    ExpectLineRequest();
    EXPECT_THAT(Call([line] { return GPIO_OpenAsInput(line); }), Returns(kLine));
    EXPECT_EQ(requested_->lineoffsets[0], static_cast<uint32_t>(line));
  }
};

TEST_F(LineOpening, RefusesNegativeLines) {
  OpenChip();
  for (const GpioLineId line : {-1, -2, INT32_MIN}) {
    ExpectNoSuchLine(line, kLineCount);
    ExpectNoSuchLine(line, UINT32_MAX);
  }
}

TEST_F(LineOpening, RefusesLinesBeyondTheLast) {
  OpenChip();
  for (const GpioLineId line : {32, 33, INT32_MAX}) {
    ExpectNoSuchLine(line, 32);
  }
}

TEST_F(LineOpening, RefusesEveryLineOfAnEmptyChip) {
  OpenChip();
  ExpectNoSuchLine(0, 0);
}

TEST_F(LineOpening, ComparesWithTheCountUnsigned) {
  OpenChip();
  ExpectLineOfChip(INT32_MAX, 0x80000000U);
  ExpectLineOfChip(0, UINT32_MAX);
}

TEST_F(LineOpening, TakesTheFirstAndTheLastLine) {
  OpenChip();
  ExpectLineOfChip(0, 32);
  ExpectLineOfChip(31, 32);
}

TEST_F(LineOpening, FollowsAChangedLineCount) {
  OpenChip();
  ExpectNoSuchLine(10, 10);
  ExpectLineOfChip(10, 11);
}

TEST_F(LineOpening, ReturnsDescriptorZero) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequest(0);
  EXPECT_THAT(Call(OpenInput), Returns(0));
}

TEST_F(LineOpening, RequestsAnInput) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequest();
  EXPECT_THAT(Call([] { return GPIO_OpenAsInput(7); }), Returns(kLine));
  EXPECT_EQ(requested_->lineoffsets[0], 7U);
  EXPECT_EQ(requested_->flags, 0x1U);
  EXPECT_EQ(requested_->lines, 1U);
  EXPECT_STREQ(requested_->consumer_label, "kestrel");
}

struct Output {
  GpioDriveMode mode;
  uint32_t flags;
};

class OutputOpening : public LineOpening, public testing::WithParamInterface<Output> {};

INSTANTIATE_TEST_SUITE_P(Every, OutputOpening,
                         testing::Values(Output{GpioDriveMode_PushPull, 0x2},
                                         Output{GpioDriveMode_OpenDrain, 0xA},
                                         Output{GpioDriveMode_OpenSource, 0x12}));

TEST_P(OutputOpening, RequestsTheModeAndTheLevel) {
  OpenChip();
  for (const GpioLevel level : {GpioLevel_Low, GpioLevel_High}) {
    ExpectChipInfo();
    ExpectLineRequest();
    EXPECT_THAT(Call([&] { return GPIO_OpenAsOutput(9, GetParam().mode, level); }), Returns(kLine));
    EXPECT_EQ(requested_->lineoffsets[0], 9U);
    EXPECT_EQ(requested_->flags, GetParam().flags);
    EXPECT_EQ(requested_->default_values[0], level);
    EXPECT_EQ(requested_->lines, 1U);
    EXPECT_STREQ(requested_->consumer_label, "kestrel");
  }
}

class LineOpeningErrors : public LineOpening, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, LineOpeningErrors, kDeviceErrors, ErrorName);

TEST_P(LineOpeningErrors, OfTheChipInformationAreReported) {
  OpenChip();
  ExpectChipInfoFailure(GetParam());
  ExpectChipInfoFailure(GetParam());
  const auto failure = Fails(Normalized(GetParam()), Problem("getting GPIO info", GetParam()));
  EXPECT_THAT(Call(OpenInput), failure);
  EXPECT_THAT(Call(OpenOutput), failure);
}

TEST_P(LineOpeningErrors, OfTheRequestAreReported) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequestFailure(GetParam());
  ExpectChipInfo();
  ExpectLineRequestFailure(GetParam());
  const auto failure = Fails(Normalized(GetParam()), Problem("opening GPIO", GetParam()));
  EXPECT_THAT(Call(OpenInput), failure);
  EXPECT_THAT(Call(OpenOutput), failure);
}

TEST_P(LineOpeningErrors, LeaveTheChipOpenForTheNextCall) {
  OpenChip();
  ExpectChipInfoFailure(GetParam());
  ExpectChipInfo();
  ExpectLineRequestFailure(GetParam());
  ExpectChipInfo();
  ExpectLineRequest();
  Call(OpenInput);
  Call(OpenInput);
  EXPECT_THAT(Call(OpenInput), Returns(kLine));
}

TEST_F(LineOpening, PrintsAFailureAtOnce) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequestFailure(EBUSY);
  const PacketStandardError packets;
  EXPECT_EQ(RunOn(system_, OpenInput), -1);
  EXPECT_THAT(packets.Received(), testing::ElementsAre(Problem("opening GPIO", EBUSY)));
}

TEST_F(LineOpening, ReportsTheErrnoOfThePrintWhenStandardErrorIsFull) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequestFailure(EBUSY);
  const Observed observed = Observe([&] {
    const FullStandardError full;
    return RunOn(system_, OpenInput);
  });
  EXPECT_THAT(observed, Fails(ENOSPC, ""));
}

TEST_F(LineOpening, ReportsAnArgumentErrorAsIoEvenWhenStandardErrorIsClosed) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequestFailure(EINVAL);
  const Observed observed = Observe([&] {
    const ClosedStandardError closed;
    return RunOn(system_, OpenInput);
  });
  EXPECT_THAT(observed, Fails(EIO, ""));
}

}  // namespace
}  // namespace kestrel::test
