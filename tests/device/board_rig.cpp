// SPDX-License-Identifier: Apache-2.0
// The board is told by its own command what happens to it.
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

#include "rigs.h"
#include "support/in_child.h"
#include "support/run_program.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

std::string Tell(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), KESTREL_BOARD_PROGRAM);
  const ProgramResult result = RunProgram(arguments);
  if (result.status != 0) {
    throw std::runtime_error(result.standard_error);
  }
  return result.standard_output;
}

class BoardRig : public Rig {
 public:
  bool HasRealParts() const override { return false; }

  void DriveLine(int line, GpioLevel level) override {
    Tell({"line", std::to_string(line), level == GpioLevel_High ? "high" : "low"});
  }

  LineOutside LookAtLine(int line) override {
    const json state = json::parse(Tell({"line", std::to_string(line), "--json"}));
    return {state.at("level"), state.at("direction"), state.value("drive", "")};
  }

  int AsUserWhoMayNotOpen(const std::string& path, const std::function<int()>& body) override {
    Tell({"fault", "open:" + path + "=EACCES"});
    const int result = InChild(body);
    Tell({"fault", "--clear"});
    return result;
  }
};

}  // namespace

std::unique_ptr<Rig> MakeBoardRig() { return std::make_unique<BoardRig>(); }

}  // namespace kestrel::test
