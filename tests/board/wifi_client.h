// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_WIFI_CLIENT_H
#define KESTREL_TESTS_BOARD_WIFI_CLIENT_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace kestrel::test {

/// A program that talks to the Wi-Fi daemon, by system calls alone.
class WifiClient {
 public:
  /// Connects to the socket at `path`; `error` is then 0 or an errno.
  explicit WifiClient(const std::string& path);
  ~WifiClient();
  WifiClient(const WifiClient&) = delete;
  WifiClient& operator=(const WifiClient&) = delete;

  int error() const { return error_; }
  int descriptor() const { return socket_; }

  /// Sends these bytes as one datagram; false when that fails.
  bool Send(const std::string& bytes) const;

  /// The next reply; nothing when none comes in time or the connection has ended.
  std::optional<std::string> Receive(
      std::chrono::milliseconds limit = std::chrono::seconds(20)) const;

  /// Sends a command with its NUL, and waits for the reply.
  std::string Ask(const std::string& command) const;

  /// Asks until the reply contains `text`; the last reply.
  std::string AskUntil(const std::string& command, const std::string& text) const;

  /// Whether the daemon ends the connection without having replied.
  bool SeesTheEnd() const;

 private:
  int socket_;
  int error_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_WIFI_CLIENT_H
