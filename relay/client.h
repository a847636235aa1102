// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_RELAY_CLIENT_H
#define KESTREL_RELAY_CLIENT_H

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "host/event_loop.h"
#include "host/timer.h"
#include "host/unique_fd.h"
#include "limited_log.h"
#include "options.h"
#include "peer.h"
#include "supplicant.h"
#include "supplicant_link.h"

namespace kestrel::relay {

/// A program that is connected, with a link to the supplicant of its own. Its commands are answered
/// one after the other: the next one is not looked at before the reply to the last has been sent.
/// Neither the program nor the supplicant can make others wait.
class Client {
 public:
  /// `leave` is called when the client is to be removed.
  Client(board::EventLoop& loop, board::UniqueFd connection, Supplicant& supplicant,
         const Options& options, LimitedLog& log, std::function<void()> leave);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  const Peer& peer() const { return peer_; }
  /// Whether the program has closed the connection. What it still had to say is of no use to it.
  bool HasGone() const;

 private:
  // In the order in which they happen.
  void AwaitCommand();
  void ReceiveCommand();
  void Begin();
  void SendCommand();
  void SendCommandAnew();
  void AwaitReply();
  void Probe();
  void ReceiveMessage();
  void Answer(const std::string& reply);
  void Fail(const std::string& reason);
  void Reply(const std::string& reply);

  /// Why the command is not passed on; empty when it is.
  std::string WhyRefused() const;
  /// Warns once of each complaint about this client, and counts the rest.
  void WarnOnce(const std::string& complaint);

  void WatchLink(short events, std::function<void()> callback);
  /// The reply to a command that was given up may still come; it must find nobody.
  void CloseLink();
  void ForgetCommand();

  board::EventLoop& loop_;
  board::UniqueFd connection_;
  Supplicant& supplicant_;
  const Options& options_;
  LimitedLog& log_;
  std::function<void()> leave_;
  const Peer peer_;
  const std::string name_;
  std::set<std::string> complaints_;
  size_t untold_complaints_ = 0;

  std::unique_ptr<SupplicantLink> link_;
  bool link_is_new_ = false;  ///< just opened: when it fails, another one would
  std::string command_;       ///< until the supplicant has it
  std::string command_name_;  ///< of the command that is under way; empty between commands
  board::Timer deadline_;
  board::Timer probe_;
};

}  // namespace kestrel::relay

#endif  // KESTREL_RELAY_CLIENT_H
