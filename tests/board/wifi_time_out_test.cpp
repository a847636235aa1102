// SPDX-License-Identifier: Apache-2.0
// A daemon that takes commands and never answers one of them. The only test that waits for as long
// as an application would: everywhere else the end of the wait is made up.
#include <errno.h>
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>

#include <chrono>

#include "outside_world.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

TEST(SilentWifiDaemon, FailsTheCallAfterThirtySecondsAndEveryLaterOneAtOnce) {
  ASSERT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  LetWifiDaemonReply("[[rule]]\ncommand = \"SCAN_RESULTS\"\naction = \"silence\"\n");
  const Clock::time_point start = Clock::now();
  const Observed silent = Observe(WifiConfig_TriggerScanAndGetScannedNetworkCount);
  const Clock::duration time = Clock::now() - start;
  EXPECT_EQ(silent.result, -1);
  EXPECT_EQ(silent.error, EIO);
  EXPECT_EQ(silent.standard_error,
            "[Kestrel:WifiConfig] Failure performing scan: 11\n"
            "[Kestrel:WifiConfig] Error performing operation: 11\n");
  EXPECT_THAT(silent.new_descriptors, testing::IsEmpty());
  EXPECT_THAT(silent.lost_descriptors, testing::SizeIs(1)) << "the connection: " << silent;
  EXPECT_GE(time, seconds(29));
  EXPECT_LT(time, seconds(60));
  // It would answer again.
  LetWifiDaemonReply("");
  EXPECT_THAT(Observe(WifiConfig_GetStoredNetworkCount),
              Fails(EIO, "[Kestrel:WifiConfig] Error performing operation: 22\n"));
  EXPECT_LT(Clock::now() - start, time + seconds(29));
}

}  // namespace
}  // namespace kestrel::test
