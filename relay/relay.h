// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_RELAY_H
#define KESTREL_RELAY_RELAY_H

#include <map>
#include <memory>

#include "client.h"
#include "host/event_loop.h"
#include "host/timer.h"
#include "log.h"
#include "options.h"
#include "relay_socket.h"
#include "supplicant.h"

namespace kestrel::relay {

/// Listens at the library's socket and passes what programs say there to the supplicant.
class Relay {
 public:
  /// Takes the socket. Throws BoardError.
  Relay(board::EventLoop& loop, const Options& options, const Log& log);
  ~Relay();
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

 private:
  void AwaitClients();
  void Accept();
  void Admit(board::UniqueFd connection);
  void Remove(int client);

  board::EventLoop& loop_;
  const Options& options_;
  const Log& log_;
  RelaySocket socket_;
  Supplicant supplicant_;
  board::Timer accept_again_;
  bool was_full_ = false;
  bool is_short_ = false;  ///< of descriptors or memory for another program
  std::map<int, std::unique_ptr<Client>> clients_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_RELAY_H
