// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CLI_PROGRAM_ARGUMENTS_H
#define KESTREL_BOARD_CLI_PROGRAM_ARGUMENTS_H

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kestrel::board {

/// Keeps the program at the end of a command line, and its options, from the parser: everything
/// after the command's own options and arguments is the program's, with or without "--" between.
class ProgramArguments {
 public:
  using Program = std::shared_ptr<const std::vector<std::string>>;

  /// Says that `command` takes a program behind `positionals` arguments of its own. The program is
  /// filled in by Cut.
  Program Expect(const CLI::App& command, int positionals);

  /// Takes the program off the end of the arguments (without the name of this one). Throws
  /// UsageError when a command that takes a program got none.
  void Cut(std::vector<std::string>& arguments) const;

 private:
  struct Entry {
    const CLI::App* command;
    int positionals;
    std::shared_ptr<std::vector<std::string>> program;
  };

  std::vector<Entry> entries_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CLI_PROGRAM_ARGUMENTS_H
