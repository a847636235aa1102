// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_GPIO_GPIO_CHIP_H
#define KESTREL_BOARD_DEVICES_GPIO_GPIO_CHIP_H

#include <linux/gpio.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrel::board::gpio {

inline constexpr uint32_t kDirections = GPIOHANDLE_REQUEST_INPUT | GPIOHANDLE_REQUEST_OUTPUT;

enum class Pull { kNone, kUp, kDown };

/// One line as the chip's registers and the wire outside have it. Levels are those of the wire; an
/// active-low request inverts what its program sees and nothing else.
struct Line {
  std::string name;
  std::string consumer;
  bool requested = false;
  bool used_by_kernel = false;
  uint32_t flags = 0;           ///< GPIOHANDLE_REQUEST_* of the latest request
  std::optional<bool> driven;   ///< what the chip itself drives; kept when the line is released
  std::optional<bool> outside;  ///< what the world outside drives, if anything
  Pull pull = Pull::kNone;      ///< a resistor on the board
  bool level = false;           ///< the level of the wire

  bool IsOutput() const;
  bool IsBusy() const { return requested || used_by_kernel; }
};

/// The lines of one GPIO chip and the rules by which they take their levels.
class GpioChip {
 public:
  GpioChip(std::string name, std::string label, size_t line_count);

  const std::string& name() const { return name_; }
  const std::string& label() const { return label_; }
  const std::vector<Line>& lines() const { return lines_; }

  /// For configuration: the caller settles the line with Drive or Settle afterwards.
  Line& line(size_t offset) { return lines_.at(offset); }

  /// Makes the line an input or an output by request flags that have been checked, or leaves its
  /// direction as it is when they name none. `value` is the logical level of an output.
  void Configure(size_t offset, uint32_t flags, bool value);

  /// Requests and releases. A released line keeps its direction and level; its other flags go.
  void Take(size_t offset, const std::string& consumer);
  void Release(size_t offset);

  /// The logical value of a line, as its program sees and sets it.
  bool Value(size_t offset) const;
  void SetValue(size_t offset, bool value);

  /// Drives a line from outside, or stops driving it.
  void Drive(size_t offset, std::optional<bool> level);

  /// Brings the level of the line up to date with what drives it.
  void Settle(size_t offset);

 private:
  std::string name_;
  std::string label_;
  std::vector<Line> lines_;
};

}  // namespace kestrel::board::gpio

#endif  // KESTREL_BOARD_DEVICES_GPIO_GPIO_CHIP_H
