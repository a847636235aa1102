// SPDX-License-Identifier: Apache-2.0
#include "line.h"

#include <unistd.h>

#include <utility>

#include "failure.h"
#include "library_diagnostics.h"

namespace kestrelctl {
namespace {

void ReportLineFailure(GpioLineId number) { ReportFailure("line " + std::to_string(number)); }

}  // namespace

const char* LevelName(GpioLevel level) { return level == GpioLevel_High ? "high" : "low"; }

std::optional<Line> Line::Opened(GpioLineId number, int fd) {
  if (fd < 0) {
    ReportLineFailure(number);
    return std::nullopt;
  }
  return Line(number, fd);
}

std::optional<Line> Line::OpenInput(GpioLineId number) {
  return Opened(number, CallLibrary([=] { return GPIO_OpenAsInput(number); }));
}

std::optional<Line> Line::OpenOutput(GpioLineId number, GpioDriveMode drive, GpioLevel level) {
  return Opened(number, CallLibrary([=] { return GPIO_OpenAsOutput(number, drive, level); }));
}

Line::Line(Line&& other) noexcept : number_(other.number_), fd_(std::exchange(other.fd_, -1)) {}

Line::~Line() {
  if (fd_ >= 0) {
    close(fd_);
  }
}

std::optional<GpioLevel> Line::Read() const {
  GpioLevel level = GpioLevel_Low;
  if (CallLibrary([&] { return GPIO_GetValue(fd_, &level); }) < 0) {
    ReportLineFailure(number_);
    return std::nullopt;
  }
  return level;
}

}  // namespace kestrelctl
