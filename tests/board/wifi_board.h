// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_WIFI_BOARD_H
#define KESTREL_TESTS_BOARD_WIFI_BOARD_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "board_command.h"
#include "wifi_client.h"

namespace kestrel::test {

/// A board named "bench" whose daemon tests talk to directly, without the preloaded object.
class WifiBoard : public BoardCommand {
 protected:
  ~WifiBoard() override {
    // What it has saved lies beside it.
    std::filesystem::remove(NetworksFile());
  }

  /// Starts it with a configuration.
  void StartWith(const std::string& configuration, const std::vector<std::string>& options = {}) {
    std::vector<std::string> all = {"--config", files_.Write("board.toml", configuration)};
    all.insert(all.end(), options.begin(), options.end());
    const ProgramResult result = Start("bench", all);
    ASSERT_EQ(result.status, 0) << result.standard_error;
  }

  /// Starts it with rules for what the daemon replies.
  void StartWithRules(const std::string& rules) {
    ASSERT_EQ(Start("bench", {"--wifi-script", files_.Write("script.toml", rules)}).status, 0);
  }

  void Stop() {
    Board({"stop", "bench"});
    started_.clear();
  }

  std::string SocketPath() const { return folder_.path() + "/bench/wifi"; }
  std::string NetworksFile() const { return folder_.path() + "/.wifi-networks-bench.json"; }

  nlohmann::json Show() const {
    return nlohmann::json::parse(Board({"wifi", "--json"}).standard_output);
  }

  const TemporaryDirectory files_;
};

/// Everything happens at once, but for wrong passphrases, which stay wrong.
inline constexpr char kQuickWifi[] =
    "[wifi]\nscan-time = 0\nassociation-time = 0\nretry-time = 600000\n";

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_WIFI_BOARD_H
