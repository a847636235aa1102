// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_TOOLS_ON_BOARD_H
#define KESTREL_TESTS_TOOLS_ON_BOARD_H

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace kestrel::test {

using Words = std::vector<std::string>;

void PrintTo(const ProgramResult& result, std::ostream* stream);

/// The program ended with `status` after printing exactly `output` and `error`.
testing::Matcher<const ProgramResult&> Ends(int status, const std::string& output,
                                            const std::string& error);

/// Asks again and again whether a condition holds; false when 20 seconds pass first.
template <typename Condition>
bool ComesTrue(const Condition& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

/// Where the boards of a test lie, apart from those of the user. They must leave nothing in it.
class BoardFolder {
 public:
  BoardFolder() = default;
  ~BoardFolder();
  BoardFolder(const BoardFolder&) = delete;
  BoardFolder& operator=(const BoardFolder&) = delete;

  /// The command `kestrel-board ARGUMENT…` for a board in this folder.
  Words Board(const Words& arguments) const;

 private:
  TemporaryDirectory folder_;
};

/// Runs `program` on a board of its own, with the given faults.
ProgramResult RunOnBoard(const Words& program, const Words& faults = {});

/// Runs `kestrelctl ARGUMENT…` on a board of its own, with the given faults.
ProgramResult Kestrelctl(const Words& arguments, const Words& faults = {});

/// A board that several programs share, stopped at the end of the scope.
class SharedBoard {
 public:
  /// `options` are those of `kestrel-board start`.
  explicit SharedBoard(const Words& options = {});
  ~SharedBoard();
  SharedBoard(const SharedBoard&) = delete;
  SharedBoard& operator=(const SharedBoard&) = delete;

  /// Runs `kestrel-board ARGUMENT…`, which must succeed, and returns what it prints.
  std::string Board(const Words& arguments) const;

  /// The command that runs `program` on this board.
  Words Exec(const Words& program) const;
  ProgramResult Kestrelctl(const Words& arguments) const;

  /// Counts `call`, named as `kestrel-board fault` does, from here on.
  void Count(const std::string& call) const;

  /// Waits until the counted call was made `count` times, and expects that to come true.
  void WaitForCalls(int count) const;

  /// Drives a line from outside, or tells its level.
  void Drive(int line, const std::string& level) const;
  std::string LevelOf(int line) const;

 private:
  BoardFolder folder_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_TOOLS_ON_BOARD_H
