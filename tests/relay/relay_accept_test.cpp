// SPDX-License-Identifier: Apache-2.0
// Whom the relay accepts, of several users and when there was no descriptor for one.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

#include "relay.h"
#include "support/temporary_directory.h"
#include "unix_address.h"

namespace {

/// Told of each call of accept4, whose errno it gives, or 0 for the real one.
std::function<int()> g_on_accept;

/// What a program is that connects, if not this one.
std::optional<ucred> g_program;

}  // namespace

extern "C" int accept4(int fd, sockaddr* address, socklen_t* length, int flags) {
  const int error = g_on_accept ? g_on_accept() : 0;
  if (error != 0) {
    errno = error;
    return -1;
  }
  static const auto next =
      reinterpret_cast<int (*)(int, sockaddr*, socklen_t*, int)>(dlsym(RTLD_NEXT, "accept4"));
  return next(fd, address, length, flags);
}

extern "C" int getsockopt(int fd, int level, int name, void* value, socklen_t* length) noexcept {
  static const auto next =
      reinterpret_cast<int (*)(int, int, int, void*, socklen_t*)>(dlsym(RTLD_NEXT, "getsockopt"));
  if (name != SO_PEERCRED || !g_program.has_value()) {
    return next(fd, level, name, value, length);
  }
  *length = std::min<socklen_t>(*length, sizeof *g_program);
  memcpy(value, &*g_program, *length);
  return 0;
}

namespace kestrel::relay {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kRounds = 5;

class RelayAccepting : public testing::Test {
 protected:
  RelayAccepting() {
    options_.socket_path = folder_.path() + "/socket";
    options_.client_folder = folder_.path() + "/clients";
    relay_ = std::make_unique<Relay>(loop_, options_, log_);
  }
  ~RelayAccepting() override {
    g_on_accept = nullptr;
    g_program.reset();
  }

  board::UniqueFd Connect() const {
    board::UniqueFd program(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const UnixAddress address(options_.socket_path);
    EXPECT_EQ(connect(program.get(), address.get(), UnixAddress::size()), 0);
    return program;
  }

  /// A program that the relay has accepted, or turned away.
  board::UniqueFd Admit() {
    g_on_accept = [this] {
      loop_.Stop();
      return 0;
    };
    board::UniqueFd program = Connect();
    RunUntilStopped();
    return program;
  }

  /// Runs the relay until it accepts somebody.
  void RunUntilStopped() {
    const uint64_t limit =
        loop_.CallAfter(HasFailure() ? milliseconds(100) : milliseconds(20000), [this] {
          ADD_FAILURE() << "the relay accepts nobody";
          loop_.Stop();
        });
    loop_.Run();
    loop_.Cancel(limit);
  }

  /// Has no descriptor for the first who asks, and calls `then`. Returns how long it takes until
  /// the relay tries again.
  Clock::duration TimeUntilNextTry(const std::function<void()>& then) {
    Clock::time_point failed{};
    Clock::duration result{};
    g_on_accept = [&] {
      if (failed == Clock::time_point{}) {
        failed = Clock::now();
        loop_.CallAfter(milliseconds(0), then);
        return EMFILE;
      }
      result = Clock::now() - failed;
      loop_.Stop();
      return 0;
    };
    waiting_.push_back(Connect());
    RunUntilStopped();
    return result;
  }

  const test::TemporaryDirectory folder_;
  board::EventLoop loop_;
  Options options_;
  const Log log_{false};
  std::unique_ptr<Relay> relay_;
  std::vector<board::UniqueFd> waiting_;
};

TEST_F(RelayAccepting, TriesAgainAfterATenthOfASecond) {
  std::vector<Clock::duration> times;
  for (int round = 0; round < kRounds; ++round) {
    times.push_back(TimeUntilNextTry([] {}));
    EXPECT_GE(times.back(), milliseconds(95)) << "it would ask all the time";
  }
  // Other processes may have made it wait, but not each time.
  EXPECT_LT(*std::min_element(times.begin(), times.end()), milliseconds(400));
}

TEST_F(RelayAccepting, TriesAgainAtOnceWhenSomebodyLeaves) {
  std::vector<Clock::duration> times;
  for (int round = 0; round < kRounds; ++round) {
    board::UniqueFd program = Admit();
    times.push_back(TimeUntilNextTry([&] { program = board::UniqueFd(); }));
  }
  EXPECT_LT(*std::min_element(times.begin(), times.end()), milliseconds(95));
}

TEST_F(RelayAccepting, TriesAgainAtOnceWhenSomebodyHasLeft) {
  std::vector<Clock::duration> times;
  for (int round = 0; round < kRounds; ++round) {
    { const board::UniqueFd program = Admit(); }
    times.push_back(TimeUntilNextTry([] {}));
  }
  EXPECT_LT(*std::min_element(times.begin(), times.end()), milliseconds(95));
}

class RelayOfUsers : public RelayAccepting {
 protected:
  RelayOfUsers() { options_.most_clients_per_user = 1; }

  board::UniqueFd AdmitOf(uid_t user) {
    g_program = ucred{4711, user, 0};
    return Admit();
  }

  static bool IsTurnedAway(const board::UniqueFd& program) {
    pollfd end = {program.get(), POLLRDHUP, 0};
    return poll(&end, 1, 0) == 1;
  }
};

TEST_F(RelayOfUsers, EachHasPlacesOfItsOwn) {
  const board::UniqueFd one = AdmitOf(1001);
  const board::UniqueFd other = AdmitOf(1002);
  EXPECT_FALSE(IsTurnedAway(one));
  EXPECT_FALSE(IsTurnedAway(other));
  EXPECT_TRUE(IsTurnedAway(AdmitOf(1001)));
  EXPECT_TRUE(IsTurnedAway(AdmitOf(1002)));
}

TEST_F(RelayOfUsers, NewcomerGetsThePlaceOfItsUserAlthoughOthersHaveLeftAsWell) {
  board::UniqueFd other = AdmitOf(1002);
  board::UniqueFd one = AdmitOf(1001);
  other = board::UniqueFd();
  one = board::UniqueFd();
  EXPECT_FALSE(IsTurnedAway(AdmitOf(1001)));
}

TEST_F(RelayAccepting, ProgramOfAnotherNamespaceIsNamedWithoutANumber) {
  g_program = ucred{0, 1001, 0};
  const board::UniqueFd program = Admit();
  testing::internal::CaptureStderr();
  ASSERT_EQ(send(program.get(), "PING", 4, 0), 4);
  loop_.CallAfter(milliseconds(0),
                  [this] { loop_.CallAfter(milliseconds(0), [this] { loop_.Stop(); }); });
  loop_.Run();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "kestrel-wifi-relay: a process has sent PING, which libkestrel never sends: refused\n");
}

}  // namespace
}  // namespace kestrel::relay
