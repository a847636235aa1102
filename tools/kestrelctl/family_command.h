// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TOOLS_KESTRELCTL_FAMILY_COMMAND_H
#define KESTREL_TOOLS_KESTRELCTL_FAMILY_COMMAND_H

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "command_groups.h"
#include "library_diagnostics.h"
#include "output.h"

namespace kestrelctl {

/// What can be typed after each command that AddCommand adds; a family's arguments derive from it.
struct CommonArguments {
  bool json = false;
  bool verbose = false;

  Format format() const { return json ? Format::kJson : Format::kText; }
};

/// A command to which the options of its own are yet to be added.
template <typename Arguments>
struct FamilyCommand {
  CLI::App* app;
  Arguments& arguments;  ///< kept by the callback of `app`
};

/// Checks the arguments and returns what does as they say.
template <typename Arguments>
using Prepare = Action (*)(const Arguments& arguments);

/// Adds a command that sets `action` to what `prepare` makes of its arguments.
template <typename Arguments>
FamilyCommand<Arguments> AddCommand(CLI::App& family, const char* name, const char* description,
                                    const char* footer, Prepare<Arguments> prepare,
                                    Action& action) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* const command = family.add_subcommand(name, description);
  command->footer(std::string("Examples:\n") + footer);
  command->add_flag("--json", arguments->json, "Print JSON");
  command->add_flag("-v,--verbose", arguments->verbose, "Show the library's own diagnostics, too");
  command->callback([arguments, prepare, &action] {
    ShowLibraryDiagnostics(arguments->verbose);
    action = prepare(*arguments);
  });
  return {command, *arguments};
}

}  // namespace kestrelctl

#endif  // KESTREL_TOOLS_KESTRELCTL_FAMILY_COMMAND_H
