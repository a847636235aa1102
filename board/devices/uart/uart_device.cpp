// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/uart_device.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "devices/uart/uart_command.h"
#include "devices/uart/uart_config.h"
#include "devices/uart/uart_port.h"
#include "devices/uart/wire_socket.h"
#include "host/error.h"
#include "host/json_text.h"
#include "host/text.h"

namespace kestrel::board::uart {
namespace {

using nlohmann::json;

/// Keeps a port open until the program that asked for it has opened it itself.
class Opening : public Session {
 public:
  Opening(std::string path, UniqueFd port) : path_(std::move(path)), port_(std::move(port)) {}

  IoctlAnswer Ioctl(uint32_t /*request*/, const std::vector<uint8_t>& /*argument*/) override {
    IoctlAnswer answer;
    answer.error = ENOTTY;
    return answer;
  }
  std::string Name() const override { return path_; }

 private:
  std::string path_;
  UniqueFd port_;
};

class UartDevice : public Device {
 public:
  UartDevice(const UartConfig& config, EventLoop& loop) : loop_(loop) {
    for (const auto& [number, port] : config) {
      lines_[number].port = std::make_unique<UartPort>(number, port.forgotten);
      lines_[number].other_end = port.other_end;
    }
    for (auto& [number, line] : lines_) {
      Connect(line);
    }
  }

  std::vector<std::string> Paths() const override { return {"/dev/ttyS#"}; }

  OpenAnswer Open(const std::string& path, int /*flags*/) override {
    OpenAnswer answer;
    Line* line = FindByPath(path);
    if (line == nullptr) {
      answer.error = ENOENT;
      return answer;
    }
    UniqueFd opened = line->port->Open();
    if (!opened.valid()) {
      answer.error = errno;
      return answer;
    }
    line->wire->Run();
    answer.session = std::make_unique<Opening>(path, std::move(opened));
    answer.redirect = line->port->file();
    return answer;
  }

  std::vector<Redirection> Redirections() const override {
    std::vector<Redirection> redirections;
    for (const auto& [number, line] : lines_) {
      redirections.push_back({line.port->path(), line.port->file()});
    }
    return redirections;
  }

  wire::TerminalBits NotKept(const std::string& path) const override {
    for (const auto& [number, line] : lines_) {
      if (line.port->path() == path) {
        return BitsOf(line.port->forgotten());
      }
    }
    return {};
  }

  json Show() const override {
    json ports = json::array();
    for (const auto& [number, line] : lines_) {
      ports.push_back(Describe(line));
    }
    return {{"ports", std::move(ports)}};
  }

  json Control(const json& request) override {
    Line& line = CheckedLine(IntegerIn<int>(request, "port"));
    SettingNames forgotten =
        request.value("keep_all", false) ? SettingNames() : line.port->forgotten();
    forgotten.merge(request.value("forget", SettingNames()));
    line.port->Forget(std::move(forgotten));
    return Describe(line);
  }

  json Attach(const json& request, UniqueFd* descriptor) override {
    Line& line = CheckedLine(IntegerIn<int>(request, "port"));
    if (line.other_end.has_value() || line.socket != nullptr) {
      throw BoardError(line.port->path() + ": the other end of its wire is taken: " +
                       OtherEnd(line).get<std::string>());
    }
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      ThrowErrno("socketpair");
    }
    *descriptor = UniqueFd(ends[0]);
    line.socket = std::make_unique<WireSocket>(UniqueFd(ends[1]), [this, &line] { Detach(line); });
    Connect(line);
    return Describe(line);
  }

 private:
  /// A port and its wire.
  struct Line {
    std::unique_ptr<UartPort> port;
    std::optional<int> other_end;        ///< a port, which may be this one
    std::unique_ptr<WireSocket> socket;  ///< a command that is attached, if any
    std::shared_ptr<Shuttle> wire;       ///< the two ports of a cable share it
  };

  /// Makes the wire to what is at its other end.
  void Connect(Line& line) {
    UartPort* const port = line.port.get();
    std::vector<Shuttle::Lane> lanes;
    // The shuttle before must have stopped watching the port.
    line.wire.reset();
    if (line.socket != nullptr) {
      lanes = {{port, line.socket.get()}, {line.socket.get(), port}};
    } else if (!line.other_end.has_value()) {
      lanes = {{port, nullptr}};
    } else if (*line.other_end == port->number()) {
      lanes = {{port, port}};
    } else {
      Line& other = lines_.at(*line.other_end);
      if (other.wire != nullptr) {
        line.wire = other.wire;
        return;
      }
      lanes = {{port, other.port.get()}, {other.port.get(), port}};
    }
    line.wire = std::make_shared<Shuttle>(loop_, std::move(lanes));
  }

  void Detach(Line& line) {
    line.wire.reset();
    line.socket.reset();
    Connect(line);
  }

  static json OtherEnd(const Line& line) {
    if (line.socket != nullptr) {
      return "kestrel-board uart";
    }
    if (!line.other_end.has_value()) {
      return nullptr;
    }
    return *line.other_end == line.port->number()
               ? "loopback"
               : "cable to /dev/ttyS" + std::to_string(*line.other_end);
  }

  static json Describe(const Line& line) {
    json description = line.port->Describe();
    description["other_end"] = OtherEnd(line);
    return description;
  }

  Line* FindByPath(const std::string& path) {
    for (auto& [number, line] : lines_) {
      if (line.port->path() == path) {
        return &line;
      }
    }
    return nullptr;
  }

  Line& CheckedLine(int number) {
    const auto found = lines_.find(number);
    if (found == lines_.end()) {
      std::vector<std::string> numbers;
      for (const auto& [known, line] : lines_) {
        numbers.push_back(std::to_string(known));
      }
      throw UsageError("port " + std::to_string(number) + ": the board has " +
                       (numbers.empty() ? "no ports" : "ports " + Join(numbers)));
    }
    return found->second;
  }

  EventLoop& loop_;
  std::map<int, Line> lines_;
};

}  // namespace

DeviceKind Kind() {
  DeviceKind kind;
  kind.name = kDeviceName;
  kind.make = [](ConfigReader& config, const BoardPlace&, EventLoop& loop) {
    return std::make_unique<UartDevice>(ReadUartConfig(config), loop);
  };
  kind.print = PrintState;
  kind.add_commands = AddUartCommand;
  return kind;
}

}  // namespace kestrel::board::uart
