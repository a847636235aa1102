// SPDX-License-Identifier: Apache-2.0
#include "cli/board_options.h"

#include <CLI/CLI.hpp>

#include "config/config_file.h"
#include "devices/device.h"
#include "host/error.h"

namespace kestrel::board {
namespace {

std::unique_ptr<Board> MakeConfiguredBoard(const std::string& name, const BoardPlace& place,
                                           const std::string& path, EventLoop& loop) {
  try {
    const ConfigNode config = LoadConfigFile(path);
    return std::make_unique<Board>(name, place, &config, loop);
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
  for (const DeviceKind& kind : DeviceKinds()) {
    for (const BoardOption& option : kind.options) {
      command.add_option(option.name, of_devices[option.name], option.help)
          ->type_name(option.value);
    }
  }
}

std::unique_ptr<Board> BoardOptions::MakeBoard(const std::string& name, const BoardPlace& place,
                                               EventLoop& loop) const {
  std::unique_ptr<Board> board = config.has_value()
                                     ? MakeConfiguredBoard(name, place, *config, loop)
                                     : std::make_unique<Board>(name, place, nullptr, loop);
  for (const std::string& fault : faults) {
    board->AddFault(fault);
  }
  for (const DeviceKind& kind : DeviceKinds()) {
    for (const BoardOption& option : kind.options) {
      const std::string& value = of_devices.at(option.name);
      if (!value.empty()) {
        board->Control(option.request(value));
      }
    }
  }
  return board;
}

}  // namespace kestrel::board
