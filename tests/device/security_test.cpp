// SPDX-License-Identifier: Apache-2.0
// The device identifier, as the security device gives it or does not.
#include <errno.h>
#include <kestrel/manufacturing.h>

#include <string>

#include "rig.h"
#include "support/outcome.h"
#include "support/threads.h"

namespace kestrel::test {
namespace {

constexpr size_t kSize = 129;
constexpr char kDoesNotTell[] = "[Kestrel:Manufacturing] error retrieving device state: -1\n";
constexpr char kCannotBeOpened[] = "[Kestrel:Manufacturing] error retrieving device state: 107\n";

class DeviceIdentifier : public testing::Test {
 protected:
  void TearDown() override { TheRig().MendSecurityDevice(); }

  Observed Ask() {
    return Observe([this] { return Manufacturing_GetDeviceId(text_, sizeof text_); });
  }

  /// What a call that fails must not touch.
  void ExpectUntouched() const { EXPECT_EQ(std::string(text_, kSize), std::string(kSize, '?')); }

  void ExpectIdentifier() {
    EXPECT_THAT(Ask(), Returns(kSize));
    EXPECT_STREQ(text_, kDeviceIdentifier);
  }

  char text_[kSize] = {};

  void SetUp() override { std::fill_n(text_, kSize, '?'); }
};

TEST_F(DeviceIdentifier, IsThatOfTheSecurityDevice) {
  ASSERT_EQ(Manufacturing_GetDeviceIdSize(), kSize);
  ExpectIdentifier();
  ExpectIdentifier();
}

TEST_F(DeviceIdentifier, NeedsRoomForAllOfIt) {
  EXPECT_THAT(Observe([this] { return Manufacturing_GetDeviceId(text_, kSize - 1); }),
              IsRefused(ERANGE));
  EXPECT_STREQ(text_, "");
}

TEST_F(DeviceIdentifier, IsTheSameOnEightThreads) {
  const Observed all = Observe([] {
    OnThreads(8, [](size_t) {
      char text[kSize];
      EXPECT_EQ(Manufacturing_GetDeviceId(text, sizeof text), 129);
      EXPECT_STREQ(text, kDeviceIdentifier);
    });
    return 0;
  });
  EXPECT_THAT(all, Returns(0));
}

class DeviceIdentifierErrno : public DeviceIdentifier, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Each, DeviceIdentifierErrno, testing::Values(EPERM, EIO, EINVAL, EBUSY));

TEST_P(DeviceIdentifierErrno, OfTheDriverIsAccessDenied) {
  TheRig().FailSecurityRequests(GetParam());
  EXPECT_THAT(Ask(), Fails(EACCES, kDoesNotTell));
  ExpectUntouched();
  TheRig().MendSecurityDevice();
  ExpectIdentifier();
}

TEST_F(DeviceIdentifier, CannotBeHadWithoutTheDevice) {
  TheRig().RemoveNode(kWardenPath);
  EXPECT_THAT(Ask(), Fails(EACCES, kCannotBeOpened));
  ExpectUntouched();
  TheRig().MendSecurityDevice();
  ExpectIdentifier();
}

TEST_F(DeviceIdentifier, DoesNotNeedTheOtherNode) {
  TheRig().RemoveNode(kLodestonePath);
  ExpectIdentifier();
}

TEST_F(DeviceIdentifier, CannotBeHadByAUserWhoMayNotOpenTheDevice) {
  EXPECT_EQ(TheRig().AsUserWhoMayNotOpen(kWardenPath,
                                         [this] {
                                           EXPECT_THAT(Ask(), Fails(EACCES, kCannotBeOpened));
                                           return HasFailure() ? 1 : 0;
                                         }),
            0);
}

}  // namespace
}  // namespace kestrel::test
