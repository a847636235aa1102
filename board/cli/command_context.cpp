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

namespace kestrel::board {
namespace {

using nlohmann::json;

/// One request to the board at `socket_path`. Throws BoardError. With `attached`, it is a request
/// for a descriptor.
json Exchange(const std::string& socket_path, const std::string& board, const json& request,
              UniqueFd* attached = nullptr) {
  const UniqueFd connection(wire::Connect(socket_path.c_str()));
  if (!connection.valid()) {
    throw BoardError("no board named '" + board + "' is running (see kestrel-board list)");
  }
  const std::string text = ToText(request);
  if (text.size() > wire::kPayloadLimit) {
    throw UsageError("that is more than a board takes at once");
  }
  std::string answer(wire::kPayloadLimit, '\0');
  wire::Reply reply;
  reply.data = answer.data();
  reply.capacity = answer.size();
  const auto operation = attached == nullptr ? wire::Operation::kControl : wire::Operation::kAttach;
  const int error = wire::Exchange(
      connection.get(), {operation, 0, text.data(), static_cast<uint32_t>(text.size())}, &reply);
  UniqueFd descriptor(reply.descriptor);
  if (error != 0) {
    throw BoardError("board '" + board + "': " + strerror(error));
  }
  answer.resize(reply.header.size);
  const json parsed = json::parse(answer);
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
