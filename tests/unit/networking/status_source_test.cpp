// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <kestrel/networking.h>

#include <cerrno>

#include "networking/network_status.h"

namespace {

/// A source of the status that has no file.
class StatusSource : public kestrel::networking::Networking {
 public:
  int queryNetworkingReady(bool* isReady) override {
    asked_for = isReady;
    errno = error;
    return result;
  }

  bool* asked_for = nullptr;
  int result = 0;
  int error = 0;
};

StatusSource g_source;

TEST(NetworkingStatusSource, AnswersBehindTheExport) {
  bool ready = false;
  g_source.result = 7;
  EXPECT_EQ(Networking_IsNetworkingReady(&ready), 7);
  EXPECT_EQ(g_source.asked_for, &ready);
}

TEST(NetworkingStatusSource, SetsErrnoItself) {
  g_source.result = -1;
  g_source.error = ENETDOWN;
  EXPECT_EQ(Networking_IsNetworkingReady(nullptr), -1);
  EXPECT_EQ(errno, ENETDOWN);
  EXPECT_EQ(g_source.asked_for, nullptr);
}

}  // namespace

namespace kestrel::networking {

int Networking::queryNetworkingReady(bool* /*isReady*/) { return -2; }

Networking& GetNetworking() { return g_source; }

}  // namespace kestrel::networking
