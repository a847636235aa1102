// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/gpio_sessions.h"

#include <linux/gpio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "devices/gpio/line_flags.h"

namespace kestrel::board::gpio {
namespace {

using Bytes = std::vector<uint8_t>;

IoctlAnswer Failure(int error) {
  IoctlAnswer answer;
  answer.error = error;
  return answer;
}

template <typename Record>
Record Decode(const Bytes& argument) {
  Record record{};
  std::copy_n(argument.begin(), std::min(argument.size(), sizeof record),
              reinterpret_cast<uint8_t*>(&record));
  return record;
}

template <typename Record>
IoctlAnswer Success(const Record& record) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
  IoctlAnswer answer;
  answer.data.assign(bytes, bytes + sizeof record);
  return answer;
}

template <size_t Size>
void CopyText(const std::string& text, char (&field)[Size]) {
  const size_t length = std::min(text.size(), Size - 1);
  memcpy(field, text.data(), length);
  memset(field + length, 0, Size - length);
}

template <size_t Size>
std::string Text(const char (&field)[Size]) {
  return std::string(field, strnlen(field, Size - 1));
}

/// One line handle: up to 64 lines that were requested together.
class LineHandle : public Session {
 public:
  explicit LineHandle(std::shared_ptr<GpioChip> chip) : chip_(std::move(chip)) {}
  ~LineHandle() override {
    for (const size_t offset : offsets_) {
      chip_->Release(offset);
    }
  }
  LineHandle(const LineHandle&) = delete;
  LineHandle& operator=(const LineHandle&) = delete;

  /// Takes one more line. Returns 0 or an errno value.
  int Add(size_t offset, const gpiohandle_request& request, bool value) {
    if (offset >= chip_->lines().size()) {
      return EINVAL;
    }
    if (chip_->lines()[offset].IsBusy()) {
      return EBUSY;
    }
    chip_->Take(offset, Text(request.consumer_label));
    offsets_.push_back(offset);
    chip_->Configure(offset, request.flags, value);
    return 0;
  }

  IoctlAnswer Ioctl(uint32_t request, const Bytes& argument) override {
    switch (request) {
      case GPIOHANDLE_GET_LINE_VALUES_IOCTL:
        return GetValues();
      case GPIOHANDLE_SET_LINE_VALUES_IOCTL:
        return SetValues(Decode<gpiohandle_data>(argument));
      default:
        return Failure(EINVAL);
    }
  }

  std::string Name() const override { return kLineDescriptor; }

 private:
  IoctlAnswer GetValues() const {
    gpiohandle_data data{};
    for (size_t i = 0; i < offsets_.size(); ++i) {
      data.values[i] = chip_->Value(offsets_[i]) ? 1 : 0;
    }
    return Success(data);
  }

  IoctlAnswer SetValues(const gpiohandle_data& data) {
    // All lines of a handle have one direction, so the first stands for them.
    if (!chip_->lines()[offsets_.front()].IsOutput()) {
      return Failure(EPERM);
    }
    for (size_t i = 0; i < offsets_.size(); ++i) {
      chip_->SetValue(offsets_[i], data.values[i] != 0);
    }
    return Success(data);
  }

  std::shared_ptr<GpioChip> chip_;
  std::vector<size_t> offsets_;
};

class ChipSession : public Session {
 public:
  explicit ChipSession(std::shared_ptr<GpioChip> chip) : chip_(std::move(chip)) {}

  IoctlAnswer Ioctl(uint32_t request, const Bytes& argument) override {
    switch (request) {
      case GPIO_GET_CHIPINFO_IOCTL:
        return ChipInfo();
      case GPIO_GET_LINEINFO_IOCTL:
        return LineInfo(Decode<gpioline_info>(argument));
      case GPIO_GET_LINEHANDLE_IOCTL:
        return RequestLines(Decode<gpiohandle_request>(argument));
      default:
        return Failure(EINVAL);
    }
  }

  std::string Name() const override { return kChipPath; }

 private:
  IoctlAnswer ChipInfo() const {
    gpiochip_info info{};
    CopyText(chip_->name(), info.name);
    CopyText(chip_->label(), info.label);
    info.lines = static_cast<uint32_t>(chip_->lines().size());
    return Success(info);
  }

  IoctlAnswer LineInfo(gpioline_info info) const {
    if (info.line_offset >= chip_->lines().size()) {
      return Failure(EINVAL);
    }
    const Line& line = chip_->lines()[info.line_offset];
    info.flags = InfoFlags(line);
    CopyText(line.name, info.name);
    CopyText(line.used_by_kernel ? "kernel" : line.consumer, info.consumer);
    return Success(info);
  }

  IoctlAnswer RequestLines(const gpiohandle_request& request) {
    if (request.lines == 0 || request.lines > GPIOHANDLES_MAX ||
        !AreValidRequestFlags(request.flags)) {
      return Failure(EINVAL);
    }
    auto handle = std::make_unique<LineHandle>(chip_);
    for (size_t i = 0; i < request.lines; ++i) {
      const int error =
          handle->Add(request.lineoffsets[i], request, request.default_values[i] != 0);
      if (error != 0) {
        return Failure(error);
      }
    }
    IoctlAnswer answer = Success(request);
    answer.session = std::move(handle);
    answer.descriptor_offset = offsetof(gpiohandle_request, fd);
    return answer;
  }

  std::shared_ptr<GpioChip> chip_;
};

}  // namespace

std::unique_ptr<Session> OpenChip(std::shared_ptr<GpioChip> chip) {
  return std::make_unique<ChipSession>(std::move(chip));
}

std::vector<NamedRequest> Requests() {
  return {{"GPIO_GET_CHIPINFO_IOCTL", GPIO_GET_CHIPINFO_IOCTL},
          {"GPIO_GET_LINEINFO_IOCTL", GPIO_GET_LINEINFO_IOCTL},
          {"GPIO_GET_LINEHANDLE_IOCTL", GPIO_GET_LINEHANDLE_IOCTL},
          {"GPIOHANDLE_GET_LINE_VALUES_IOCTL", GPIOHANDLE_GET_LINE_VALUES_IOCTL},
          {"GPIOHANDLE_SET_LINE_VALUES_IOCTL", GPIOHANDLE_SET_LINE_VALUES_IOCTL}};
}

}  // namespace kestrel::board::gpio
