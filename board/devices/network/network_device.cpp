// SPDX-License-Identifier: Apache-2.0
#include "devices/network/network_device.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "config/config_reader.h"
#include "devices/network/network_command.h"
#include "devices/network/network_status.h"
#include "host/error.h"
#include "host/file_replacement.h"
#include "host/hex_text.h"

namespace kestrel::board::network {
namespace {

using nlohmann::json;

constexpr char kStatusPath[] = "/var/run/network_status";
constexpr char kStatusKey[] = "status";

/// Reads the [network] table; throws ConfigError.
Status ReadConfiguredStatus(ConfigReader& reader) {
  const std::string status = reader.Text(kStatusKey, "ready");
  const std::string problem = CheckStatus(status);
  if (!problem.empty()) {
    reader.Refuse(kStatusKey, "the status " + problem);
  }
  reader.RefuseUnknownKeys();
  return ParseStatus(status);
}

Status CheckedStatus(const std::string& text) {
  const std::string problem = CheckStatus(text);
  if (!problem.empty()) {
    throw UsageError("the status '" + text + "' " + problem);
  }
  return ParseStatus(text);
}

const char* StateName(const Status& status) {
  if (!status.has_value()) {
    return "absent";
  }
  return IsReady(status) ? "ready" : "down";
}

class NetworkDevice : public Device {
 public:
  explicit NetworkDevice(StatusFile file) : file_(std::move(file)) {}

  std::vector<std::string> Paths() const override { return {kStatusPath}; }

  OpenAnswer Open(const std::string& /*path*/, int /*flags*/) override {
    // Where there is no file, the program's own system call finds that out.
    OpenAnswer answer;
    answer.redirect = file_.path();
    return answer;
  }

  std::vector<Redirection> Redirections() const override { return {{kStatusPath, file_.path()}}; }

  json Show() const override {
    const Status status = file_.Read();
    json state = {{"file", kStatusPath}, {"state", StateName(status)}};
    if (status.has_value()) {
      state["bytes"] = ToHex(*status, " ");
    }
    return state;
  }

  json Control(const json& request) override {
    if (request.contains("status")) {
      file_.Write(CheckedStatus(request.at("status").get<std::string>()));
    }
    return Show();
  }

 private:
  StatusFile file_;
};

}  // namespace

DeviceKind Kind() {
  DeviceKind kind;
  kind.name = kDeviceName;
  kind.make = [](ConfigReader& config, const BoardPlace& place, EventLoop&) {
    return std::make_unique<NetworkDevice>(StatusFile(place.folder, ReadConfiguredStatus(config)));
  };
  kind.print = PrintState;
  kind.add_commands = AddNetworkCommand;
  kind.files = {kStatusFile, std::string(kStatusFile) + kReplacementSuffix};
  return kind;
}

}  // namespace kestrel::board::network
