// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "gpio/chip_fixture.h"
#include "gpio/line_request.h"
#include "unit/vtable_slot.h"

namespace kestrel::test {
namespace {

using gpio::GetGpioManager;
using gpio::GpioManager;
using testing::_;
using testing::Return;

class ManagerLifetime : public ChipTest {
 protected:
  /// Opens a line through a manager that is gone at the end.
  int UseManager() {
    GpioManager manager;
    return manager.OpenLine(3, GPIOHANDLE_REQUEST_INPUT, gpio::kNoLevel);
  }
};

TEST_F(ManagerLifetime, IsThatOfOneObject) { EXPECT_EQ(&GetGpioManager(), &GetGpioManager()); }

TEST_F(ManagerLifetime, IsPolymorphicOnAChipDescriptorAlone) {
  struct Alike {
    virtual ~Alike() = default;
    int32_t chip_fd;
  };
  EXPECT_TRUE(std::has_virtual_destructor_v<GpioManager>);
  EXPECT_EQ(sizeof(GpioManager), sizeof(Alike));
}

TEST_F(ManagerLifetime, IsPolymorphicInTheDestructorsAlone) {
  struct Extended : GpioManager {
    virtual void First() {}
  };
  EXPECT_EQ(VtableSlot(&Extended::First), 2);
}

TEST_F(ManagerLifetime, ClosesNothingWithoutAChip) {
  EXPECT_THAT(Call([] { return GpioManager(), 0; }), Returns(0));
}

TEST_F(ManagerLifetime, ClosesNothingAfterAFailedOpen) {
  ExpectChipOpenFailure(ENOENT);
  EXPECT_THAT(Call([this] { return UseManager(); }),
              Fails(ENOENT, Problem("opening GPIO chip", ENOENT)));
}

TEST_F(ManagerLifetime, ClosesTheChipOnceAndNoLine) {
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  EXPECT_CALL(system_, Close(kChip)).WillOnce(Return(0));
  EXPECT_THAT(Call([this] { return UseManager(); }), Returns(kLine));
}

TEST_F(ManagerLifetime, ClosesAChipWithDescriptorZero) {
  ExpectChipOpen(0);
  EXPECT_CALL(system_, Ioctl(0, _, _)).WillOnce(FailWith(EIO));
  EXPECT_CALL(system_, Close(0)).WillOnce(Return(0));
  EXPECT_THAT(Call([this] { return UseManager(); }), Fails(EIO, Problem("getting GPIO info", EIO)));
}

TEST_F(ManagerLifetime, DoesNotCloseTwiceAfterAFailedClose) {
  ExpectChipOpen();
  ExpectChipInfo();
  ExpectLineRequest();
  EXPECT_CALL(system_, Close(kChip)).WillOnce(FailWith(EINTR));
  EXPECT_THAT(Call([this] { return UseManager(); }), Returns(kLine));
}

using ManagerLifetimeDeathTest = ManagerLifetime;

/// Ends the process within its exit, before anything else meets the stand-in.
int CloseAndEnd(int) {
  fputs("closed\n", stderr);
  _exit(0);
}

TEST_F(ManagerLifetimeDeathTest, EndsWithTheProcess) {
  const auto use_and_exit = [this] {
    OpenChip();
    EXPECT_CALL(system_, Close(kChip)).WillOnce(CloseAndEnd);
    return RunOn(system_, []() -> int { exit(1); });
  };
  EXPECT_EXIT(use_and_exit(), testing::ExitedWithCode(0), "^closed\n$");
}

}  // namespace
}  // namespace kestrel::test
