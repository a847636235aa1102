// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_device.h"

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "devices/wifi/daemon_commands.h"
#include "devices/wifi/daemon_socket.h"
#include "devices/wifi/reply_script.h"
#include "devices/wifi/supplicant.h"
#include "devices/wifi/wifi_command.h"
#include "devices/wifi/wifi_config.h"
#include "devices/wifi/wifi_log.h"
#include "devices/wifi/wifi_text.h"
#include "host/error.h"
#include "host/file_replacement.h"
#include "host/json_text.h"

namespace kestrel::board::wifi {
namespace {

using nlohmann::json;

constexpr char kSocketPath[] = "/var/volatile/tmp/wlan0_request_socket";

/// In the board's folder.
constexpr char kSocketFile[] = "wifi";
constexpr char kNetworksFile[] = "wifi-networks.json";

/// Where the networks of a board are kept. Those of a board that was given a name lie beside its
/// folder, which goes when the board stops, and no board's name begins with a dot.
std::string NetworksFile(const WifiConfig& config, const BoardPlace& place) {
  if (config.networks_file.has_value()) {
    return std::filesystem::absolute(*config.networks_file);
  }
  if (place.given_name.empty()) {
    return place.folder + "/" + kNetworksFile;
  }
  const std::filesystem::path boards = std::filesystem::path(place.folder).parent_path();
  return boards / (".wifi-networks-" + place.given_name + ".json");
}

/// In dBm. Throws UsageError.
int SignalIn(const json& request) {
  const int signal = IntegerIn<int>(request, "signal");
  if (signal < -128 || signal > 127) {
    throw UsageError("a signal has -128 to 127 dBm");
  }
  return signal;
}

const Security* CheckedSecurity(const std::string& name) {
  const Security* security = FindSecurity(name);
  if (security == nullptr) {
    throw UsageError("no security is called '" + name + "'");
  }
  return security;
}

json Masked(bool has_key) { return has_key ? json(kMask) : json(nullptr); }

json Describe(const AccessPoint& point) {
  return {{"name", Escape(point.name)},
          {"bssid", point.bssid},
          {"security", point.security->name},
          {"frequency", point.frequency},
          {"signal", point.signal},
          {"hidden", point.hidden},
          {"passphrase", Masked(!point.passphrase.empty())}};
}

json Describe(const ReplyRule& rule) {
  json description = {{"command", Shorten(rule.command)},
                      {"action", NameOf(rule.action)},
                      {"delay", rule.delay.count()},
                      {"used", rule.used}};
  if (rule.action == ReplyRule::Action::kReply) {
    description["reply"] = Shorten(rule.Text());
  }
  if (rule.count != 0) {
    description["count"] = rule.count;
  }
  return description;
}

class WifiDevice : public Device {
 public:
  WifiDevice(WifiConfig config, const BoardPlace& place, EventLoop& loop)
      : air_(std::move(config.air)),
        store_(NetworksFile(config, place)),
        supplicant_(loop, config.durations, air_, store_),
        commands_(supplicant_, store_, config.ip_address),
        script_(std::move(config.rules)),
        socket_(
            loop, place.folder + "/" + kSocketFile,
            [this](const std::string& command, pid_t client) { return Handle(command, client); }) {
    socket_.Become(config.daemon);
  }

  std::vector<std::string> Paths() const override { return {kSocketPath}; }

  OpenAnswer Open(const std::string& /*path*/, int /*flags*/) override {
    // A socket cannot be opened, and the kernel says how.
    OpenAnswer answer;
    answer.redirect = socket_.path();
    return answer;
  }

  std::vector<Redirection> Redirections() const override {
    return {{kSocketPath, socket_.path(), true}};
  }

  json Show() const override {
    return {{"socket", kSocketPath},
            {"daemon", NameOf(socket_.presence())},
            {"state", supplicant_.StateName()},
            {"scanning", supplicant_.scanning()},
            {"access_points", DescribeAir()},
            {"networks", DescribeNetworks()},
            {"networks_file", store_.file()},
            {"clients", DescribeClients()},
            {"rules", DescribeRules()},
            {"commands", log_.ToJson()}};
  }

  json Control(const json& request) override {
    if (request.contains("script")) {
      script_ = ReplyScript(RulesFromJson(request.at("script")));
    }
    if (request.contains("daemon")) {
      Become(PresenceOf(request.at("daemon").get<std::string>()));
    }
    if (request.contains("add")) {
      AddAccessPoint(request.at("add"));
    }
    if (request.contains("remove")) {
      air_.Remove(request.at("remove").get<std::string>());
    }
    if (request.contains("signal")) {
      air_.SetSignal(request.at("of").get<std::string>(), SignalIn(request));
    }
    return Show();
  }

