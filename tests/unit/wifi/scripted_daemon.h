// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_SCRIPTED_DAEMON_H
#define KESTREL_TESTS_UNIT_WIFI_SCRIPTED_DAEMON_H

#include <string>
#include <vector>

namespace kestrel::test {

struct Exchange {
  std::string command;
  std::string reply;
};

using Script = std::vector<Exchange>;

/// The daemon's end of a connection. The replies lie ready in the connection before the commands
/// come, so no thread has to send them.
class ScriptedDaemon {
 public:
  ScriptedDaemon();
  ~ScriptedDaemon();
  ScriptedDaemon(const ScriptedDaemon&) = delete;
  ScriptedDaemon& operator=(const ScriptedDaemon&) = delete;

  /// The library's end, which belongs to whoever asks for it.
  int client_end() const { return client_end_; }

  /// Expects these commands, after those expected before, and answers them.
  void Expect(const Script& script);

  /// Expects one more command, which is not answered because the daemon ends here.
  void ExpectAndDie(const std::string& command);

  /// Closes the connection.
  void Leave();

  /// The commands that were expected, and those that have come, as the bytes on the wire.
  const std::vector<std::string>& expected() const { return expected_; }
  const std::vector<std::string>& Received();

 private:
  int client_end_ = -1;
  int daemon_end_ = -1;
  std::vector<std::string> expected_;
  std::vector<std::string> received_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_SCRIPTED_DAEMON_H
