// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CLI_COMMAND_CONTEXT_H
#define KESTREL_BOARD_CLI_COMMAND_CONTEXT_H

#include <functional>
#include <iosfwd>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <utility>

#include "host/unique_fd.h"

namespace CLI {
class App;
}

namespace kestrel::board {

/// What commands that talk to a running board have in common: which board, and how to print.
class CommandContext {
 public:
  CommandContext();

  /// Adds --board and --json to a command.
  void AddBoardOption(CLI::App& command) const;
  void AddJsonOption(CLI::App& command) const;

  /// Sends a request to the board that was named, or the one that this process runs on, or the only
  /// one that runs, and returns its answer. Throws BoardError.
  nlohmann::json Ask(const nlohmann::json& request) const;

  /// The same for a request that a descriptor comes along with.
  UniqueFd Attach(const nlohmann::json& request) const;

  /// The same as Ask to a board by name.
  static nlohmann::json AskBoard(const std::string& name, const nlohmann::json& request);

  /// Prints `result` as JSON with --json, and otherwise what `print` makes of it.
  void Print(const nlohmann::json& result,
             const std::function<void(std::ostream& out)>& print) const;

 private:
  /// The socket and the name of the board that the requests go to.
  std::pair<std::string, std::string> ChosenBoard() const;

  struct Options {
    std::string board;
    bool json = false;
  };
  // Shared with the command line parser, which fills them in.
  std::shared_ptr<Options> options_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CLI_COMMAND_CONTEXT_H
