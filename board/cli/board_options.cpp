// SPDX-License-Identifier: Apache-2.0
#include "cli/board_options.h"

#include <CLI/CLI.hpp>

#include "config/config_file.h"
#include "host/error.h"

namespace kestrel::board {
namespace {

std::unique_ptr<Board> MakeConfiguredBoard(const std::string& name, const std::string& path,
                                           EventLoop& loop) {
  try {
    const ConfigNode config = LoadConfigFile(path);
    return std::make_unique<Board>(name, &config, loop);
  } catch (const ConfigError& error) {
    throw UsageError(path + ":" + std::to_string(error.line()) + ": " + error.what());
  }
}

}  // namespace

void BoardOptions::AddTo(CLI::App& command) {
  command.add_option("--config", config, "what the board is like, a *.toml or *.json file")
      ->type_name("FILE");
  command
      .add_option("--fault", faults,
                  "let a call fail: CALL[:WHAT]=ERRNO[@N], such as open:/dev/gpiochip0=EACCES or "
                  "ioctl:GPIO_GET_CHIPINFO_IOCTL=EIO@2; every such call without @N")
      ->type_name("FAULT")
      ->expected(1)
      ->take_all();
}

std::unique_ptr<Board> BoardOptions::MakeBoard(const std::string& name, EventLoop& loop) const {
  std::unique_ptr<Board> board = config.has_value() ? MakeConfiguredBoard(name, *config, loop)
                                                    : std::make_unique<Board>(name, nullptr, loop);
  for (const std::string& fault : faults) {
    board->AddFault(fault);
  }
  return board;
}

}  // namespace kestrel::board
