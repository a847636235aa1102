// SPDX-License-Identifier: Apache-2.0
#include "limited_log.h"

#include <utility>

namespace kestrel::relay {
namespace {

std::string NameOf(Topic topic) {
  switch (topic) {
    case Topic::kConnections:
      return "programs that come and go";
    case Topic::kCommands:
      return "commands";
    case Topic::kFailures:
      return "commands that failed";
    case Topic::kRefusals:
      return "refused commands";
    case Topic::kUnreadReplies:
      return "programs that do not read their replies";
    case Topic::kPlaces:
      return "programs that find no room";
    case Topic::kSupplicant:
      return "a supplicant that comes and goes";
  }
  return "";
}

}  // namespace

LimitedLog::~LimitedLog() {
  for (auto& [topic, account] : accounts_) {
    TellLeftOut(topic, account);
  }
}

void LimitedLog::Warning(Topic topic, const std::string& text) {
  if (Admit(topic, kMostWarnings)) {
    log_.Warning(text);
  }
}

void LimitedLog::Info(Topic topic, const std::string& text) {
  if (Admit(topic, kMostWarnings)) {
    log_.Info(text);
  }
}

void LimitedLog::Debug(Topic topic, const std::string& text) {
  if (log_.verbose() && Admit(topic, kMostDebugLines)) {
    log_.Debug(text);
  }
}

bool LimitedLog::Admit(Topic topic, size_t most) {
  Account& account = accounts_.try_emplace(topic, loop_).first->second;
  if (!account.interval.running()) {
    BeginInterval(topic, account);
  }
  if (account.written < most) {
    ++account.written;
    return true;
  }
  ++account.left_out;
  return false;
}

void LimitedLog::BeginInterval(Topic topic, Account& account) {
  account.written = 0;
  account.interval.Start(interval_, [this, topic, &account] {
    if (account.left_out > 0) {
      TellLeftOut(topic, account);
      BeginInterval(topic, account);
    }
  });
}

void LimitedLog::TellLeftOut(Topic topic, Account& account) {
  const size_t count = std::exchange(account.left_out, 0);
  if (count > 0) {
    log_.Warning(NameOf(topic) + ": " + std::to_string(count) + " more of these were left out");
  }
}

}  // namespace kestrel::relay
