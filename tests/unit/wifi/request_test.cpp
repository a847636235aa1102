// SPDX-License-Identifier: Apache-2.0
#include <signal.h>

#include <string>

#include "unit/wifi/control_client_fixture.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using testing::_;
using wifi::WifiControlClient;

class Request : public ControlClientTest {
 protected:
  ~Request() override { client_.ipc->fd = -1; }

  RequestResult Send(const std::string& command = "STATUS") {
    return ControlClientTest::Request(client_, command);
  }

  testing::Matcher<const RequestResult&> FailsWithoutConnection() {
    return FailsWith(EINVAL, nwl::generic_category());
  }

  WifiControlClient client_ = ConnectedClient();
};

TEST_F(Request, WritesTheCommandWithItsNulThenSetsTheTimeoutThenReads) {
  ExpectWrite(std::string("SCAN\0", 5));
  ExpectTimeout();
  ExpectRead("OK\n");
  EXPECT_THAT(Send("SCAN"), Replies("OK\n"));
}

TEST_F(Request, SetsTheTimeoutEveryTime) {
  ExpectExchange("SCAN", "OK\n");
  ExpectExchange("STATUS", "ssid=a\n");
  EXPECT_THAT(Send("SCAN"), Replies("OK\n"));
  EXPECT_THAT(Send("STATUS"), Replies("ssid=a\n"));
}

TEST_F(Request, GoesOnWhenTheTimeoutCannotBeSet) {
  ExpectWrite(std::string("SCAN\0", 5));
  ExpectTimeout(-1);
  ExpectRead("OK\n");
  EXPECT_THAT(Send("SCAN"), Replies("OK\n"));
}

TEST_F(Request, DoesNotCountTheBytesWritten) {
  EXPECT_CALL(system_, Writev(kSocket, _, 1)).WillOnce(testing::Return(0));
  ExpectTimeout();
  ExpectRead("OK\n");
  EXPECT_THAT(Send("SCAN"), Replies("OK\n"));
}

TEST_F(Request, EndsItsCommandAtAnInnerNul) {
  ExpectWrite(std::string("SC\0", 3));
  ExpectTimeout();
  ExpectRead("OK\n");
  EXPECT_THAT(Send(std::string("SC\0AN", 5)), Replies("OK\n"));
}

TEST_F(Request, SendsAnEmptyCommandAsItsNul) {
  ExpectWrite(std::string(1, '\0'));
  ExpectTimeout();
  ExpectRead("OK\n");
  EXPECT_THAT(Send(""), Replies("OK\n"));
}

class ReplyCases : public Request, public testing::WithParamInterface<std::string> {};

using AcceptedReplies = ReplyCases;

INSTANTIATE_TEST_SUITE_P(Each, AcceptedReplies,
                         testing::Values("", "\n", "OK\n", "F", "FAI", "fail\n", " FAIL\n",
                                         "OK FAIL\n", "UNKNOWN COMMAND\n", "*",
                                         std::string("FAI\0L", 5), std::string("a\0b\n", 4),
                                         std::string("\0FAIL", 5)));

TEST_P(AcceptedReplies, ArriveAsTheyAre) {
  ExpectExchange("STATUS", GetParam());
  EXPECT_THAT(Send(), Replies(GetParam()));
}

using RefusingReplies = ReplyCases;

INSTANTIATE_TEST_SUITE_P(Each, RefusingReplies,
                         testing::Values("FAIL", "FAIL\n", "FAIL-BUSY\n", "FAILURE",
                                         std::string("FAIL\0OK", 7)));

TEST_P(RefusingReplies, AreAnErrorThatLeavesTheConnectionOpen) {
  ExpectExchange("STATUS", GetParam());
  ExpectExchange("STATUS", "OK\n");
  EXPECT_THAT(Send(), FailsWith(6, wifi::wifi_category()));
  EXPECT_EQ(client_.ipc->fd, kSocket);
  EXPECT_THAT(Send(), Replies("OK\n"));
}

class LongReplies : public Request, public testing::WithParamInterface<size_t> {};

INSTANTIATE_TEST_SUITE_P(Each, LongReplies, testing::Values(2047, 2048, 2049, 5000));

TEST_P(LongReplies, AreCutAt2048Bytes) {
  const std::string reply(GetParam(), 'r');
  ExpectExchange("STATUS", reply);
  EXPECT_THAT(Send(), Replies(reply.substr(0, 2048)));
}

