// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_DEVICES_WIFI_DAEMON_SOCKET_H
#define KESTREL_BOARD_DEVICES_WIFI_DAEMON_SOCKET_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/event_loop.h"
#include "host/timer.h"
#include "host/unique_fd.h"

namespace kestrel::board::wifi {

/// What happens to a command.
struct Response {
  enum class Kind {
    kReply,    ///< `reply` is sent
    kSilence,  ///< nothing is
    kClose,    ///< the connection ends
    kDie,      ///< all connections end, and nobody listens any more
  };
  Kind kind = Kind::kReply;
  std::string reply;
  std::chrono::milliseconds delay{0};  ///< until then the client's next commands wait
};

/// The socket at which programs reach the daemon, and the programs that have done so. No client can
/// make the others wait: what a client does not read stays with it, one reply at most, and so long
/// none of its commands is looked at.
class DaemonSocket {
 public:
  using Handler = std::function<Response(const std::string& command, pid_t client)>;

  /// What stands at the socket's path.
  enum class Presence {
    kAbsent,    ///< nothing: connections fail with ENOENT
    kRefusing,  ///< a socket at which nobody listens: they fail with ECONNREFUSED
    kListening,
  };

  struct ClientState {
    pid_t pid;
    uint64_t commands;
  };

  DaemonSocket(EventLoop& loop, std::string path, Handler handler);
  ~DaemonSocket() { Close(); }
  DaemonSocket(const DaemonSocket&) = delete;
  DaemonSocket& operator=(const DaemonSocket&) = delete;

  const std::string& path() const { return path_; }
  Presence presence() const { return presence_; }
  std::vector<ClientState> Clients() const;

  /// Changes it; unless it was listening before and shall be, all connections end. Throws
  /// BoardError.
  void Become(Presence presence);

 private:
  struct Client {
    Client(EventLoop& loop, UniqueFd connection, pid_t pid)
        : socket(std::move(connection)), process(pid), delay(loop) {}

    UniqueFd socket;
    pid_t process;
    uint64_t commands = 0;
    std::string unsent;  ///< a reply for which there was no room
    Timer delay;
  };

  void Close();
  void Accept();
  void Receive(int client);
  void Respond(int client, const Response& response);
  void Send(int client, const std::string& reply);
  void WatchCommands(int client);
  void Drop(int client);

  EventLoop& loop_;
  std::string path_;
  Handler handler_;
  Presence presence_ = Presence::kAbsent;
  UniqueFd listener_;
  Timer accept_again_;
  std::map<int, Client> clients_;
};

}  // namespace kestrel::board::wifi

#endif  // KESTREL_BOARD_DEVICES_WIFI_DAEMON_SOCKET_H
