// SPDX-License-Identifier: Apache-2.0
#include "client.h"

#include <poll.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "command_filter.h"

namespace kestrel::relay {
namespace {

/// Without the terminating NUL. The supplicant takes no longer ones in most of its versions.
constexpr size_t kLongestCommand = 4096;

constexpr char kFailure[] = "FAIL\n";

/// A client can make up any number of names of commands.
constexpr size_t kMostComplaints = 16;

/// How often the relay looks whether a supplicant that owes an answer is still there.
constexpr std::chrono::milliseconds kProbeInterval{200};

std::string TooLong() {
  return "has sent a command of more than " + std::to_string(kLongestCommand) + " bytes";
}

/// Whether one of the given events, or the end of the connection, has come.
bool HasEvent(int connection, short events) {
  pollfd watched = {connection, events, 0};
  return poll(&watched, 1, 0) == 1;
}

}  // namespace

Client::Client(board::EventLoop& loop, board::UniqueFd connection, Supplicant& supplicant,
               const Options& options, LimitedLog& log, std::function<void()> leave)
    : loop_(loop),
      connection_(std::move(connection)),
      supplicant_(supplicant),
      options_(options),
      log_(log),
      leave_(std::move(leave)),
      peer_(Peer::Of(connection_.get())),
      name_(peer_.Name()),
      deadline_(loop),
      probe_(loop) {
  log_.Debug(Topic::kConnections, name_ + " has connected");
  AwaitCommand();
}

Client::~Client() {
  if (untold_complaints_ > 0) {
    log_.Warning(Topic::kRefusals, name_ + " has sent more commands that were refused: " +
                                       std::to_string(untold_complaints_));
  }
  log_.Debug(Topic::kConnections, name_ + " has left");
  ForgetCommand();
  CloseLink();
  loop_.Unwatch(connection_.get());
}

bool Client::HasGone() const { return HasEvent(connection_.get(), 0); }

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
  // An empty command and the end of a connection are both read as nothing.
  if (size < 0 || (size == 0 && HasEvent(connection_.get(), POLLRDHUP))) {
    leave_();
    return;
  }
  command_.assign(buffer.data(),
                  strnlen(buffer.data(), std::min(static_cast<size_t>(size), buffer.size())));
  explicit_bzero(buffer.data(), buffer.size());
  const bool is_cut = static_cast<size_t>(size) > buffer.size();
  const std::string complaint = is_cut ? TooLong() : WhyRefused();
  if (!complaint.empty()) {
    ForgetCommand();
    WarnOnce(complaint);
    return Reply(kFailure);
  }
  Begin();
}

std::string Client::WhyRefused() const {
  if (command_.size() > kLongestCommand) {
    return TooLong();
  }
  switch (options_.allow_all ? Verdict::kAllowed : Judge(command_)) {
    case Verdict::kAllowed:
      return "";
    case Verdict::kUnknownCommand:
      return "has sent " + NameOf(command_) + ", which libkestrel never sends: refused";
    case Verdict::kOtherForm:
      return "has sent " + NameOf(command_) + " in a form that libkestrel never sends: refused";
  }
  return "";
}

void Client::WarnOnce(const std::string& complaint) {
  if (complaints_.size() < kMostComplaints && complaints_.insert(complaint).second) {
    log_.Warning(Topic::kRefusals, name_ + " " + complaint);
  } else {
    ++untold_complaints_;
  }
}

void Client::Begin() {
  command_name_ = NameOf(command_);
  log_.Debug(Topic::kCommands, name_ + ": " + command_name_);
  // Not for commands, but the end of the connection is told all the same.
  loop_.WatchFor(connection_.get(), 0, [this](short events) {
    if ((events & (POLLHUP | POLLERR)) != 0) {
      leave_();
    }
  });
  deadline_.Start(options_.Timeout(), [this] { Fail("it does not answer"); });
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
  log_.Debug(Topic::kFailures, name_ + ": " + command_name_ + " has failed: " + reason);
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
  deadline_.Start(options_.Timeout(), [this] {
    log_.Warning(Topic::kUnreadReplies, name_ + " does not read its replies");
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
