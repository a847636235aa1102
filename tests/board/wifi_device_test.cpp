// SPDX-License-Identifier: Apache-2.0
// The Wi-Fi daemon as a program on the board reaches it: by system calls, and through the library.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "outside_world.h"
#include "support/descriptors.h"
#include "wifi_client.h"
#include "wifi_exports.h"

namespace kestrel::test {
namespace {

sockaddr_un Address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path);
  return address;
}

/// 0, or the errno with which connecting a new socket failed.
int Connect(const sockaddr_un& address, socklen_t length, int type = SOCK_SEQPACKET) {
  const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
  const int result = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), length);
  const int error = result == 0 ? 0 : errno;
  close(descriptor);
  return error;
}

class WifiSocket : public testing::Test {
 protected:
  ~WifiSocket() override { ClearFaults(); }

  static std::string What(const std::string& call, const std::string& failure) {
    return call + ":" + kWifiSocketPath + "=" + failure;
  }
};

TEST_F(WifiSocket, IsReachedByItsPath) {
  const WifiClient client(kWifiSocketPath);
  ASSERT_EQ(client.error(), 0);
  EXPECT_EQ(client.Ask("PING"), "PONG\n");
}

TEST_F(WifiSocket, PathNeedNotEndInNul) {
  const sockaddr_un address = Address(kWifiSocketPath);
  const auto exact =
      static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + strlen(kWifiSocketPath));
  EXPECT_EQ(Connect(address, exact), 0);
  EXPECT_EQ(Connect(address, exact + 1), 0);
  EXPECT_EQ(Connect(address, sizeof address), 0);
  EXPECT_NE(Connect(address, exact - 1), 0) << "another path";
}

TEST_F(WifiSocket, OtherAddressesAreTheKernels) {
  EXPECT_EQ(Connect(Address("/nowhere/at/all"), sizeof(sockaddr_un)), ENOENT);
  EXPECT_EQ(Connect(Address(std::string(kWifiSocketPath) + "2"), sizeof(sockaddr_un)), ENOENT);
  EXPECT_EQ(Connect(Address(kWifiSocketPath), sizeof(sockaddr_un) + 1), EINVAL);
  EXPECT_EQ(Connect(Address(kWifiSocketPath), 1), EINVAL);
  EXPECT_EQ(Connect(Address('\0' + std::string(40, 'k')), sizeof(sockaddr_un)), ECONNREFUSED);
  EXPECT_EQ(connect(-1, nullptr, 0), -1);
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  EXPECT_EQ(write(ends[0], "x", 1), 1);
  char byte = 0;
  EXPECT_EQ(read(ends[1], &byte, 1), 1);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(WifiSocket, IsOfTheRightKind) {
  EXPECT_EQ(Connect(Address(kWifiSocketPath), sizeof(sockaddr_un), SOCK_STREAM), EPROTOTYPE);
  EXPECT_EQ(open(kWifiSocketPath, O_RDWR), -1);
  EXPECT_EQ(errno, ENXIO);
  EXPECT_EQ(Connect(Address("/dev/gpiochip0"), sizeof(sockaddr_un)), ECONNREFUSED);
}

TEST_F(WifiSocket, ConnectingCanFail) {
  AddFault(What("connect", "EACCES@2"));
  EXPECT_EQ(WifiClient(kWifiSocketPath).error(), 0);
  EXPECT_EQ(WifiClient(kWifiSocketPath).error(), EACCES);
  EXPECT_EQ(WifiClient(kWifiSocketPath).error(), 0);
}

TEST_F(WifiSocket, CallsOnItCanFail) {
  const WifiClient client(kWifiSocketPath);
  const int descriptor = client.descriptor();
  std::string command = "PING";
  const iovec piece = {command.data(), command.size() + 1};
  const timeval limit = {30, 0};
  char buffer[16];
  AddFault(What("writev", "EPIPE@1"));
  EXPECT_EQ(writev(descriptor, &piece, 1), -1);
  EXPECT_EQ(errno, EPIPE);
  EXPECT_EQ(writev(descriptor, &piece, 1), 5);
  AddFault(What("setsockopt", "EDOM@1"));
  EXPECT_EQ(setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit), -1);
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit), 0);
  AddFault(What("read", "EAGAIN@1"));
  EXPECT_EQ(read(descriptor, buffer, sizeof buffer), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(read(descriptor, buffer, sizeof buffer), 5);
  EXPECT_STREQ(std::string(buffer, 5).c_str(), "PONG\n");
}

