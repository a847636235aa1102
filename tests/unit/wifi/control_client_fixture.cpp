// SPDX-License-Identifier: Apache-2.0
#include "unit/wifi/control_client_fixture.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cstring>

namespace kestrel::test {
namespace {

using testing::_;
using testing::AllOf;
using testing::Field;
using testing::Return;

MATCHER(IsAddressOfTheDaemon, "") {
  sockaddr_un expected{};
  expected.sun_family = AF_UNIX;
  strcpy(expected.sun_path, "/var/volatile/tmp/wlan0_request_socket");
  return memcmp(arg, &expected, 110) == 0;
}

MATCHER(IsThirtySeconds, "") {
  const auto* const timeout = static_cast<const timeval*>(arg);
  return timeout->tv_sec == 30 && timeout->tv_usec == 0;
}

MATCHER_P(Holds, bytes, "") {
  return std::string(static_cast<const char*>(arg->iov_base), arg->iov_len) == bytes;
}

}  // namespace

void ControlClientTest::ExpectSocket(int descriptor) {
  EXPECT_CALL(system_, Socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
      .WillOnce(Return(descriptor));
}

void ControlClientTest::ExpectSocketFailure(int error) {
  EXPECT_CALL(system_, Socket(_, _, _)).WillOnce(FailWith(error));
}

void ControlClientTest::ExpectConnection(int descriptor) {
  EXPECT_CALL(system_, Connect(descriptor, IsAddressOfTheDaemon(), 110)).WillOnce(Return(0));
}

void ControlClientTest::ExpectConnectionFailure(int error) {
  EXPECT_CALL(system_, Connect(kSocket, _, _)).WillOnce(FailWith(error));
}

void ControlClientTest::ExpectWrite(const std::string& bytes) {
  EXPECT_CALL(system_, Writev(kSocket, Holds(bytes), 1)).WillOnce(Return(bytes.size()));
}

void ControlClientTest::ExpectWriteFailure(int error) {
  EXPECT_CALL(system_, Writev(kSocket, _, 1)).WillOnce(FailWith(error));
}

void ControlClientTest::ExpectTimeout(int result) {
  EXPECT_CALL(system_, Setsockopt(kSocket, SOL_SOCKET, 20, IsThirtySeconds(), sizeof(timeval)))
      .WillOnce(testing::SetErrnoAndReturn(ENOPROTOOPT, result));
}

void ControlClientTest::ExpectRead(const std::string& reply) {
  EXPECT_CALL(system_, Read(kSocket, _, 2048)).WillOnce([reply](int, void* buffer, size_t size) {
    const size_t count = std::min(reply.size(), size);
    memcpy(buffer, reply.data(), count);
    return static_cast<ssize_t>(count);
  });
}

void ControlClientTest::ExpectReadFailure(int error) {
  EXPECT_CALL(system_, Read(kSocket, _, 2048)).WillOnce(FailWith(error));
}

void ControlClientTest::ExpectClose(int descriptor) {
  EXPECT_CALL(system_, Close(descriptor)).WillOnce(Return(0));
}

void ControlClientTest::ExpectExchange(const std::string& command, const std::string& reply) {
  ExpectWrite(command + '\0');
  ExpectTimeout();
  ExpectRead(reply);
}

wifi::WifiControlClient ControlClientTest::ConnectedClient(int descriptor) {
  const auto ipc = eastl::make_shared<vestaipc::IpcClient>();
  ipc->fd = descriptor;
  return wifi::WifiControlClient(ipc);
}

RequestResult ControlClientTest::Request(wifi::WifiControlClient& client,
                                         const std::string& command) {
  RequestResult result;
  const eastl::string text = Text(command);
  RunOn(system_, [&] {
    const nwl::Expected<eastl::string> reply = client.Request(text);
    if (reply.has_value()) {
      result.reply = Plain(reply.value());
    }
    result.error = reply.error().value;
    result.category = reply.error().category;
    return 0;
  });
  return result;
}

testing::Matcher<const RequestResult&> Replies(const std::string& reply) {
  return AllOf(Field("reply", &RequestResult::reply, testing::Optional(reply)),
               Field("error", &RequestResult::error, 0));
}

testing::Matcher<const RequestResult&> FailsWith(int error, const nwl::error_category& category) {
  return AllOf(Field("reply", &RequestResult::reply, std::nullopt),
               Field("error", &RequestResult::error, error),
               Field("category", &RequestResult::category, &category));
}

}  // namespace kestrel::test
