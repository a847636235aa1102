// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_BOARD_SERVED_BOARD_H
#define KESTREL_TESTS_BOARD_SERVED_BOARD_H

#include <optional>
#include <string>

#include "config/config_node.h"
#include "host/event_loop.h"
#include "host/unique_fd.h"
#include "protocol/wire.h"
#include "server/board.h"
#include "server/server.h"

namespace kestrel::test {

/// What came back from the board.
struct BoardReply {
  board::wire::ReplyHeader header;
  std::string payload;
  board::UniqueFd descriptor;
};

/// A board and its server in this process and this thread. Who waits for a reply lets it work.
class ServedBoard {
 public:
  /// Its files lie in `folder`. `config` may be null.
  explicit ServedBoard(const std::string& folder, const board::ConfigNode* config = nullptr);

  /// A connection as a program makes one.
  board::UniqueFd Connect() const;

  /// Lets the board do what it finds to do.
  void Work();

  /// Sends bytes as one message, with `file` or the socket for a reply. Nothing when the board does
  /// not reply.
  std::optional<BoardReply> Exchange(const board::UniqueFd& connection, const std::string& bytes,
                                     int file = -1);

  /// The same with a header before the payload.
  std::optional<BoardReply> Ask(const board::UniqueFd& connection, board::wire::Operation operation,
                                uint32_t number, const std::string& payload, int file = -1);

  bool has_been_stopped() const { return stopped_; }
  const std::string& socket_path() const { return socket_path_; }

 private:
  std::string socket_path_;
  board::EventLoop loop_;
  board::Board board_;
  bool stopped_ = false;
  board::Server server_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_BOARD_SERVED_BOARD_H
