// SPDX-License-Identifier: Apache-2.0
// The server of a virtual board, with all of its devices.
#include <fcntl.h>
#include <linux/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "board/served_board.h"
#include "config/config_file.h"
#include "devices/device.h"
#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "host/json_text.h"
#include "protocol/exchange.h"
#include "protocol/text_file.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::board::UniqueFd;
using kestrel::board::wire::Operation;
using kestrel::fuzz::Input;
using kestrel::fuzz::Promise;
using kestrel::test::BoardReply;
using kestrel::test::ServedBoard;

/// Two ports with a cable, and a daemon whose scans and connections take no time.
constexpr char kConfiguration[] = R"({
  "uart": {"ports": [0, 1], "cable": [{"between": [0, 1]}]},
  "wifi": {"scan-time": 0, "association-time": 0, "retry-time": 600000}})";

constexpr size_t kConnections = 4;
constexpr size_t kLongestCommand = 4096;

/// The programs of a board and its command line.
class Programs {
 public:
  explicit Programs(const std::string& folder)
      : folder_(folder), board_(folder, &Configuration()) {}

  /// Does what a section says.
  void Act(const std::string& section) {
    if (section.size() < 2) {
      return;
    }
    const size_t number = static_cast<unsigned char>(section[0]) % kConnections;
    const std::string rest = section.substr(2);
    switch (section[1]) {
      case 'o':
        return Ask(number, Operation::kOpen, O_RDWR, rest);
      case 'i':
        return Ioctl(number, rest);
      case 'c':
        return Ask(number, Operation::kClose, 0, rest);
      case 'j':
        return Ask(number, Operation::kControl, 0, rest);
      case 'a':
        return Ask(number, Operation::kAttach, 0, rest);
      case 'f':
        return Ask(number, Operation::kFileCall, 0, rest);
      case 's':
        return Ask(number, Operation::kConnect, 0, rest);
      case 't':
        return SendText(number, rest);
      case 'r':
        return Keep(number, board_.Exchange(Connection(number), rest));
      case 'd':
        return Command(rest);
      case 'x':
        connections_[number] = UniqueFd();
        return board_.Work();
      default:
        return;
    }
  }

  /// Whatever has happened, the board tells its state to whoever asks.
  void Finish() {
    const UniqueFd connection = board_.Connect();
    const auto reply = board_.Ask(connection, Operation::kControl, 0, R"({"show": true})");
    Promise(reply.has_value());
    std::string text = reply->payload;
    if (reply->descriptor.valid()) {
      Promise(kestrel::board::wire::ReadTextFile(reply->descriptor.get(), &text));
    }
    Promise(nlohmann::json::parse(text).at("answer").contains("wifi"));
  }

 private:
  static const kestrel::board::ConfigNode& Configuration() {
    static const kestrel::board::ConfigNode config = kestrel::board::ParseJson(kConfiguration);
    return config;
  }

  const UniqueFd& Connection(size_t number) {
    if (!connections_[number].valid()) {
      connections_[number] = board_.Connect();
    }
    return connections_[number];
  }

  void Ask(size_t number, Operation operation, uint32_t argument, const std::string& payload) {
    Keep(number, board_.Ask(Connection(number), operation, argument, payload));
  }

  /// Eight hexadecimal digits of the request, and then the argument. A '!' in front leaves that as
  /// it is; otherwise it gets the size that the request says.
  void Ioctl(size_t number, std::string text) {
    const bool is_exact = !text.empty() && text[0] == '!';
    text.erase(0, is_exact ? 1 : 0);
    const auto request = static_cast<uint32_t>(strtoul(text.substr(0, 8).c_str(), nullptr, 16));
    std::string argument = text.substr(std::min<size_t>(text.size(), 8));
    if (!is_exact) {
      argument.resize((_IOC_DIR(request) & _IOC_WRITE) != 0 ? _IOC_SIZE(request) : 0);
    }
    Ask(number, Operation::kIoctl, request, argument);
  }

  void SendText(size_t number, const std::string& text) {
    const UniqueFd file = kestrel::board::wire::MakeTextFile(text);
    board_.Ask(Connection(number), Operation::kText, 0, "", file.get());
  }

  /// A command to the Wi-Fi daemon, at the socket that the board names.
  void Command(const std::string& command) {
    if (!daemon_.valid()) {
      daemon_ = UniqueFd(kestrel::board::wire::Connect((folder_ + "/wifi").c_str()));
    }
    send(daemon_.get(), command.data(), command.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    board_.Work();
    std::array<char, kLongestCommand> reply{};
    if (recv(daemon_.get(), reply.data(), reply.size(), MSG_DONTWAIT) == 0) {
      daemon_ = UniqueFd();
    }
  }

  /// A descriptor that comes back takes the place of the next connection.
  void Keep(size_t number, std::optional<BoardReply> reply) {
    if (reply.has_value()) {
      Promise(reply->payload.size() == reply->header.size);
      if (reply->descriptor.valid()) {
        connections_[(number + 1) % kConnections] = std::move(reply->descriptor);
      }
    }
  }

  std::string folder_;
  ServedBoard board_;
  std::array<UniqueFd, kConnections> connections_;
  UniqueFd daemon_;
};

}  // namespace

/// Sections, each done in turn: the digit of a connection, a letter for what is done over it, and
/// what goes with that: o PATH opens, i REQUEST ARGUMENT is an ioctl, c asks before a close, j JSON
/// and a JSON come from the command line, t JSON goes before an empty one of these, f "CALL FILE"
/// asks for a fault, s PATH for a socket, r sends bytes as they are, d COMMAND goes to the Wi-Fi
/// daemon, and x ends the connection. So "0o/dev/gpiochip0" and "0i8044B401" in the next section
/// ask the GPIO chip for its name.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const kestrel::test::TemporaryDirectory folder;
  {
    Programs programs(folder.path());
    for (Input input(data, size); !input.AtEnd();) {
      programs.Act(input.TakeSection());
    }
    programs.Finish();
  }
  for (const std::string& file : kestrel::board::DeviceFiles()) {
    std::filesystem::remove(folder.path() + "/" + file);
  }
  // Else a board would leave something behind when it ends.
  Promise(folder.IsEmpty());
  return 0;
}
