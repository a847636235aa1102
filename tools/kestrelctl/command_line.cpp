// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include <sstream>
#include <string>
#include <vector>

#include "command_groups.h"
#include "failure.h"
#include "output.h"

namespace kestrelctl {
namespace {

constexpr void (*kCommandGroups[])(CLI::App&, Action&) = {
    AddGpioCommands, AddUartCommands,          AddNetworkingCommands,
    AddWifiCommands, AddManufacturingCommands, AddLogCommands,
};

constexpr char kFooter[] =
    "Examples:\n"
    "  kestrelctl gpio get 3 4           read two lines\n"
    "  kestrelctl gpio set 4=high        drive a line\n"
    "  kestrelctl gpio watch 3           follow a line until Ctrl-C\n"
    "  kestrelctl uart 0                 talk over a serial port, Ctrl-] leaves\n"
    "  kestrelctl network --wait 30      wait until networking is ready\n"
    "  kestrelctl wifi scan --wait       look for Wi-Fi networks\n"
    "  kestrelctl device-id              print the device's identifier\n"
    "  kestrelctl log \"door opened\"      write debug text\n"
    "\n"
    "Exit status: 0 done, 1 the operation failed, 2 the arguments are wrong;\n"
    "of 'network' 0 ready, 1 not ready, 3 there is no answer;\n"
    "of 'wifi current' 0 connected, 1 not connected, 3 there is no answer.";

/// The command that the arguments reached, the program itself included.
const CLI::App& DeepestCommand(const CLI::App& program) {
  const CLI::App* command = &program;
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
  }
  return *command;
}

std::string FullName(const CLI::App& command) {
  const CLI::App* const parent = command.get_parent();
  return parent == nullptr ? command.get_name() : FullName(*parent) + " " + command.get_name();
}

/// "gpio or log"
std::string CommandsOf(const CLI::App& command) {
  std::string names;
  const std::vector<const CLI::App*> commands = command.get_subcommands({});
  for (const CLI::App* const known : commands) {
    const bool is_last = known == commands.back();
    names += names.empty() ? "" : is_last ? " or " : ", ";
    names += known->get_name();
  }
  return names;
}

/// What is wrong and what would have been right. The messages of arguments.cpp say both already.
std::string UsageError(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ValidationError)) {
    return error.what();
  }
  const CLI::App& command = DeepestCommand(program);
  const std::string commands = CommandsOf(command);
  const std::string problem = commands.empty() ? error.what() : "give a command: " + commands;
  return problem + "; see '" + FullName(command) + " --help'";
}

int AnswerParseError(const CLI::App& program, const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    std::ostringstream text;
    program.exit(error, text);
    return Print(text.str()) ? kDone : kFailed;
  }
  return ReportUsageError(UsageError(program, error));
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
  Action action;
  CLI::App program("Reaches the device's peripherals through libkestrel.", "kestrelctl");
  program.footer(kFooter);
  program.set_version_flag("--version", "kestrelctl " KESTREL_VERSION);
  program.require_subcommand(1);
  for (const auto add_group : kCommandGroups) {
    add_group(program, action);
  }
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return AnswerParseError(program, error);
  }
  return action();
}

}  // namespace kestrelctl
