// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_ANSWERING_DAEMON_H
#define KESTREL_TESTS_UNIT_WIFI_ANSWERING_DAEMON_H

#include <functional>
#include <string>
#include <thread>

namespace kestrel::test {

/// A daemon on a thread of its own that answers every command until the connection ends.
class AnsweringDaemon {
 public:
  /// `answer` is called on the daemon's thread with each command, and returns the reply.
  explicit AnsweringDaemon(std::function<std::string(const std::string&)> answer);
  /// Waits for the end of the connection, which is the owner of the client's end to close.
  ~AnsweringDaemon() { thread_.join(); }
  AnsweringDaemon(const AnsweringDaemon&) = delete;
  AnsweringDaemon& operator=(const AnsweringDaemon&) = delete;

  int client_end() const { return client_end_; }

 private:
  void Serve(int daemon_end) const;

  std::function<std::string(const std::string&)> answer_;
  int client_end_ = -1;
  std::thread thread_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_ANSWERING_DAEMON_H