TEST_F(Request, WithoutAConnectionFailsAtOnce) {
  client_.ipc->fd = -1;
  EXPECT_THAT(Send(), FailsWithoutConnection());
}

TEST_F(Request, LeavesErrnoToTheDaemonsRefusal) {
  ExpectExchange("STATUS", "FAIL\n");
  const Observed observed = ObserveOn(system_, [&] { return client_.Send("STATUS").value; });
  EXPECT_THAT(observed, Returns(6));
}

TEST_F(Request, SendsWithoutTheReplysText) {
  ExpectExchange("SCAN", "OK\n");
  EXPECT_EQ(RunOn(system_, [&] { return client_.Send("SCAN").value; }), 0);
}

class TransportErrors : public Request, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, TransportErrors,
                         testing::Values(EAGAIN, EINTR, EPIPE, ECONNRESET, EBADF, EPERM, ENOTCONN,
                                         EMSGSIZE, ENOBUFS, EFAULT, EINVAL, EIO));

TEST_P(TransportErrors, OfWritingCloseTheConnectionForGood) {
  ExpectWriteFailure(GetParam());
  ExpectClose();
  EXPECT_THAT(Send(), FailsWith(GetParam(), nwl::generic_category()));
  EXPECT_EQ(client_.ipc->fd, -1);
  EXPECT_THAT(Send(), FailsWithoutConnection());
  EXPECT_THAT(Send(), FailsWithoutConnection());
}

TEST_P(TransportErrors, OfReadingCloseTheConnectionForGood) {
  ExpectWrite(std::string("STATUS\0", 7));
  ExpectTimeout();
  ExpectReadFailure(GetParam());
  ExpectClose();
  EXPECT_THAT(Send(), FailsWith(GetParam(), nwl::generic_category()));
  EXPECT_EQ(client_.ipc->fd, -1);
  EXPECT_THAT(Send(), FailsWithoutConnection());
  EXPECT_THAT(Send(), FailsWithoutConnection());
}

TEST_F(Request, FailsWithWhatAFailingCloseLeavesInErrno) {
  ExpectWriteFailure(ECONNRESET);
  EXPECT_CALL(system_, Close(kSocket)).WillOnce(FailWith(EIO));
  EXPECT_THAT(Send(), FailsWith(EIO, nwl::generic_category()));
  EXPECT_THAT(Send(), FailsWithoutConnection());
}

TEST_F(Request, FailsWithWhatAFailingCloseAfterReadingLeavesInErrno) {
  ExpectWrite(std::string("STATUS\0", 7));
  ExpectTimeout();
  ExpectReadFailure(ECONNRESET);
  EXPECT_CALL(system_, Close(kSocket)).WillOnce(FailWith(EIO));
  EXPECT_THAT(Send(), FailsWith(EIO, nwl::generic_category()));
}

TEST_F(Request, IsClosedForAllWhoShareTheConnection) {
  WifiControlClient other(client_.ipc);
  ExpectWriteFailure(EPIPE);
  ExpectClose();
  EXPECT_THAT(Send(), FailsWith(EPIPE, nwl::generic_category()));
  EXPECT_THAT(ControlClientTest::Request(other), FailsWithoutConnection());
}

TEST_F(Request, NeverConnectsAgain) {
  ExpectSocket();
  ExpectConnectionFailure(ENOENT);
  ExpectClose();
  ASSERT_EQ(RunOn(system_,
                  [&] {
                    WifiControlClient unconnected({});
                    EXPECT_FALSE(unconnected.Request("STATUS").has_value());
                    EXPECT_FALSE(unconnected.Request("STATUS").has_value());
                    return 0;
                  }),
            0);
}

TEST_F(Request, DoesNotLookAtUnavailable) {
  client_.unavailable = true;
  ExpectExchange("STATUS", "OK\n");
  EXPECT_THAT(Send(), Replies("OK\n"));
}

using RequestDeathTest = Request;

TEST_F(RequestDeathTest, AbortsWhenAFailureHasNoErrno) {
  EXPECT_CALL(system_, Writev(_, _, _)).WillRepeatedly(FailWith(0));
  EXPECT_CALL(system_, Close(_)).WillRepeatedly(testing::Return(0));
  EXPECT_EXIT(Send(), testing::KilledBySignal(SIGABRT), "expected:87: Expected: Assertion `error'");
}

}  // namespace
}  // namespace kestrel::test
