// SPDX-License-Identifier: Apache-2.0
#include "server/server.h"

#include <fcntl.h>
#include <linux/ioctl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/error.h"
#include "host/json_text.h"
#include "protocol/descriptor_message.h"
#include "protocol/exchange.h"
#include "protocol/text_file.h"

namespace kestrel::board {
namespace {

using nlohmann::json;
using wire::Operation;
using wire::Outcome;
using wire::ReplyHeader;

UniqueFd Listen(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  UniqueFd listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!listener.valid() ||
      bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.get(), SOMAXCONN) != 0) {
    ThrowErrno(path);
  }
  return listener;
}

bool IsFromThisProcess(int connection) {
  ucred peer{};
  socklen_t length = sizeof peer;
  return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
         peer.pid == getpid();
}

UniqueFd Accept(int listener) {
  return UniqueFd(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

/// A descriptor to give up when there are no others.
UniqueFd Spare() { return UniqueFd(open("/dev/null", O_RDONLY | O_CLOEXEC)); }

/// Sends a reply without a descriptor. A program that died while it waited for its reply is no
/// concern of the board's, and neither is one that passed a socket in which there is no room.
void Reply(int reply_socket, const ReplyHeader& header, const void* data) {
  static_cast<void>(wire::SendReply(reply_socket, header, data, -1));
}

void Fail(int reply_socket, int error) {
  ReplyHeader header;
  header.error = error;
  Reply(reply_socket, header, nullptr);
}

void Done(int reply_socket) {
  ReplyHeader header;
  header.outcome = Outcome::kDone;
  Reply(reply_socket, header, nullptr);
}

ReplyHeader HeaderOf(Outcome outcome, size_t size) {
  ReplyHeader header;
  header.outcome = outcome;
  header.size = static_cast<uint32_t>(size);
  return header;
}

void Redirect(int reply_socket, const std::string& path) {
  Reply(reply_socket, HeaderOf(Outcome::kRedirect, path.size()), path.data());
}

/// Whether a message has all that its operation needs. What a device reads of an argument, a
/// program passes whole.
bool IsComplete(const wire::RequestHeader& header, const std::vector<uint8_t>& payload) {
  switch (header.operation) {
    case Operation::kIoctl:
      return header.size ==
             ((_IOC_DIR(header.number) & _IOC_WRITE) != 0 ? _IOC_SIZE(header.number) : 0);
    case Operation::kFileCall:
      return std::find(payload.begin(), payload.end(), ' ') != payload.end();
    default:
      return true;
  }
}

json Refusal(const std::string& reason, int status) {
  return {{"error", reason}, {"status", status}};
}

/// Sends an answer to the command line; returns 0 or an errno value.
int SendText(int reply_socket, const std::string& text, int descriptor) {
  if (text.size() <= wire::kPayloadLimit) {
    const ReplyHeader header = HeaderOf(Outcome::kDone, text.size());
    return wire::SendReply(reply_socket, header, text.data(), descriptor);
  }
  // A message carries one descriptor.
  if (descriptor >= 0) {
    return EMSGSIZE;
  }
  const UniqueFd file = wire::MakeTextFile(text);
  return file.valid()
             ? wire::SendReply(reply_socket, HeaderOf(Outcome::kText, 0), nullptr, file.get())
             : errno;
}

}  // namespace

Server::Server(Board& board, EventLoop& loop, const std::string& socket_path,
               std::function<void()> stop)
    : board_(board),
      loop_(loop),
      socket_path_(socket_path),
      stop_(std::move(stop)),
      buffer_(wire::kPayloadLimit),
      spare_(Spare()),
      listener_(Listen(socket_path)) {
  loop_.Watch(listener_.get(), [this] { AcceptAll(); });
}

Server::~Server() {
  loop_.Unwatch(listener_.get());
  for (const auto& [descriptor, connection] : connections_) {
    loop_.Unwatch(descriptor);
  }
  unlink(socket_path_.c_str());
}

void Server::Add(UniqueFd socket) {
  const int descriptor = socket.get();
  connections_[descriptor].socket = std::move(socket);
  loop_.Watch(descriptor, [this, descriptor] { Receive(descriptor); });
}

int Server::AcceptAll() {
  int own = -1;
  while (true) {
    UniqueFd accepted = Accept(listener_.get());
    if (!accepted.valid()) {
      if (errno == EMFILE && (EndClosedSessions() || TurnAway())) {
        continue;
      }
      return own;
    }
    own = IsFromThisProcess(accepted.get()) ? accepted.get() : own;
    Add(std::move(accepted));
  }
}

bool Server::TurnAway() {
  spare_ = UniqueFd();
  const bool turned_away = Accept(listener_.get()).valid();
  spare_ = Spare();
  return turned_away;
}

UniqueFd Server::ConnectToSelf(std::unique_ptr<Session> session) {
  AcceptAll();
  UniqueFd program_side(wire::Connect(socket_path_.c_str()));
  if (!program_side.valid()) {
    return program_side;
  }
  const int server_side = AcceptAll();
  if (server_side < 0) {
    return UniqueFd();
  }
  connections_.at(server_side).session = std::move(session);
  return program_side;
}

bool Server::EndClosedSessions() {
  std::vector<pollfd> sockets;
  for (const auto& [descriptor, connection] : connections_) {
    sockets.push_back({descriptor, POLLRDHUP, 0});
  }
  poll(sockets.data(), sockets.size(), 0);
  const size_t before = connections_.size();
  for (const pollfd& socket : sockets) {
    if ((socket.revents & (POLLRDHUP | POLLHUP | POLLERR)) != 0) {
      loop_.Unwatch(socket.fd);
      connections_.erase(socket.fd);
    }
  }
  return connections_.size() < before;
}

void Server::Receive(int connection) {
  // A program that closed a line and then asks for something must find the line free, although the
  // two arrive on different sockets.
  EndClosedSessions();
  if (connections_.count(connection) == 0) {
    return;
  }
  Message message;
  wire::DescriptorMessage packet(&message.header, sizeof message.header, buffer_.data(),
                                 buffer_.size());
  const ssize_t received = packet.Receive(connection);
  message.reply_socket = UniqueFd(packet.descriptor());
  const ssize_t expected =
      static_cast<ssize_t>(sizeof message.header) + static_cast<ssize_t>(message.header.size);
  if (received != expected || message.header.magic != wire::kMagic ||
      !message.reply_socket.valid()) {
    return;
  }
  message.payload.assign(buffer_.begin(), buffer_.begin() + message.header.size);
  if (IsComplete(message.header, message.payload)) {
    Handle(connection, message);
  }
}

void Server::Handle(int connection, Message& message) {
  switch (message.header.operation) {
    case Operation::kOpen:
      return HandleOpen(connection, message);
    case Operation::kIoctl:
      return HandleIoctl(connection, message);
    case Operation::kClose:
      return HandleClose(connection, message);
    case Operation::kFileCall:
      return HandleFileCall(message);
    case Operation::kConnect:
      return HandleConnect(message);
    case Operation::kControl:
    case Operation::kAttach:
      return HandleControl(connection, message);
    case Operation::kText:
      connections_.at(connection).text = std::move(message.reply_socket);
      return;
  }
  Fail(message.reply_socket.get(), ENOSYS);
}

void Server::HandleOpen(int connection, const Message& message) {
  const std::string path(message.payload.begin(), message.payload.end());
  const int fault = board_.faults().Next("open", path);
  Device* device = board_.FindByPath(path);
  if (fault != 0 || device == nullptr) {
    return Fail(message.reply_socket.get(), fault != 0 ? fault : ENOENT);
  }
  OpenAnswer answer = device->Open(path, static_cast<int>(message.header.number));
  if (answer.error != 0) {
    return Fail(message.reply_socket.get(), answer.error);
  }
  connections_.at(connection).session = std::move(answer.session);
  if (!answer.redirect.empty()) {
    return Redirect(message.reply_socket.get(), answer.redirect);
  }
  Done(message.reply_socket.get());
}

void Server::HandleConnect(const Message& message) {
  const std::string path(message.payload.begin(), message.payload.end());
  const int fault = board_.faults().Next("connect", path);
  const std::string socket = board_.FindSocket(path);
  if (fault != 0 || socket.empty()) {
    return Fail(message.reply_socket.get(), fault != 0 ? fault : ECONNREFUSED);
  }
  Redirect(message.reply_socket.get(), socket);
}

void Server::HandleIoctl(int connection, const Message& message) {
  Session* session = connections_.at(connection).session.get();
  const uint32_t request = message.header.number;
  const int fault = board_.faults().Next("ioctl", RequestName(request));
  if (fault != 0 || session == nullptr) {
    return Fail(message.reply_socket.get(), fault != 0 ? fault : EBADF);
  }
  IoctlAnswer answer = session->Ioctl(request, message.payload);
  if (answer.error != 0) {
    return Fail(message.reply_socket.get(), answer.error);
  }
  UniqueFd made;
  if (answer.session != nullptr) {
    made = ConnectToSelf(std::move(answer.session));
    if (!made.valid()) {
      return Fail(message.reply_socket.get(), ENFILE);
    }
  }
  ReplyHeader header;
  header.outcome = Outcome::kDone;
  header.result = answer.result;
  header.size = static_cast<uint32_t>(answer.data.size());
  header.descriptor_offset = answer.descriptor_offset;
  const int error =
      wire::SendReply(message.reply_socket.get(), header, answer.data.data(), made.get());
  if (error != 0 && made.valid()) {
    // Too many descriptors are on their way.
    Fail(message.reply_socket.get(), ENFILE);
  }
}

void Server::HandleClose(int connection, const Message& message) {
  const Session* session = connections_.at(connection).session.get();
  const int fault = session == nullptr ? 0 : board_.faults().Next("close", session->Name());
  if (fault != 0) {
    return Fail(message.reply_socket.get(), fault);
  }
  Done(message.reply_socket.get());
}

void Server::HandleFileCall(const Message& message) {
  const std::string question(message.payload.begin(), message.payload.end());
  const size_t space = question.find(' ');
  const std::string call = question.substr(0, space);
  const Board::RedirectedPath found = board_.FindByFile(question.substr(space + 1));
  if (found.device == nullptr) {
    return Done(message.reply_socket.get());
  }
  const int fault = board_.faults().Next(call, found.path);
  if (fault != 0) {
    return Fail(message.reply_socket.get(), fault);
  }
  const wire::TerminalBits not_kept =
      call == "tcsetattr" ? found.device->NotKept(found.path) : wire::TerminalBits{};
  ReplyHeader header;
  header.outcome = Outcome::kDone;
  header.size = sizeof not_kept;
  Reply(message.reply_socket.get(), header, &not_kept);
}

void Server::HandleControl(int connection, const Message& message) {
  json answer;
  UniqueFd descriptor;
  try {
    const json request = RequestIn(connection, message);
    answer = {{"answer", Answer(request, message.header.operation, &descriptor)}};
  } catch (const BoardError& error) {
    answer = Refusal(error.what(), error.status());
  } catch (const json::exception& error) {
    answer = Refusal(error.what(), 1);
  }
  const std::string text = ToText(answer);
  const int error = SendText(message.reply_socket.get(), text, descriptor.get());
  if (error != 0) {
    const json refusal = Refusal("the board cannot send its answer of " +
                                     std::to_string(text.size()) + " bytes: " + strerror(error),
                                 1);
    SendText(message.reply_socket.get(), ToText(refusal), -1);
  }
}

json Server::RequestIn(int connection, const Message& message) {
  const UniqueFd file = std::move(connections_.at(connection).text);
  if (!file.valid()) {
    return json::parse(message.payload);
  }
  std::string text;
  if (!wire::ReadTextFile(file.get(), &text)) {
    ThrowErrno("the board cannot read the request");
  }
  return json::parse(text);
}

json Server::Answer(const json& request, Operation operation, UniqueFd* descriptor) {
  if (operation == Operation::kAttach) {
    return board_.Attach(request, descriptor);
  }
  if (request.contains("stop")) {
    stop_();
    return true;
  }
  return board_.Control(request);
}

}  // namespace kestrel::board
