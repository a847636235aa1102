// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_REPLY_SCRIPT_H
#define KESTREL_BOARD_DEVICES_WIFI_REPLY_SCRIPT_H

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "config/config_reader.h"

namespace kestrel::board::wifi {

/// What happens to commands of one kind in place of, or besides, the daemon's own answer.
struct ReplyRule {
  enum class Action { kAnswer, kReply, kSilence, kClose, kDie };

  std::string command;  ///< a pattern as the shell's, for the whole command
  Action action = Action::kAnswer;
  std::string reply;
  uint64_t repeat = 1;  ///< how often the reply stands in its datagram
  std::chrono::milliseconds delay{0};
  uint64_t count = 0;  ///< how many commands it is for; all of them when 0
  uint64_t used = 0;

  /// What is sent with kReply.
  std::string Text() const;
};

/// The longest reply that a rule may give.
inline constexpr size_t kLongestReply = 65536;

/// Rules, the first of which that fits decides.
class ReplyScript {
 public:
  ReplyScript() = default;
  explicit ReplyScript(std::vector<ReplyRule> rules) : rules_(std::move(rules)) {}

  const std::vector<ReplyRule>& rules() const { return rules_; }

  /// The rule for a command, which counts as used then; null when there is none.
  const ReplyRule* Next(const std::string& command);

 private:
  std::vector<ReplyRule> rules_;
};

/// Reads the tables of the array `rule`; throws ConfigError.
std::vector<ReplyRule> ReadRules(ConfigReader& reader);

/// Reads a script's file, *.toml or *.json. Throws UsageError with file, line and reason.
std::vector<ReplyRule> ReadScriptFile(const std::string& path);

/// Rules on their way to a running board.
nlohmann::json ToJson(const std::vector<ReplyRule>& rules);
std::vector<ReplyRule> RulesFromJson(const nlohmann::json& rules);

/// The name of an action in scripts.
const char* NameOf(ReplyRule::Action action);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_REPLY_SCRIPT_H