TEST_F(WifiSocket, FaultsOfTheSocketLeaveOthersAlone) {
  AddFault(What("read", "EIO"));
  AddFault(What("writev", "EIO"));
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
  char byte = 'x';
  const iovec piece = {&byte, 1};
  EXPECT_EQ(writev(ends[0], &piece, 1), 1);
  EXPECT_EQ(read(ends[1], &byte, 1), 1);
  close(ends[0]);
  close(ends[1]);
}

// The library's functions, on a board of their own.

TEST(WifiOnBoard, ScanShowsTheAccessPoints) {
  ASSERT_EQ(AwaitScan(), 2);
  std::array<WifiScannedNetworkRecord, 3> records{};
  ASSERT_EQ(
      z__WifiConfig_GetScannedNetworks(records.data(), records.size(), WifiConfig_StructVersion),
      2);
  EXPECT_EQ(NameOf(records[0]), "Kestrel Lab");
  EXPECT_EQ(records[0].frequencyMhz, 2437U);
  EXPECT_EQ(records[0].signalDbm, -48);
  EXPECT_EQ(records[0].security, WifiSecurity_Wpa2Psk);
  EXPECT_EQ(NameOf(records[1]), "Kestrel Guest");
  EXPECT_EQ(records[1].security, WifiSecurity_Open);
  EXPECT_EQ(records[2].recordTag, 0U);
}

TEST(WifiOnBoard, StoredNetworkIsJoinedListedAndForgotten) {
  ASSERT_EQ(StoreWpa2("Kestrel Lab", "kestrel-lab"), 0);
  AwaitConnection();
  WifiCurrentNetworkRecord current{};
  ASSERT_EQ(z__WifiConfig_GetCurrentNetwork(&current, WifiConfig_StructVersion), 0);
  EXPECT_EQ(NameOf(current), "Kestrel Lab");
  EXPECT_EQ(current.frequencyMhz, 2437U);
  EXPECT_EQ(current.security, WifiSecurity_Wpa2Psk);
  std::vector<WifiStoredNetworkRecord> stored = Stored();
  ASSERT_EQ(stored.size(), 1U);
  EXPECT_EQ(NameOf(stored[0]), "Kestrel Lab");
  EXPECT_EQ(stored[0].enabled, 1);
  EXPECT_EQ(stored[0].connected, 1);
  EXPECT_EQ(z__WifiConfig_ForgetNetwork(stored.data()), 0);
  EXPECT_TRUE(Stored().empty());
  EXPECT_EQ(z__WifiConfig_GetCurrentNetwork(&current, WifiConfig_StructVersion), -1);
  EXPECT_EQ(errno, ENODATA);
}

TEST(WifiOnBoard, SecondNetworkOfANameIsRefused) {
  ASSERT_EQ(StoreOpen("Kestrel \"Guest\""), 0);
  EXPECT_EQ(StoreOpen("Kestrel Guest"), 0);
  EXPECT_EQ(StoreWpa2("Kestrel Guest", "12345678"), -1);
  EXPECT_EQ(errno, EEXIST);
  const std::vector<WifiStoredNetworkRecord> stored = Stored();
  ASSERT_EQ(stored.size(), 2U);
  // The daemon takes what the library puts in a quote's place for four characters.
  EXPECT_EQ(NameOf(stored[0]), "Kestrel \\x22Guest\\x22");
  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
  EXPECT_TRUE(Stored().empty());
}

TEST(WifiOnBoard, DaemonThatCannotBeReachedFailsEveryCall) {
  AddFault(std::string("connect:") + kWifiSocketPath + "=ENOENT");
  testing::internal::CaptureStderr();
  EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[Kestrel:WifiConfig] Error performing operation: 22\n");
  ClearFaults();
}

}  // namespace
}  // namespace kestrel::test
