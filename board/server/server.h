// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_BOARD_SERVER_SERVER_H
#define KESTREL_BOARD_SERVER_SERVER_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/event_loop.h"
#include "host/unique_fd.h"
#include "protocol/wire.h"
#include "server/board.h"

namespace kestrel::board {

/// Serves a board to the programs that run on it. Every descriptor that a program has of the board
/// is one end of a connection to this server; the kernel closes the connection with its last copy,
/// and that ends the session.
class Server {
 public:
  /// Listens at `socket_path`. `stop` is called when the command line asks the board to stop.
  Server(Board& board, EventLoop& loop, const std::string& socket_path, std::function<void()> stop);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

 private:
  struct Connection {
    UniqueFd socket;
    std::unique_ptr<Session> session;  ///< null until something has been opened
    UniqueFd text;                     ///< of the next request of the command line, if it was long
  };
  struct Message {
    wire::RequestHeader header;
    std::vector<uint8_t> payload;
    UniqueFd reply_socket;
  };

  /// Accepts whoever is waiting. Returns the server's side of a connection that the server itself
  /// made, if that was among them, and -1 otherwise.
  int AcceptAll();
  /// Out of descriptors: ends the connection of whoever is waiting, which would wait for ever. The
  /// kernel says EMFILE also when nobody is; then this is false.
  bool TurnAway();
  void Add(UniqueFd socket);
  void Receive(int connection);
  /// Forgets the programs that have closed their end; whether there was one.
  bool EndClosedSessions();
  void Handle(int connection, Message& message);
  void HandleOpen(int connection, const Message& message);
  void HandleConnect(const Message& message);
  void HandleIoctl(int connection, const Message& message);
  void HandleClose(int connection, const Message& message);
  void HandleFileCall(const Message& message);
  void HandleControl(int connection, const Message& message);
  /// The request of the command line in a message or in the file that came before. Throws
  /// BoardError, or json::exception for what is no JSON.
  nlohmann::json RequestIn(int connection, const Message& message);
  /// The answer to a request of the command line, and the descriptor that goes with it, if any.
  nlohmann::json Answer(const nlohmann::json& request, wire::Operation operation,
                        UniqueFd* descriptor);

  /// Makes a connection with `session` on the server's side and returns the program's side.
  UniqueFd ConnectToSelf(std::unique_ptr<Session> session);

  Board& board_;
  EventLoop& loop_;
  std::string socket_path_;
  std::function<void()> stop_;
  std::vector<uint8_t> buffer_;
  UniqueFd spare_;
  UniqueFd listener_;
  std::map<int, Connection> connections_;
};

}  // namespace kestrel::board

#endif  // KESTREL_BOARD_SERVER_SERVER_H
