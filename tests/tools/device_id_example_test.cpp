// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

TEST(DeviceIdExample, PrintsTheIdentifierInGroups) {
  // That of boards without a name.
  EXPECT_THAT(RunOnBoard({DEVICE_ID}), Ends(0,
                                            "C9C1D541 65CED533 082D6BED 81519FFA\n"
                                            "66735D56 BAF4181C 43F7CAA6 5AB5A0B4\n"
                                            "C7A5A173 E9780C51 7A22E3FE EB21BED0\n"
                                            "C6B06935 448FEB91 EFCA0157 93364074\n",
                                            ""));
}

TEST(DeviceIdExample, SaysSoWhenThereIsNone) {
  EXPECT_THAT(RunOnBoard({DEVICE_ID}, {"open:/dev/warden=ENOENT"}),
              Ends(1, "",
                   "[Kestrel:Manufacturing] error retrieving device state: 107\n"
                   "device_id: Permission denied\n"));
}

TEST(DeviceIdExample, FailsOnAFullStandardOutput) {
  EXPECT_THAT(RunOnBoard({"sh", "-c", "\"$0\" >/dev/full", DEVICE_ID}), Ends(1, "", ""));
}

}  // namespace
}  // namespace kestrel::test
