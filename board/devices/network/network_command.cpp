// SPDX-License-Identifier: Apache-2.0
#include "devices/network/network_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/command_context.h"
#include "host/text.h"

namespace kestrel::board::network {

using nlohmann::json;

void PrintState(const json& state, std::ostream& out) {
  out << "network: " << state.at("file").get<std::string>() << ", "
      << state.at("state").get<std::string>();
  if (state.contains("bytes")) {
    const auto bytes = state.at("bytes").get<std::string>();
    out << (bytes.empty() ? ", empty" : ", bytes " + bytes);
  }
  out << '\n';
}

void AddNetworkCommand(CLI::App& app, const CommandContext& context) {
  auto words = std::make_shared<std::vector<std::string>>();
  CLI::App* command =
      app.add_subcommand("network", "Read or set whether networking of a running board is ready");
  command->add_option("STATUS", *words,
                      "ready, down, absent (no status file), or bytes HEX for any content of the "
                      "file; without it the state is printed");
  context.AddBoardOption(*command);
  command->callback([words, &context] {
    json request = {{"device", kDeviceName}};
    if (!words->empty()) {
      request["status"] = Join(*words, " ");
    }
    const json state = context.Ask(request);
    context.Print(state,
                  [&](std::ostream& out) { out << state.at("state").get<std::string>() << '\n'; });
  });
}

}  // namespace kestrel::board::network
