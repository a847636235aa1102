// SPDX-License-Identifier: Apache-2.0
// What a signal does to an exchange with the daemon.
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>
#include <pthread.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "unit/wifi/answering_daemon.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr char kStatus[] =
    "bssid=02:00:00:00:00:01\nfreq=2437\nssid=Lab\nkey_mgmt=NONE\nwpa_state=COMPLETED\n";
constexpr std::chrono::milliseconds kBetweenSignals{1};

std::atomic<int> g_caught{0};

void Count(int) { ++g_caught; }

int GetCurrent() {
  WifiCurrentNetworkRecord record{};
  return z__WifiConfig_GetCurrentNetwork(&record, WifiConfig_StructVersion);
}

std::string FailureWith(int value) { return OperationError(value) + StatusFailure(value); }

/// The process catches SIGUSR1, and asks for interrupted calls to be restarted.
class CaughtSignal : public testing::Test {
 protected:
  CaughtSignal() : context_(FreshContext()) {
    struct sigaction action {};
    action.sa_handler = Count;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, &previous_);
    g_caught = 0;
  }
  ~CaughtSignal() override {
    FreshContext();
    sigaction(SIGUSR1, &previous_, nullptr);
  }

  wifi::WifiContext& context_;
  struct sigaction previous_ {};
};

TEST_F(CaughtSignal, EndsAnExchangeAndTheConnectionDespiteSaRestart) {
  std::atomic<bool> has_ended{false};
  std::optional<AnsweringDaemon> daemon;
  daemon.emplace([&, caller = pthread_self()](const std::string&) {
    while (!has_ended) {
      pthread_kill(caller, SIGUSR1);
      std::this_thread::sleep_for(kBetweenSignals);
    }
    return kStatus;
  });
  context_.client->ipc->Adopt(daemon->client_end());
  const Observed observed = Observe(GetCurrent);
  has_ended = true;
  // Its end of the connection is a descriptor of this process as well.
  daemon.reset();
  EXPECT_EQ(observed.error, EIO);
  EXPECT_EQ(observed.standard_error, FailureWith(EINTR));
  EXPECT_GT(g_caught, 0);
  EXPECT_THAT(Observe(GetCurrent), Fails(EIO, FailureWith(EINVAL)));
}

TEST_F(CaughtSignal, WaitsForTheEndOfACallThatIsMadeWithSignalsBlocked) {
  AnsweringDaemon daemon([caller = pthread_self()](const std::string&) {
    pthread_kill(caller, SIGUSR1);
    return kStatus;
  });
  context_.client->ipc->Adopt(daemon.client_end());
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  const Observed observed = Observe(GetCurrent);
  EXPECT_EQ(g_caught, 0);
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  EXPECT_THAT(observed, Returns(0));
  EXPECT_EQ(g_caught, 1);
  context_.client->ipc->Close();
}

/// Asks for the current network; exits with 0 when that fails because it was interrupted.
[[noreturn]] void AskAndExit(wifi::WifiContext& context, int client_end) {
  context.client->ipc->Adopt(client_end);
  const Observed observed = Observe(GetCurrent);
  const bool was_interrupted =
      observed.error == EIO && observed.standard_error == FailureWith(EINTR);
  _exit(was_interrupted ? 0 : 1);
}

/// Stops and continues a process until it ends. Returns its status as waitpid() tells it.
int StopAndContinueUntilItEnds(pid_t process) {
  int status = 0;
  for (;;) {
    kill(process, SIGSTOP);
    waitpid(process, &status, WUNTRACED);
    if (!WIFSTOPPED(status)) {
      return status;
    }
    kill(process, SIGCONT);
    std::this_thread::sleep_for(kBetweenSignals);
  }
}

TEST(StoppedProcess, FailsItsExchangeWhenItGoesOn) {
  wifi::WifiContext& context = FreshContext();
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  const pid_t process = fork();
  if (process == 0) {
    AskAndExit(context, ends[0]);
  }
  close(ends[0]);
  std::array<char, 16> command{};
  EXPECT_EQ(recv(ends[1], command.data(), command.size(), 0), 7);
  const int status = StopAndContinueUntilItEnds(process);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  close(ends[1]);
}

}  // namespace
}  // namespace kestrel::test
