// SPDX-License-Identifier: Apache-2.0
// A program of its own, whose children are the first to need the context.
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <thread>
#include <vector>

#include "support/fake_system.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

using testing::_;
using testing::Return;
using wifi::WifiContext;

constexpr int kSocket = 700;
const uint8_t kSsid[] = {'a'};

struct WifiCall {
  const char* name;
  int (*call)();
  int error;
};

constexpr WifiCall kCalls[] = {
    {"Scan", [] { return WifiConfig_TriggerScanAndGetScannedNetworkCount(); }, EIO},
    {"GetScanned", [] { return z__WifiConfig_GetScannedNetworks(nullptr, 0, 0); }, EFAULT},
    {"CountStored", [] { return WifiConfig_GetStoredNetworkCount(); }, EIO},
    {"GetStored", [] { return z__WifiConfig_GetStoredNetworks(nullptr, 0, 0); }, EFAULT},
    {"StoreWpa2", [] { return WifiConfig_StoreWpa2Network(kSsid, 0, nullptr, 0); }, ERANGE},
    {"StoreOpen", [] { return WifiConfig_StoreOpenNetwork(nullptr, 0); }, EFAULT},
    {"GetCurrent", [] { return z__WifiConfig_GetCurrentNetwork(nullptr, 0); }, EFAULT},
    {"Forget", [] { return z__WifiConfig_ForgetNetwork(nullptr); }, EFAULT},
    {"ForgetAll", [] { return WifiConfig_ForgetAllNetworks(); }, EIO},
};

/// Ends the process with the number of checks that failed.
[[noreturn]] void EndWith(const std::vector<bool>& checks) {
  int failures = 0;
  for (const bool check : checks) {
    failures += check ? 0 : 1;
  }
  _exit(failures);
}

class FirstWifiCallDeathTest : public testing::TestWithParam<WifiCall> {
 protected:
  /// Calls twice and checks that the first call alone connects, although it is refused.
  [[noreturn]] static void CallAndExit() {
    testing::StrictMock<FakeSystem> system;
    {
      const testing::InSequence in_sequence;
      EXPECT_CALL(system, Socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
          .WillOnce(Return(kSocket));
      EXPECT_CALL(system, Connect(kSocket, _, 110)).WillOnce(FailWith(ENOENT));
      EXPECT_CALL(system, Close(kSocket)).WillOnce(Return(0));
    }
    const int first = RunOn(system, GetParam().call);
    const int first_error = errno;
    const int second = RunOn(system, GetParam().call);
    const int second_error = errno;
    EndWith({first == -1, first_error == GetParam().error, second == -1,
             second_error == GetParam().error, testing::Mock::VerifyAndClearExpectations(&system)});
  }
};

INSTANTIATE_TEST_SUITE_P(Each, FirstWifiCallDeathTest, testing::ValuesIn(kCalls),
                         [](const auto& test) { return test.param.name; });

TEST_P(FirstWifiCallDeathTest, ConnectsOnceBeforeItsArgumentsAreChecked) {
  EXPECT_EXIT(CallAndExit(), testing::ExitedWithCode(0), "");
}

TEST(WifiContext, HoldsTheClientAndTwoLists) {
  struct Alike {
    void* client;
    eastl::shared_ptr<int> stored;
    eastl::shared_ptr<int> scanned;
  };
  EXPECT_EQ(sizeof(WifiContext), sizeof(Alike));
  EXPECT_EQ(offsetof(WifiContext, client), offsetof(Alike, client));
  EXPECT_EQ(offsetof(WifiContext, storedNetworks), offsetof(Alike, stored));
  EXPECT_EQ(offsetof(WifiContext, scannedNetworks), offsetof(Alike, scanned));
}

/// Builds the context, connected to kSocket.
WifiContext& BuildContext() {
  testing::NiceMock<FakeSystem> system;
  ON_CALL(system, Socket(_, _, _)).WillByDefault(Return(kSocket));
  RunOn(system, [] { return wifi::GetWifiContext(), 0; });
  return wifi::GetWifiContext();
}

class WifiContextDeathTest : public testing::Test {};

[[noreturn]] void LookAtContextAndExit() {
  const WifiContext& context = BuildContext();
  EndWith({context.client->ipc->fd == kSocket, context.client->ipc.use_count() == 1,
           context.storedNetworks && context.storedNetworks->empty(),
           context.scannedNetworks && context.scannedNetworks->empty(),
           context.storedNetworks != context.scannedNetworks});
}

TEST_F(WifiContextDeathTest, HasAConnectionAndTwoEmptyListsAtFirst) {
  EXPECT_EXIT(LookAtContextAndExit(), testing::ExitedWithCode(0), "");
}

[[noreturn]] void BuildOnThreadsAndExit() {
  testing::StrictMock<FakeSystem> system;
  EXPECT_CALL(system, Socket(_, _, _)).WillOnce(FailWith(EMFILE));
  std::vector<const WifiContext*> seen(8);
  RunOn(system, [&] {
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (const WifiContext*& context : seen) {
      threads.emplace_back([&context] { context = &wifi::GetWifiContext(); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    return 0;
  });
  EndWith({std::set<const WifiContext*>(seen.begin(), seen.end()).size() == 1,
           testing::Mock::VerifyAndClearExpectations(&system)});
}

TEST_F(WifiContextDeathTest, IsBuiltOnceByThreads) {
  EXPECT_EXIT(BuildOnThreadsAndExit(), testing::ExitedWithCode(0), "");
}

/// A list that says when it is released.
eastl::shared_ptr<wifi::NetworkList> Announced(const char* text) {
  return {new wifi::NetworkList, [text](wifi::NetworkList* list) {
            fputs(text, stderr);
            delete list;
          }};
}

[[noreturn]] void BuildAndExitNormally() {
  WifiContext& context = BuildContext();
  context.storedNetworks = Announced("stored\n");
  context.scannedNetworks = Announced("scanned\n");
  testing::StrictMock<FakeSystem> system;
  // Ends the process within its exit, before anything else meets the stand-in.
  EXPECT_CALL(system, Close(kSocket)).WillOnce([](int) -> int {
    fputs("closed\n", stderr);
    _exit(3);
  });
  RunOn(system, []() -> int { exit(1); });
  abort();
}

TEST_F(WifiContextDeathTest, ReleasesItsListsAndClosesTheConnectionAtExit) {
  EXPECT_EXIT(BuildAndExitNormally(), testing::ExitedWithCode(3), "^scanned\nstored\nclosed\n$");
}

}  // namespace
}  // namespace kestrel::test
