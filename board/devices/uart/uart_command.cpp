// SPDX-License-Identifier: Apache-2.0
#include "devices/uart/uart_command.h"

#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/command_context.h"
#include "devices/uart/attachment.h"
#include "devices/uart/serial_settings.h"
#include "host/text.h"

namespace kestrel::board::uart {
namespace {

using nlohmann::json;

/// How often `--wait` looks whether the port is open.
constexpr useconds_t kLookInterval = 20000;

std::string OtherEnd(const json& port) {
  return port.at("other_end").is_null() ? "nothing" : port.at("other_end").get<std::string>();
}

/// As it comes out of the box, with nothing done to it.
bool IsIdle(const json& port) {
  return !port.at("open").get<bool>() && port.at("fresh").get<bool>() &&
         port.at("other_end").is_null() && port.at("forgets").empty() && port.at("in") == 0 &&
         port.at("out") == 0 && port.at("lost") == 0;
}

std::string Settings(const json& port) {
  const auto flow_control = port.at("flow_control").get<std::vector<std::string>>();
  const char parity = static_cast<char>(toupper(port.at("parity").get<std::string>()[0]));
  return std::to_string(port.at("speed").get<int>()) + " " +
         std::to_string(port.at("data_bits").get<int>()) + parity +
         std::to_string(port.at("stop_bits").get<int>()) + ", flow control " +
         (flow_control.empty() ? "none" : Join(flow_control, "+")) +
         (port.at("raw").get<bool>() ? ", raw" : ", cooked");
}

void PrintPort(const json& port, std::ostream& out) {
  out << "  " << std::left << std::setw(13) << port.at("device").get<std::string>() << std::setw(6)
      << (port.at("open").get<bool>() ? "open" : "closed") << std::right << "  " << Settings(port)
      << "; in " << port.at("in").get<uint64_t>() << ", out " << port.at("out").get<uint64_t>();
  if (port.at("lost") != 0) {
    out << ", lost " << port.at("lost").get<uint64_t>();
  }
  out << "; other end: " << OtherEnd(port);
  if (!port.at("forgets").empty()) {
    out << "; forgets " << Join(port.at("forgets").get<std::vector<std::string>>());
  }
  out << '\n';
}

struct UartOptions {
  int port = 0;
  std::vector<std::string> forget;
  bool keep_all = false;
  bool wait = false;
  std::optional<double> linger;
};

/// What is wrong with a port number, or nothing.
std::string CheckPortNumber(const std::string& text) {
  const bool digits =
      std::all_of(text.begin(), text.end(), [](unsigned char c) { return isdigit(c) != 0; });
  return digits && !text.empty() && text.size() <= 9
             ? ""
             : "must be the number of a serial port, such as 0, not '" + text + "'";
}

std::string CheckSetting(const std::string& text) {
  const std::vector<std::string>& known = KnownSettings();
  return std::find(known.begin(), known.end(), text) != known.end()
             ? ""
             : "no setting is called '" + text + "' (known: " + Join(known) + ")";
}

json Request(const UartOptions& options) {
  return {{"device", kDeviceName}, {"port", options.port}};
}

/// Changes which settings the port keeps.
void ChangeForgotten(const UartOptions& options, const CommandContext& context) {
  json request = Request(options);
  request["forget"] = options.forget;
  request["keep_all"] = options.keep_all;
  const json port = context.Ask(request);
  context.Print(port, [&](std::ostream& out) { PrintPort(port, out); });
}

void WaitUntilOpen(const UartOptions& options, const CommandContext& context) {
  while (!context.Ask(Request(options)).at("open").get<bool>()) {
    usleep(kLookInterval);
  }
}

void Attach(const UartOptions& options, const CommandContext& context) {
  if (options.wait) {
    WaitUntilOpen(options, context);
  }
  UniqueFd wire = context.Attach(Request(options));
  if (isatty(STDIN_FILENO) != 0) {
    std::cerr << "attached to /dev/ttyS" + std::to_string(options.port) + "; Ctrl-] leaves\n";
  }
  const int signal_number = Attachment(std::move(wire), options.linger).Run();
  if (signal_number != 0) {
    raise(signal_number);
  }
}

}  // namespace

void PrintState(const json& state, std::ostream& out) {
  const json& ports = state.at("ports");
  out << "uart: " << ports.size() << (ports.size() == 1 ? " port\n" : " ports\n");
  size_t idle = 0;
  for (const json& port : ports) {
    if (IsIdle(port)) {
      ++idle;
    } else {
      PrintPort(port, out);
    }
  }
  out << "  " << idle << " idle, closed\n";
}

void AddUartCommand(CLI::App& app, const CommandContext& context) {
  auto options = std::make_shared<UartOptions>();
  CLI::App* command = app.add_subcommand(
      "uart", "Attach this terminal, or what is piped in and out, to the wire of a serial port");
  command->add_option("NUMBER", options->port, "number of the port, such as 0 for /dev/ttyS0")
      ->check(CheckPortNumber)
      ->required();
  CLI::Option* forget = command
                            ->add_option("--forget", options->forget,
                                         "do not attach, but let the port not keep a setting: " +
                                             Join(KnownSettings()))
                            ->type_name("SETTING")
                            ->expected(1)
                            ->take_all()
                            ->check(CheckSetting);
  CLI::Option* keep_all =
      command->add_flag("--keep-all", options->keep_all, "do not attach, but let it keep them all");
  command->add_flag("--wait", options->wait, "first wait until a program has the port open");
  command
      ->add_option("--linger", options->linger,
                   "how long to stay after the end of the input while nothing comes; 1 if not "
                   "given, and for ever where there was no input")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 1e6));
  context.AddBoardOption(*command);
  command->callback([options, forget, keep_all, &context] {
    if (forget->count() > 0 || keep_all->count() > 0) {
      ChangeForgotten(*options, context);
    } else {
      Attach(*options, context);
    }
  });
}

}  // namespace kestrel::board::uart
