// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_GPIO_CHIP_FIXTURE_H
#define KESTREL_TESTS_UNIT_GPIO_CHIP_FIXTURE_H

#include <gmock/gmock.h>
#include <kestrel/gpio.h>
#include <linux/gpio.h>

#include <functional>
#include <optional>
#include <string>

#include "gpio/gpio_manager.h"
#include "support/fake_system.h"
#include "support/outcome.h"

namespace kestrel::test {

inline constexpr int kChip = 700;  ///< the descriptor that opening the chip gives
inline constexpr int kLine = 701;  ///< the descriptor that requesting a line gives
inline constexpr uint32_t kLineCount = 32;

/// What GPIO prints about a failed call: "[Kestrel:GPIO] Problem …: TEXT (NUMBER)\n".
std::string Problem(const std::string& doing, int error);

/// What the caller sees of the kernel's `error`.
int Normalized(int error);

/// A test in which every system call is expected, in order, and none else is made. The exports
/// meet a manager that has not opened the chip yet, as in a new process.
class ChipTest : public testing::Test {
 protected:
  ChipTest();
  ~ChipTest() override;

  void ExpectChipOpen(int descriptor = kChip);
  void ExpectChipOpenFailure(int error);
  void ExpectChipInfo(uint32_t lines = kLineCount);
  void ExpectChipInfoFailure(int error);
  void ExpectLineRequest(int descriptor = kLine);
  void ExpectLineRequestFailure(int error);

  /// The chip as most tests want it: opened by one line, which is forgotten.
  void OpenChip();

  Observed Call(const std::function<int()>& function) { return ObserveOn(system_, function); }

  testing::InSequence in_sequence_;
  testing::StrictMock<FakeSystem> system_;
  std::optional<gpiohandle_request> requested_;  ///< the last line request, as the kernel got it
};

/// The errors that a GPIO device gives, and that tests run through.
inline const auto kDeviceErrors =
    testing::Values(ENODEV, EBUSY, EPERM, EACCES, ENOMEM, EIO, EBADF, EFAULT, EINVAL);

/// Names the instances of a test that runs over errors, such as "EBUSY".
std::string ErrorName(const testing::TestParamInfo<int>& test);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_GPIO_CHIP_FIXTURE_H
