// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_WIFI_FIXTURE_H
#define KESTREL_TESTS_UNIT_WIFI_WIFI_FIXTURE_H

#include <gmock/gmock.h>
#include <kestrel/wificonfig.h>

#include <functional>
#include <string>

#include "support/outcome.h"
#include "unit/wifi/recorded_reply.h"
#include "unit/wifi/scripted_daemon.h"
#include "wifi/wifi_context.h"

namespace kestrel::test {

/// The shared context with empty lists and a client without a connection; nothing real is connected
/// to on the way.
wifi::WifiContext& FreshContext();

/// Connects the context's client to a daemon.
void Connect(wifi::WifiContext& context, const ScriptedDaemon& daemon);

/// "[Kestrel:WifiConfig] Error performing operation: NUMBER\n", and so on.
std::string OperationError(int value);
std::string ScanFailure(int value);
std::string StatusFailure(int value);
std::string MissingProperty();

/// A test in which the library talks to a scripted daemon: every command has to be expected, in
/// order, and must come.
class WifiTest : public testing::Test {
 protected:
  WifiTest();
  ~WifiTest() override;

  void TearDown() override;

  void Expect(const Script& script) { daemon_.Expect(script); }

  wifi::WifiControlClient& Client() const { return *context_.client; }

  ScriptedDaemon daemon_;
  wifi::WifiContext& context_;
};

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_WIFI_FIXTURE_H
