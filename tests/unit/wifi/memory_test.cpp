// SPDX-License-Identifier: Apache-2.0
// A program of its own: it counts what is allocated, and lets memory run out.
#include <gtest/gtest.h>
#include <kestrel/wificonfig.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>

#include "support/counted_memory.h"
#include "unit/wifi/scripted_daemon.h"
#include "wifi/wifi_context.h"

namespace kestrel::test {
namespace {

template <typename Function>
int AllocationsOf(const Function& function) {
  const int before = g_allocations;
  function();
  return g_allocations - before;
}

TEST(ClientMemory, IsOneAllocationForTheConnectionAndItsCounts) {
  EXPECT_EQ(AllocationsOf([] { const wifi::WifiControlClient client({}); }), 1);
}

TEST(RequestMemory, IsOneReplyBuffer) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
  ASSERT_EQ(send(ends[1], "OK\n", 3, 0), 3);
  wifi::WifiControlClient client({});
  client.ipc->fd = ends[0];
  const eastl::string command("SCAN");
  EXPECT_EQ(AllocationsOf([&] { EXPECT_TRUE(client.Request(command).has_value()); }), 1);
  close(ends[1]);
}

TEST(RequestMemory, IsOneReplyBufferWithoutAConnectionToo) {
  wifi::WifiControlClient client({});
  const eastl::string command("SCAN");
  EXPECT_EQ(AllocationsOf([&] { EXPECT_FALSE(client.Request(command).has_value()); }), 1);
}

/// The context's client talks to this daemon from now on.
void ConnectTo(const ScriptedDaemon& daemon) {
  wifi::GetWifiContext().client->ipc->Adopt(daemon.client_end());
}

/// A whole reply of a daemon that hears so many networks.
std::string ScanOf(int networks) {
  std::string reply = "bssid / frequency / signal level / flags / ssid\n";
  for (int i = 0; i < networks; ++i) {
    const std::string number = std::to_string(10 + i);
    reply.append("02:00:00:00:00:").append(number);
    reply.append("\t2437\t-48\t[WPA2-PSK-CCMP][ESS]\tKestrel ").append(number).append("\n");
  }
  return reply;
}

TEST(ScanOfThirtyNetworks, TakesTwoExchangesAndElevenAllocationsANetwork) {
  ScriptedDaemon daemon;
  daemon.Expect({{"SCAN", "OK\n"}, {"SCAN_RESULTS", ScanOf(30)}});
  ConnectTo(daemon);
  const auto scan = [] { EXPECT_EQ(WifiConfig_TriggerScanAndGetScannedNetworkCount(), 30); };
  // Two are the replies' buffers, the others those of lists that grow.
  EXPECT_LE(AllocationsOf(scan), 11 * 30 + 16);
  EXPECT_EQ(daemon.Received(), daemon.expected());
}

/// The whole listing of so many networks.
Script ListingOf(int networks) {
  std::string list = "network id / ssid / bssid / flags\n";
  for (int i = 0; i < networks; ++i) {
    list += std::to_string(i) + "\tKestrel " + std::to_string(i) + "\tany\t[DISABLED]\n";
  }
  Script script = {{"LIST_NETWORKS", list}};
  for (int i = 0; i < networks; ++i) {
    const std::string get = "GET_NETWORK " + std::to_string(i);
    script.push_back({get + " ssid", "\"Kestrel " + std::to_string(i) + "\""});
    script.push_back({get + " key_mgmt", "WPA-PSK"});
  }
  script.push_back({"STATUS", "wpa_state=INACTIVE\naddress=02:00:00:00:01:00\n"});
  return script;
}

TEST(ListingOfTenNetworks, TakesTwentyTwoExchangesAndEightAllocationsANetwork) {
  ScriptedDaemon daemon;
  const Script listing = ListingOf(10);
  EXPECT_EQ(listing.size(), 22U);
  daemon.Expect(listing);
  ConnectTo(daemon);
  const auto list = [] { EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 10); };
  // Two of the eight, and two of the others, are replies' buffers.
  EXPECT_LE(AllocationsOf(list), 8 * 10 + 23);
  EXPECT_EQ(daemon.Received(), daemon.expected());
}

/// The whole conversation about an open network that is stored as the first.
Script StoringOf(const std::string& name) {
  return {{"LIST_NETWORKS", "network id / ssid / bssid / flags\n"},
          {"STATUS", "wpa_state=INACTIVE\naddress=02:00:00:00:01:00\n"},
          {"ADD_NETWORK", "0\n"},
          {"SET_NETWORK 0 ssid \"" + name + '"', "OK\n"},
          {"SET_NETWORK 0 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 0", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}};
}

TEST(StoringAnOpenNetwork, AllocatesNothingForAPassphrase) {
  ScriptedDaemon daemon;
  daemon.Expect(StoringOf("Home"));
  ConnectTo(daemon);
  const auto store = [] {
    const uint8_t ssid[] = {'H', 'o', 'm', 'e'};
    EXPECT_EQ(WifiConfig_StoreOpenNetwork(ssid, sizeof ssid), 0);
  };
  // Seven are the replies' buffers, the others the name's property, lists and longer commands.
  EXPECT_LE(AllocationsOf(store), 7 + 18);
  EXPECT_EQ(daemon.Received(), daemon.expected());
}

/// Builds a context with memory for so many allocations. Ends the process: by its terminate handler
/// with what the context left allocated, or normally.
[[noreturn]] void BuildWithMemoryFor(int allocations) {
  static const int live_before = g_live;
  std::set_terminate([] {
    fprintf(stderr, "terminated with %d left\n", g_live - live_before);
    _exit(1);
  });
  g_last_allowed = g_allocations + allocations;
  {
    const wifi::WifiContext context;
    g_last_allowed = -1;
  }
  fprintf(stderr, "built, and %d left\n", g_live - live_before);
  _exit(0);
}

class ContextMemoryDeathTest : public testing::TestWithParam<int> {};

constexpr int kAllocationsOfAContext = 4;  // two lists, the client, its connection

INSTANTIATE_TEST_SUITE_P(RunningOutAt, ContextMemoryDeathTest,
                         testing::Range(0, kAllocationsOfAContext));

TEST_P(ContextMemoryDeathTest, EndsTheProcessAfterReleasingEverything) {
  EXPECT_EXIT(BuildWithMemoryFor(GetParam()), testing::ExitedWithCode(1),
              "^terminated with 0 left\n$");
}

using WholeContextMemoryDeathTest = testing::Test;

TEST_F(WholeContextMemoryDeathTest, IsReleasedWithTheContext) {
  EXPECT_EXIT(BuildWithMemoryFor(kAllocationsOfAContext), testing::ExitedWithCode(0),
              "^built, and 0 left\n$");
}

}  // namespace
}  // namespace kestrel::test

/// No daemon is there to be connected to, whatever runs on this machine.
extern "C" int socket(int, int, int) noexcept {
  errno = EMFILE;
  return -1;
}
