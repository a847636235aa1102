// SPDX-License-Identifier: Apache-2.0
// Whether networking is ready, by the file in which the networking service says so.
#include <errno.h>
#include <kestrel/networking.h>

#include <string>

#include "rig.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

std::string Problem(int error) {
  return "[Kestrel:Networking] error determining device networking state: " +
         std::to_string(error) + "\n";
}

struct Status {
  std::string name;
  std::string hex;  ///< what the file holds
  bool ready;
};

class DeviceNetworking : public testing::Test {
 protected:
  void TearDown() override { TheRig().RemoveNetworkStatus(); }

  bool ready_ = true;
  const std::function<int()> ask_ = [this] { return Networking_IsNetworkingReady(&ready_); };
};

class DeviceNetworkingStatus : public DeviceNetworking,
                               public testing::WithParamInterface<Status> {};

INSTANTIATE_TEST_SUITE_P(Each, DeviceNetworkingStatus,
                         testing::Values(Status{"AllSet", "0101010101", true},
                                         Status{"NoneSet", "0000000000", false},
                                         Status{"WithoutTheFirst", "0001010101", false},
                                         Status{"WithoutTheSecond", "0100010101", true},
                                         Status{"WithoutTheThird", "0101000101", false},
                                         Status{"WithoutTheFourth", "0101010001", false},
                                         Status{"WithoutTheFifth", "0101010100", false},
                                         Status{"AnyValueButZero", "FF0080027F", true},
                                         Status{"MoreIsIgnored", "010101010100FF00", true},
                                         Status{"OneByteTooShort", "01010101", false},
                                         Status{"Empty", "", false}),
                         [](const auto& test) { return test.param.name; });

TEST_P(DeviceNetworkingStatus, DecidesReadiness) {
  ready_ = !GetParam().ready;
  TheRig().WriteNetworkStatus(GetParam().hex);
  EXPECT_THAT(Observe(ask_), Returns(0));
  EXPECT_EQ(ready_, GetParam().ready);
}

TEST_F(DeviceNetworking, IsUnknownWithoutTheFile) {
  TheRig().RemoveNetworkStatus();
  EXPECT_THAT(Observe(ask_), Fails(EBUSY, Problem(ENOENT)));
  EXPECT_FALSE(ready_);
}

TEST_F(DeviceNetworking, IsLookedUpAnewWithEachCall) {
  for (int round = 0; round < 3; ++round) {
    TheRig().RemoveNetworkStatus();
    EXPECT_THAT(Observe(ask_), Fails(EBUSY, Problem(ENOENT)));
    TheRig().WriteNetworkStatus("0101010101");
    EXPECT_THAT(Observe(ask_), Returns(0));
    EXPECT_TRUE(ready_);
    TheRig().WriteNetworkStatus("0101010001");
    EXPECT_THAT(Observe(ask_), Returns(0));
    EXPECT_FALSE(ready_);
  }
}

TEST_F(DeviceNetworking, IsUnknownToAUserWhoMayNotReadTheFile) {
  TheRig().WriteNetworkStatus("0101010101");
  EXPECT_EQ(TheRig().AsUserWhoMayNotOpen(kNetworkStatusPath,
                                         [this] {
                                           EXPECT_THAT(Observe(ask_),
                                                       Fails(EBUSY, Problem(EACCES)));
                                           EXPECT_FALSE(ready_);
                                           return HasFailure() ? 1 : 0;
                                         }),
            0);
}

}  // namespace
}  // namespace kestrel::test
