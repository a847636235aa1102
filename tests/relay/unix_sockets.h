// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_RELAY_UNIX_SOCKETS_H
#define KESTREL_TESTS_RELAY_UNIX_SOCKETS_H

#include <sys/socket.h>

#include <chrono>
#include <optional>
#include <string>

namespace kestrel::test {

/// Long enough for any machine, and never waited for when all is well.
inline constexpr std::chrono::seconds kPatience{20};

/// How long to wait for something: not long once the test has failed, so that one which waits again
/// and again comes to its end.
std::chrono::milliseconds Patience();

/// The two ends between which the relay stands, driven step by step by a test: the supplicant, and
/// programs that talk as the library does. What is expected and does not come in time is nothing;
/// what cannot be sent in time fails.

struct Command {
  std::string text;
  std::string sender;  ///< the path of the socket to which the reply goes
};

/// A datagram socket at a path, and what is heard there. The file goes with it, unless `Vanish`.
class DatagramSocket {
 public:
  explicit DatagramSocket(std::string path);
  ~DatagramSocket();
  DatagramSocket(const DatagramSocket&) = delete;
  DatagramSocket& operator=(const DatagramSocket&) = delete;

  int descriptor() const { return socket_; }
  std::optional<Command> Receive() const;
  /// False when nobody is there any more.
  bool Send(const std::string& receiver, const std::string& text) const;
  /// Receives a command, which must be `command`, and replies.
  void Expect(const std::string& command, const std::string& reply) const;
  /// Takes no more commands before it has read some; returns how many there are to be read.
  int Fill() const;
  /// Ends as a process does that is killed: the file stays.
  void Vanish();

 private:
  std::string path_;
  int socket_ = -1;
};

using FakeSupplicant = DatagramSocket;

/// A connection of the kind that the library makes.
class Program {
 public:
  /// Fails the test when nobody listens.
  explicit Program(const std::string& path);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  int descriptor() const { return socket_; }
  /// Sends a command with its terminating NUL.
  void Send(const std::string& command) const;
  void SendBytes(const std::string& bytes) const;
  /// The next reply, or nothing when the connection has ended.
  std::optional<std::string> Receive() const;
  /// Whether the connection ends.
  bool SeesTheEnd() const;
  void Leave();

 private:
  int socket_ = -1;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_RELAY_UNIX_SOCKETS_H
