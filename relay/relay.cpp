// SPDX-License-Identifier: Apache-2.0
#include "relay.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "client_folder.h"
#include "host/unique_fd.h"

namespace kestrel::relay {
namespace {

/// How long nobody is accepted when there are no descriptors left.
constexpr std::chrono::milliseconds kPause{100};

void ClearClientFolder(const std::string& folder, const Log& log) {
  const int removed = PrepareClientFolder(folder);
  if (removed > 0) {
    log.Info("removed " + std::to_string(removed) +
             (removed == 1 ? " dead socket" : " dead sockets") + " from " + folder);
  }
}

}  // namespace

Relay::Relay(board::EventLoop& loop, const Options& options, const Log& log)
    : loop_(loop),
      options_(options),
      log_(loop, log),
      socket_(options.socket_path, options.Mode(), options.group),
      supplicant_(options.supplicant_path, options.client_folder, log_),
      accept_again_(loop) {
  ClearClientFolder(options.client_folder, log);
  AwaitClients();
}

Relay::~Relay() { loop_.Unwatch(socket_.descriptor()); }

void Relay::AwaitClients() {
  loop_.Watch(socket_.descriptor(), [this] { Accept(); });
}

void Relay::Accept() {
  board::UniqueFd connection(
      accept4(socket_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  const int error = errno;
  if (connection.valid()) {
    is_short_ = false;
    Admit(std::move(connection));
  } else if (error != EAGAIN && error != EINTR && error != ECONNABORTED &&
             !RemoveThoseWhoHaveGone()) {
    PauseAccepting(error);
  }
}

void Relay::PauseAccepting(int error) {
  if (!is_short_) {
    log_.Warning(Topic::kPlaces, std::string("a program cannot connect: ") + strerror(error));
  }
  is_short_ = true;
  loop_.Unwatch(socket_.descriptor());
  accept_again_.Start(kPause, [this] { AwaitClients(); });
}

void Relay::Admit(board::UniqueFd connection) {
  const uid_t user = Peer::Of(connection.get()).user;
  std::string full = WhyFull(user);
  if (!full.empty() && RemoveThoseWhoHaveGone()) {
    full = WhyFull(user);
  }
  if (!full.empty()) {
    // To be turned away is better for a program than to wait for somebody else to leave.
    if (told_full_.insert(full).second) {
      log_.Warning(Topic::kPlaces, full);
    }
    return;
  }
  const int number = connection.get();
  clients_[number] = std::make_unique<Client>(loop_, std::move(connection), supplicant_, options_,
                                              log_, [this, number] { Remove(number); });
}

std::string Relay::WhyFull(uid_t user) const {
  if (clients_.size() >= options_.most_clients) {
    return "turning programs away: " + std::to_string(clients_.size()) + " are connected";
  }
  const auto of_user = static_cast<size_t>(
      std::count_if(clients_.begin(), clients_.end(),
                    [user](const auto& client) { return client.second->peer().user == user; }));
  return of_user >= options_.MostClientsPerUser()
             ? "turning programs of user " + std::to_string(user) +
                   " away: " + std::to_string(of_user) + " of them are connected"
             : "";
}

void Relay::Remove(int client) {
  clients_.erase(client);
  told_full_.clear();
  if (accept_again_.running()) {
    // There are descriptors again.
    accept_again_.Stop();
    AwaitClients();
  }
}

bool Relay::RemoveThoseWhoHaveGone() {
  std::vector<int> gone;
  for (const auto& [number, client] : clients_) {
    if (client->HasGone()) {
      gone.push_back(number);
    }
  }
  for (const int number : gone) {
    Remove(number);
  }
  return !gone.empty();
}

}  // namespace kestrel::relay
