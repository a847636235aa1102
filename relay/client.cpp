// SPDX-License-Identifier: Apache-2.0
#include "client.h"

#include <poll.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace kestrel::relay {
namespace {

/// Without the terminating NUL. The supplicant takes no longer ones in most of its versions.
constexpr size_t kLongestCommand = 4096;

constexpr char kFailure[] = "FAIL\n";

/// How often the relay looks whether a supplicant that owes an answer is still there.
constexpr std::chrono::milliseconds kProbeInterval{200};

std::string PeerOf(int connection) {
  ucred peer{};
  socklen_t length = sizeof peer;
  const bool told = getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0;
  return told ? "process " + std::to_string(peer.pid) : "a process";
}

/// An empty command and the end of a connection are both read as nothing.
bool HasHungUp(int connection) {
  pollfd watched = {connection, POLLRDHUP, 0};
  return poll(&watched, 1, 0) == 1 && (watched.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0;
}

}  // namespace

Client::Client(board::EventLoop& loop, board::UniqueFd connection, Supplicant& supplicant,
               std::chrono::milliseconds timeout, const Log& log, std::function<void()> leave)
    : loop_(loop),
      connection_(std::move(connection)),
      supplicant_(supplicant),
      timeout_(timeout),
      log_(log),
      leave_(std::move(leave)),
      name_(PeerOf(connection_.get())),
      deadline_(loop),
      probe_(loop) {
  log_.Debug(name_ + " has connected");
  AwaitCommand();
}

Client::~Client() {
  log_.Debug(name_ + " has left");
  ForgetCommand();
  CloseLink();
  loop_.Unwatch(connection_.get());
}

void Client::AwaitCommand() {
  loop_.Watch(connection_.get(), [this] { ReceiveCommand(); });
}

void Client::ReceiveCommand() {
  std::array<char, kLongestCommand + 1> buffer;
  const ssize_t size =
      recv(connection_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (size < 0 || (size == 0 && HasHungUp(connection_.get()))) {
    leave_();
    return;
  }
  command_.assign(buffer.data(),
                  strnlen(buffer.data(), std::min(static_cast<size_t>(size), buffer.size())));
  explicit_bzero(buffer.data(), buffer.size());
  if (static_cast<size_t>(size) > buffer.size() || command_.size() > kLongestCommand) {
    ForgetCommand();
    log_.Warning(name_ + " has sent a command of more than " + std::to_string(kLongestCommand) +
                 " bytes");
    return Reply(kFailure);
  }
  Begin();
}

void Client::Begin() {
  command_name_ = NameOf(command_);
  log_.Debug(name_ + ": " + command_name_);
  // Not for commands, but the end of the connection is told all the same.
  loop_.WatchFor(connection_.get(), 0, [this](short events) {
    if ((events & (POLLHUP | POLLERR)) != 0) {
      leave_();
    }
  });
  deadline_.Start(timeout_, [this] { Fail("it does not answer"); });
  link_is_new_ = false;
  if (link_ == nullptr) {
    return SendCommandAnew();
  }
  link_->Drain();
  SendCommand();
}

void Client::SendCommandAnew() {
  link_ = supplicant_.Open();
  link_is_new_ = true;
  if (link_ == nullptr) {
    return Fail("there is none");
  }
  SendCommand();
}

void Client::SendCommand() {
  switch (link_->Send(command_)) {
    case SupplicantLink::Sending::kDone:
      ForgetCommand();
      return AwaitReply();
    case SupplicantLink::Sending::kNoRoom:
      link_is_new_ = false;
      return WatchLink(POLLOUT, [this] { SendCommand(); });
    case SupplicantLink::Sending::kGone:
      // It never got the command, so whoever has taken its place may have it.
      CloseLink();
      return link_is_new_ ? Fail("it has gone") : SendCommandAnew();
  }
}

void Client::AwaitReply() {
  WatchLink(POLLIN, [this] { ReceiveMessage(); });
  probe_.Start(kProbeInterval, [this] { Probe(); });
}

void Client::Probe() {
  if (link_->LeadsSomewhere()) {
    probe_.Start(kProbeInterval, [this] { Probe(); });
  } else {
    // Its last words may have come in the meantime.
    probe_.Start(kProbeInterval, [this] { Fail("it has gone"); });
  }
}

void Client::ReceiveMessage() {
  const SupplicantLink::Message message = link_->Receive();
  const bool is_awaited = !command_name_.empty();
  switch (message.kind) {
    case SupplicantLink::Message::Kind::kNone:
    case SupplicantLink::Message::Kind::kEvent:
      return;
    case SupplicantLink::Message::Kind::kReply:
      return is_awaited ? Answer(message.text) : void();
    case SupplicantLink::Message::Kind::kBroken:
      return is_awaited ? Fail("the link broke") : CloseLink();
  }
}

void Client::Answer(const std::string& reply) {
  supplicant_.NoteAnswer();
  Reply(reply);
}

void Client::Fail(const std::string& reason) {
  log_.Debug(name_ + ": " + command_name_ + " has failed: " + reason);
  supplicant_.NoteLoss(reason);
  ForgetCommand();
  CloseLink();
  Reply(kFailure);
}

void Client::Reply(const std::string& reply) {
  command_name_.clear();
  deadline_.Stop();
  probe_.Stop();
  if (send(connection_.get(), reply.data(), reply.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
    return AwaitCommand();
  }
  if (errno != EAGAIN) {
    return leave_();
  }
  deadline_.Start(timeout_, [this] {
    log_.Warning(name_ + " does not read its replies");
    leave_();
  });
  loop_.WatchFor(connection_.get(), POLLOUT, [this, reply](short) { Reply(reply); });
}

void Client::WatchLink(short events, std::function<void()> callback) {
  loop_.WatchFor(link_->descriptor(), events,
                 [callback = std::move(callback)](short) { callback(); });
}

void Client::CloseLink() {
  if (link_ != nullptr) {
    loop_.Unwatch(link_->descriptor());
    link_.reset();
  }
}

void Client::ForgetCommand() {
  explicit_bzero(command_.data(), command_.size());
  command_.clear();
}

}  // namespace kestrel::relay
