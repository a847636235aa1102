// SPDX-License-Identifier: Apache-2.0
#include "relay/real_supplicant.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <thread>

namespace kestrel::test {
namespace {

constexpr char kControlSocket[] = "/run/wpa_supplicant/lo";
constexpr char kConfiguration[] = "/run/wpa_supplicant.conf";

/// Whether the supplicant comes to answer at its own socket.
bool Answers(const std::string& path) {
  const DatagramSocket asker("/run/asker");
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!asker.Send(path, "PING")) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const std::optional<Command> answer = asker.Receive();
  return answer.has_value() && answer->text == "PONG\n";
}

std::string NameOf(const WifiStoredNetworkRecord& record) {
  return {reinterpret_cast<const char*>(record.ssid), record.ssidLength};
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const StoredNetwork& network) {
  return stream << '"' << network.name << "\" (security " << int{network.security}
                << (network.enabled ? ", enabled)" : ", disabled)");
}

int StoreOpen(const std::string& name) {
  return WifiConfig_StoreOpenNetwork(reinterpret_cast<const uint8_t*>(name.data()), name.size());
}

int StoreWpa2(const std::string& name, const std::string& passphrase) {
  return WifiConfig_StoreWpa2Network(reinterpret_cast<const uint8_t*>(name.data()), name.size(),
                                     passphrase.c_str(), passphrase.size());
}

std::vector<WifiStoredNetworkRecord> StoredRecords() {
  // The last ones are the slack that names of more than 32 characters may need.
  std::array<WifiStoredNetworkRecord, 20> records{};
  EXPECT_GE(WifiConfig_GetStoredNetworkCount(), 0);
  const int count =
      z__WifiConfig_GetStoredNetworks(records.data(), records.size() - 4, WifiConfig_StructVersion);
  return {records.begin(), records.begin() + std::max(count, 0)};
}

std::vector<StoredNetwork> Stored() {
  std::vector<StoredNetwork> networks;
  for (const WifiStoredNetworkRecord& record : StoredRecords()) {
    networks.push_back({NameOf(record), record.security, record.enabled != 0});
  }
  return networks;
}

RealSupplicant::RealSupplicant() {
  WriteConfiguration("");
  StartSupplicant();
  relay_ = std::make_unique<BackgroundProgram>(
      std::vector<std::string>{KESTREL_WIFI_RELAY, "--supplicant", kControlSocket},
      Environment{{"NOTIFY_SOCKET", "/run/notify"}, {"JOURNAL_STREAM", ""}});
  const std::optional<Command> told = service_manager_.Receive();
  EXPECT_TRUE(told.has_value() && told->text == "READY=1");
}

RealSupplicant::~RealSupplicant() {
  relay_->Signal(SIGTERM);
  const ProgramResult result = relay_->Wait(kPatience);
  EXPECT_EQ(result.status, 0) << result.standard_error;
  if (supplicant_ != nullptr) {
    EndSupplicant(SIGTERM);
  }
}

void RealSupplicant::StartSupplicant() {
  supplicant_ = std::make_unique<BackgroundProgram>(std::vector<std::string>{
      KESTREL_WPA_SUPPLICANT, "-i", "lo", "-D", "wired", "-c", kConfiguration});
  if (!Answers(kControlSocket)) {
    supplicant_->Signal(SIGKILL);
    ADD_FAILURE() << "the supplicant does not start: " << supplicant_->Wait().standard_output;
  }
}

void RealSupplicant::EndSupplicant(int signal) {
  supplicant_->Signal(signal);
  AwaitEndOfSupplicant();
}

void RealSupplicant::AwaitEndOfSupplicant() {
  supplicant_->Wait(kPatience);
  supplicant_.reset();
}

std::vector<std::string> RealSupplicant::SavedNetworks() {
  std::vector<std::string> networks;
  std::ifstream file(kConfiguration);
  bool inside = false;
  for (std::string line; std::getline(file, line);) {
    if (line == "network={") {
      networks.emplace_back();
    }
    inside = (inside || line == "network={") && line != "}";
    if (inside && line.front() == '\t' && line != "\tmesh_fwding=1") {
      networks.back() += line.substr(1) + "\n";
    }
  }
  return networks;
}

void RealSupplicant::WriteConfiguration(const std::string& networks) {
  std::ofstream(kConfiguration) << "ctrl_interface=/run/wpa_supplicant\nupdate_config=1\n"
                                << networks;
}

bool RealSupplicant::AwaitStatus(const std::string& line) {
  const Program program("/var/volatile/tmp/wlan0_request_socket");
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  do {
    program.Send("STATUS");
    const std::string status = program.Receive().value_or("");
    if (status.find(line + "\n") != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  } while (std::chrono::steady_clock::now() < deadline);
  return false;
}

}  // namespace kestrel::test
