// SPDX-License-Identifier: Apache-2.0
#include "devices/wifi/daemon_commands.h"

#include <cstdlib>
#include <vector>

#include "devices/wifi/wifi_text.h"
#include "host/error.h"

namespace kestrel::board::wifi {
namespace {

constexpr char kOk[] = "OK\n";
constexpr char kFail[] = "FAIL\n";
constexpr char kBusy[] = "FAIL-BUSY\n";
constexpr char kUnknown[] = "UNKNOWN COMMAND\n";

/// What the daemon tells of its own radio.
constexpr char kRadio[] =
    "p2p_device_address=42:00:00:00:01:00\n"
    "address=02:00:00:00:01:00\n"
    "uuid=572cf82f-c957-5653-9b16-b5cfb298abf1\n";

/// A list of lines in the daemon's buffer, which ends before the first that does not fit.
class Lines {
 public:
  explicit Lines(std::string header) : text_(std::move(header)) {}

  void Add(const std::string& line) {
    full_ = full_ || text_.size() + line.size() >= kBufferSize;
    text_ += full_ ? "" : line;
  }
  const std::string& text() const { return text_; }

 private:
  static constexpr size_t kBufferSize = 4096;

  std::string text_;
  bool full_ = false;
};

/// Cuts the first word off a text.
std::string TakeWord(std::string& text) {
  const size_t space = text.find(' ');
  std::string word = text.substr(0, space);
  text.erase(0, space == std::string::npos ? space : space + 1);
  return word;
}

/// As the daemon reads numbers: what is none is 0.
int ToNumber(const std::string& text) { return atoi(text.c_str()); }

/// Which commands a row of the table stands for: the word alone, with arguments behind a space,
/// both of these, or everything that begins with the word.
enum class Form { kAlone, kWithArguments, kEither, kAnything };

}  // namespace

struct DaemonCommands::Command {
  const char* word;
  Form form;
  std::string (DaemonCommands::*answer)(const std::string& arguments);

