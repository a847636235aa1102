// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_WIFI_LOG_H
#define KESTREL_BOARD_DEVICES_WIFI_WIFI_LOG_H

#include <sys/types.h>

#include <deque>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace kestrel::board::wifi {

/// The last commands and what became of them, shortened and without keys.
class WifiLog {
 public:
  void Add(pid_t client, const std::string& command, const std::string& outcome);
  nlohmann::json ToJson() const;

 private:
  struct Entry {
    pid_t client;
    std::string command;
    std::string outcome;
  };
  std::deque<Entry> entries_;
};

/// What is shown in place of a passphrase.
inline constexpr char kMask[] = "********";

/// Bytes as text that is fit for a terminal, and not too long for one.
std::string Shorten(const std::string& bytes);

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_WIFI_LOG_H
