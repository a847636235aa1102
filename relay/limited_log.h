// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_LIMITED_LOG_H
#define KESTREL_RELAY_LIMITED_LOG_H

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "host/event_loop.h"
#include "host/timer.h"
#include "log.h"

namespace kestrel::relay {

/// What a line is about that programs can provoke.
enum class Topic {
  kConnections,
  kCommands,
  kFailures,
  kRefusals,
  kUnreadReplies,
  kPlaces,
  kSupplicant
};

/// The log for lines that programs can provoke, which may be any number. Of each topic it takes so
/// many in an interval, counts the rest, and tells at the end of the interval how many they were.
class LimitedLog {
 public:
  static constexpr size_t kMostWarnings = 10;
  /// Those who ask for every command get the hundreds that the library sends in one go.
  static constexpr size_t kMostDebugLines = 500;

  LimitedLog(board::EventLoop& loop, const Log& log,
             std::chrono::milliseconds interval = std::chrono::seconds(10))
      : loop_(loop), log_(log), interval_(interval) {}
  /// Tells what has been left out so far.
  ~LimitedLog();
  LimitedLog(const LimitedLog&) = delete;
  LimitedLog& operator=(const LimitedLog&) = delete;

  void Warning(Topic topic, const std::string& text);
  void Info(Topic topic, const std::string& text);
  void Debug(Topic topic, const std::string& text);

 private:
  struct Account {
    explicit Account(board::EventLoop& loop) : interval(loop) {}
    size_t written = 0;
    size_t left_out = 0;
    board::Timer interval;  ///< runs from the first line on
  };

  /// Whether there is room for a line; counts it.
  bool Admit(Topic topic, size_t most);
  void BeginInterval(Topic topic, Account& account);
  void TellLeftOut(Topic topic, Account& account);

  board::EventLoop& loop_;
  const Log& log_;
  const std::chrono::milliseconds interval_;
  std::map<Topic, Account> accounts_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_LIMITED_LOG_H
