// SPDX-License-Identifier: Apache-2.0
#include "fuzz/support/input.h"
#include "fuzz/support/promise.h"
#include "fuzz/wifi/daemon.h"
#include "fuzz/wifi/text.h"
#include "wifi/adding.h"
#include "wifi/network_commands.h"
#include "wifi/removing.h"

namespace kestrel::fuzz {
namespace {

/// A number that a digit stands for; other characters are numbers too, which nothing means.
int32_t NumberAt(const std::string& text, size_t position) {
  return position < text.size() ? text[position] - '0' : 0;
}

wifi::Network Described(const std::string& state, Input& input) {
  wifi::Network network;
  network.enabledState = NumberAt(state, 1);
  network.security = NumberAt(state, 2);
  network.networkId = NumberAt(state, 3);
  network.idValid = state.size() > 3;
  for (const char* const key : {"ssid", "psk"}) {
    const std::string value = input.TakeSection();
    if (value != "-") {
      network.SetProperty(key, Text(value));
    }
  }
  return network;
}

}  // namespace
}  // namespace kestrel::fuzz

/// What to do (a or r), the network's enabled state, security and, if it has one, id as digits; its
/// name and passphrase, "-" for none; then the daemon's replies.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using kestrel::fuzz::Promise;
  kestrel::fuzz::Input input(data, size);
  kestrel::fuzz::Daemon daemon(input);
  wifi::WifiControlClient client{eastl::shared_ptr<vestaipc::IpcClient>()};
  const std::string what = input.TakeSection();
  wifi::Network network = kestrel::fuzz::Described(what, input);
  if (what.substr(0, 1) == "r") {
    wifi::RemoveNetwork(client, network);
    return 0;
  }
  const bool was_set = network.idValid;
  if (!wifi::AddNetwork(client, network)) {
    Promise(network.idValid && network.enabledState != 0);
    Promise(was_set || (network.networkId >= 0 && network.networkId <= 100));
  }
  return 0;
}
