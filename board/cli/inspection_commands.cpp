// SPDX-License-Identifier: Apache-2.0
// list, show and fault: what boards there are, what state they are in, what is to fail.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/command_context.h"
#include "cli/commands.h"
#include "devices/device.h"
#include "host/board_directory.h"
#include "host/error.h"

namespace kestrel::board {
namespace {

using nlohmann::json;

void PrintFaults(const json& faults, std::ostream& out) {
  for (const json& fault : faults) {
    const int calls = fault.at("calls").get<int>();
    out << "fault: " << fault.at("fault").get<std::string>() << ", " << calls << " such call"
        << (calls == 1 ? "" : "s") << " so far\n";
  }
}

void AddListCommand(CLI::App& app, const CommandContext& context) {
  CLI::App* command = app.add_subcommand("list", "List the boards that are running");
  context.AddJsonOption(*command);
  command->callback([&context] {
    const std::vector<std::string> running = RunningBoards();
    context.Print({{"boards", running}}, [&](std::ostream& out) {
      for (const std::string& name : running) {
        out << name << '\n';
      }
    });
  });
}

void AddShowCommand(CLI::App& app, const CommandContext& context) {
  CLI::App* command = app.add_subcommand("show", "Show the state of a running board");
  context.AddBoardOption(*command);
  command->callback([&context] {
    const json state = context.Ask({{"show", true}});
    context.Print(state, [&](std::ostream& out) {
      out << "board: " << state.at("board").get<std::string>() << '\n';
      for (const DeviceKind& kind : DeviceKinds()) {
        kind.print(state.at(kind.name), out);
      }
      PrintFaults(state.at("faults"), out);
    });
  });
}

struct FaultOptions {
  std::vector<std::string> add;
  bool clear = false;
};

void AddFaultCommand(CLI::App& app, const CommandContext& context) {
  auto options = std::make_shared<FaultOptions>();
  CLI::App* command =
      app.add_subcommand("fault", "Let calls on a running board fail, or list what is to fail");
  command->add_option("FAULT", options->add,
                      "CALL[:WHAT]=ERRNO[@N], such as open:/dev/gpiochip0=EACCES");
  command->add_flag("--clear", options->clear, "take all faults away first");
  context.AddBoardOption(*command);
  command->callback([options, &context] {
    const json change = {{"add", options->add}, {"clear", options->clear}};
    const json result = context.Ask({{"fault", change}});
    context.Print(result, [&](std::ostream& out) { PrintFaults(result.at("faults"), out); });
  });
}

}  // namespace

void AddInspectionCommands(CLI::App& app, const CommandContext& context) {
  AddListCommand(app, context);
  AddShowCommand(app, context);
  AddFaultCommand(app, context);
}

}  // namespace kestrel::board
