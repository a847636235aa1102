// SPDX-License-Identifier: Apache-2.0
#include "served_board.h"

#include <sys/socket.h>

#include <array>
#include <chrono>
#include <vector>

#include "protocol/descriptor_message.h"
#include "protocol/exchange.h"

namespace kestrel::test {
namespace {

using board::UniqueFd;
namespace wire = board::wire;

/// To accept a connection, to read from it, and once more for what follows from that.
constexpr int kRounds = 3;

std::optional<BoardReply> Receive(int socket) {
  BoardReply reply;
  std::vector<char> buffer(wire::kPayloadLimit);
  wire::DescriptorMessage message(&reply.header, sizeof reply.header, buffer.data(), buffer.size());
  const ssize_t size = message.Receive(socket);
  reply.descriptor = UniqueFd(message.descriptor());
  if (size < static_cast<ssize_t>(sizeof reply.header)) {
    return std::nullopt;
  }
  reply.payload.assign(buffer.data(), static_cast<size_t>(size) - sizeof reply.header);
  return reply;
}

}  // namespace

ServedBoard::ServedBoard(const std::string& folder, const board::ConfigNode* config)
    : socket_path_(folder + "/socket"),
      board_("bench", {"", folder}, config, loop_),
      server_(board_, loop_, socket_path_, [this] { stopped_ = true; }) {}

UniqueFd ServedBoard::Connect() const { return UniqueFd(wire::Connect(socket_path_.c_str())); }

void ServedBoard::Work() {
  for (int i = 0; i < kRounds; ++i) {
    loop_.CallAfter(std::chrono::milliseconds(0), [this] { loop_.Stop(); });
    loop_.Run();
  }
}

std::optional<BoardReply> ServedBoard::Exchange(const UniqueFd& connection,
                                                const std::string& bytes, int file) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0) {
    return std::nullopt;
  }
  const UniqueFd own(ends[0]);
  UniqueFd boards(ends[1]);
  std::string copy = bytes;
  wire::DescriptorMessage message(copy.data(), copy.size(), nullptr, 0);
  message.Send(connection.get(), file >= 0 ? file : boards.get(), MSG_DONTWAIT);
  boards = UniqueFd();
  Work();
  return Receive(own.get());
}

std::optional<BoardReply> ServedBoard::Ask(const UniqueFd& connection, wire::Operation operation,
                                           uint32_t number, const std::string& payload, int file) {
  wire::RequestHeader header;
  header.operation = operation;
  header.number = number;
  header.size = static_cast<uint32_t>(payload.size());
  return Exchange(connection,
                  std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload,
                  file);
}

}  // namespace kestrel::test
