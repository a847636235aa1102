// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <optional>
#include <set>

namespace kestrelctl {
namespace {

constexpr double kLongestHold = 24 * 60 * 60;
constexpr int kLongestInterval = 60000;

[[noreturn]] void Refuse(const std::string& message) {
  throw CLI::ValidationError(message, CLI::ExitCodes::ValidationError);
}

/// The whole of `text` as a number.
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

GpioLineId ParseLine(const std::string& text) {
  const std::optional<GpioLineId> line = ParseNumber<GpioLineId>(text);
  if (!line || *line < 0) {
    Refuse("'" + text + "' is no line: give a number from 0 to " + std::to_string(INT32_MAX));
  }
  return *line;
}

struct Level {
  const char* name;
  GpioLevel level;
};

constexpr Level kLevels[] = {
    {"0", GpioLevel_Low},
    {"1", GpioLevel_High},
    {"low", GpioLevel_Low},
    {"high", GpioLevel_High},
};

GpioLevel ParseLevel(const std::string& text) {
  for (const Level& known : kLevels) {
    if (text == known.name) {
      return known.level;
    }
  }
  Refuse("'" + text + "' is no level: give 0, 1, low or high");
}

LineAndLevel ParseAssignment(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) {
    Refuse("'" + text + "' sets nothing: give LINE=LEVEL, such as 4=high");
  }
  return {ParseLine(text.substr(0, equals)), ParseLevel(text.substr(equals + 1))};
}

struct Drive {
  const char* name;
  GpioDriveMode mode;
};

constexpr Drive kDrives[] = {
    {"push-pull", GpioDriveMode_PushPull},
    {"open-drain", GpioDriveMode_OpenDrain},
    {"open-source", GpioDriveMode_OpenSource},
};

void RefuseRepetition(std::set<GpioLineId>& seen, GpioLineId line) {
  if (!seen.insert(line).second) {
    Refuse("line " + std::to_string(line) + " is given twice: name each line once");
  }
}

}  // namespace

std::vector<GpioLineId> ParseLines(const std::vector<std::string>& texts) {
  std::vector<GpioLineId> lines;
  std::set<GpioLineId> seen;
  for (const std::string& text : texts) {
    lines.push_back(ParseLine(text));
    RefuseRepetition(seen, lines.back());
  }
  return lines;
}

std::vector<LineAndLevel> ParseAssignments(const std::vector<std::string>& texts) {
  std::vector<LineAndLevel> assignments;
  std::set<GpioLineId> seen;
  for (const std::string& text : texts) {
    assignments.push_back(ParseAssignment(text));
    RefuseRepetition(seen, assignments.back().line);
  }
  return assignments;
}

GpioDriveMode ParseDrive(const std::string& text) {
  for (const Drive& known : kDrives) {
    if (text == known.name) {
      return known.mode;
    }
  }
  Refuse("'" + text + "' is no drive: give push-pull, open-drain or open-source");
}

Milliseconds ParseHold(const std::string& seconds) {
  const std::optional<double> number = ParseNumber<double>(seconds);
  // Written so that "nan" is refused as well.
  if (!number || !(*number >= 0 && *number <= kLongestHold)) {
    Refuse("'" + seconds + "' is no time to hold: give seconds from 0 to 86400, such as 2.5");
  }
  return std::chrono::duration_cast<Milliseconds>(std::chrono::duration<double>(*number));
}

Milliseconds ParseInterval(const std::string& milliseconds) {
  const std::optional<int> number = ParseNumber<int>(milliseconds);
  if (!number || *number < 1 || *number > kLongestInterval) {
    Refuse("'" + milliseconds + "' is no interval: give milliseconds from 1 to 60000");
  }
  return Milliseconds(*number);
}

}  // namespace kestrelctl
