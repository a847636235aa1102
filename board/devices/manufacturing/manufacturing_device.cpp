// SPDX-License-Identifier: Apache-2.0
#include "devices/manufacturing/manufacturing_device.h"

#include <cerrno>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>

#include "devices/manufacturing/manufacturing_config.h"
#include "host/error.h"
#include "host/hex_text.h"

namespace kestrel::board::manufacturing {
namespace {

using nlohmann::json;
using Bytes = std::vector<uint8_t>;

constexpr char kWardenPath[] = "/dev/warden";
constexpr char kLodestonePath[] = "/dev/lodestone";

/// An open descriptor of either node; that of the lodestone knows no requests.
class NodeSession : public Session {
 public:
  NodeSession(std::string path, const DeviceState& state) : path_(std::move(path)), state_(state) {}

  IoctlAnswer Ioctl(uint32_t request, const Bytes& /*argument*/) override {
    IoctlAnswer answer;
    if (path_ != kWardenPath || request != kGetDeviceState) {
      answer.error = ENOTTY;
      return answer;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(&state_);
    answer.data.assign(bytes, bytes + sizeof state_);
    return answer;
  }

  std::string Name() const override { return path_; }

 private:
  std::string path_;
  DeviceState state_;
};

class ManufacturingDevice : public Device {
 public:
  explicit ManufacturingDevice(const ManufacturingConfig& config) : config_(config) {}

  std::vector<std::string> Paths() const override { return {kWardenPath, kLodestonePath}; }

  OpenAnswer Open(const std::string& path, int /*flags*/) override {
    OpenAnswer answer;
    if (path == kWardenPath ? config_.warden_present : config_.lodestone_present) {
      answer.session = std::make_unique<NodeSession>(path, config_.state);
    } else {
      answer.error = ENOENT;
    }
    return answer;
  }

  json Show() const override {
    const json warden = {{"device", kWardenPath}, {"present", config_.warden_present}};
    const json lodestone = {{"device", kLodestonePath}, {"present", config_.lodestone_present}};
    return {{"nodes", {warden, lodestone}}, {"device_id", ToHex(config_.state.identifier)}};
  }

  json Control(const json& /*request*/) override {
    throw BoardError("the manufacturing devices take no requests");
  }

 private:
  ManufacturingConfig config_;
};

void PrintState(const json& state, std::ostream& out) {
  const char* separator = "manufacturing: ";
  for (const json& node : state.at("nodes")) {
    out << separator << node.at("device").get<std::string>();
    if (!node.at("present").get<bool>()) {
      out << " (absent)";
    }
    separator = ", ";
  }
  out << "\n  device id " << state.at("device_id").get<std::string>() << '\n';
}

}  // namespace

DeviceKind Kind() {
  DeviceKind kind;
  kind.name = "manufacturing";
  kind.make = [](ConfigReader& config, const BoardPlace& place, EventLoop&) {
    return std::make_unique<ManufacturingDevice>(ReadManufacturingConfig(config, place.given_name));
  };
  kind.print = PrintState;
  kind.add_commands = [](CLI::App&, const CommandContext&) {};
  kind.requests = {{"WARDEN_GET_DEVICE_STATE", kGetDeviceState}};
  return kind;
}

}  // namespace kestrel::board::manufacturing
