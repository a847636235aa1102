// SPDX-License-Identifier: Apache-2.0
#include "gpio/chip_fixture.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <new>

namespace kestrel::test {
namespace {

using gpio::GpioManager;
using testing::_;
using testing::Return;
using testing::StrEq;

/// Puts a new manager in the place of the one that the exports share.
void RemakeManager() {
  testing::NiceMock<FakeSystem> quiet;
  RunOn(quiet, [] {
    GpioManager& manager = gpio::GetGpioManager();
    manager.~GpioManager();
    new (&manager) GpioManager();
    return 0;
  });
}

}  // namespace

std::string Problem(const std::string& doing, int error) {
  return "[Kestrel:GPIO] Problem " + doing + ": " + strerror(error) + " (" + std::to_string(error) +
         ")\n";
}

int Normalized(int error) {
  return error == EBADF || error == EFAULT || error == EINVAL ? EIO : error;
}

std::string ErrorName(const testing::TestParamInfo<int>& test) {
  return strerrorname_np(test.param);
}

ChipTest::ChipTest() { RemakeManager(); }

ChipTest::~ChipTest() { RemakeManager(); }

void ChipTest::ExpectChipOpen(int descriptor) {
  EXPECT_CALL(system_, Open(StrEq("/dev/gpiochip0"), O_RDONLY)).WillOnce(Return(descriptor));
}

void ChipTest::ExpectChipOpenFailure(int error) {
  EXPECT_CALL(system_, Open(StrEq("/dev/gpiochip0"), O_RDONLY)).WillOnce(FailWith(error));
}

void ChipTest::ExpectChipInfo(uint32_t lines) {
  EXPECT_CALL(system_, Ioctl(kChip, GPIO_GET_CHIPINFO_IOCTL, _))
      .WillOnce([lines](int, unsigned long, void* argument) {
        static_cast<gpiochip_info*>(argument)->lines = lines;
        return 0;
      });
}

void ChipTest::ExpectChipInfoFailure(int error) {
  EXPECT_CALL(system_, Ioctl(kChip, GPIO_GET_CHIPINFO_IOCTL, _)).WillOnce(FailWith(error));
}

void ChipTest::ExpectLineRequest(int descriptor) {
  EXPECT_CALL(system_, Ioctl(kChip, GPIO_GET_LINEHANDLE_IOCTL, _))
      .WillOnce([this, descriptor](int, unsigned long, void* argument) {
        auto* const request = static_cast<gpiohandle_request*>(argument);
        requested_ = *request;
        request->fd = descriptor;
        return 0;
      });
}

void ChipTest::ExpectLineRequestFailure(int error) {
  EXPECT_CALL(system_, Ioctl(kChip, GPIO_GET_LINEHANDLE_IOCTL, _)).WillOnce(FailWith(error));
}

void ChipTest::OpenChip() {
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  ASSERT_EQ(RunOn(system_, [] { return GPIO_OpenAsInput(0); }), kLine);
}

}  // namespace kestrel::test
