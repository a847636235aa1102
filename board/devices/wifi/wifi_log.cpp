// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_log.h"

#include <strings.h>

#include <nlohmann/json.hpp>

#include "devices/wifi/wifi_text.h"

namespace kestrel::board::wifi {
namespace {

using nlohmann::json;

constexpr size_t kMostEntries = 20;
constexpr size_t kLongestText = 60;

/// Variables that hold keys, between the spaces of a command.
constexpr const char* kSecrets[] = {" psk ", " password ", " sae_password ", " wep_key"};

/// A command without the key that it may set, well formed or not.
std::string Mask(const std::string& command) {
  const char* first = nullptr;
  const char* variable = nullptr;
  for (const char* secret : kSecrets) {
    const char* found = strcasestr(command.c_str(), secret);
    if (found != nullptr && (first == nullptr || found < first)) {
      first = found;
      variable = secret;
    }
  }
  return first == nullptr ? command : std::string(command.c_str(), first) + variable + kMask;
}

}  // namespace

std::string Shorten(const std::string& bytes) {
  std::string text = Escape(bytes.substr(0, kLongestText));
  for (size_t quote = text.find("\\\""); quote != std::string::npos;
       quote = text.find("\\\"", quote)) {
    text.erase(quote++, 1);
  }
  return bytes.size() > kLongestText ? text + "... (" + std::to_string(bytes.size()) + " bytes)"
                                     : text;
}

void WifiLog::Add(pid_t client, const std::string& command, const std::string& outcome) {
  entries_.push_back({client, Shorten(Mask(command)), outcome});
  if (entries_.size() > kMostEntries) {
    entries_.pop_front();
  }
}

json WifiLog::ToJson() const {
  json list = json::array();
  for (const Entry& entry : entries_) {
    list.push_back(
        {{"client", entry.client}, {"command", entry.command}, {"outcome", entry.outcome}});
  }
  return list;
}

}  // namespace kestrel::board::wifi
