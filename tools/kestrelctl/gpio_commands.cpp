// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <string>
#include <vector>

#include "arguments.h"
#include "command_groups.h"
#include "gpio_actions.h"
#include "library_diagnostics.h"

namespace kestrelctl {
namespace {

/// What was typed after a gpio command; each command has the options that it needs.
struct GpioArguments {
  std::vector<std::string> lines;
  std::string drive = "push-pull";
  std::string hold = "0";
  std::string interval = "20";
  bool json = false;
  bool verbose = false;

  Format format() const { return json ? Format::kJson : Format::kText; }
};

using Arguments = std::shared_ptr<GpioArguments>;  // kept by the callbacks of its command

CLI::App* AddCommand(CLI::App& gpio, const Arguments& arguments, const char* name,
                     const char* description, const char* examples) {
  CLI::App* const command = gpio.add_subcommand(name, description);
  command->footer(std::string("Examples:\n") + examples);
  command->add_flag("--json", arguments->json, "Print JSON");
  command->add_flag("-v,--verbose", arguments->verbose, "Show the library's own diagnostics, too");
  return command;
}

void AddGet(CLI::App& gpio, Action& action) {
  const auto arguments = std::make_shared<GpioArguments>();
  CLI::App* const command =
      AddCommand(gpio, arguments, "get", "Open lines as inputs and print their levels",
                 "  kestrelctl gpio get 3\n"
                 "  kestrelctl gpio get 3 4 --json");
  command->add_option("LINE", arguments->lines, "Line numbers, from 0")->required()->type_name("");
  command->callback([arguments, &action] {
    action = [lines = ParseLines(arguments->lines), arguments] {
      ShowLibraryDiagnostics(arguments->verbose);
      return GetLines(lines, arguments->format());
    };
  });
}

void AddSet(CLI::App& gpio, Action& action) {
  const auto arguments = std::make_shared<GpioArguments>();
  CLI::App* const command =
      AddCommand(gpio, arguments, "set", "Open lines as outputs and drive them",
                 "  kestrelctl gpio set 4=high 5=0\n"
                 "  kestrelctl gpio set 4=low --drive open-drain --hold 2.5");
  command->add_option("LINE=LEVEL", arguments->lines, "Levels are 0, 1, low and high")
      ->required()
      ->type_name("");
  command->add_option("--drive", arguments->drive, "push-pull (default), open-drain or open-source")
      ->type_name("MODE");
  command->add_option("--hold", arguments->hold, "Keep the lines so long before releasing them")
      ->type_name("SECONDS");
  command->callback([arguments, &action] {
    const Setting setting{ParseAssignments(arguments->lines), ParseDrive(arguments->drive),
                          ParseHold(arguments->hold)};
    action = [setting, arguments] {
      ShowLibraryDiagnostics(arguments->verbose);
      return SetLines(setting, arguments->format());
    };
  });
}

void AddWatch(CLI::App& gpio, Action& action) {
  const auto arguments = std::make_shared<GpioArguments>();
  CLI::App* const command =
      AddCommand(gpio, arguments, "watch", "Print the levels of inputs and each change of them",
                 "  kestrelctl gpio watch 3\n"
                 "  kestrelctl gpio watch 3 4 --interval 100 --json");
  command->add_option("LINE", arguments->lines, "Line numbers, from 0")->required()->type_name("");
  command
      ->add_option("--interval", arguments->interval,
                   "Time from one reading to the next (default 20)")
      ->type_name("MS");
  command->callback([arguments, &action] {
    action = [lines = ParseLines(arguments->lines), interval = ParseInterval(arguments->interval),
              arguments] {
      ShowLibraryDiagnostics(arguments->verbose);
      return WatchLines(lines, interval, arguments->format());
    };
  });
}

}  // namespace

void AddGpioCommands(CLI::App& program, Action& action) {
  CLI::App* const gpio = program.add_subcommand("gpio", "Read, drive and follow GPIO lines");
  gpio->require_subcommand(1);
  AddGet(*gpio, action);
  AddSet(*gpio, action);
  AddWatch(*gpio, action);
}

}  // namespace kestrelctl
