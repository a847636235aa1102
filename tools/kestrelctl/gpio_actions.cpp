// SPDX-License-Identifier: Apache-2.0
#include "gpio_actions.h"

#include <sys/time.h>
#include <unistd.h>

#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "failure.h"
#include "interruption.h"
#include "line.h"

namespace kestrelctl {
namespace {

using Json = nlohmann::ordered_json;

/// A line's level in the form that `gpio set` takes.
std::string Text(const LineAndLevel& line) {
  return std::to_string(line.line) + "=" + LevelName(line.level);
}

Json ToJson(const LineAndLevel& line) {
  return {{"line", line.line}, {"level", LevelName(line.level)}};
}

std::string Listing(const std::vector<LineAndLevel>& lines, Format format) {
  std::string text;
  Json list = Json::array();
  for (const LineAndLevel& line : lines) {
    text += Text(line) + "\n";
    list.push_back(ToJson(line));
  }
  return format == Format::kText ? text : Json{{"lines", list}}.dump() + "\n";
}

/// All lines or, after reporting the first that fails, none.
std::vector<Line> OpenInputs(const std::vector<GpioLineId>& numbers) {
  std::vector<Line> lines;
  for (const GpioLineId number : numbers) {
    std::optional<Line> line = Line::OpenInput(number);
    if (!line) {
      return {};
    }
    lines.push_back(std::move(*line));
  }
  return lines;
}

std::vector<Line> OpenOutputs(const Setting& setting) {
  std::vector<Line> lines;
  for (const auto& [number, level] : setting.lines) {
    std::optional<Line> line = Line::OpenOutput(number, setting.drive, level);
    if (!line) {
      return {};
    }
    lines.push_back(std::move(*line));
  }
  return lines;
}

/// The present time in UTC with milliseconds, such as "2031-05-01T08:15:30.042Z".
std::string Now() {
  timeval now{};
  gettimeofday(&now, nullptr);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  char date[32];
  strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
  char milliseconds[16];
  snprintf(milliseconds, sizeof milliseconds, ".%03dZ",
           static_cast<int>(now.tv_usec / 1000) % 1000);
  return std::string(date) + milliseconds;
}

std::string Change(const LineAndLevel& line, Format format) {
  if (format == Format::kText) {
    return Now() + " " + Text(line) + "\n";
  }
  Json change{{"time", Now()}};
  change.update(ToJson(line));
  return change.dump() + "\n";
}

struct WatchedLine {
  Line line;
  std::optional<GpioLevel> shown;
};

/// Prints the levels that differ from what was shown last. Returns false after a failure.
bool ShowChanges(std::vector<WatchedLine>& watched, Format format) {
  for (auto& [line, shown] : watched) {
    const std::optional<GpioLevel> level = line.Read();
    if (!level) {
      return false;
    }
    if (level != shown && !Print(Change({line.number(), *level}, format))) {
      return false;
    }
    shown = level;
  }
  return true;
}

}  // namespace

int GetLines(const std::vector<GpioLineId>& numbers, Format format) {
  const std::vector<Line> lines = OpenInputs(numbers);
  if (lines.empty()) {
    return kFailed;
  }
  std::vector<LineAndLevel> levels;
  for (const Line& line : lines) {
    const std::optional<GpioLevel> level = line.Read();
    if (!level) {
      return kFailed;
    }
    levels.push_back({line.number(), *level});
  }
  return Print(Listing(levels, format)) ? kDone : kFailed;
}

int SetLines(const Setting& setting, Format format) {
  const Interruption interruption;
  const std::vector<Line> lines = OpenOutputs(setting);
  if (lines.empty() || !Print(Listing(setting.lines, format))) {
    return kFailed;
  }
  if (setting.hold.count() > 0) {
    interruption.WaitFor(setting.hold);
  }
  return kDone;
}

int WatchLines(const std::vector<GpioLineId>& numbers, Milliseconds interval, Format format) {
  const Interruption interruption;
  std::vector<WatchedLine> watched;
  for (Line& line : OpenInputs(numbers)) {
    watched.push_back({std::move(line), std::nullopt});
  }
  if (watched.empty()) {
    return kFailed;
  }
  WaitEnd end = WaitEnd::kTime;
  while (end == WaitEnd::kTime) {
    if (!ShowChanges(watched, format)) {
      return kFailed;
    }
    end = interruption.WaitFor(interval, STDOUT_FILENO);
  }
  return end == WaitEnd::kSignal ? kDone : ReportLostReader();
}

}  // namespace kestrelctl
