// SPDX-License-Identifier: Apache-2.0
#include "rig.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "board/wifi_client.h"
#include "board/wifi_exports.h"
#include "rigs.h"

namespace kestrel::test {
namespace {

std::unique_ptr<Rig> MakeRig() {
  const char* chosen = getenv("KESTREL_RIG");
  const std::string name = chosen == nullptr ? "board" : chosen;
  if (name == "board") {
    return MakeBoardRig();
  }
  if (name == "machine") {
    return MakeMachineRig();
  }
  throw std::runtime_error("KESTREL_RIG must be board or machine, not " + name);
}

/// Sets the rig up before the first test, also when that test does not ask for it.
class RigSetUp : public testing::Environment {
 public:
  void SetUp() override { TheRig(); }
};

[[maybe_unused]] const testing::Environment* const kRigSetUp =
    testing::AddGlobalTestEnvironment(new RigSetUp);

}  // namespace

void PrintTo(const LineOutside& line, std::ostream* stream) {
  *stream << line.level << ' ' << line.direction << ' ' << line.drive;
}

void RemoveAllNetworks() {
  const WifiClient client(kWifiSocketPath);
  for (const char* command : {"REMOVE_NETWORK all", "SAVE_CONFIG"}) {
    if (client.Ask(command) != "OK\n") {
      throw std::runtime_error(std::string("the Wi-Fi daemon fails ") + command);
    }
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (client.Ask("STATUS").find("\nssid=") != std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error("the Wi-Fi daemon stays connected");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

Rig& TheRig() {
  static const std::unique_ptr<Rig> rig = MakeRig();
  return *rig;
}

}  // namespace kestrel::test
