// SPDX-License-Identifier: Apache-2.0
#include "cli/command_context.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/board_directory.h"
#include "host/error.h"
#include "host/json_text.h"
#include "host/text.h"
#include "host/unique_fd.h"
#include "protocol/exchange.h"
#include "protocol/text_file.h"

namespace kestrel::board {
namespace {

using nlohmann::json;

[[noreturn]] void ThrowBoardError(const std::string& board, int error) {
  throw BoardError("board '" + board + "': " + strerror(error));
}

/// Gives the board a text that is too long for a message, before the request to which it belongs.
void SendAsFile(int connection, const std::string& board, const std::string& text) {
  const UniqueFd file = wire::MakeTextFile(text);
  if (!file.valid()) {
    const std::string reason = strerror(errno);
    throw BoardError("a request of " + std::to_string(text.size()) +
                     " bytes cannot be sent to the board: " + reason);
  }
  const int error = wire::SendFile(connection, wire::Operation::kText, file.get());
  if (error != 0) {
    ThrowBoardError(board, error);
  }
}

/// The text of an answer, and the descriptor that came along if that is not the text's.
std::string TextOf(const std::string& board, const wire::Reply& reply, const std::string& buffer,
                   UniqueFd* descriptor) {
  if (reply.header.outcome != wire::Outcome::kText) {
    return buffer.substr(0, reply.header.size);
  }
  const UniqueFd file = std::move(*descriptor);
  std::string text;
  errno = EMFILE;  // what has lost the file on its way
  if (!file.valid() || !wire::ReadTextFile(file.get(), &text)) {
    const std::string reason = strerror(errno);
    throw BoardError("the answer of board '" + board + "' cannot be read: " + reason);
  }
  return text;
}

/// One request to the board at `socket_path`. Throws BoardError. With `attached`, it is a request
/// for a descriptor.
json Exchange(const std::string& socket_path, const std::string& board, const json& request,
              UniqueFd* attached = nullptr) {
  const UniqueFd connection(wire::Connect(socket_path.c_str()));
  if (!connection.valid()) {
    throw BoardError("no board named '" + board + "' is running (see kestrel-board list)");
  }
  std::string text = ToText(request);
  if (text.size() > wire::kPayloadLimit) {
    SendAsFile(connection.get(), board, text);
    text.clear();
  }
  std::string buffer(wire::kPayloadLimit, '\0');
  wire::Reply reply;
  reply.data = buffer.data();
  reply.capacity = buffer.size();
  const auto operation = attached == nullptr ? wire::Operation::kControl : wire::Operation::kAttach;
  const int error = wire::Exchange(
      connection.get(), {operation, 0, text.data(), static_cast<uint32_t>(text.size())}, &reply);
  UniqueFd descriptor(reply.descriptor);
  if (error != 0) {
    ThrowBoardError(board, error);
  }
  const json parsed = json::parse(TextOf(board, reply, buffer, &descriptor));
  if (parsed.contains("error")) {
    throw BoardError(parsed.at("error").get<std::string>(), parsed.at("status").get<int>());
  }
  if (attached != nullptr) {
    *attached = std::move(descriptor);
  }
  return parsed.at("answer");
}

std::string OnlyRunningBoard() {
  const std::vector<std::string> running = RunningBoards();
  if (running.empty()) {
    throw BoardError("no board is running; start one with: kestrel-board start NAME");
  }
  if (running.size() > 1) {
    throw UsageError("several boards are running (" + Join(running) +
                     "); choose one with --board NAME");
  }
  return running.front();
}

}  // namespace

CommandContext::CommandContext() : options_(std::make_shared<Options>()) {}

void CommandContext::AddBoardOption(CLI::App& command) const {
  command.add_option("--board", options_->board,
                     "the board, where more than one runs; on a board, that one");
  AddJsonOption(command);
}

void CommandContext::AddJsonOption(CLI::App& command) const {
  command.add_flag("--json", options_->json, "print JSON");
}

json CommandContext::AskBoard(const std::string& name, const json& request) {
  return Exchange(SocketPathOf(name), name, request);
}

json CommandContext::Ask(const json& request) const {
  const auto [socket_path, name] = ChosenBoard();
  return Exchange(socket_path, name, request);
}

UniqueFd CommandContext::Attach(const json& request) const {
  const auto [socket_path, name] = ChosenBoard();
  UniqueFd attached;
  Exchange(socket_path, name, request, &attached);
  return attached;
}

std::pair<std::string, std::string> CommandContext::ChosenBoard() const {
  const char* own = getenv(wire::kSocketVariable);
  if (options_->board.empty() && own != nullptr) {
    return {own, own};
  }
  const std::string name = options_->board.empty() ? OnlyRunningBoard() : options_->board;
  return {SocketPathOf(name), name};
}

void CommandContext::Print(const json& result,
                           const std::function<void(std::ostream& out)>& print) const {
  if (options_->json) {
    std::cout << ToText(result, 2) << '\n';
  } else {
    print(std::cout);
  }
  if (!std::cout.flush()) {
    throw BoardError("standard output cannot be written");
  }
}

}  // namespace kestrel::board
