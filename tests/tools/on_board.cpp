// SPDX-License-Identifier: Apache-2.0
#include "on_board.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrel::test {
namespace {

Words Joined(Words left, const Words& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Words KestrelctlCommand(const Words& arguments) { return Joined({KESTRELCTL}, arguments); }

std::string UniqueName() {
  static int count = 0;
  return "tools-" + std::to_string(getpid()) + "-" + std::to_string(++count);
}

}  // namespace

void PrintTo(const ProgramResult& result, std::ostream* stream) {
  *stream << "status " << result.status << ", stdout \"" << result.standard_output
          << "\", stderr \"" << result.standard_error << '"';
}

testing::Matcher<const ProgramResult&> Ends(int status, const std::string& output,
                                            const std::string& error) {
  return testing::AllOf(testing::Field("status", &ProgramResult::status, status),
                        testing::Field("standard_output", &ProgramResult::standard_output, output),
                        testing::Field("standard_error", &ProgramResult::standard_error, error));
}

Words OnBoard(const Words& program, const Words& faults) {
  Words command = {KESTREL_BOARD, "run"};
  for (const std::string& fault : faults) {
    command = Joined(command, {"--fault", fault});
  }
  return Joined(Joined(command, {"--"}), program);
}

ProgramResult Kestrelctl(const Words& arguments, const Words& faults) {
  return RunProgram(OnBoard(KestrelctlCommand(arguments), faults));
}

SharedBoard::SharedBoard() : name_(UniqueName()) {
  EXPECT_EQ(RunProgram({KESTREL_BOARD, "start", name_}).status, 0);
}

SharedBoard::~SharedBoard() { EXPECT_EQ(RunProgram({KESTREL_BOARD, "stop", name_}).status, 0); }

Words SharedBoard::Exec(const Words& program) const {
  return Joined({KESTREL_BOARD, "exec", name_, "--"}, program);
}

ProgramResult SharedBoard::Kestrelctl(const Words& arguments) const {
  return RunProgram(Exec(KestrelctlCommand(arguments)));
}

void SharedBoard::Drive(int line, const std::string& level) const {
  const Words command = {KESTREL_BOARD, "line", std::to_string(line), level, "--board", name_};
  EXPECT_EQ(RunProgram(command).status, 0);
}

std::string SharedBoard::LevelOf(int line) const {
  const Words command = {KESTREL_BOARD, "line", std::to_string(line), "--board", name_};
  return RunProgram(command).standard_output;
}

}  // namespace kestrel::test
