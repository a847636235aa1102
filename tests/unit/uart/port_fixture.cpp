// SPDX-License-Identifier: Apache-2.0
#include "uart/port_fixture.h"

#include <cerrno>
#include <cstring>

namespace kestrel::test {

using testing::_;
using testing::Return;
using testing::StrEq;

std::string UartProblem(const std::string& problem, int error) {
  return "[Kestrel:UART] " + problem + ": " + strerror(error) + " (" + std::to_string(error) +
         ").\n";
}

int UartTranslated(int error) {
  const bool translated = error == EPERM || error == EFAULT || error == ENODEV || error == EINVAL;
  return translated ? EIO : error;
}

std::string PortErrorName(const testing::TestParamInfo<int>& test) {
  return strerrorname_np(test.param);
}

PortTest::PortTest() { z__UART_InitConfig(&config_, UART_CONFIG_VERSION); }

void PortTest::ExpectOpen(const std::string& path) {
  // O_RDWR, O_NOCTTY and O_NONBLOCK.
  EXPECT_CALL(system_, Open(StrEq(path), 0x902)).WillOnce(Return(kPort));
}

void PortTest::ExpectLock() {
  // LOCK_EX and LOCK_NB.
  EXPECT_CALL(system_, Flock(kPort, 6)).WillOnce(Return(0));
}

void PortTest::ExpectGet() {
  EXPECT_CALL(system_, Tcgetattr(kPort, _)).WillOnce([this](int, termios* settings) {
    const std::string zeros(sizeof *settings, '\0');
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(settings), sizeof *settings), zeros);
    *settings = driver_;
    return 0;
  });
}

void PortTest::ExpectOutputSpeed(speed_t speed) {
  EXPECT_CALL(system_, Cfsetospeed(_, speed)).WillOnce([](termios* settings, speed_t code) {
    settings->c_ospeed = code;
    return 0;
  });
}

void PortTest::ExpectInputSpeed(speed_t speed) {
  EXPECT_CALL(system_, Cfsetispeed(_, speed)).WillOnce([](termios* settings, speed_t code) {
    settings->c_ispeed = code;
    return 0;
  });
}

void PortTest::ExpectNonBlocking() {
  // F_SETFL with O_NONBLOCK.
  EXPECT_CALL(system_, Fcntl(kPort, 4, 0x800)).WillOnce(Return(0));
}

void PortTest::ExpectSet() {
  EXPECT_CALL(system_, Tcsetattr(kPort, 0, _)).WillOnce([this](int, int, const termios* settings) {
    driver_ = *settings;
    return 0;
  });
}

void PortTest::ExpectIgnoredSet() {
  EXPECT_CALL(system_, Tcsetattr(kPort, 0, _)).WillOnce(Return(0));
}

void PortTest::ExpectClose() { EXPECT_CALL(system_, Close(kPort)).WillOnce(Return(0)); }

void PortTest::ExpectLockedPort() {
  ExpectOpen();
  ExpectLock();
}

void PortTest::ExpectPreparedPort() {
  ExpectLockedPort();
  ExpectGet();
  ExpectOutputSpeed();
  ExpectInputSpeed();
  ExpectNonBlocking();
}

void PortTest::ExpectAppliedAndConfirmed() {
  ExpectSet();
  ExpectGet();
}

Observed PortTest::Open() {
  return ObserveOn(system_, [this] { return z__UART_Open(3, &config_); });
}

}  // namespace kestrel::test
