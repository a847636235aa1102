// SPDX-License-Identifier: Apache-2.0
#include "cli/program_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/error.h"

namespace kestrel::board {
namespace {

bool IsOption(const std::string& argument) { return argument.size() > 1 && argument[0] == '-'; }

/// Whether the argument after this option is the option's value.
bool TakesNextArgument(const CLI::App& command, const std::string& option) {
  const CLI::Option* known = command.get_option_no_throw(option);
  return known != nullptr && known->get_items_expected_max() > 0;
}

bool AsksForHelp(const std::string& argument) { return argument == "--help" || argument == "-h"; }

/// The index in `arguments` at which the program, or the "--" before it, begins.
size_t FindProgram(const CLI::App& command, int positionals,
                   const std::vector<std::string>& arguments) {
  size_t index = 1;
  for (; index < arguments.size() && arguments[index] != "--"; ++index) {
    if (IsOption(arguments[index])) {
      index += TakesNextArgument(command, arguments[index]) ? 1 : 0;
    } else if (positionals-- == 0) {
      break;
    }
  }
  return std::min(index, arguments.size());
}

}  // namespace

ProgramArguments::Program ProgramArguments::Expect(const CLI::App& command, int positionals) {
  auto program = std::make_shared<std::vector<std::string>>();
  entries_.push_back({&command, positionals, program});
  return program;
}

void ProgramArguments::Cut(std::vector<std::string>& arguments) const {
  for (const Entry& entry : entries_) {
    if (arguments.empty() || arguments.front() != entry.command->get_name()) {
      continue;
    }
    const auto begin = arguments.begin() + static_cast<std::ptrdiff_t>(FindProgram(
                                               *entry.command, entry.positionals, arguments));
    const bool separated = begin != arguments.end() && *begin == "--";
    entry.program->assign(begin + (separated ? 1 : 0), arguments.end());
    arguments.erase(begin, arguments.end());
    if (entry.program->empty() && std::none_of(arguments.begin(), arguments.end(), AsksForHelp)) {
      throw UsageError(entry.command->get_name() +
                       ": which program? Give PROGRAM [ARG...] after the options");
    }
  }
}

}  // namespace kestrel::board
