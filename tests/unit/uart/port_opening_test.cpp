// SPDX-License-Identifier: Apache-2.0
// Opening a port call by call: their order, and what happens when one fails.
#include <gtest/gtest.h>

#include <cerrno>

#include "support/broken_standard_error.h"
#include "uart/port_fixture.h"

namespace kestrel::test {
namespace {

using testing::_;
using testing::Return;

const std::string kOpen = "Unable to open device";
const std::string kLock = "Unable to open device exclusively";
const std::string kGet = "Unable to get attributes of device";
const std::string kOutputSpeed = "Unable to set output speed of UART";
const std::string kInputSpeed = "Unable to set input speed of UART";
const std::string kNonBlocking = "Unable to set device to non-blocking";
const std::string kSet = "Unable to set attributes of device";
const std::string kConfirm = "Unable to confirm attributes of device";
const std::string kCloseLocked = "Error closing the device";
const std::string kClose = "Error closing device";

using PortOpening = PortTest;

TEST_F(PortOpening, MakesTheseCallsAndLeavesTheDescriptorOpen) {
  ExpectPreparedPort();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort));
}

TEST_F(PortOpening, WorksWithDescriptorZero) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(Return(0));
  EXPECT_CALL(system_, Flock(0, 6)).WillOnce(Return(0));
  EXPECT_CALL(system_, Tcgetattr(0, _)).WillOnce(FailWith(ENOTTY));
  EXPECT_CALL(system_, Close(0)).WillOnce(Return(0));
  EXPECT_THAT(Open(), Fails(ENOTTY, UartProblem(kGet, ENOTTY)));
}

TEST_F(PortOpening, IsDoneAnewByEveryCall) {
  for (int i = 0; i < 2; ++i) {
    ExpectPreparedPort();
    ExpectAppliedAndConfirmed();
    EXPECT_THAT(Open(), Returns(kPort));
  }
}

class PortPath : public PortTest, public testing::WithParamInterface<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Each, PortPath, testing::Values(0, 1, 9, 10, 99, 100, 255));

TEST_P(PortPath, EndsInTheNumber) {
  EXPECT_CALL(system_, Open(testing::StrEq("/dev/ttyS" + std::to_string(GetParam())), 0x902))
      .WillOnce(FailWith(ENOENT));
  EXPECT_THAT(ObserveOn(system_, [this] { return z__UART_Open(GetParam(), &config_); }),
              Fails(ENOENT, UartProblem(kOpen, ENOENT)));
}

/// Every error at every step.
class PortError : public PortTest, public testing::WithParamInterface<int> {
 protected:
  /// Expects the port to be closed and the open to fail, with the errno of the failed step.
  void ExpectFailureOf(const std::string& problem) {
    ExpectClose();
    EXPECT_THAT(Open(), Fails(UartTranslated(GetParam()), UartProblem(problem, GetParam())));
  }
};

INSTANTIATE_TEST_SUITE_P(Every, PortError, kPortErrors, PortErrorName);

TEST_P(PortError, OfOpenIsReportedAndNothingClosed) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(GetParam()));
  EXPECT_THAT(Open(), Fails(UartTranslated(GetParam()), UartProblem(kOpen, GetParam())));
}

TEST_P(PortError, OfLockingIsReported) {
  ExpectOpen();
  EXPECT_CALL(system_, Flock(_, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kLock);
}

TEST_P(PortError, OfReadingTheSettingsIsReported) {
  ExpectLockedPort();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kGet);
}

