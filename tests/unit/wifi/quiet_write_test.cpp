// SPDX-License-Identifier: Apache-2.0
#include "wifi/quiet_write.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <thread>

#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

using wifi::WriteQuietly;

std::set<int> Members(const sigset_t& set) {
  std::set<int> members;
  for (int number = 1; number < 65; ++number) {
    if (sigismember(&set, number) == 1) {
      members.insert(number);
    }
  }
  return members;
}

std::set<int> Blocked() {
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  return Members(mask);
}

std::set<int> Pending() {
  sigset_t pending;
  sigpending(&pending);
  return Members(pending);
}

sigset_t BrokenPipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

void Block() {
  const sigset_t set = BrokenPipe();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

/// A connection whose other end is gone or not, and a thread's signals as they were at first.
class QuietWrite : public testing::Test {
 public:
  ssize_t Write() {
    char bytes[] = "STATUS";
    const iovec vector = {bytes, sizeof bytes};
    return WriteQuietly(ends_[0], &vector, 1);
  }

 protected:
  QuietWrite() {
    // A stream, because kernels spare sequenced packets the signal.
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) != 0) {
      abort();
    }
    pthread_sigmask(SIG_BLOCK, nullptr, &mask_);
  }
  ~QuietWrite() override {
    const sigset_t set = BrokenPipe();
    const timespec no_wait{};
    while (sigtimedwait(&set, nullptr, &no_wait) == SIGPIPE) {
    }
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    close(ends_[0]);
    BreakConnection();
  }

  void BreakConnection() {
    if (ends_[1] >= 0) {
      close(ends_[1]);
      ends_[1] = -1;
    }
  }

  int ends_[2];
  sigset_t mask_;
};

TEST_F(QuietWrite, WritesAndLeavesErrnoAlone) {
  EXPECT_THAT(Observe([&] { return static_cast<int>(Write()); }),
              testing::AllOf(Returns(7), testing::Field(&Observed::error, kUntouched)));
  char bytes[8];
  EXPECT_EQ(read(ends_[1], bytes, sizeof bytes), 7);
  EXPECT_STREQ(bytes, "STATUS");
}

TEST_F(QuietWrite, ToAPeerThatHasGoneFailsWithoutASignal) {
  BreakConnection();
  const std::set<int> blocked = Blocked();
  EXPECT_THAT(Observe([&] { return static_cast<int>(Write()); }), Fails(EPIPE, ""));
  EXPECT_EQ(Blocked(), blocked);
  EXPECT_EQ(Pending(), std::set<int>{});
}

TEST_F(QuietWrite, LeavesNothingPendingForAThreadThatBlocksTheSignal) {
  BreakConnection();
  Block();
  EXPECT_THAT(Observe([&] { return static_cast<int>(Write()); }), Fails(EPIPE, ""));
  EXPECT_EQ(Blocked().count(SIGPIPE), 1u);
  EXPECT_EQ(Pending(), std::set<int>{});
}

TEST_F(QuietWrite, LeavesASignalThatWasPendingForTheThread) {
  BreakConnection();
  Block();
  pthread_kill(pthread_self(), SIGPIPE);
  EXPECT_THAT(Observe([&] { return static_cast<int>(Write()); }), Fails(EPIPE, ""));
  EXPECT_EQ(Pending(), std::set<int>{SIGPIPE});
}

TEST_F(QuietWrite, LeavesASignalThatWasPendingForTheProcess) {
  BreakConnection();
  Block();
  kill(getpid(), SIGPIPE);
  EXPECT_THAT(Observe([&] { return static_cast<int>(Write()); }), Fails(EPIPE, ""));
  EXPECT_EQ(Pending().count(SIGPIPE), 1u);
}

TEST_F(QuietWrite, TakesNoSignalOfASuccessfulOne) {
  Block();
  pthread_kill(pthread_self(), SIGPIPE);
  EXPECT_EQ(Write(), 7);
  EXPECT_EQ(Pending(), std::set<int>{SIGPIPE});
}

