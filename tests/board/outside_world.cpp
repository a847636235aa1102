// SPDX-License-Identifier: Apache-2.0
#include "outside_world.h"

#include <stdexcept>
#include <vector>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

std::string Ask(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), KESTREL_BOARD_PROGRAM);
  const ProgramResult result = RunProgram(arguments);
  if (result.status != 0) {
    throw std::runtime_error(result.standard_error);
  }
  return result.standard_output.substr(0, result.standard_output.find('\n'));
}

}  // namespace

void DriveFromOutside(int line, const std::string& level) {
  Ask({"line", std::to_string(line), level});
}

std::string LevelSeenOutside(int line) { return Ask({"line", std::to_string(line)}); }

std::string PortOutside(int number) {
  const std::string state = RunProgram({KESTREL_BOARD_PROGRAM, "show"}).standard_output;
  const size_t begin = state.find("/dev/ttyS" + std::to_string(number) + " ");
  return begin == std::string::npos ? "" : state.substr(begin, state.find('\n', begin) - begin);
}

void ForgetSettings(int port, const std::string& setting) {
  Ask({"uart", std::to_string(port), "--forget", setting});
}

void KeepAllSettings(int port) { Ask({"uart", std::to_string(port), "--keep-all"}); }

void LetWifiDaemonReply(const std::string& rules) {
  const TemporaryDirectory folder;
  Ask({"wifi", "--script", folder.Write("script.toml", rules)});
}

uint64_t WifiCommandsOf(pid_t process) {
  const std::string state = RunProgram({KESTREL_BOARD_PROGRAM, "wifi"}).standard_output;
  const std::string client = "  client " + std::to_string(process) + ", ";
  const size_t begin = state.find(client);
  return begin == std::string::npos ? 0 : std::stoull(state.substr(begin + client.size()));
}

void AddFault(const std::string& fault) { Ask({"fault", fault}); }

void ClearFaults() { Ask({"fault", "--clear"}); }

}  // namespace kestrel::test
