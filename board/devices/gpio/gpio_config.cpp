// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/gpio_config.h"

#include <climits>
#include <set>
#include <utility>

namespace kestrel::board::gpio {
namespace {

constexpr int64_t kDefaultLineCount = 32;
constexpr int64_t kMostLines = 512;
/// The kernel's name and label fields hold 31 characters and a NUL.
constexpr size_t kLongestName = 31;

constexpr std::pair<const char*, Pull> kPulls[] = {
    {"none", Pull::kNone}, {"up", Pull::kUp}, {"down", Pull::kDown}};

Pull ReadPull(ConfigReader& reader) {
  const std::string pull = reader.Choice("pull", {"none", "up", "down"}, "none");
  for (const auto& [name, value] : kPulls) {
    if (pull == name) {
      return value;
    }
  }
  return Pull::kNone;
}

void ReadLine(ConfigReader& reader, GpioChip& chip, std::set<int64_t>& seen) {
  const int64_t last = static_cast<int64_t>(chip.lines().size()) - 1;
  const int64_t number = reader.RequiredInteger("offset", 0, last);
  if (!seen.insert(number).second) {
    reader.Refuse("offset", "line " + std::to_string(number) + " is described twice");
  }
  const auto offset = static_cast<size_t>(number);
  Line& line = chip.line(offset);
  line.name = reader.Text("name", "", kLongestName);
  line.pull = ReadPull(reader);
  line.used_by_kernel = reader.Boolean("used", false);
  const std::string level = reader.Choice("level", {"low", "high", "floating"}, "floating");
  chip.Drive(offset, level == "floating" ? std::nullopt : std::optional<bool>(level == "high"));
  reader.RefuseUnknownKeys();
}

}  // namespace

GpioConfig ReadGpioConfig(ConfigReader& reader) {
  GpioConfig config;
  config.present = reader.Boolean("present", true);
  config.replaced_by = reader.Text("replaced-by", "", PATH_MAX - 1);
  const std::string name = reader.Text("name", "gpiochip0", kLongestName);
  const std::string label = reader.Text("label", "kestrel-board", kLongestName);
  const int64_t count = reader.Integer("lines", 1, kMostLines, kDefaultLineCount);
  config.chip = std::make_shared<GpioChip>(name, label, static_cast<size_t>(count));
  std::set<int64_t> seen;
  for (ConfigReader& line : reader.Tables("line")) {
    ReadLine(line, *config.chip, seen);
  }
  reader.RefuseUnknownKeys();
  return config;
}

}  // namespace kestrel::board::gpio
