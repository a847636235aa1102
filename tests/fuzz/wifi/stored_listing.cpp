// SPDX-License-Identifier: Apache-2.0
#include "wifi/stored_listing.h"

#include "fuzz/support/promise.h"
#include "fuzz/wifi/daemon.h"

namespace kestrel::fuzz {
namespace {

void CheckListed(const wifi::Network& network) {
  Promise(network.idValid);
  Promise(network.FindProperty("flags") != nullptr);
  Promise(network.enabledState >= 0 && network.enabledState <= wifi::kTemporarilyDisabled);
  Promise(network.connectionState == wifi::kConnected ||
          network.connectionState == wifi::kNotConnected);
  Promise(network.security >= 0 && network.security <= 2);
}

}  // namespace
}  // namespace kestrel::fuzz

/// The replies to the commands of one listing.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kestrel::fuzz::Input input(data, size);
  kestrel::fuzz::Daemon daemon(input);
  wifi::WifiControlClient client{eastl::shared_ptr<vestaipc::IpcClient>()};
  const auto networks = wifi::ListStoredNetworks(client);
  if (networks.has_value()) {
    for (const wifi::Network& network : *networks.value()) {
      kestrel::fuzz::CheckListed(network);
    }
  }
  return 0;
}
