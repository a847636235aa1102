// SPDX-License-Identifier: Apache-2.0
// The board is told by its own command what happens to it.
#include <string.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

#include "rigs.h"
#include "support/in_child.h"
#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

std::string Tell(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), KESTREL_BOARD_PROGRAM);
  const ProgramResult result = RunProgram(arguments);
  if (result.status != 0) {
    throw std::runtime_error(result.standard_error);
  }
  return result.standard_output;
}

class BoardRig : public Rig {
 public:
  bool HasRealParts() const override { return false; }

  void DriveLine(int line, GpioLevel level) override {
    Tell({"line", std::to_string(line), level == GpioLevel_High ? "high" : "low"});
  }

  LineOutside LookAtLine(int line) override {
    const json state = json::parse(Tell({"line", std::to_string(line), "--json"}));
    return {state.at("level"), state.at("direction"), state.value("drive", "")};
  }

  int AsUserWhoMayNotOpen(const std::string& path, const std::function<int()>& body) override {
    SetFaults({"open:" + path + "=EACCES"});
    const int result = InChild(body);
    SetFaults({});
    return result;
  }

  void SlowDownPort(uint32_t number) override {
    Tell({"uart", std::to_string(number), "--forget", "speed"});
  }

  void SpeedUpPort(uint32_t number) override {
    Tell({"uart", std::to_string(number), "--keep-all"});
  }

  void FailSecurityRequests(int error) override {
    SetFaults({"ioctl:WARDEN_GET_DEVICE_STATE=" + std::string(strerrorname_np(error))});
  }

  void RemoveNode(const std::string& path) override { SetFaults({"open:" + path + "=ENOENT"}); }
  void MendSecurityDevice() override { SetFaults({}); }

  void WriteNetworkStatus(const std::string& hex) override { Tell({"network", "bytes", hex}); }
  void RemoveNetworkStatus() override { Tell({"network", "absent"}); }

  void ResetWifi() override {
    StartWifiDaemon();
    RemoveAllNetworks();
  }

  void StopWifiDaemon() override { Tell({"wifi", "--daemon", "refusing"}); }
  void StartWifiDaemon() override {
    Tell({"wifi", "--script", "none"});
    Tell({"wifi", "--daemon", "running"});
  }

  // One program on the board is what the socket belongs to and what has the networks.
  void KillSupplicant() override { StopWifiDaemon(); }
  void StartSupplicant() override { StartWifiDaemon(); }

  void FreezeWifiDaemon() override {
    const TemporaryDirectory folder;
    Tell({"wifi", "--script", folder.Write("silence.toml", "[[rule]]\naction = \"silence\"\n")});
  }

 private:
  /// The faults of the port without hardware stay; all others go.
  static void SetFaults(const std::vector<std::string>& faults) {
    std::vector<std::string> arguments = {"fault", "--clear"};
    for (const char* call : {"tcgetattr", "tcsetattr", "read", "write"}) {
      arguments.push_back(call + (":" + PortPath(kHollowPort)) + "=EIO");
    }
    arguments.insert(arguments.end(), faults.begin(), faults.end());
    Tell(arguments);
  }
};

}  // namespace

std::unique_ptr<Rig> MakeBoardRig() { return std::make_unique<BoardRig>(); }

}  // namespace kestrel::test
