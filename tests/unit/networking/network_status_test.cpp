// SPDX-License-Identifier: Apache-2.0
#include "networking/network_status.h"

#include <gtest/gtest.h>
#include <kestrel/networking.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <type_traits>

#include "support/broken_standard_error.h"
#include "support/fake_system.h"
#include "support/outcome.h"
#include "unit/vtable_slot.h"

namespace kestrel::test {
namespace {

using networking::GetNetworking;
using networking::Networking;
using testing::_;
using testing::Return;
using testing::StrEq;

constexpr int kFile = 900;
constexpr int kUnsetAnswer = 2;

/// A test in which every system call is expected, in order, and none else is made.
class NetworkStatus : public testing::Test {
 protected:
  void ExpectOpen() {
    // O_RDONLY and O_CLOEXEC.
    EXPECT_CALL(system_, Open(StrEq("/var/run/network_status"), 0x80000)).WillOnce(Return(kFile));
  }

  void ExpectRead(const std::string& content) {
    EXPECT_CALL(system_, Read(kFile, _, 5)).WillOnce([content](int, void* buffer, size_t size) {
      const size_t count = std::min(size, content.size());
      memcpy(buffer, content.data(), count);
      return static_cast<ssize_t>(count);
    });
  }

  void ExpectClose() { EXPECT_CALL(system_, Close(kFile)).WillOnce(Return(0)); }

  void ExpectFile(const std::string& content) {
    ExpectOpen();
    ExpectRead(content);
    ExpectClose();
  }

  /// Asks; `answer_` is the byte that the answer was written to.
  Observed Ask() {
    memset(&answer_, kUnsetAnswer, 1);
    return ObserveOn(system_, [this] {
      return Networking_IsNetworkingReady(reinterpret_cast<bool*>(&answer_));
    });
  }

  static std::string Problem(int error) {
    return "[Kestrel:Networking] error determining device networking state: " +
           std::to_string(error) + "\n";
  }

  testing::InSequence in_sequence_;
  testing::StrictMock<FakeSystem> system_;
  uint8_t answer_ = kUnsetAnswer;
};

class NetworkFlags : public NetworkStatus, public testing::WithParamInterface<int> {
 protected:
  std::string Flags(char set) const {
    std::string flags(5, '\0');
    for (size_t i = 0; i < 5; ++i) {
      flags[i] = (GetParam() >> i & 1) != 0 ? set : '\0';
    }
    return flags;
  }
};

INSTANTIATE_TEST_SUITE_P(All, NetworkFlags, testing::Range(0, 32));

TEST_P(NetworkFlags, AreReadyWhenAllButTheSecondAreSet) {
  // Bits 0, 2, 3 and 4.
  const int ready = (GetParam() & 0x1D) == 0x1D ? 1 : 0;
  for (const char set : {'\x01', '\x02', '\x7F', '\x80', '\xFF'}) {
    ExpectFile(Flags(set));
    EXPECT_THAT(Ask(), Returns(0));
    EXPECT_EQ(answer_, ready) << int{set};
  }
}

TEST_F(NetworkStatus, IsNotReadyInAShortFile) {
  for (size_t length = 0; length < 5; ++length) {
    ExpectFile(std::string(length, '\x01'));
    EXPECT_THAT(Ask(), Returns(0));
    EXPECT_EQ(answer_, 0) << length;
  }
}

TEST_F(NetworkStatus, IgnoresWhatFollowsTheFlags) {
  ExpectFile(std::string(5, '\x01') + std::string(100, '\0'));
  EXPECT_THAT(Ask(), Returns(0));
  EXPECT_EQ(answer_, 1);
}

TEST_F(NetworkStatus, IsAskedAnewEveryTime) {
  ExpectFile({1, 1, 1, 1, 1});
  EXPECT_THAT(Ask(), Returns(0));
  ExpectFile({1, 1, 1, 1, 0});
  EXPECT_THAT(Ask(), Returns(0));
  EXPECT_EQ(answer_, 0);
}

TEST_F(NetworkStatus, IsNotReadWithoutAPlaceForTheAnswer) {
  EXPECT_THAT(ObserveOn(system_, [] { return Networking_IsNetworkingReady(nullptr); }),
              IsRefused(EFAULT));
}

TEST_F(NetworkStatus, MayComeThroughDescriptorZero) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(Return(0));
  EXPECT_CALL(system_, Read(0, _, 5)).WillOnce(FailWith(EIO));
  EXPECT_CALL(system_, Close(0)).WillOnce(Return(0));
  EXPECT_THAT(Ask(), Fails(EBUSY, Problem(EIO)));
}

class NetworkStatusError : public NetworkStatus, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Every, NetworkStatusError,
                         testing::Values(ENOENT, EACCES, EMFILE, EISDIR, EIO, EINTR, EBADF, EPERM,
                                         EBUSY),
                         [](const auto& test) { return strerrorname_np(test.param); });

