// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_LINE_H
#define KESTREL_TOOLS_KESTRELCTL_LINE_H

#include <kestrel/gpio.h>

#include <optional>
#include <string>

namespace kestrelctl {

const char* LevelName(GpioLevel level);

/// An open line, released at the end of its scope. Every function reports its failure before it
/// returns nothing.
class Line {
 public:
  static std::optional<Line> OpenInput(GpioLineId number);
  static std::optional<Line> OpenOutput(GpioLineId number, GpioDriveMode drive, GpioLevel level);

  Line(Line&& other) noexcept;
  ~Line();
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  Line& operator=(Line&&) = delete;

  GpioLineId number() const { return number_; }
  std::optional<GpioLevel> Read() const;

 private:
  Line(GpioLineId number, int fd) : number_(number), fd_(fd) {}
  static std::optional<Line> Opened(GpioLineId number, int fd);

  GpioLineId number_;
  int fd_;
};

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_LINE_H
