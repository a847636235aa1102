// SPDX-License-Identifier: Apache-2.0
#ifndef KESTREL_TESTS_UNIT_WIFI_CONTROL_CLIENT_FIXTURE_H
#define KESTREL_TESTS_UNIT_WIFI_CONTROL_CLIENT_FIXTURE_H

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "support/fake_system.h"
#include "support/outcome.h"
#include "unit/wifi/recorded_reply.h"
#include "wifi/control_client.h"

namespace kestrel::test {

inline constexpr int kSocket = 700;  ///< the descriptor that a connection gets

/// The result of a request, as tests compare it.
struct RequestResult {
  std::optional<std::string> reply;
  int error = 0;
  const nwl::error_category* category = nullptr;
};

/// A test in which every system call of a client is expected, in order, and none else is made.
class ControlClientTest : public testing::Test {
 protected:
  void ExpectSocket(int descriptor = kSocket);
  void ExpectSocketFailure(int error);
  void ExpectConnection(int descriptor = kSocket);
  void ExpectConnectionFailure(int error);

  void ExpectWrite(const std::string& bytes);
  void ExpectWriteFailure(int error);
  void ExpectTimeout(int result = 0);
  void ExpectRead(const std::string& reply);
  void ExpectReadFailure(int error);
  void ExpectClose(int descriptor = kSocket);

  /// One whole exchange.
  void ExpectExchange(const std::string& command, const std::string& reply);

  /// A client that is connected, through the system calls if it has no descriptor.
  wifi::WifiControlClient ConnectedClient(int descriptor = kSocket);

  RequestResult Request(wifi::WifiControlClient& client, const std::string& command = "STATUS");

  testing::InSequence in_sequence_;
  testing::StrictMock<FakeSystem> system_;
};

/// The request gave `reply`.
testing::Matcher<const RequestResult&> Replies(const std::string& reply);

/// The request failed with `error` of `category`.
testing::Matcher<const RequestResult&> FailsWith(int error, const nwl::error_category& category);

}  // namespace kestrel::test

#endif  // KESTREL_TESTS_UNIT_WIFI_CONTROL_CLIENT_FIXTURE_H
