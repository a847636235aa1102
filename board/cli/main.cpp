// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "cli/command_context.h"
#include "cli/commands.h"
#include "cli/program_arguments.h"
#include "devices/device.h"
#include "host/error.h"
#include "host/text.h"

namespace {

using kestrel::board::BoardError;
using kestrel::board::CommandContext;
using kestrel::board::DeviceKind;
using kestrel::board::Join;
using kestrel::board::ProgramArguments;
using kestrel::board::UsageError;

constexpr int kUsageStatus = 2;

constexpr char kExamples[] = R"(Examples:
  kestrel-board run ./my-program           run a program on a board of its own
  kestrel-board run --fault open=EACCES -- kestrelctl gpio get 4
  kestrel-board start bench --config bench.toml
  kestrel-board exec bench -- kestrelctl gpio set 4=high --hold 60 &
  kestrel-board line 4                     what level has line 4?
  kestrel-board line 7 high                drive line 7 from outside
  kestrel-board uart 0                     talk to a program over its /dev/ttyS0
  kestrel-board wifi add Attic --passphrase "up and up" --signal -71
  kestrel-board show --json | jq .gpio
  kestrel-board stop bench)";

/// Names the commands when the one that was given is none of them.
void CheckCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments.front()[0] == '-') {
    return;
  }
  std::vector<std::string> known;
  for (const CLI::App* command : app.get_subcommands(nullptr)) {
    known.push_back(command->get_name());
  }
  if (std::find(known.begin(), known.end(), arguments.front()) == known.end()) {
    throw UsageError("there is no command '" + arguments.front() + "' (known: " + Join(known) +
                     ")");
  }
}

/// Where a standard stream is closed, a socket of the board's would get its number, and what is
/// meant for a person would go there. The program that is run still finds the stream closed.
void OccupyStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) {
      open("/dev/null", O_RDWR | O_CLOEXEC);
    }
  }
}

int Report(const std::string& reason, int status) {
  kestrel::board::PrintDiagnostic(reason);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  CLI::App app("A device without the device: runs programs that use libkestrel on any machine.",
               "kestrel-board");
  int exit_status = 0;
  const CommandContext context;
  ProgramArguments programs;
  app.set_version_flag("--version", "kestrel-board " KESTREL_VERSION);
  app.require_subcommand(1);
  app.footer(kExamples);
  kestrel::board::AddRunCommand(app, programs, exit_status);
  kestrel::board::AddSharedBoardCommands(app, programs, context);
  kestrel::board::AddInspectionCommands(app, context);
  for (const DeviceKind& kind : kestrel::board::DeviceKinds()) {
    kind.add_commands(app, context);
  }
  try {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    CheckCommand(app, arguments);
    programs.Cut(arguments);
    // The parser takes them last first.
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
    return exit_status;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      app.exit(error);
      return std::cout.flush() ? 0 : Report("standard output cannot be written", 1);
    }
    return Report(std::string(error.what()) + " (see kestrel-board --help)", kUsageStatus);
  } catch (const BoardError& error) {
    return Report(error.what(), error.status());
  } catch (const std::exception& error) {
    return Report(error.what(), 1);
  }
}
