// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "on_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

const std::string kFailure =
    "kestrelctl: device identifier: EACCES: Permission denied (the security device is missing or "
    "does not tell; --verbose shows which)\n";

std::string IdentifierOf(const SharedBoard& board) {
  return json::parse(board.Board({"show", "--json"})).at("manufacturing").at("device_id");
}

TEST(KestrelctlDeviceId, PrintsTheDigits) {
  const SharedBoard board;
  const std::string identifier = IdentifierOf(board);
  EXPECT_EQ(identifier.size(), 128U);
  EXPECT_THAT(board.Kestrelctl({"device-id"}), Ends(0, identifier + "\n", ""));
}

TEST(KestrelctlDeviceId, PrintsJson) {
  const SharedBoard board;
  const ProgramResult result = board.Kestrelctl({"device-id", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(json::parse(result.standard_output), json({{"device_id", IdentifierOf(board)}}));
}

TEST(KestrelctlDeviceId, DoesNotNeedTheLodestone) {
  EXPECT_EQ(Kestrelctl({"device-id"}, {"open:/dev/lodestone=ENOENT"}).status, 0);
}

TEST(KestrelctlDeviceId, FailsWithoutTheSecurityDevice) {
  EXPECT_THAT(Kestrelctl({"device-id"}, {"open:/dev/warden=ENOENT"}), Ends(1, "", kFailure));
  EXPECT_THAT(Kestrelctl({"device-id"}, {"ioctl:WARDEN_GET_DEVICE_STATE=EIO"}),
              Ends(1, "", kFailure));
}

TEST(KestrelctlDeviceId, TellsWhichStepFailedWhenAsked) {
  const std::string problem = "[Kestrel:Manufacturing] error retrieving device state: ";
  EXPECT_THAT(Kestrelctl({"device-id", "-v"}, {"open:/dev/warden=ENOENT"}),
              Ends(1, "", problem + "107\n" + kFailure));
  EXPECT_THAT(Kestrelctl({"device-id", "--verbose"}, {"ioctl:WARDEN_GET_DEVICE_STATE=EIO"}),
              Ends(1, "", problem + "-1\n" + kFailure));
}

TEST(KestrelctlDeviceId, FailsOnAFullStandardOutput) {
  EXPECT_THAT(RunOnBoard({"sh", "-c", "\"$0\" device-id >/dev/full", KESTRELCTL}),
              Ends(1, "", "kestrelctl: standard output: ENOSPC: No space left on device\n"));
}

}  // namespace
}  // namespace kestrel::test
