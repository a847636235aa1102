// SPDX-License-Identifier: Apache-2.0
#include "relay.h"

#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "host/error.h"
#include "host/unique_fd.h"
#include "supplicant_link.h"

namespace kestrel::relay {
namespace {

/// How long nobody is accepted when there are no descriptors left.
constexpr std::chrono::milliseconds kPause{100};

void PrepareClientFolder(const std::string& folder, const Log& log) {
  if (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) {
    board::ThrowErrno(folder);
  }
  const int removed = RemoveDeadLinks(folder);
  if (removed > 0) {
    log.Info("removed " + std::to_string(removed) +
             (removed == 1 ? " dead socket" : " dead sockets") + " from " + folder);
  }
}

}  // namespace

Relay::Relay(board::EventLoop& loop, const Options& options, const Log& log)
    : loop_(loop),
      options_(options),
      log_(log),
      socket_(options.socket_path, options.Mode(), options.group),
      supplicant_(options.supplicant_path, options.client_folder, log),
      accept_again_(loop) {
  PrepareClientFolder(options.client_folder, log);
  AwaitClients();
}

Relay::~Relay() { loop_.Unwatch(socket_.descriptor()); }

void Relay::AwaitClients() {
  loop_.Watch(socket_.descriptor(), [this] { Accept(); });
}

void Relay::Accept() {
  board::UniqueFd connection(
      accept4(socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (connection.valid()) {
    is_short_ = false;
    Admit(std::move(connection));
  } else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
    if (!is_short_) {
      log_.Warning(std::string("a program cannot connect: ") + strerror(errno));
    }
    is_short_ = true;
    loop_.Unwatch(socket_.descriptor());
    accept_again_.Start(kPause, [this] { AwaitClients(); });
  }
}

void Relay::Admit(board::UniqueFd connection) {
  if (clients_.size() >= options_.most_clients) {
    // To be turned away is better for a program than to wait for somebody else to leave.
    if (!was_full_) {
      log_.Warning("turning programs away: " + std::to_string(clients_.size()) + " are connected");
    }
    was_full_ = true;
    return;
  }
  const int number = connection.get();
  clients_[number] =
      std::make_unique<Client>(loop_, std::move(connection), supplicant_, options_.Timeout(), log_,
                               [this, number] { Remove(number); });
}

void Relay::Remove(int client) {
  clients_.erase(client);
  was_full_ = false;
}

}  // namespace kestrel::relay
