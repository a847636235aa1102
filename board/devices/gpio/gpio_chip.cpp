// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/gpio_chip.h"

#include <linux/gpio.h>

#include <utility>

namespace kestrel::board::gpio {
namespace {

bool Has(const Line& line, uint32_t flag) { return (line.flags & flag) != 0; }

bool IsActiveLow(const Line& line) { return Has(line, GPIOHANDLE_REQUEST_ACTIVE_LOW); }

/// What the chip drives for an output's logical value: nothing where an open-drain or open-source
/// line is let go.
std::optional<bool> ChipDrive(const Line& line, bool value) {
  const bool level = value != IsActiveLow(line);
  const bool released = (Has(line, GPIOHANDLE_REQUEST_OPEN_DRAIN) && level) ||
                        (Has(line, GPIOHANDLE_REQUEST_OPEN_SOURCE) && !level);
  return released ? std::nullopt : std::optional<bool>(level);
}

/// The level to which resistors take a wire that nothing drives. Open-drain and open-source lines
/// are useless without one, so they have theirs unless the board's configuration says otherwise.
std::optional<bool> Resistor(const Line& line) {
  if (line.pull != Pull::kNone) {
    return line.pull == Pull::kUp;
  }
  if (Has(line, GPIOHANDLE_REQUEST_BIAS_PULL_UP | GPIOHANDLE_REQUEST_BIAS_PULL_DOWN)) {
    return Has(line, GPIOHANDLE_REQUEST_BIAS_PULL_UP);
  }
  if (Has(line, GPIOHANDLE_REQUEST_OPEN_DRAIN | GPIOHANDLE_REQUEST_OPEN_SOURCE)) {
    return Has(line, GPIOHANDLE_REQUEST_OPEN_DRAIN);
  }
  return std::nullopt;
}

}  // namespace

bool Line::IsOutput() const { return (flags & GPIOHANDLE_REQUEST_OUTPUT) != 0; }

GpioChip::GpioChip(std::string name, std::string label, size_t line_count)
    : name_(std::move(name)), label_(std::move(label)), lines_(line_count) {}

void GpioChip::Configure(size_t offset, uint32_t flags, bool value) {
  Line& line = lines_.at(offset);
  const uint32_t old_direction = line.flags & kDirections;
  line.flags = flags;
  if ((flags & kDirections) == 0) {
    line.flags |= old_direction;
  } else {
    line.driven = line.IsOutput() ? ChipDrive(line, value) : std::nullopt;
  }
  Settle(offset);
}

void GpioChip::Take(size_t offset, const std::string& consumer) {
  lines_.at(offset).requested = true;
  lines_.at(offset).consumer = consumer.empty() ? "?" : consumer;
}

void GpioChip::Release(size_t offset) {
  Line& line = lines_.at(offset);
  line.requested = false;
  line.consumer.clear();
  line.flags &= kDirections;
}

bool GpioChip::Value(size_t offset) const {
  const Line& line = lines_.at(offset);
  return line.level != IsActiveLow(line);
}

void GpioChip::SetValue(size_t offset, bool value) {
  Line& line = lines_.at(offset);
  line.driven = ChipDrive(line, value);
  Settle(offset);
}

void GpioChip::Drive(size_t offset, std::optional<bool> level) {
  lines_.at(offset).outside = level;
  Settle(offset);
}

void GpioChip::Settle(size_t offset) {
  Line& line = lines_.at(offset);
  for (const std::optional<bool>& source : {line.driven, line.outside, Resistor(line)}) {
    if (source.has_value()) {
      line.level = *source;
      return;
    }
  }
  // Nothing drives the wire: it keeps the charge that it has.
}

}  // namespace kestrel::board::gpio
