// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <type_traits>

#include "unit/wifi/control_client_fixture.h"

namespace kestrel::test {
namespace {

using vestaipc::IpcClient;
using wifi::WifiControlClient;

class Connection : public ControlClientTest {
 protected:
  eastl::shared_ptr<IpcClient> SharedClient(int descriptor) {
    auto ipc = eastl::make_shared<IpcClient>();
    ipc->fd = descriptor;
    return ipc;
  }

  /// Makes a client, observes that and gives the descriptor that it has then.
  Observed Connect(const eastl::shared_ptr<IpcClient>& ipc) {
    return ObserveOn(system_, [&] {
      WifiControlClient client(ipc);
      EXPECT_EQ(client.ipc, ipc ? ipc : client.ipc);
      EXPECT_FALSE(client.unavailable);
      return client.ipc->fd.load();
    });
  }
};

TEST_F(Connection, IsMadeToTheDaemonsSocketAndClosedWithTheClient) {
  ExpectSocket();
  ExpectConnection();
  ExpectClose();
  EXPECT_THAT(Connect({}), Returns(kSocket));
}

TEST_F(Connection, MayHaveDescriptorZero) {
  ExpectSocket(0);
  ExpectConnection(0);
  ExpectClose(0);
  EXPECT_THAT(Connect({}), Returns(0));
}

TEST_F(Connection, OfASharedClientIsUsedAsItIs) {
  const auto ipc = SharedClient(kSocket);
  EXPECT_THAT(Connect(ipc), Returns(kSocket));
  ipc->fd = -1;
}

TEST_F(Connection, OfASharedClientWithDescriptorZeroIsUsedAsItIs) {
  const auto ipc = SharedClient(0);
  EXPECT_THAT(Connect(ipc), Returns(0));
  ipc->fd = -1;
}

TEST_F(Connection, IsMadeForASharedClientWithoutOne) {
  const auto ipc = SharedClient(-1);
  ExpectSocket();
  ExpectConnection();
  EXPECT_THAT(Connect(ipc), Returns(kSocket));
  EXPECT_EQ(ipc->fd, kSocket);
  ipc->fd = -1;
}

TEST_F(Connection, ClosesAnOlderDescriptorFirst) {
  const auto ipc = SharedClient(-5);
  ExpectSocket();
  ExpectConnection();
  ExpectClose(-5);
  EXPECT_THAT(Connect(ipc), Returns(kSocket));
  ipc->fd = -1;
}

TEST_F(Connection, IsNotClosedWhileAnotherSharesIt) {
  auto ipc = SharedClient(kSocket);
  {
    const WifiControlClient first(ipc);
    const WifiControlClient second(ipc);
    EXPECT_EQ(ipc.use_count(), 3);
  }
  ExpectClose();
  EXPECT_EQ(RunOn(system_, [&] { return ipc = {}, 0; }), 0);
}

class ConnectionErrors : public Connection, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, ConnectionErrors,
                         testing::Values(ENOENT, ECONNREFUSED, EACCES, EMFILE, EBADF, EINTR));

TEST_P(ConnectionErrors, OfTheSocketLeaveNoDescriptorAndNoMessage) {
  ExpectSocketFailure(GetParam());
  EXPECT_THAT(Connect({}), Returns(-1));
}

TEST_P(ConnectionErrors, OfConnectingCloseTheSocketWithoutAMessage) {
  ExpectSocket();
  ExpectConnectionFailure(GetParam());
  ExpectClose();
  EXPECT_THAT(Connect({}), Returns(-1));
}

TEST(ControlClient, HoldsItsConnectionAndAFlag) {
  struct Alike {
    eastl::shared_ptr<IpcClient> ipc;
    bool unavailable;
  };
  static_assert(std::is_standard_layout_v<WifiControlClient>);
  EXPECT_EQ(sizeof(WifiControlClient), sizeof(Alike));
  EXPECT_EQ(offsetof(WifiControlClient, unavailable), offsetof(Alike, unavailable));
}

class IpcClientTest : public ControlClientTest {};

TEST_F(IpcClientTest, HoldsADescriptorAndAMutex) {
  struct Alike {
    int32_t fd;
    nwl::Mutex mutex;
  };
  EXPECT_EQ(sizeof(IpcClient), sizeof(Alike));
  EXPECT_EQ(offsetof(IpcClient, fd), 0u);
  EXPECT_EQ(IpcClient().fd, -1);
}

TEST_F(IpcClientTest, ClosesNothingWithoutADescriptor) {
  EXPECT_EQ(RunOn(system_, [] { return IpcClient().Close(), 0; }), 0);
}

TEST_F(IpcClientTest, ClosesItsDescriptorOnce) {
  ExpectClose();
  const auto close_twice_and_end = [] {
    IpcClient client;
    client.fd = kSocket;
    client.Close();
    EXPECT_EQ(client.fd, -1);
    client.Close();
    return 0;
  };
  EXPECT_EQ(RunOn(system_, close_twice_and_end), 0);
}

TEST_F(IpcClientTest, DoesNotCloseTwiceAfterAFailedClose) {
  EXPECT_CALL(system_, Close(kSocket)).WillOnce(FailWith(EINTR));
  const auto close_and_end = [] {
    IpcClient client;
    client.fd = kSocket;
    client.Close();
    return client.fd.load();
  };
  EXPECT_EQ(RunOn(system_, close_and_end), -1);
}

TEST_F(IpcClientTest, ClosesItsDescriptorAtItsEnd) {
  ExpectClose(0);
  EXPECT_EQ(RunOn(system_,
                  [] {
                    IpcClient client;
                    client.fd = 0;
                    return 0;
                  }),
            0);
}

TEST_F(IpcClientTest, KeepsADescriptorThatIsTheSame) {
  IpcClient client;
  client.fd = kSocket;
  EXPECT_EQ(RunOn(system_, [&] { return client.Adopt(kSocket), 0; }), 0);
  EXPECT_EQ(client.fd, kSocket);
  client.fd = -1;
}

}  // namespace
}  // namespace kestrel::test
