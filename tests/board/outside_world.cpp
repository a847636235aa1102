// SPDX-License-Identifier: Apache-2.0
#include "outside_world.h"

#include <stdexcept>
#include <vector>

#include "support/run_program.h"

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

void AddFault(const std::string& fault) { Ask({"fault", fault}); }

void ClearFaults() { Ask({"fault", "--clear"}); }

}  // namespace kestrel::test
