// SPDX-License-Identifier: Apache-2.0
#include <kestrel/log.h>

#include <memory>
#include <string>

#include "command_groups.h"
#include "failure.h"

namespace kestrelctl {
namespace {

int WriteLog(const std::string& text) {
  return Log_Debug("%s\n", text.c_str()) == 0 ? kDone : ReportFailure("log");
}

}  // namespace

void AddLogCommands(CLI::App& program, Action& action) {
  const auto text = std::make_shared<std::string>();
  CLI::App* const command =
      program.add_subcommand("log", "Write a line of debug text to standard error");
  command->footer("Examples:\n  kestrelctl log \"door opened\"\n  kestrelctl log -- --dashes--");
  command->add_option("TEXT", *text, "One argument: quote text of several words")
      ->required()
      ->type_name("");
  command->callback([text, &action] { action = [text] { return WriteLog(*text); }; });
}

}  // namespace kestrelctl
