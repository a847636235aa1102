// SPDX-License-Identifier: Apache-2.0
#include "wifi_board.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace kestrel::test {

using nlohmann::json;

WifiConfigFile::WifiConfigFile(const std::string& config) {
  std::string text = config;
  if (config.empty()) {
    std::ifstream file(WIFI_BOARD_CONFIG);
    text.assign(std::istreambuf_iterator<char>(file), {});
  }
  const std::string table = "[wifi]\n";
  text.insert(text.find(table) + table.size(),
              "networks-file = \"" + folder_.path() + "/networks.json\"\n");
  folder_.Write("wifi.toml", text);
}

Words WifiBoard::Wifi(const Words& arguments, const std::string& locale) const {
  Words command = {"sh", "-c", R"(export LC_ALL="$0"; exec "$@")", locale, KESTRELCTL, "wifi"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Exec(command);
}

ProgramResult WifiBoard::RunShell(const std::string& line) const {
  return RunProgram(Exec({"bash", "-c", line, KESTRELCTL}));
}

void WifiBoard::Script(const std::string& rules) const {
  const TemporaryDirectory folder;
  Board({"wifi", "--script", folder.Write("script.toml", rules)});
}

std::string WifiBoard::Commands() const {
  std::string commands;
  const json state = json::parse(Board({"wifi", "--json"}));
  for (const json& entry : state.at("commands")) {
    commands += entry.at("command").get<std::string>() + "\n";
  }
  return commands;
}

bool WifiBoard::WaitForCommand(const std::string& command) const {
  return ComesTrue([&] { return Commands().find(command + "\n") != std::string::npos; });
}

bool WifiBoard::WaitForState(const std::string& state) const {
  return ComesTrue([&] { return json::parse(Board({"wifi", "--json"})).at("state") == state; });
}

std::string Rule(const std::string& command, const std::string& reply) {
  return "[[rule]]\ncommand = \"" + command + "\"\nreply = \"" + reply + "\"\n";
}

}  // namespace kestrel::test
