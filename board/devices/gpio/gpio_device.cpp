// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/gpio_device.h"

#include <cerrno>
#include <nlohmann/json.hpp>
#include <utility>

#include "devices/gpio/gpio_command.h"
#include "devices/gpio/gpio_config.h"
#include "devices/gpio/gpio_sessions.h"
#include "devices/gpio/line_flags.h"
#include "host/error.h"
#include "host/json_text.h"

namespace kestrel::board::gpio {
namespace {

using nlohmann::json;

const char* LevelName(bool level) { return level ? "high" : "low"; }

json Describe(size_t offset, const Line& line) {
  json description = {{"line", offset},
                      {"level", LevelName(line.level)},
                      {"direction", line.IsOutput() ? "output" : "input"}};
  if (!line.name.empty()) {
    description["name"] = line.name;
  }
  if (line.IsOutput()) {
    description["drive"] = DriveName(line);
  }
  if (line.outside.has_value()) {
    description["outside"] = LevelName(*line.outside);
  }
  if (line.IsBusy()) {
    description["used_by"] = line.used_by_kernel ? "kernel" : line.consumer;
  }
  return description;
}

class GpioDevice : public Device {
 public:
  explicit GpioDevice(GpioConfig config) : config_(std::move(config)) {}

  std::vector<std::string> Paths() const override { return {kChipPath}; }

  OpenAnswer Open(const std::string& /*path*/, int /*flags*/) override {
    OpenAnswer answer;
    if (!config_.replaced_by.empty()) {
      answer.redirect = config_.replaced_by;
    } else if (!config_.present) {
      answer.error = ENOENT;
    } else {
      answer.session = OpenChip(config_.chip);
    }
    return answer;
  }

  json Show() const override {
    json lines = json::array();
    for (size_t offset = 0; offset < Chip().lines().size(); ++offset) {
      lines.push_back(Describe(offset, Chip().lines()[offset]));
    }
    json state = {{"device", kChipPath},
                  {"present", config_.present},
                  {"name", Chip().name()},
                  {"label", Chip().label()},
                  {"lines", std::move(lines)}};
    if (!config_.replaced_by.empty()) {
      state["replaced_by"] = config_.replaced_by;
    }
    return state;
  }

  json Control(const json& request) override {
    const size_t offset = CheckedOffset(IntegerIn<uint32_t>(request, "line"));
    if (request.contains("level")) {
      const auto level = request.at("level").get<std::string>();
      config_.chip->Drive(offset,
                          level == "release" ? std::nullopt : std::optional<bool>(level == "high"));
    }
    return Describe(offset, Chip().lines()[offset]);
  }

 private:
  const GpioChip& Chip() const { return *config_.chip; }

  size_t CheckedOffset(uint64_t number) const {
    const size_t count = Chip().lines().size();
    if (number >= count) {
      throw UsageError("line " + std::to_string(number) + ": the chip has lines 0 to " +
                       std::to_string(count - 1));
    }
    return static_cast<size_t>(number);
  }

  GpioConfig config_;
};

}  // namespace

DeviceKind Kind() {
  DeviceKind kind;
  kind.name = kDeviceName;
  kind.make = [](ConfigReader& config, const BoardPlace&, EventLoop&) {
    return std::make_unique<GpioDevice>(ReadGpioConfig(config));
  };
  kind.print = PrintState;
  kind.add_commands = AddLineCommand;
  kind.requests = Requests();
  kind.descriptors = {kLineDescriptor};
  return kind;
}

}  // namespace kestrel::board::gpio