TEST_F(QuietWrite, LeavesAHandlerUncalledAndInPlace) {
  static volatile sig_atomic_t calls = 0;
  struct sigaction action {};
  struct sigaction previous;
  action.sa_handler = [](int) { calls = calls + 1; };
  sigaction(SIGPIPE, &action, &previous);
  BreakConnection();
  EXPECT_EQ(Write(), -1);
  struct sigaction now;
  sigaction(SIGPIPE, &previous, &now);
  EXPECT_EQ(now.sa_handler, action.sa_handler);
  EXPECT_EQ(calls, 0);
}

TEST_F(QuietWrite, LeavesAnIgnoredSignalIgnored) {
  const auto previous = signal(SIGPIPE, SIG_IGN);
  BreakConnection();
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(Pending(), std::set<int>{});
  EXPECT_EQ(signal(SIGPIPE, previous), SIG_IGN);
}

TEST_F(QuietWrite, FailsOtherwiseWithTheErrnoOfTheCall) {
  EXPECT_THAT(Observe([&] {
                const iovec vector = {nullptr, 1};
                return static_cast<int>(WriteQuietly(-1, &vector, 1));
              }),
              Fails(EBADF, ""));
}

TEST_F(QuietWrite, GivesTheMaskBackToACancelledThread) {
  // Cancelled at once: writev is the first cancellation point that the thread meets.
  std::set<int> blocked_at_end;
  struct Arguments {
    QuietWrite* test;
    std::set<int>* blocked_at_end;
  } arguments{this, &blocked_at_end};
  const auto run = [](void* given) -> void* {
    struct AtEnd {
      std::set<int>* blocked;
      ~AtEnd() { *blocked = Blocked(); }
    };
    auto* const both = static_cast<Arguments*>(given);
    const AtEnd at_end{both->blocked_at_end};
    pthread_cancel(pthread_self());
    both->test->Write();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, run, &arguments), 0);
  void* result = nullptr;
  ASSERT_EQ(pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_EQ(blocked_at_end.count(SIGPIPE), 0u);
}

using DepartedDaemon = WifiTest;

TEST_F(DepartedDaemon, FailsTheCallAndRaisesNothing) {
  const std::set<int> blocked = Blocked();
  const int descriptor = daemon_.client_end();
  daemon_.Leave();
  const Observed observed = Observe([] { return WifiConfig_GetStoredNetworkCount(); });
  EXPECT_EQ(observed.result, -1);
  EXPECT_EQ(observed.error, EIO);
  EXPECT_EQ(observed.standard_error, OperationError(EPIPE));
  EXPECT_EQ(observed.lost_descriptors, std::set<int>{descriptor});
  EXPECT_EQ(Blocked(), blocked);
  EXPECT_EQ(Pending(), std::set<int>{});
  EXPECT_THAT(Observe([] { return WifiConfig_GetStoredNetworkCount(); }),
              Fails(EIO, OperationError(EINVAL)));
}

TEST_F(DepartedDaemon, DyingBeforeItsReplyGivesAnEmptyOne) {
  daemon_.ExpectAndDie("STATUS");
  const nwl::Expected<eastl::string> reply = Client().Request("STATUS");
  ASSERT_TRUE(reply.has_value());
  EXPECT_TRUE(reply.value().empty());
}

TEST_F(DepartedDaemon, DyingBeforeItSavesLooksLikeSuccess) {
  Expect({{"LIST_NETWORKS", "header\n"},
          {"STATUS", "wpa_state=INACTIVE\naddress=02:00:00:00:01:00\n"},
          {"ADD_NETWORK", "0\n"},
          {"SET_NETWORK 0 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 0", "OK\n"}});
  daemon_.ExpectAndDie("SAVE_CONFIG");
  const uint8_t ssid[] = {'H', 'o', 'm', 'e'};
  EXPECT_THAT(Observe([&] { return WifiConfig_StoreOpenNetwork(ssid, sizeof ssid); }), Returns(0));
}

TEST_F(DepartedDaemon, DyingBeforeItsScanResultsLosesTheKeptScan) {
  context_.scannedNetworks->resize(1);
  Expect({{"SCAN", "OK\n"}});
  daemon_.ExpectAndDie("SCAN_RESULTS");
  EXPECT_THAT(Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount), Returns(0));
  EXPECT_TRUE(context_.scannedNetworks->empty());
}

}  // namespace
}  // namespace kestrel::test
