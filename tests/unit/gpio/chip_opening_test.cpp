// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "gpio/chip_fixture.h"
#include "support/broken_standard_error.h"

namespace kestrel::test {
namespace {

using testing::_;
using testing::Expectation;
using testing::Throw;

class ChipOpening : public ChipTest {};

TEST_F(ChipOpening, ComesBeforeItsInformationAndTheLine) {
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  EXPECT_THAT(Call([] { return GPIO_OpenAsInput(3); }), Returns(kLine));
}

TEST_F(ChipOpening, HappensOnceButItsInformationIsAskedEachTime) {
  OpenChip();
  ExpectChipInfo();
  ExpectLineRequest(kLine + 1);
  ExpectChipInfo();
  ExpectLineRequest(kLine + 2);
  EXPECT_THAT(Call([] { return GPIO_OpenAsInput(1); }), Returns(kLine + 1));
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(2, 0, 0); }), Returns(kLine + 2));
}

TEST_F(ChipOpening, IsTriedAgainAfterAFailure) {
  ExpectChipOpenFailure(ENOENT);
  ExpectChipOpenFailure(EMFILE);
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  const auto open = [] { return GPIO_OpenAsInput(3); };
  EXPECT_THAT(Call(open), Fails(ENOENT, Problem("opening GPIO chip", ENOENT)));
  EXPECT_THAT(Call(open), Fails(EMFILE, Problem("opening GPIO chip", EMFILE)));
  EXPECT_THAT(Call(open), Returns(kLine));
}

TEST_F(ChipOpening, TakesDescriptorZeroForOpen) {
  ExpectChipOpen(0);
  EXPECT_CALL(system_, Ioctl(0, GPIO_GET_CHIPINFO_IOCTL, _)).WillOnce(FailWith(EIO));
  EXPECT_CALL(system_, Ioctl(0, GPIO_GET_CHIPINFO_IOCTL, _)).WillOnce(FailWith(EIO));
  const auto open = [] { return GPIO_OpenAsInput(3); };
  EXPECT_THAT(Call(open), Fails(EIO, Problem("getting GPIO info", EIO)));
  EXPECT_THAT(Call(open), Fails(EIO, Problem("getting GPIO info", EIO)));
}

TEST_F(ChipOpening, ReportsTheErrnoOfThePrintWhenStandardErrorIsClosed) {
  ExpectChipOpenFailure(ENOENT);
  const Observed observed = Observe([&] {
    const ClosedStandardError closed;
    return RunOn(system_, [] { return GPIO_OpenAsInput(3); });
  });
  EXPECT_THAT(observed, Fails(EBADF, ""));
}

TEST_F(ChipOpening, ReleasesItsLockWhenAnExceptionPasses) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(Throw(std::runtime_error("passing through")));
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  const auto open = [] { return GPIO_OpenAsInput(3); };
  EXPECT_THROW(RunOn(system_, open), std::runtime_error);
  EXPECT_THAT(Call(open), Returns(kLine));
}

class ChipOpeningErrors : public ChipOpening, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, ChipOpeningErrors,
                         testing::Values(ENOENT, EACCES, EMFILE, ENXIO, EBADF, EFAULT, EINVAL),
                         ErrorName);

TEST_P(ChipOpeningErrors, ArePrintedAsTheyAreAndReportedNormalized) {
  ExpectChipOpenFailure(GetParam());
  ExpectChipOpenFailure(GetParam());
  const auto failure = Fails(Normalized(GetParam()), Problem("opening GPIO chip", GetParam()));
  EXPECT_THAT(Call([] { return GPIO_OpenAsInput(3); }), failure);
  EXPECT_THAT(Call([] { return GPIO_OpenAsOutput(3, 1, 1); }), failure);
}

/// Opens the chip slowly, so that all other threads find it not yet open.
int OpenSlowly(const char*, int) {
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  return kChip;
}

int OpenOnEightThreads() {
  std::atomic<int> opened{0};
  std::array<std::thread, 8> threads;
  for (size_t i = 0; i < threads.size(); ++i) {
    const auto line = static_cast<GpioLineId>(i);
    threads[i] =
        std::thread([line, &opened] { opened += GPIO_OpenAsInput(line) == kLine ? 1 : 0; });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return opened;
}

TEST(ChipOpeningByThreads, HappensOnce) {
  testing::StrictMock<FakeSystem> system;
  const Expectation open = EXPECT_CALL(system, Open(_, _)).WillOnce(OpenSlowly);
  EXPECT_CALL(system, Ioctl(kChip, GPIO_GET_CHIPINFO_IOCTL, _))
      .Times(8)
      .After(open)
      .WillRepeatedly([](int, unsigned long, void* argument) {
        static_cast<gpiochip_info*>(argument)->lines = kLineCount;
        return 0;
      });
  EXPECT_CALL(system, Ioctl(kChip, GPIO_GET_LINEHANDLE_IOCTL, _))
      .Times(8)
      .After(open)
      .WillRepeatedly([](int, unsigned long, void* argument) {
        static_cast<gpiohandle_request*>(argument)->fd = kLine;
        return 0;
      });
  EXPECT_THAT(ObserveOn(system, OpenOnEightThreads), Returns(8));
}

}  // namespace
}  // namespace kestrel::test
