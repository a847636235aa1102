// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/daemon_socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/error.h"

namespace kestrel::board::wifi {
namespace {

/// What the daemon reads of one command; the rest is lost.
constexpr size_t kLongestCommand = 4096;
constexpr size_t kMostClients = 256;
/// How long nobody is accepted when there is no room for another client.
constexpr std::chrono::milliseconds kPause{100};

pid_t PeerOf(int connection) {
  ucred peer{};
  socklen_t length = sizeof peer;
  return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 ? peer.pid : 0;
}

/// An empty command and the end of a connection are both read as nothing.
bool HasHungUp(int connection) {
  pollfd watched = {connection, POLLRDHUP, 0};
  return poll(&watched, 1, 0) == 1 && (watched.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
}

UniqueFd Bind(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  UniqueFd bound(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!bound.valid() ||
      bind(bound.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ThrowErrno(path);
  }
  return bound;
}

}  // namespace

DaemonSocket::DaemonSocket(EventLoop& loop, std::string path, Handler handler)
    : loop_(loop), path_(std::move(path)), handler_(std::move(handler)), accept_again_(loop) {}

std::vector<DaemonSocket::ClientState> DaemonSocket::Clients() const {
  std::vector<ClientState> states;
  for (const auto& [descriptor, client] : clients_) {
    states.push_back({client.process, client.commands});
  }
  return states;
}

void DaemonSocket::Become(Presence presence) {
  if (presence == presence_) {
    return;
  }
  // The file of a daemon that is killed stays. Whoever sees the end of a connection finds at once
  // what is to be there.
  const bool file_stays = presence_ == Presence::kListening && presence == Presence::kRefusing;
  if (!file_stays) {
    unlink(path_.c_str());
  }
  Close();
  if (presence != Presence::kAbsent && !file_stays) {
    listener_ = Bind(path_);
  }
  presence_ = presence;
  if (presence != Presence::kListening) {
    listener_ = UniqueFd();
    return;
  }
  if (listen(listener_.get(), SOMAXCONN) != 0) {
    ThrowErrno(path_);
  }
  loop_.Watch(listener_.get(), [this] { Accept(); });
}

void DaemonSocket::Close() {
  accept_again_.Stop();
  if (listener_.valid()) {
    loop_.Unwatch(listener_.get());
    listener_ = UniqueFd();
  }
  while (!clients_.empty()) {
    Drop(clients_.begin()->first);
  }
}

void DaemonSocket::Accept() {
  UniqueFd accepted;
  if (clients_.size() < kMostClients) {
    accepted = UniqueFd(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  } else {
    errno = EMFILE;
  }
  if (accepted.valid()) {
    const int client = accepted.get();
    const pid_t process = PeerOf(client);
    clients_.try_emplace(client, loop_, std::move(accepted), process);
    WatchCommands(client);
  } else if (errno == EMFILE || errno == ENFILE) {
    loop_.Unwatch(listener_.get());
    accept_again_.Start(kPause, [this] { loop_.Watch(listener_.get(), [this] { Accept(); }); });
  }
}

void DaemonSocket::WatchCommands(int client) {
  loop_.Watch(client, [this, client] { Receive(client); });
}

void DaemonSocket::Receive(int client) {
  std::array<char, kLongestCommand> buffer;
  const ssize_t size = recv(client, buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (size < 0 || (size == 0 && HasHungUp(client))) {
    Drop(client);
    return;
  }
  const std::string command(buffer.data(), strnlen(buffer.data(), static_cast<size_t>(size)));
  Client& sender = clients_.at(client);
  ++sender.commands;
  const Response response = handler_(command, sender.process);
  if (response.delay.count() == 0) {
    Respond(client, response);
    return;
  }
  // Not for commands, but the end of the connection is told all the same.
  loop_.WatchFor(client, 0, [this, client](short) { Drop(client); });
  sender.delay.Start(response.delay, [this, client, response] {
    WatchCommands(client);
    Respond(client, response);
  });
}

void DaemonSocket::Respond(int client, const Response& response) {
  switch (response.kind) {
    case Response::Kind::kReply:
      return Send(client, response.reply);
    case Response::Kind::kSilence:
      return;
    case Response::Kind::kClose:
      return Drop(client);
    case Response::Kind::kDie:
      return Become(Presence::kRefusing);
  }
}

void DaemonSocket::Send(int client, const std::string& reply) {
  if (send(client, reply.data(), reply.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
    return;
  }
  if (errno != EAGAIN) {
    Drop(client);
    return;
  }
  clients_.at(client).unsent = reply;
  loop_.WatchFor(client, POLLOUT, [this, client](short) {
    const std::string unsent = std::move(clients_.at(client).unsent);
    WatchCommands(client);
    Send(client, unsent);
  });
}

void DaemonSocket::Drop(int client) {
  loop_.Unwatch(client);
  clients_.erase(client);
}

}  // namespace kestrel::board::wifi
