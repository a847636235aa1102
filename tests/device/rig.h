// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_DEVICE_RIG_H
#define KESTREL_TESTS_DEVICE_RIG_H

#include <kestrel/gpio.h>

#include <functional>
#include <ostream>
#include <string>

#include "differences.h"

namespace kestrel::test {

/// The chip has this many lines, of which the kernel has taken one.
inline constexpr int kLineCount = 64;
inline constexpr int kBusyLine = 3;

/// Two ports that a null-modem cable joins, and one behind which there is no hardware.
inline constexpr uint32_t kLeftPort = 0;
inline constexpr uint32_t kRightPort = 1;
inline constexpr uint32_t kHollowPort = 2;

inline constexpr char kChipPath[] = "/dev/gpiochip0";
inline constexpr char kWardenPath[] = "/dev/warden";
inline constexpr char kLodestonePath[] = "/dev/lodestone";

/// A GPIO line as somebody with a meter and the driver's documentation sees it.
struct LineOutside {
  std::string level;      ///< low or high
  std::string direction;  ///< input or output
  std::string drive;      ///< of an output: push-pull, open-drain or open-source
};

void PrintTo(const LineOutside& line, std::ostream* stream);

/// The world around the device under test. The tests are the same for every rig.
class Rig {
 public:
  Rig() = default;
  virtual ~Rig() = default;
  Rig(const Rig&) = delete;
  Rig& operator=(const Rig&) = delete;

  /// What is true of this rig.
  template <typename Value>
  const Value& Of(const Difference<Value>& difference) const {
    return HasRealParts() ? difference.real_parts : difference.board;
  }

  /// Whether real drivers and daemons are at work.
  virtual bool HasRealParts() const = 0;

  /// Drives a line from outside: an input follows, an output that drives its line does not.
  virtual void DriveLine(int line, GpioLevel level) = 0;
  virtual LineOutside LookAtLine(int line) = 0;

  /// Calls `body` in a child of this process that belongs to a user who may not open `path`.
  /// Returns what `body` returned, as InChild() does.
  virtual int AsUserWhoMayNotOpen(const std::string& path, const std::function<int()>& body) = 0;
};

/// The rig that the environment names: KESTREL_RIG=board (the default) or machine.
Rig& TheRig();

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_DEVICE_RIG_H
