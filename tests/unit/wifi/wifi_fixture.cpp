// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/wifi_fixture.h"

#include <cerrno>
#include <memory>

#include "support/fake_system.h"

namespace kestrel::test {

using testing::_;

wifi::WifiContext& FreshContext() {
  testing::NiceMock<FakeSystem> without_sockets;
  ON_CALL(without_sockets, Socket(_, _, _)).WillByDefault(FailWith(EMFILE));
  RunOn(without_sockets, [] { return wifi::GetWifiContext(), 0; });
  wifi::WifiContext& context = wifi::GetWifiContext();
  context.client->ipc->Close();
  context.client->unavailable = false;
  context.storedNetworks = eastl::make_shared<wifi::NetworkList>();
  context.scannedNetworks = eastl::make_shared<wifi::NetworkList>();
  return context;
}

void Connect(wifi::WifiContext& context, const ScriptedDaemon& daemon) {
  context.client->ipc->Adopt(daemon.client_end());
}

namespace {

std::string Line(const std::string& what, int value) {
  return "[Kestrel:WifiConfig] " + what + ": " + std::to_string(value) + "\n";
}

}  // namespace

std::string OperationError(int value) { return Line("Error performing operation", value); }
std::string ScanFailure(int value) { return Line("Failure performing scan", value); }
std::string StatusFailure(int value) {
  return Line("Failure getting status of current network", value);
}
std::string MissingProperty() { return Line("Error parsing network property", 4); }

WifiTest::WifiTest() : context_(FreshContext()) { Connect(context_, daemon_); }

WifiTest::~WifiTest() { FreshContext(); }

void WifiTest::TearDown() { EXPECT_EQ(daemon_.Received(), daemon_.expected()); }

}  // namespace kestrel::test