 private:
  void Become(std::optional<DaemonSocket::Presence> presence) {
    if (!presence.has_value()) {
      throw UsageError("the daemon is running, refusing or absent");
    }
    if (*presence == DaemonSocket::Presence::kListening && socket_.presence() != *presence) {
      supplicant_.Restart();
    }
    socket_.Become(*presence);
  }

  void AddAccessPoint(const json& request) {
    AccessPoint point;
    point.name = request.at("name").get<std::string>();
    point.bssid = request.at("bssid").get<std::string>();
    point.security = CheckedSecurity(request.at("security").get<std::string>());
    point.frequency = FrequencyOf(IntegerIn<int>(request, "channel"));
    point.signal = SignalIn(request);
    point.hidden = request.at("hidden").get<bool>();
    point.passphrase = request.at("passphrase").get<std::string>();
    const std::string problem = CheckAccessPoint(point);
    if (!problem.empty()) {
      throw UsageError(problem);
    }
    air_.Add(point);
  }

  Response Handle(const std::string& command, pid_t client) {
    const ReplyRule* rule = script_.Next(command);
    Response response = rule == nullptr ? Answer(command) : Follow(*rule, command);
    log_.Add(client, command, Outcome(response));
    return response;
  }

  Response Answer(const std::string& command) {
    Response response;
    response.reply = commands_.Answer(command);
    return response;
  }

  Response Follow(const ReplyRule& rule, const std::string& command) {
    Response response;
    switch (rule.action) {
      case ReplyRule::Action::kAnswer:
        response = Answer(command);
        break;
      case ReplyRule::Action::kReply:
        response.reply = rule.Text();
        break;
      case ReplyRule::Action::kSilence:
        response.kind = Response::Kind::kSilence;
        break;
      case ReplyRule::Action::kClose:
        response.kind = Response::Kind::kClose;
        break;
      case ReplyRule::Action::kDie:
        response.kind = Response::Kind::kDie;
        break;
    }
    response.delay = rule.delay;
    return response;
  }

  static std::string Outcome(const Response& response) {
    switch (response.kind) {
      case Response::Kind::kReply:
        return Shorten(response.reply);
      case Response::Kind::kSilence:
        return "(no reply)";
      case Response::Kind::kClose:
        return "(connection closed)";
      case Response::Kind::kDie:
        break;
    }
    return "(daemon died)";
  }

  json DescribeAir() const {
    json list = json::array();
    for (const AccessPoint& point : air_.points()) {
      list.push_back(Describe(point));
    }
    return list;
  }

  json DescribeNetworks() const {
    json list = json::array();
    for (const StoredNetwork& network : store_.networks()) {
      list.push_back({{"id", network.id()},
                      {"ssid", Escape(network.ssid().value_or(""))},
                      {"key_mgmt", network.Get("key_mgmt").value()},
                      {"psk", Masked(network.has_key())},
                      {"current", network.id() == supplicant_.current()},
                      {"disabled", network.disabled()},
                      {"temporarily_disabled", supplicant_.IsPaused(network.id())}});
    }
    return list;
  }

  json DescribeClients() const {
    json list = json::array();
    for (const DaemonSocket::ClientState& client : socket_.Clients()) {
      list.push_back({{"process", client.pid}, {"commands", client.commands}});
    }
    return list;
  }

  json DescribeRules() const {
    json list = json::array();
    for (const ReplyRule& rule : script_.rules()) {
      list.push_back(Describe(rule));
    }
    return list;
  }

  Air air_;
  NetworkStore store_;
  Supplicant supplicant_;
  DaemonCommands commands_;
  ReplyScript script_;
  WifiLog log_;
  DaemonSocket socket_;
};

}  // namespace

DeviceKind Kind() {
  DeviceKind kind;
  kind.name = kDeviceName;
  kind.make = [](ConfigReader& config, const BoardPlace& place, EventLoop& loop) {
    return std::make_unique<WifiDevice>(ReadWifiConfig(config), place, loop);
  };
  kind.print = PrintState;
  kind.add_commands = AddWifiCommand;
  kind.files = {kSocketFile, kNetworksFile, std::string(kNetworksFile) + kReplacementSuffix};
  kind.options = {{"--wifi-script", "FILE",
                   "what the Wi-Fi daemon replies to which commands, a *.toml or *.json file",
                   [](const std::string& path) { return ScriptRequest(ReadScriptFile(path)); }}};
  return kind;
}

}  // namespace kestrel::board::wifi