TEST_P(PortError, OfTheOutputSpeedIsReported) {
  ExpectLockedPort();
  ExpectGet();
  EXPECT_CALL(system_, Cfsetospeed(_, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kOutputSpeed);
}

TEST_P(PortError, OfTheInputSpeedIsReported) {
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  EXPECT_CALL(system_, Cfsetispeed(_, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kInputSpeed);
}

TEST_P(PortError, OfTheStatusFlagsIsReported) {
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  ExpectInputSpeed();
  EXPECT_CALL(system_, Fcntl(_, _, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kNonBlocking);
}

TEST_P(PortError, OfApplyingIsReported) {
  ExpectPreparedPort();
  EXPECT_CALL(system_, Tcsetattr(_, _, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kSet);
}

TEST_P(PortError, OfConfirmingIsReported) {
  ExpectPreparedPort();
  ExpectSet();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(GetParam()));
  ExpectFailureOf(kConfirm);
}

/// A step fails for a reason that is translated or not, and closing fails as well.
class PortClosing : public PortTest {
 protected:
  void FailToGet(int error) {
    ExpectLockedPort();
    EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(error));
  }
};

TEST_F(PortClosing, ThatFailsAfterTheLockIsReportedAndTheLocksErrnoKept) {
  ExpectOpen();
  EXPECT_CALL(system_, Flock(_, _)).WillOnce(FailWith(EWOULDBLOCK));
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Open(), Fails(EWOULDBLOCK,
                            UartProblem(kLock, EWOULDBLOCK) + UartProblem(kCloseLocked, EINTR)));
}

TEST_F(PortClosing, ThatFailsAfterTheLockDoesNotHideItsTranslation) {
  ExpectOpen();
  EXPECT_CALL(system_, Flock(_, _)).WillOnce(FailWith(EINVAL));
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Open(), Fails(EIO, UartProblem(kLock, EINVAL) + UartProblem(kCloseLocked, EINTR)));
}

TEST_F(PortClosing, ThatFailsLaterReplacesTheFirstErrno) {
  FailToGet(ENOTTY);
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Open(), Fails(EINTR, UartProblem(kGet, ENOTTY) + UartProblem(kClose, EINTR)));
}

TEST_F(PortClosing, ThatFailsLaterIsNotTranslatedItself) {
  FailToGet(ENOTTY);
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINVAL));
  EXPECT_THAT(Open(), Fails(EINVAL, UartProblem(kGet, ENOTTY) + UartProblem(kClose, EINVAL)));
}

TEST_F(PortClosing, ThatFailsLaterDoesNotReplaceATranslatedErrno) {
  FailToGet(EINVAL);
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Open(), Fails(EIO, UartProblem(kGet, EINVAL) + UartProblem(kClose, EINTR)));
}

/// Steps that fail and leave errno at 0.
class PortForgiving : public PortTest {};

TEST_F(PortForgiving, GoesOnWithZeroedSettingsThatCannotBeRead) {
  ExpectLockedPort();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(0));
  ExpectOutputSpeed();
  ExpectInputSpeed();
  ExpectNonBlocking();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kGet, 0)));
  EXPECT_EQ(driver_.c_iflag, 0x0005u);
  EXPECT_EQ(driver_.c_oflag, 0u);
  EXPECT_EQ(driver_.c_cflag, 0x0CB0u);
  EXPECT_EQ(driver_.c_lflag, 0u);
}

TEST_F(PortForgiving, SkipsTheInputSpeedWithoutTheOutputSpeed) {
  ExpectLockedPort();
  ExpectGet();
  EXPECT_CALL(system_, Cfsetospeed(_, _)).WillOnce(FailWith(0));
  ExpectNonBlocking();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kOutputSpeed, 0)));
}

TEST_F(PortForgiving, GoesOnWithoutTheInputSpeed) {
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  EXPECT_CALL(system_, Cfsetispeed(_, _)).WillOnce(FailWith(0));
  ExpectNonBlocking();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kInputSpeed, 0)));
}

TEST_F(PortForgiving, GoesOnWithoutTheStatusFlags) {
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  ExpectInputSpeed();
  EXPECT_CALL(system_, Fcntl(_, _, _)).WillOnce(FailWith(0));
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kNonBlocking, 0)));
}

TEST_F(PortForgiving, SucceedsWithoutApplying) {
  ExpectPreparedPort();
  EXPECT_CALL(system_, Tcsetattr(_, _, _)).WillOnce(FailWith(0));
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kSet, 0)));
}

TEST_F(PortForgiving, SucceedsWithoutConfirming) {
  ExpectPreparedPort();
  ExpectSet();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(0));
  EXPECT_THAT(Open(), Returns(kPort, UartProblem(kConfirm, 0)));
}

