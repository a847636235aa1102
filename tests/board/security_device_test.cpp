// SPDX-License-Identifier: Apache-2.0
// The security device by system calls alone, as a program without the library uses it.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "outside_world.h"

namespace kestrel::test {
namespace {

using Record = std::array<uint8_t, 132>;

constexpr unsigned long kGetDeviceState = 0xC0847001;
constexpr size_t kIdentifierOffset = 68;

class SecurityDevice : public testing::Test {
 protected:
  ~SecurityDevice() override {
    ClearFaults();
    close(node_);
  }

  void Open(const char* path) {
    node_ = open(path, O_RDONLY | O_CLOEXEC);
    ASSERT_GE(node_, 0);
  }

  /// 0, or the errno with which the request failed.
  int Ask(unsigned long request) { return ioctl(node_, request, record_.data()) == 0 ? 0 : errno; }

  int node_ = -1;
  Record record_{};
};

TEST_F(SecurityDevice, FillsTheWholeRecordWithTheConfiguredIdentifier) {
  Open("/dev/warden");
  record_.fill(0xEE);
  ASSERT_EQ(Ask(kGetDeviceState), 0);
  // security.toml: 00 01 02 and so on.
  for (size_t i = kIdentifierOffset; i < record_.size(); ++i) {
    EXPECT_EQ(record_[i], i - kIdentifierOffset) << "byte " << i;
  }
  const auto filler = std::count(record_.begin(), record_.begin() + kIdentifierOffset, 0xEE);
  EXPECT_LT(filler, 8) << "the driver fills the other bytes as well";
}

TEST_F(SecurityDevice, AlwaysTellsTheSame) {
  Open("/dev/warden");
  ASSERT_EQ(Ask(kGetDeviceState), 0);
  const Record first = record_;
  record_.fill(0xEE);
  ASSERT_EQ(Ask(kGetDeviceState), 0);
  EXPECT_EQ(record_, first);
}

TEST_F(SecurityDevice, KnowsNoOtherRequest) {
  Open("/dev/warden");
  for (const unsigned long request : {0xC0847002UL, 0xC0847101UL, 0xC0807001UL, 0x80847001UL}) {
    EXPECT_EQ(Ask(request), ENOTTY) << std::hex << request;
  }
  EXPECT_EQ(record_, Record{});
}

TEST_F(SecurityDevice, LodestoneOpensAndKnowsNothing) {
  Open("/dev/lodestone");
  EXPECT_EQ(Ask(kGetDeviceState), ENOTTY);
  EXPECT_EQ(record_, Record{});
}

TEST_F(SecurityDevice, ItsRequestCanFail) {
  Open("/dev/warden");
  for (const std::string request : {"WARDEN_GET_DEVICE_STATE", "0xC0847001"}) {
    AddFault("ioctl:" + request + "=EIO@2");
    EXPECT_EQ(Ask(kGetDeviceState), 0);
    EXPECT_EQ(Ask(kGetDeviceState), EIO);
    EXPECT_EQ(Ask(kGetDeviceState), 0);
    ClearFaults();
  }
}

TEST_F(SecurityDevice, ItsNodesFailToOpenOneByOne) {
  AddFault("open:/dev/lodestone=EACCES");
  EXPECT_EQ(open("/dev/lodestone", O_RDONLY), -1);
  EXPECT_EQ(errno, EACCES);
  Open("/dev/warden");
  EXPECT_EQ(Ask(kGetDeviceState), 0);
}

TEST_F(SecurityDevice, ItsNodesFailToClose) {
  AddFault("close:/dev/warden=EIO");
  AddFault("close:/dev/lodestone=ENOSPC");
  EXPECT_EQ(close(open("/dev/warden", O_RDONLY)), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(close(open("/dev/lodestone", O_RDONLY)), -1);
  EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
}  // namespace kestrel::test
