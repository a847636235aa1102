// SPDX-License-Identifier: Apache-2.0
#include "on_board.h"

#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

namespace kestrel::test {
namespace {

Words Joined(Words left, const Words& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Words KestrelctlCommand(const Words& arguments) { return Joined({KESTRELCTL}, arguments); }

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

BoardFolder::~BoardFolder() { EXPECT_TRUE(folder_.IsEmpty()) << "a board left something behind"; }

Words BoardFolder::Board(const Words& arguments) const {
  return Joined({"KESTREL_BOARD_DIR=" + folder_.path(), KESTREL_BOARD}, arguments);
}

ProgramResult RunOnBoard(const Words& program, const Words& faults) {
  const BoardFolder folder;
  Words command = {"run"};
  for (const std::string& fault : faults) {
    command = Joined(command, {"--fault", fault});
  }
  return RunProgram(folder.Board(Joined(Joined(command, {"--"}), program)));
}

ProgramResult Kestrelctl(const Words& arguments, const Words& faults) {
  return RunOnBoard(KestrelctlCommand(arguments), faults);
}

SharedBoard::SharedBoard(const Words& options) { Board(Joined({"start", "shared"}, options)); }

SharedBoard::~SharedBoard() { Board({"stop", "shared"}); }

std::string SharedBoard::Board(const Words& arguments) const {
  const ProgramResult result = RunProgram(folder_.Board(arguments));
  EXPECT_EQ(result.status, 0) << result.standard_error;
  return result.standard_output;
}

Words SharedBoard::Exec(const Words& program) const {
  return folder_.Board(Joined({"exec", "shared", "--"}, program));
}

ProgramResult SharedBoard::Kestrelctl(const Words& arguments) const {
  return RunProgram(Exec(KestrelctlCommand(arguments)));
}

void SharedBoard::Count(const std::string& call) const {
  // A fault that is too far away to come.
  Board({"fault", call + "=EIO@1000000"});
}

void SharedBoard::WaitForCalls(int count) const {
  const auto calls = [this]() -> int {
    return nlohmann::json::parse(Board({"fault", "--json"})).at("faults").at(0).at("calls");
  };
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (calls() < count && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_GE(calls(), count);
}

void SharedBoard::Drive(int line, const std::string& level) const {
  Board({"line", std::to_string(line), level});
}

std::string SharedBoard::LevelOf(int line) const { return Board({"line", std::to_string(line)}); }

}  // namespace kestrel::test