TEST_F(PortForgiving, IsNotForOpening) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(0));
  EXPECT_THAT(Open(), Fails(0, UartProblem(kOpen, 0)));
}

TEST_F(PortForgiving, IsNotForLocking) {
  ExpectOpen();
  EXPECT_CALL(system_, Flock(_, _)).WillOnce(FailWith(0));
  ExpectClose();
  EXPECT_THAT(Open(), Fails(0, UartProblem(kLock, 0)));
}

/// Drivers that report other settings than they were given.
class PortConfirmation : public PortTest {
 protected:
  void ExpectTriesInVain(int tries) {
    for (int i = 0; i < tries; ++i) {
      ExpectIgnoredSet();
      ExpectGet();
    }
  }

  const std::string kInVain = "[Kestrel:UART] Could not set the attributes of the device.\n";
};

TEST_F(PortConfirmation, IsTriedTenTimesAndLeavesErrnoAsItWas) {
  ExpectPreparedPort();
  ExpectTriesInVain(10);
  ExpectClose();
  EXPECT_THAT(Open(), Fails(kUntouched, kInVain));
}

TEST_F(PortConfirmation, MaySucceedAtTheTenthTry) {
  ExpectPreparedPort();
  ExpectTriesInVain(9);
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(), Returns(kPort));
}

TEST_F(PortConfirmation, TranslatesTheErrnoThatWasThereBefore) {
  ExpectPreparedPort();
  ExpectTriesInVain(10);
  ExpectClose();
  EXPECT_THAT(ObserveOn(system_,
                        [this] {
                          errno = EINVAL;
                          return z__UART_Open(3, &config_);
                        }),
              Fails(EIO, kInVain));
}

TEST_F(PortConfirmation, ReportsAFailingCloseAsWell) {
  ExpectPreparedPort();
  ExpectTriesInVain(10);
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Open(), Fails(EINTR, kInVain + UartProblem(kClose, EINTR)));
}

TEST_F(PortConfirmation, CanFailAtALaterTry) {
  ExpectPreparedPort();
  ExpectTriesInVain(3);
  EXPECT_CALL(system_, Tcsetattr(_, _, _)).WillOnce(FailWith(EIO));
  ExpectClose();
  EXPECT_THAT(Open(), Fails(EIO, UartProblem(kSet, EIO)));
}

/// Each byte of the settings counts, padding and unused control characters included.
class PortConfirmationByte : public PortConfirmation, public testing::WithParamInterface<size_t> {};

INSTANTIATE_TEST_SUITE_P(Each, PortConfirmationByte, testing::Range<size_t>(0, 60));

TEST_P(PortConfirmationByte, MustBeReportedBack) {
  ExpectPreparedPort();
  for (int i = 0; i < 10; ++i) {
    EXPECT_CALL(system_, Tcsetattr(_, _, _)).WillOnce([this](int, int, const termios* settings) {
      driver_ = *settings;
      reinterpret_cast<uint8_t*>(&driver_)[GetParam()] ^= 0x01;
      return 0;
    });
    ExpectGet();
  }
  ExpectClose();
  EXPECT_THAT(Open(), Fails(kUntouched, kInVain));
}

/// Standard error that cannot be written does not change what the caller sees.
TEST_P(PortError, IsKeptWhenStandardErrorIsClosed) {
  ExpectLockedPort();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(GetParam()));
  ExpectClose();
  EXPECT_THAT(Observe([this] {
                const ClosedStandardError closed;
                return RunOn(system_, [this] { return z__UART_Open(3, &config_); });
              }),
              Fails(UartTranslated(GetParam()), ""));
}

TEST_F(PortConfirmation, LeavesErrnoAloneWhenStandardErrorIsClosed) {
  ExpectPreparedPort();
  ExpectTriesInVain(10);
  ExpectClose();
  EXPECT_THAT(Observe([this] {
                const ClosedStandardError closed;
                return RunOn(system_, [this] {
                  errno = kUntouched;
                  return z__UART_Open(3, &config_);
                });
              }),
              Fails(kUntouched, ""));
}

}  // namespace
}  // namespace kestrel::test