TEST_P(NetworkStatusError, OfOpeningIsPrintedAndBusyReturned) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(GetParam()));
  EXPECT_THAT(Ask(), Fails(EBUSY, Problem(GetParam())));
  EXPECT_EQ(answer_, 0);
}

TEST_P(NetworkStatusError, OfReadingIsPrintedAndBusyReturned) {
  ExpectOpen();
  EXPECT_CALL(system_, Read(_, _, _)).WillOnce(FailWith(GetParam()));
  ExpectClose();
  EXPECT_THAT(Ask(), Fails(EBUSY, Problem(GetParam())));
  EXPECT_EQ(answer_, 0);
}

TEST_P(NetworkStatusError, OfClosingIsNobodysBusiness) {
  ExpectOpen();
  ExpectRead({1, 1, 1, 1, 1});
  EXPECT_CALL(system_, Close(kFile)).WillOnce(FailWith(GetParam()));
  EXPECT_THAT(Ask(), Returns(0));
  EXPECT_EQ(answer_, 1);
}

TEST_P(NetworkStatusError, OfReadingIsPrintedWhenClosingFailsAsWell) {
  ExpectOpen();
  EXPECT_CALL(system_, Read(_, _, _)).WillOnce(FailWith(GetParam()));
  EXPECT_CALL(system_, Close(kFile)).WillOnce(FailWith(ENOSPC));
  EXPECT_THAT(Ask(), Fails(EBUSY, Problem(GetParam())));
}

TEST_F(NetworkStatus, IsBusyAlsoWhenStandardErrorIsClosed) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(ENOENT));
  EXPECT_THAT(Observe([this] {
                const ClosedStandardError closed;
                return RunOn(system_, [this] {
                  return Networking_IsNetworkingReady(reinterpret_cast<bool*>(&answer_));
                });
              }),
              Fails(EBUSY, ""));
  EXPECT_EQ(answer_, 0);
}

using NetworkStatusDeathTest = NetworkStatus;

TEST_F(NetworkStatusDeathTest, AssertsThatAFailureHasAnErrno) {
  EXPECT_CALL(system_, Open(_, _)).Times(testing::AnyNumber()).WillRepeatedly(FailWith(0));
  EXPECT_DEATH(
      RunOn(system_,
            [this] { return Networking_IsNetworkingReady(reinterpret_cast<bool*>(&answer_)); }),
      "libs/libnwl/inc/public/nwl/expected:87");
}

TEST(Networking, IsOneObject) { EXPECT_EQ(&GetNetworking(), &GetNetworking()); }

TEST(Networking, MayBeReplacedAndHoldsNothing) {
  EXPECT_TRUE((std::is_base_of_v<vesta::test::support::test_placeholder, Networking>));
  EXPECT_EQ(sizeof(Networking), sizeof(void*));
}

TEST(Networking, HasItsQueryBehindTheDestructors) {
  EXPECT_EQ(VtableSlot(&Networking::queryNetworkingReady), 2);
  struct Extended : Networking {
    virtual void First() {}
  };
  EXPECT_EQ(VtableSlot(&Extended::First), 3);
}

}  // namespace
}  // namespace kestrel::test
