// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_RELAY_H
#define KESTREL_RELAY_RELAY_H

#include <sys/types.h>

#include <map>
#include <memory>
#include <set>
#include <string>

#include "client.h"
#include "host/event_loop.h"
#include "host/timer.h"
#include "limited_log.h"
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
  void PauseAccepting(int error);
  void Admit(board::UniqueFd connection);
  /// Why there is no room for another program of the user; empty when there is.
  std::string WhyFull(uid_t user) const;
  void Remove(int client);
  /// Removes the clients whose end the loop has not yet come to. Returns whether there were any.
  bool RemoveThoseWhoHaveGone();

  board::EventLoop& loop_;
  const Options& options_;
  LimitedLog log_;
  RelaySocket socket_;
  Supplicant supplicant_;
  board::Timer accept_again_;
  std::set<std::string> told_full_;  ///< which limits, since somebody left last
  bool is_short_ = false;            ///< of descriptors or memory for another program
  std::map<int, std::unique_ptr<Client>> clients_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_RELAY_H
