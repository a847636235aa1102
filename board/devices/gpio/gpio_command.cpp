// SPDX-License-Identifier: Apache-2.0
#include "devices/gpio/gpio_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli/command_context.h"
#include "host/error.h"

namespace kestrel::board::gpio {
namespace {

using nlohmann::json;

/// An undriven low input that nobody uses.
bool IsIdle(const json& line) {
  return line.at("direction") == "input" && line.at("level") == "low" &&
         !line.contains("outside") && !line.contains("used_by") && !line.contains("name");
}

std::string Details(const json& line) {
  std::string details = line.at("direction");
  if (line.contains("drive")) {
    details += ", " + line.at("drive").get<std::string>();
  }
  if (line.contains("outside")) {
    details += ", driven " + line.at("outside").get<std::string>() + " from outside";
  }
  if (line.contains("used_by")) {
    details += ", used by " + line.at("used_by").get<std::string>();
  }
  return details;
}

void PrintLine(const json& line, std::ostream& out) {
  out << "  line " << std::setw(3) << line.at("line").get<int>() << "  " << std::left
      << std::setw(4) << line.at("level").get<std::string>() << std::right << "  " << Details(line);
  if (line.contains("name")) {
    out << "  (" << line.at("name").get<std::string>() << ")";
  }
  out << '\n';
}

/// What is wrong with a line number, or nothing.
std::string CheckLineNumber(const std::string& text) {
  const bool digits =
      std::all_of(text.begin(), text.end(), [](unsigned char c) { return isdigit(c) != 0; });
  return digits && !text.empty() && text.size() <= 9
             ? ""
             : "must be the offset of a line, such as 4, not '" + text + "'";
}

std::string CheckLevel(const std::string& text) {
  return text == "low" || text == "high" || text == "release"
             ? ""
             : "must be low, high or release, not '" + text + "'";
}

struct LineOptions {
  uint64_t line = 0;
  std::optional<std::string> level;
};

/// Says so when the level that was asked for is not the one that the wire has.
void WarnWhenOverruled(const LineOptions& options, const json& line) {
  if (options.level.has_value() && *options.level != "release" &&
      *options.level != line.at("level")) {
    PrintDiagnostic("line " + std::to_string(options.line) + " stays " +
                    line.at("level").get<std::string>() +
                    ": it is an output that a program drives");
  }
}

}  // namespace

void PrintState(const json& state, std::ostream& out) {
  const json& lines = state.at("lines");
  out << "gpio: " << state.at("device").get<std::string>() << ", label \""
      << state.at("label").get<std::string>() << "\", " << lines.size() << " lines";
  if (state.contains("replaced_by")) {
    out << ", replaced by " << state.at("replaced_by").get<std::string>();
  } else if (!state.at("present").get<bool>()) {
    out << ", absent";
  }
  out << '\n';
  size_t idle = 0;
  for (const json& line : lines) {
    if (IsIdle(line)) {
      ++idle;
    } else {
      PrintLine(line, out);
    }
  }
  out << "  " << idle << " idle inputs, low\n";
}

void AddLineCommand(CLI::App& app, const CommandContext& context) {
  auto options = std::make_shared<LineOptions>();
  CLI::App* command =
      app.add_subcommand("line", "Read a GPIO line of a running board, or drive it from outside");
  command->add_option("NUMBER", options->line, "offset of the line on the chip")
      ->check(CheckLineNumber)
      ->required();
  command
      ->add_option("LEVEL", options->level,
                   "low, high, or release to stop driving; without it the level is printed")
      ->check(CheckLevel);
  context.AddBoardOption(*command);
  command->callback([options, &context] {
    json request = {{"device", kDeviceName}, {"line", options->line}};
    if (options->level.has_value()) {
      request["level"] = *options->level;
    }
    const json line = context.Ask(request);
    WarnWhenOverruled(*options, line);
    context.Print(line,
                  [&](std::ostream& out) { out << line.at("level").get<std::string>() << '\n'; });
  });
}

}  // namespace kestrel::board::gpio
