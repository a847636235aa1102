// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include "arguments.h"
#include "command_groups.h"
#include "family_command.h"
#include "gpio_actions.h"

namespace kestrelctl {
namespace {

/// What was typed after a gpio command; each command has the options that it needs.
struct GpioArguments : CommonArguments {
  std::vector<std::string> lines;
  std::string drive = "push-pull";
  std::string hold = "0";
  std::string interval = "20";
};

using GpioCommand = FamilyCommand<GpioArguments>;

void AddLines(const GpioCommand& command, const char* form, const char* description) {
  command.app->add_option(form, command.arguments.lines, description)->required()->type_name("");
}

void AddGet(CLI::App& gpio, Action& action) {
  const Prepare<GpioArguments> prepare = [](const GpioArguments& arguments) -> Action {
    return [lines = ParseLines(arguments.lines), format = arguments.format()] {
      return GetLines(lines, format);
    };
  };
  const GpioCommand get = AddCommand(gpio, "get", "Open lines as inputs and print their levels",
                                     "  kestrelctl gpio get 3\n"
                                     "  kestrelctl gpio get 3 4 --json",
                                     prepare, action);
  AddLines(get, "LINE", "Line numbers, from 0");
}

void AddSet(CLI::App& gpio, Action& action) {
  const Prepare<GpioArguments> prepare = [](const GpioArguments& arguments) -> Action {
    const Setting setting{ParseAssignments(arguments.lines), ParseDrive(arguments.drive),
                          ParseSeconds(arguments.hold, "hold")};
    return [setting, format = arguments.format()] { return SetLines(setting, format); };
  };
  const GpioCommand set = AddCommand(gpio, "set", "Open lines as outputs and drive them",
                                     "  kestrelctl gpio set 4=high 5=0\n"
                                     "  kestrelctl gpio set 4=low --drive open-drain --hold 2.5",
                                     prepare, action);
  AddLines(set, "LINE=LEVEL", "Levels are 0, 1, low and high");
  set.app
      ->add_option("--drive", set.arguments.drive, "push-pull (default), open-drain or open-source")
      ->type_name("MODE");
  set.app->add_option("--hold", set.arguments.hold, "Keep the lines so long before releasing them")
      ->type_name("SECONDS");
}

void AddWatch(CLI::App& gpio, Action& action) {
  const Prepare<GpioArguments> prepare = [](const GpioArguments& arguments) -> Action {
    return [lines = ParseLines(arguments.lines), interval = ParseInterval(arguments.interval),
            format = arguments.format()] { return WatchLines(lines, interval, format); };
  };
  const GpioCommand watch =
      AddCommand(gpio, "watch", "Print the levels of inputs and each change of them",
                 "  kestrelctl gpio watch 3\n"
                 "  kestrelctl gpio watch 3 4 --interval 100 --json",
                 prepare, action);
  AddLines(watch, "LINE", "Line numbers, from 0");
  watch.app
      ->add_option("--interval", watch.arguments.interval,
                   "Time from one reading to the next (default 20)")
      ->type_name("MS");
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