  bool Matches(const std::string& command) const {
    const std::string begin = word;
    if (command.compare(0, begin.size(), begin) != 0) {
      return false;
    }
    const bool alone = command.size() == begin.size();
    const bool with_arguments = !alone && command[begin.size()] == ' ';
    return form == Form::kAnything || (alone && form != Form::kWithArguments) ||
           (with_arguments && form != Form::kAlone);
  }
};

const DaemonCommands::Command* DaemonCommands::Find(const std::string& command) {
  using Self = DaemonCommands;
  static constexpr Command kCommands[] = {
      {"PING", Form::kAlone, &Self::Ping},
      {"SCAN", Form::kEither, &Self::Scan},
      {"SCAN_RESULTS", Form::kAlone, &Self::ScanResults},
      {"STATUS", Form::kAnything, &Self::Status},
      {"LIST_NETWORKS", Form::kEither, &Self::ListNetworks},
      {"ADD_NETWORK", Form::kAlone, &Self::AddNetwork},
      {"SET_NETWORK", Form::kWithArguments, &Self::SetNetwork},
      {"GET_NETWORK", Form::kWithArguments, &Self::GetNetwork},
      {"ENABLE_NETWORK", Form::kWithArguments, &Self::EnableNetwork},
      {"DISABLE_NETWORK", Form::kWithArguments, &Self::DisableNetwork},
      {"SELECT_NETWORK", Form::kWithArguments, &Self::SelectNetwork},
      {"REMOVE_NETWORK", Form::kWithArguments, &Self::RemoveNetwork},
      {"SAVE_CONFIG", Form::kAlone, &Self::SaveConfig},
      {"RECONFIGURE", Form::kAlone, &Self::Reconfigure},
      {"DISCONNECT", Form::kAlone, &Self::Disconnect},
      {"RECONNECT", Form::kAlone, &Self::Reconnect},
      {"REASSOCIATE", Form::kAlone, &Self::Reconnect},
  };
  for (const Command& known : kCommands) {
    if (known.Matches(command)) {
      return &known;
    }
  }
  return nullptr;
}

std::string DaemonCommands::Answer(const std::string& command) {
  const Command* known = Find(command);
  if (known == nullptr) {
    return kUnknown;
  }
  std::string arguments = command;
  TakeWord(arguments);
  return (this->*known->answer)(arguments);
}

std::string DaemonCommands::Ping(const std::string& /*arguments*/) { return "PONG\n"; }

std::string DaemonCommands::Scan(const std::string& /*arguments*/) {
  return supplicant_.StartScan() ? kOk : kBusy;
}

std::string DaemonCommands::ScanResults(const std::string& /*arguments*/) {
  Lines lines("bssid / frequency / signal level / flags / ssid\n");
  for (const AccessPoint& point : supplicant_.scan_results()) {
    lines.Add(point.bssid + "\t" + std::to_string(point.frequency) + "\t" +
              std::to_string(point.signal) + "\t" + point.security->flags + "\t" +
              (point.hidden ? "" : Escape(point.name)) + "\n");
  }
  return lines.text();
}

std::string DaemonCommands::Status(const std::string& /*arguments*/) {
  std::string text;
  const AccessPoint* point = supplicant_.connection();
  if (point != nullptr) {
    const Security& security = *point->security;
    text += "bssid=" + point->bssid + "\nfreq=" + std::to_string(point->frequency) +
            "\nssid=" + Escape(point->name) + "\nid=" + std::to_string(supplicant_.current()) +
            "\nmode=station\npairwise_cipher=" + security.pairwise_cipher +
            "\ngroup_cipher=" + security.group_cipher + "\nkey_mgmt=" + security.key_mgmt + "\n";
  }
  text += "wpa_state=" + supplicant_.StateName() + "\n";
  if (supplicant_.has_address() && !ip_address_.empty()) {
    text += "ip_address=" + ip_address_ + "\n";
  }
  return text + kRadio;
}

std::string DaemonCommands::Flags(const StoredNetwork& network) const {
  return std::string(network.id() == supplicant_.current() ? "[CURRENT]" : "") +
         (network.disabled() ? "[DISABLED]" : "") +
         (supplicant_.IsPaused(network.id()) ? "[TEMP-DISABLED]" : "");
}

std::string DaemonCommands::ListNetworks(const std::string& /*arguments*/) {
  Lines lines("network id / ssid / bssid / flags\n");
  for (const StoredNetwork& network : store_.networks()) {
    lines.Add(std::to_string(network.id()) + "\t" + Escape(network.ssid().value_or("")) + "\t" +
              network.bssid().value_or("any") + "\t" + Flags(network) + "\n");
  }
  return lines.text();
}

std::string DaemonCommands::AddNetwork(const std::string& /*arguments*/) {
  return std::to_string(store_.Add().id()) + "\n";
}

std::string DaemonCommands::SetNetwork(const std::string& arguments) {
  std::string value = arguments;
  StoredNetwork* network = store_.Find(ToNumber(TakeWord(value)));
  const std::string variable = value.substr(0, value.find(' '));
  // Without a space behind the variable there is no value, not even an empty one.
  if (network == nullptr || variable.size() == value.size()) {
    return kFail;
  }
  TakeWord(value);
  if (!network->Set(variable, value)) {
    return kFail;
  }
  supplicant_.Changed(*network);
  return kOk;
}

std::string DaemonCommands::GetNetwork(const std::string& arguments) {
  std::string variable = arguments;
  StoredNetwork* network = store_.Find(ToNumber(TakeWord(variable)));
  if (network == nullptr) {
    return kFail;
  }
  const std::optional<std::string> value = network->Get(variable);
  if (!value.has_value()) {
    return kFail;
  }
  return variable == "psk" ? "*" : *value;
}

template <typename Action>
std::string DaemonCommands::ForEach(const std::string& which, const char* all, Action action) {
  if (which == all) {
    std::vector<int> ids;
    for (const StoredNetwork& network : store_.networks()) {
      ids.push_back(network.id());
    }
    for (const int id : ids) {
      action(*store_.Find(id));
    }
    return kOk;
  }
  StoredNetwork* network = store_.Find(ToNumber(which));
  if (network == nullptr) {
    return kFail;
  }
  action(*network);
  return kOk;
}

std::string DaemonCommands::EnableNetwork(const std::string& arguments) {
  return ForEach(arguments, "all", [this](StoredNetwork& network) { supplicant_.Enable(network); });
}

std::string DaemonCommands::DisableNetwork(const std::string& arguments) {
  return ForEach(arguments, "all",
                 [this](StoredNetwork& network) { supplicant_.Disable(network); });
}

std::string DaemonCommands::SelectNetwork(const std::string& arguments) {
  if (arguments == "any") {
    supplicant_.Reconnect();
    return EnableNetwork("all");
  }
  StoredNetwork* network = store_.Find(ToNumber(arguments));
  if (network == nullptr) {
    return kFail;
  }
  supplicant_.Select(*network);
  return kOk;
}

std::string DaemonCommands::RemoveNetwork(const std::string& arguments) {
  return ForEach(arguments, "all",
                 [this](StoredNetwork& network) { supplicant_.Remove(network.id()); });
}

std::string DaemonCommands::SaveConfig(const std::string& /*arguments*/) {
  return store_.Save() ? kOk : kFail;
}

std::string DaemonCommands::Reconfigure(const std::string& /*arguments*/) {
  try {
    supplicant_.Reload();
    return kOk;
  } catch (const BoardError&) {
    return kFail;
  }
}

std::string DaemonCommands::Disconnect(const std::string& /*arguments*/) {
  supplicant_.Disconnect();
  return kOk;
}

std::string DaemonCommands::Reconnect(const std::string& /*arguments*/) {
  supplicant_.Reconnect();
  return kOk;
}

}  // namespace kestrel::board::wifi
