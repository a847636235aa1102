// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string>

#include "arguments.h"
#include "command_groups.h"
#include "family_command.h"
#include "terminal_text.h"
#include "wifi_actions.h"

namespace kestrelctl {
namespace {

/// What was typed after a wifi command; each command has the options that it needs.
struct WifiArguments : CommonArguments {
  std::optional<std::string> ssid;
  bool hex = false;
  std::string wait = "0";
  std::optional<std::string> security;
  std::optional<std::string> passphrase_file;
  bool ask_passphrase = false;
  bool all = false;
  bool yes = false;
};

using WifiCommand = FamilyCommand<WifiArguments>;

CLI::Option* AddName(const WifiCommand& command) {
  command.app->add_flag("--hex", command.arguments.hex,
                        "NAME is given as two hexadecimal digits a byte");
  return command.app->add_option("NAME", command.arguments.ssid, "Name of the network (SSID)")
      ->type_name("");
}

void AddScan(CLI::App& wifi, Action& action) {
  const Prepare<WifiArguments> prepare = [](const WifiArguments& arguments) -> Action {
    return [wait = ParseSeconds(arguments.wait, "wait"), format = arguments.format()] {
      return ScanForNetworks(wait, format);
    };
  };
  const WifiCommand scan =
      AddCommand(wifi, "scan", "Scan, and list the networks, the strongest first",
                 "  kestrelctl wifi scan --wait\n"
                 "  kestrelctl wifi scan --wait 30 --json\n"
                 "\n"
                 "A scan takes some seconds. Without --wait, one is started and the networks are\n"
                 "those of the scan before; while one is running, that is refused. With --wait,\n"
                 "the end of the scan is waited for, which shows in that the daemon takes the\n"
                 "next order to scan, and the networks are those that it has found.",
                 prepare, action);
  scan.app
      ->add_option("--wait", scan.arguments.wait,
                   "Wait for the end of the scan, for so long (15 if not given)")
      ->type_name("[SECONDS]")
      ->expected(0, 1)
      ->default_str("15");
}

void AddList(CLI::App& wifi, Action& action) {
  const Prepare<WifiArguments> prepare = [](const WifiArguments& arguments) -> Action {
    return [format = arguments.format()] { return ListNetworks(format); };
  };
  AddCommand(wifi, "list", "List the stored networks",
             "  kestrelctl wifi list\n"
             "  kestrelctl wifi list --json",
             prepare, action);
}

void AddCurrent(CLI::App& wifi, Action& action) {
  const Prepare<WifiArguments> prepare = [](const WifiArguments& arguments) -> Action {
    return [format = arguments.format()] { return TellCurrentNetwork(format); };
  };
  AddCommand(wifi, "current", "Tell which network the device is connected to",
             "  kestrelctl wifi current\n"
             "  kestrelctl wifi current --json\n"
             "\n"
             "Exit status: 0 connected, 1 not connected, 2 the arguments are wrong, 3 there is no\n"
             "answer.",
             prepare, action);
}

bool IsTerminal() { return isatty(STDIN_FILENO) == 1; }

/// Where the passphrase comes from, after refusing options that do not go together.
PassphraseFrom SourceOf(const WifiArguments& arguments) {
  const WifiSecurity security = ParseSecurity(arguments.security.value_or("unknown"));
  const bool wants_passphrase = arguments.ask_passphrase || arguments.passphrase_file;
  if (arguments.security && security == WifiSecurity_Unknown) {
    Refuse("networks to add have --security open or wpa2");
  }
  if (security == WifiSecurity_Open && wants_passphrase) {
    Refuse("an open network has no passphrase");
  }
  if (arguments.ask_passphrase && arguments.passphrase_file) {
    Refuse("give --ask-passphrase or --passphrase-file, not both");
  }
  if (!wants_passphrase && security != WifiSecurity_Wpa2Psk) {
    return PassphraseFrom::kNowhere;
  }
  if (arguments.passphrase_file && (*arguments.passphrase_file != "-" || !IsTerminal())) {
    return PassphraseFrom::kFile;
  }
  if (!IsTerminal()) {
    Refuse("standard input is no terminal to ask at: give --passphrase-file FILE");
  }
  return PassphraseFrom::kTerminal;
}

std::string SsidToAdd(const WifiArguments& arguments) {
  std::string ssid = ParseSsid(*arguments.ssid, arguments.hex);
  if (!std::all_of(ssid.begin(), ssid.end(), [](char c) { return c >= 0x20 && c <= 0x7E; })) {
    Refuse(Quoted(*arguments.ssid) +
           " cannot be added: names have printable ASCII characters only");
  }
  return ssid;
}

void AddAdd(CLI::App& wifi, Action& action) {
  const Prepare<WifiArguments> prepare = [](const WifiArguments& arguments) -> Action {
    const NetworkToAdd network{SsidToAdd(arguments), SourceOf(arguments),
                               arguments.passphrase_file.value_or("")};
    return [network, format = arguments.format()] { return AddNetwork(network, format); };
  };
  const WifiCommand add = AddCommand(
      wifi, "add", "Store a network, so that the device connects to it",
      "  kestrelctl wifi add Cafe                                    an open network\n"
      "  kestrelctl wifi add \"Kestrel Lab\" --ask-passphrase          type the passphrase\n"
      "  kestrelctl wifi add \"Kestrel Lab\" --passphrase-file lab.key\n"
      "  get-secret lab | kestrelctl wifi add \"Kestrel Lab\" --passphrase-file -\n"
      "\n"
      "A passphrase has 8 to 63 printable ASCII characters. Whether it is the right one shows\n"
      "later, in 'kestrelctl wifi current'.",
      prepare, action);
  AddName(add)->required();
  add.app
      ->add_option("--passphrase-file", add.arguments.passphrase_file,
                   "Read the passphrase from a file, or from standard input for -")
      ->type_name("FILE");
  add.app->add_flag("--ask-passphrase", add.arguments.ask_passphrase,
                    "Ask for the passphrase at the terminal");
  add.app
      ->add_option("--security", add.arguments.security,
                   "open, or wpa2, which asks for the passphrase unless there is a file")
      ->type_name("SECURITY");
}

Action PrepareForgetAll(const WifiArguments& arguments) {
  if (arguments.ssid || arguments.security || arguments.hex) {
    Refuse("give a NAME or --all, not both");
  }
  if (!arguments.yes && !IsTerminal()) {
    Refuse("standard input is no terminal to ask at: give --yes to forget all networks");
  }
  return [asks = !arguments.yes, format = arguments.format()] {
    return ForgetAllNetworks(asks, format);
  };
}

Action PrepareForget(const WifiArguments& arguments) {
  if (arguments.all) {
    return PrepareForgetAll(arguments);
  }
  if (!arguments.ssid) {
    Refuse("give the NAME of a network, or --all");
  }
  NetworkToForget network{ParseSsid(*arguments.ssid, arguments.hex), std::nullopt};
  if (arguments.security) {
    network.security = ParseSecurity(*arguments.security);
  }
  return [network, format = arguments.format()] { return ForgetNetwork(network, format); };
}

void AddForget(CLI::App& wifi, Action& action) {
  const WifiCommand forget = AddCommand(wifi, "forget", "Remove stored networks",
                                        "  kestrelctl wifi forget Cafe\n"
                                        "  kestrelctl wifi forget Cafe --security open\n"
                                        "  kestrelctl wifi forget --all --yes",
                                        PrepareForget, action);
  AddName(forget);
  forget.app
      ->add_option("--security", forget.arguments.security,
                   "Which of several networks of that name: open, wpa2 or unknown")
      ->type_name("SECURITY");
  forget.app->add_flag("--all", forget.arguments.all, "Remove all of them");
  forget.app->add_flag("--yes", forget.arguments.yes, "Do not ask whether --all is meant");
}

}  // namespace

void AddWifiCommands(CLI::App& program, Action& action) {
  CLI::App* const wifi =
      program.add_subcommand("wifi", "Find, list, add and forget Wi-Fi networks");
  wifi->require_subcommand(1);
  AddScan(*wifi, action);
  AddList(*wifi, action);
  AddCurrent(*wifi, action);
  AddAdd(*wifi, action);
  AddForget(*wifi, action);
}

}  // namespace kestrelctl
