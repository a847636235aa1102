// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_UART_PORT_FIXTURE_H
#define KESTREL_TESTS_UNIT_UART_PORT_FIXTURE_H

#include <gmock/gmock.h>
#include <kestrel/uart.h>

#include <functional>
#include <string>

#include "support/fake_system.h"
#include "support/outcome.h"

namespace kestrel::test {

inline constexpr int kPort = 800;  ///< the descriptor that opening a port gives

/// What UART prints about a failed call: "[Kestrel:UART] PROBLEM: TEXT (NUMBER).\n".
std::string UartProblem(const std::string& problem, int error);

/// What the caller sees of the device's `error`.
int UartTranslated(int error);

/// A test in which every system call is expected, in order, and none else is made.
class PortTest : public testing::Test {
 protected:
  PortTest();

  void ExpectOpen(const std::string& path = "/dev/ttyS3");
  void ExpectLock();
  void ExpectGet();  ///< reads `driver_`
  void ExpectOutputSpeed(speed_t speed = 0x1002);
  void ExpectInputSpeed(speed_t speed = 0x1002);
  void ExpectNonBlocking();
  void ExpectSet();  ///< writes `driver_`
  void ExpectClose();

  /// All calls before the first of them that sets the port up.
  void ExpectLockedPort();
  /// All calls before the settings are applied.
  void ExpectPreparedPort();
  void ExpectAppliedAndConfirmed();

  /// A call that does not keep what it is given: what the driver reports stays as it is.
  void ExpectIgnoredSet();

  /// Opens port 3 with `config_`.
  Observed Open();

  testing::InSequence in_sequence_;
  testing::StrictMock<FakeSystem> system_;
  termios driver_{};  ///< what the driver has and reports
  UartConfigRecord config_;
};

/// The errors that tests run through: the four that are translated and others.
inline const auto kPortErrors = testing::Values(EPERM, EFAULT, ENODEV, EINVAL, EIO, ENOTTY, EBADF,
                                                EINTR, EACCES, ENOENT, EWOULDBLOCK);

std::string PortErrorName(const testing::TestParamInfo<int>& test);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_UART_PORT_FIXTURE_H
