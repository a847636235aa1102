// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_BOARD_COMMAND_H
#define KESTREL_TESTS_BOARD_BOARD_COMMAND_H

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace kestrel::test {

inline const std::string kProbe = KESTREL_BOARD_PROBE;

/// Runs kestrel-board with boards that lie in a folder of the test's own.
class BoardCommand : public testing::Test {
 protected:
  /// Boards that a test leaves running are stopped, so that none outlives it.
  ~BoardCommand() override {
    for (const std::string& name : started_) {
      Board({"stop", name});
    }
    EXPECT_TRUE(folder_.IsEmpty()) << "a board left something behind";
  }

  std::vector<std::string> Arguments(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), KESTREL_BOARD_PROGRAM);
    return arguments;
  }

  ProgramResult Board(const std::vector<std::string>& arguments) const {
    return RunProgram(Arguments(arguments), environment_);
  }

  ProgramResult Start(const std::string& name, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"start", name});
    ProgramResult result = Board(options);
    if (result.status == 0) {
      started_.push_back(name);
    }
    return result;
  }

  /// The process of a board that is running.
  pid_t ProcessOf(const std::string& name) const {
    pid_t board = 0;
    std::ifstream(folder_.path() + "/" + name + "/lock") >> board;
    EXPECT_GT(board, 1);
    return board;
  }

  /// Expects one line on standard error, nothing on standard output, and exit status 2.
  void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& line) const {
    const ProgramResult result = Board(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standard_output, "");
    EXPECT_EQ(result.standard_error, "kestrel-board: " + line + "\n");
  }

  const TemporaryDirectory folder_;
  const Environment environment_ = {{"KESTREL_BOARD_DIR", folder_.path()}};
  std::vector<std::string> started_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_BOARD_COMMAND_H
