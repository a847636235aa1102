// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_TOOLS_WIFI_BOARD_H
#define KESTREL_TESTS_TOOLS_WIFI_BOARD_H

#include <string>

#include "on_board.h"

namespace kestrel::test {

/// The configuration of a board that keeps its networks beside it, and not beyond the test.
class WifiConfigFile {
 public:
  /// `config` has a [wifi] table; by default it is that of wifi.toml.
  explicit WifiConfigFile(const std::string& config);

  std::string path() const { return folder_.path() + "/wifi.toml"; }

 private:
  TemporaryDirectory folder_;
};

/// A board with a Wi-Fi daemon that hears the access points of wifi.toml, or is as configured.
class WifiBoard : private WifiConfigFile, public SharedBoard {
 public:
  explicit WifiBoard(const std::string& config = "")
      : WifiConfigFile(config), SharedBoard({"--config", path()}) {}

  /// The command `kestrelctl wifi ARGUMENT…` on this board, in the C locale or in that of UTF-8.
  Words Wifi(const Words& arguments, const std::string& locale = "C") const;
  ProgramResult Run(const Words& arguments) const { return RunProgram(Wifi(arguments)); }
  /// Runs a shell line in which "$0" is kestrelctl.
  ProgramResult RunShell(const std::string& line) const;

  /// Makes the daemon reply by the rules of a script.
  void Script(const std::string& rules) const;
  /// The commands that the daemon has got, one a line.
  std::string Commands() const;
  /// Whether the daemon gets that command.
  bool WaitForCommand(const std::string& command) const;
  /// Whether the daemon comes to be in that state, such as COMPLETED.
  bool WaitForState(const std::string& state) const;
};

/// A rule of a script, in which `reply` is as TOML writes it.
std::string Rule(const std::string& command, const std::string& reply);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_TOOLS_WIFI_BOARD_H
