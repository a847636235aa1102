// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_CLI_BOARD_OPTIONS_H
#define KESTREL_BOARD_CLI_BOARD_OPTIONS_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/event_loop.h"
#include "server/board.h"

namespace CLI {
class App;
}

namespace kestrel::board {

/// What `run` and `start` say about the board that they are to make.
struct BoardOptions {
  std::optional<std::string> config;
  std::vector<std::string> faults;
  /// The values of the devices' own options, by their names.
  std::map<std::string, std::string> of_devices;

  void AddTo(CLI::App& command);

  /// Throws UsageError, with file, line and reason where the configuration is at fault.
  std::unique_ptr<Board> MakeBoard(const std::string& name, const BoardPlace& place,
                                   EventLoop& loop) const;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_CLI_BOARD_OPTIONS_H
