// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/wifi_command.h"

#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/command_context.h"
#include "devices/wifi/wifi_config.h"

namespace kestrel::board::wifi {
namespace {

using nlohmann::json;

std::string Text(const json& value) { return value.get<std::string>(); }

void PrintAccessPoint(const json& point, std::ostream& out) {
  out << "  access point " << Text(point.at("bssid")) << "  " << point.at("frequency") << " MHz  "
      << std::setw(4) << point.at("signal").get<int>() << " dBm  " << std::left << std::setw(9)
      << Text(point.at("security")) << std::right << "  \"" << Text(point.at("name")) << '"'
      << (point.at("hidden").get<bool>() ? ", hidden" : "") << '\n';
}

void PrintNetwork(const json& network, std::ostream& out) {
  out << "  network " << network.at("id") << "  \"" << Text(network.at("ssid")) << "\"  "
      << Text(network.at("key_mgmt"));
  for (const char* flag : {"current", "disabled", "temporarily_disabled"}) {
    out << (network.at(flag).get<bool>() ? std::string(", ") + flag : "");
  }
  out << '\n';
}

void PrintRule(const json& rule, std::ostream& out) {
  out << "  rule \"" << Text(rule.at("command")) << "\": " << Text(rule.at("action"));
  if (rule.contains("reply")) {
    out << " \"" << Text(rule.at("reply")) << '"';
  }
  if (rule.at("delay") != 0) {
    out << " after " << rule.at("delay") << " ms";
  }
  out << ", used " << rule.at("used");
  if (rule.contains("count")) {
    out << " of " << rule.at("count");
  }
  out << '\n';
}

void PrintCommand(const json& command, std::ostream& out) {
  out << "  " << command.at("client") << ": " << Text(command.at("command")) << " -> "
      << Text(command.at("outcome")) << '\n';
}

void PrintEach(const json& list, void (*print)(const json& entry, std::ostream& out),
               std::ostream& out) {
  for (const json& entry : list) {
    print(entry, out);
  }
}

struct AccessPointOptions {
  std::string name;
  std::string bssid;
  std::string security = "wpa2";
  std::string passphrase;
  int channel = 1;
  int signal = -50;
  bool hidden = false;
};

void Ask(json request, const CommandContext& context) {
  request["device"] = kDeviceName;
  const json state = context.Ask(request);
  context.Print(state, [&](std::ostream& out) { PrintState(state, out); });
}

std::string CheckSecurity(const std::string& text) {
  const std::vector<std::string> known = SecurityNames();
  return FindSecurity(text) != nullptr ? ""
                                       : "no security is called '" + text +
                                             "' (known: " + CLI::detail::join(known, ", ") + ")";
}

void AddAddCommand(CLI::App& wifi, const CommandContext& context) {
  auto options = std::make_shared<AccessPointOptions>();
  CLI::App* command = wifi.add_subcommand("add", "Add an access point to what can be heard");
  command->add_option("NAME", options->name, "its name, which may be empty")->required();
  command->add_option("--bssid", options->bssid, "its address; one of its own if not given");
  command->add_option("--security", options->security, "how it is protected; wpa2 if not given")
      ->check(CheckSecurity);
  command->add_option("--passphrase", options->passphrase, "the one that it lets in");
  command->add_option("--channel", options->channel, "its channel; 1 if not given");
  command->add_option("--signal", options->signal, "how strong it is, in dBm; -50 if not given")
      ->check(CLI::Range(-128, 127));
  command->add_flag("--hidden", options->hidden, "it does not tell its name");
  context.AddBoardOption(*command);
  command->callback([options, &context] {
    Ask({{"add",
          {{"name", options->name},
           {"bssid", options->bssid},
           {"security", options->security},
           {"passphrase", options->passphrase},
           {"channel", options->channel},
           {"signal", options->signal},
           {"hidden", options->hidden}}}},
        context);
  });
}

void AddRemoveCommand(CLI::App& wifi, const CommandContext& context) {
  auto name = std::make_shared<std::string>();
  CLI::App* command = wifi.add_subcommand("remove", "Remove access points");
  command->add_option("NAME", *name, "their name or address")->required();
  context.AddBoardOption(*command);
  command->callback([name, &context] { Ask({{"remove", *name}}, context); });
}

void AddSignalCommand(CLI::App& wifi, const CommandContext& context) {
  auto options = std::make_shared<AccessPointOptions>();
  CLI::App* command = wifi.add_subcommand("signal", "Set how strong access points are");
  command->add_option("NAME", options->name, "their name or address")->required();
  command->add_option("DBM", options->signal, "such as -70")
      ->check(CLI::Range(-128, 127))
      ->required();
  context.AddBoardOption(*command);
  command->callback([options, &context] {
    Ask({{"of", options->name}, {"signal", options->signal}}, context);
  });
}

}  // namespace

json ScriptRequest(const std::vector<ReplyRule>& rules) {
  return {{"device", kDeviceName}, {"script", ToJson(rules)}};
}

void PrintState(const json& state, std::ostream& out) {
  out << "wifi: daemon " << Text(state.at("daemon"));
  // Without a daemon nobody knows what the radio does.
  if (state.at("daemon") == NameOf(DaemonSocket::Presence::kListening)) {
    out << ", " << Text(state.at("state"))
        << (state.at("scanning").get<bool>() ? ", scanning" : "");
  }
  out << '\n';
  PrintEach(state.at("access_points"), PrintAccessPoint, out);
  PrintEach(state.at("networks"), PrintNetwork, out);
  PrintEach(state.at("rules"), PrintRule, out);
  for (const json& client : state.at("clients")) {
    out << "  client " << client.at("process") << ", " << client.at("commands") << " commands\n";
  }
  PrintEach(state.at("commands"), PrintCommand, out);
}

void AddWifiCommand(CLI::App& app, const CommandContext& context) {
  struct Options {
    std::string script;
    std::string daemon;
  };
  auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("wifi", "Show the Wi-Fi daemon of a running board, or change it");
  command
      ->add_option("--script", options->script,
                   "what it replies to which commands, a *.toml or *.json file; none: only what "
                   "it says itself")
      ->type_name("FILE");
  command
      ->add_option("--daemon", options->daemon,
                   "running; refusing, as one that was killed; or absent, as before it started")
      ->check(CLI::IsMember(PresenceNames()));
  context.AddBoardOption(*command);
  AddAddCommand(*command, context);
  AddRemoveCommand(*command, context);
  AddSignalCommand(*command, context);
  command->callback([command, options, &context] {
    if (!command->get_subcommands().empty()) {
      return;
    }
    json request = json::object();
    if (!options->script.empty()) {
      request = ScriptRequest(options->script == "none" ? std::vector<ReplyRule>()
                                                        : ReadScriptFile(options->script));
    }
    if (!options->daemon.empty()) {
      request["daemon"] = options->daemon;
    }
    Ask(std::move(request), context);
  });
}

}  // namespace kestrel::board::wifi
