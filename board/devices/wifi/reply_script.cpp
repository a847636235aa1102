// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/reply_script.h"

#include <fnmatch.h>

#include <nlohmann/json.hpp>

#include "config/config_file.h"
#include "host/error.h"
#include "host/hex_text.h"
#include "host/json_text.h"

namespace kestrel::board::wifi {
namespace {

using nlohmann::json;
using Action = ReplyRule::Action;

const std::vector<uint8_t> kNoBytes;

constexpr int64_t kLongestDelay = 600000;
constexpr int64_t kHighestCount = 1000000;

struct NamedAction {
  const char* name;
  Action action;
};

constexpr NamedAction kActions[] = {{"answer", Action::kAnswer},
                                    {"reply", Action::kReply},
                                    {"silence", Action::kSilence},
                                    {"close", Action::kClose},
                                    {"die", Action::kDie}};

Action ActionOf(const std::string& name) {
  for (const NamedAction& known : kActions) {
    if (name == known.name) {
      return known.action;
    }
  }
  return Action::kAnswer;
}

std::string ReadReply(ConfigReader& reader) {
  if (!reader.Has("reply-hex")) {
    return reader.Text("reply", "");
  }
  const std::optional<std::vector<uint8_t>> bytes = FromHex(reader.Text("reply-hex", ""));
  if (!bytes.has_value()) {
    reader.Refuse("reply-hex", "bytes are pairs of hexadecimal digits");
  }
  return std::string(bytes->begin(), bytes->end());
}

ReplyRule ReadRule(ConfigReader& reader) {
  ReplyRule rule;
  rule.command = reader.Text("command", "*");
  const bool has_reply = reader.Has("reply") || reader.Has("reply-hex");
  rule.reply = ReadReply(reader);
  rule.repeat =
      static_cast<uint64_t>(reader.Integer("repeat", 1, static_cast<int64_t>(kLongestReply), 1));
  rule.action = ActionOf(reader.Choice("action", {"answer", "silence", "close", "die"}, "answer"));
  rule.delay = std::chrono::milliseconds(reader.Integer("delay", 0, kLongestDelay, 0));
  rule.count = static_cast<uint64_t>(reader.Integer("count", 1, kHighestCount, 0));
  if (has_reply && reader.Has("action")) {
    reader.Refuse("action", "a rule has a reply or an action, not both");
  }
  if (reader.Has("reply") && reader.Has("reply-hex")) {
    reader.Refuse("reply-hex", "a rule has one reply");
  }
  if (has_reply) {
    rule.action = Action::kReply;
  }
  if (rule.reply.size() * rule.repeat > kLongestReply) {
    reader.Refuse(reader.Has("repeat") ? "repeat" : "reply",
                  "a reply has at most " + std::to_string(kLongestReply) + " bytes");
  }
  reader.RefuseUnknownKeys();
  return rule;
}

}  // namespace

std::string ReplyRule::Text() const {
  std::string text;
  for (uint64_t i = 0; i < repeat; ++i) {
    text += reply;
  }
  return text;
}

const ReplyRule* ReplyScript::Next(const std::string& command) {
  for (ReplyRule& rule : rules_) {
    if ((rule.count == 0 || rule.used < rule.count) &&
        fnmatch(rule.command.c_str(), command.c_str(), 0) == 0) {
      ++rule.used;
      return &rule;
    }
  }
  return nullptr;
}

std::vector<ReplyRule> ReadRules(ConfigReader& reader) {
  std::vector<ReplyRule> rules;
  for (ConfigReader& table : reader.Tables("rule")) {
    rules.push_back(ReadRule(table));
  }
  return rules;
}

std::vector<ReplyRule> ReadScriptFile(const std::string& path) {
  try {
    const ConfigNode file = LoadConfigFile(path);
    ConfigReader reader(&file, "");
    std::vector<ReplyRule> rules = ReadRules(reader);
    reader.RefuseUnknownKeys();
    return rules;
  } catch (const ConfigError& error) {
    throw UsageError(path + ":" + std::to_string(error.line()) + ": " + error.what());
  }
}

json ToJson(const std::vector<ReplyRule>& rules) {
  json list = json::array();
  for (const ReplyRule& rule : rules) {
    list.push_back({{"command", ToHex(rule.command)},
                    {"action", rule.action},
                    {"reply", ToHex(rule.reply)},
                    {"repeat", rule.repeat},
                    {"delay", rule.delay.count()},
                    {"count", rule.count}});
  }
  return list;
}

std::vector<ReplyRule> RulesFromJson(const json& rules) {
  const auto bytes = [](const json& text) {
    const std::vector<uint8_t> values = FromHex(text.get<std::string>()).value_or(kNoBytes);
    return std::string(values.begin(), values.end());
  };
  std::vector<ReplyRule> list;
  for (const json& entry : rules) {
    ReplyRule rule;
    rule.command = bytes(entry.at("command"));
    rule.action = static_cast<Action>(IntegerIn<uint8_t>(entry, "action"));
    rule.reply = bytes(entry.at("reply"));
    rule.repeat = IntegerIn<uint32_t>(entry, "repeat");
    rule.delay = std::chrono::milliseconds(IntegerIn<uint32_t>(entry, "delay"));
    rule.count = IntegerIn<uint32_t>(entry, "count");
    if (*NameOf(rule.action) == '\0' || rule.delay.count() > kLongestDelay ||
        rule.reply.size() * rule.repeat > kLongestReply || rule.repeat > kLongestReply) {
      throw UsageError("a rule of the script is not as a file may have it");
    }
    list.push_back(rule);
  }
  return list;
}

const char* NameOf(Action action) {
  for (const NamedAction& known : kActions) {
    if (action == known.action) {
      return known.name;
    }
  }
  return "";
}

}  // namespace kestrel::board::wifi
