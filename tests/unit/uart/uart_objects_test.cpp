// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <type_traits>

#include "support/broken_standard_error.h"
#include "uart/port_fixture.h"
#include "uart/uart_device.h"
#include "uart/uart_manager.h"
#include "unit/vtable_slot.h"

namespace kestrel::test {
namespace {

using testing::_;
using uart::GetUartManager;
using uart::UartConfigWrapper;
using uart::UartDevice;
using uart::UartManager;
using uart::UartSyscallShim;
using vesta::test::support::test_placeholder;

template <typename T>
struct Extended : T {
  using T::T;
  virtual void First() {}
};

template <typename T>
ptrdiff_t FirstFreeSlot() {
  return VtableSlot(&Extended<T>::First);
}

TEST(UartObjects, AreVirtualInTheirDestructorsAlone) {
  EXPECT_EQ(FirstFreeSlot<UartManager>(), 2);
  EXPECT_EQ(FirstFreeSlot<UartConfigWrapper>(), 2);
  EXPECT_EQ(FirstFreeSlot<UartSyscallShim>(), 2);
  EXPECT_EQ(FirstFreeSlot<UartDevice>(), 2);
}

TEST(UartObjects, MayBeReplacedByTests) {
  EXPECT_TRUE((std::is_base_of_v<test_placeholder, UartSyscallShim>));
  EXPECT_TRUE((std::is_base_of_v<test_placeholder, UartDevice>));
  EXPECT_FALSE((std::is_base_of_v<test_placeholder, UartManager>));
  EXPECT_FALSE((std::is_base_of_v<test_placeholder, UartConfigWrapper>));
}

TEST(UartObjects, HoldNothingMore) {
  struct Device {
    virtual ~Device() = default;
    int32_t fd;
    const void* syscalls;
  };
  struct Config {
    virtual ~Config() = default;
    uint32_t speed;
    uint8_t fields[5];
  };
  EXPECT_EQ(sizeof(UartManager), sizeof(void*));
  EXPECT_EQ(sizeof(UartSyscallShim), sizeof(void*));
  EXPECT_EQ(sizeof(UartDevice), sizeof(Device));
  EXPECT_EQ(sizeof(UartConfigWrapper), sizeof(Config));
}

TEST(UartObjects, KeepTheOrderOfTheConfiguration) {
  UartConfigWrapper config;
  const auto offset = [&config](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&config.speed);
  };
  EXPECT_EQ(offset(&config.blockingMode), 4);
  EXPECT_EQ(offset(&config.dataBits), 5);
  EXPECT_EQ(offset(&config.parity), 6);
  EXPECT_EQ(offset(&config.stopBits), 7);
  EXPECT_EQ(offset(&config.flowControl), 8);
}

TEST(UartManager, IsOneObject) { EXPECT_EQ(&GetUartManager(), &GetUartManager()); }

/// A device that is used beyond the one open for which it is made.
class UartDeviceTest : public PortTest {
 protected:
  Observed Open(const UartConfigWrapper& config) {
    return ObserveOn(system_, [&] { return device_.Open(3, config); });
  }

  static UartConfigWrapper Checked() {
    UartConfigWrapper config;
    config.speed = 0x1002;
    config.dataBits = 8;
    config.stopBits = 1;
    return config;
  }

  UartSyscallShim syscalls_;
  UartDevice device_{&syscalls_};
};

TEST_F(UartDeviceTest, DoesNotCloseItsDescriptorWhenDestroyed) {
  ExpectPreparedPort();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(ObserveOn(system_,
                        [this] {
                          UartDevice device(&syscalls_);
                          return device.Open(3, Checked());
                        }),
              Returns(kPort));
}

TEST_F(UartDeviceTest, RefusesToBeOpenedTwice) {
  ExpectPreparedPort();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(Checked()), Returns(kPort));
  EXPECT_THAT(Open(Checked()), Fails(EIO, "[Kestrel:UART] Internal error opening device.\n"));
}

TEST_F(UartDeviceTest, CanBeOpenedAfterAFailure) {
  EXPECT_CALL(system_, Open(_, _)).WillOnce(FailWith(ENOENT));
  EXPECT_THAT(Open(Checked()), Fails(ENOENT, UartProblem("Unable to open device", ENOENT)));
  ExpectOpen();
  EXPECT_CALL(system_, Flock(_, _)).WillOnce(FailWith(EWOULDBLOCK));
  ExpectClose();
  EXPECT_THAT(Open(Checked()),
              Fails(EWOULDBLOCK, UartProblem("Unable to open device exclusively", EWOULDBLOCK)));
  ExpectPreparedPort();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(Checked()), Returns(kPort));
}

TEST_F(UartDeviceTest, CanBeOpenedAfterAFailingClose) {
  ExpectLockedPort();
  EXPECT_CALL(system_, Tcgetattr(_, _)).WillOnce(FailWith(ENOTTY));
  EXPECT_CALL(system_, Close(kPort)).WillOnce(FailWith(EINTR));
  EXPECT_EQ(Open(Checked()).result, -1);
  ExpectPreparedPort();
  ExpectAppliedAndConfirmed();
  EXPECT_THAT(Open(Checked()), Returns(kPort));
}

struct Unrecognised {
  uint8_t UartConfigWrapper::*field;
  uint8_t value;
  const char* printed;
};

class UartDeviceGuard : public UartDeviceTest, public testing::WithParamInterface<Unrecognised> {};

INSTANTIATE_TEST_SUITE_P(
    Each, UartDeviceGuard,
    testing::Values(Unrecognised{&UartConfigWrapper::flowControl, 3,
                                 "[Kestrel:UART] Unrecognised value '3' for flow control.\n"},
                    Unrecognised{&UartConfigWrapper::flowControl, 255,
                                 "[Kestrel:UART] Unrecognised value '255' for flow control.\n"},
                    Unrecognised{&UartConfigWrapper::dataBits, 7,
                                 "[Kestrel:UART] Unrecognised value '7' for data bits.\n"},
                    Unrecognised{&UartConfigWrapper::stopBits, 2,
                                 "[Kestrel:UART] Unrecognised value '2' for stop bits.\n"},
                    Unrecognised{&UartConfigWrapper::parity, 1,
                                 "[Kestrel:UART] Unrecognised value '1' for parity.\n"},
                    Unrecognised{&UartConfigWrapper::blockingMode, 1,
                                 "[Kestrel:UART] Unrecognised value '1' for blocking mode.\n"}));

TEST_P(UartDeviceGuard, ClosesThePortWhenAFieldIsNotRecognised) {
  UartConfigWrapper config = Checked();
  config.*GetParam().field = GetParam().value;
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  ExpectInputSpeed();
  ExpectClose();
  EXPECT_THAT(Open(config), Fails(kUntouched, GetParam().printed));
}

TEST_F(UartDeviceTest, GuardLeavesErrnoAloneWhenStandardErrorIsClosed) {
  UartConfigWrapper config = Checked();
  config.parity = 1;
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  ExpectInputSpeed();
  ExpectClose();
  EXPECT_THAT(Observe([&] {
                const ClosedStandardError closed;
                return RunOn(system_, [&] {
                  errno = kUntouched;
                  return device_.Open(3, config);
                });
              }),
              Fails(kUntouched, ""));
}

}  // namespace
}  // namespace kestrel::test
