// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "unit/nwl/pthread_stand_in.h"
#include "wifi/control_client.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

constexpr int kSocket = 700;

/// The system calls of requests, with whether the client's lock was held.
std::vector<std::string> g_calls;
int g_read_result = 3;

void Note(const char* call) {
  const bool is_held = g_watched_mutex.locks > g_watched_mutex.unlocks;
  g_calls.push_back(std::string(call) + (is_held ? " locked" : " unlocked"));
}

class ClientLock : public testing::Test {
 protected:
  ClientLock() {
    g_calls.clear();
    g_read_result = 3;
    g_watched_mutex = {};
    g_watched_mutex.address = &client_.ipc->mutex;
  }
  ~ClientLock() override {
    client_.ipc->fd = -1;
    g_watched_mutex = {};
  }

  static eastl::shared_ptr<vestaipc::IpcClient> Connected() {
    auto ipc = eastl::make_shared<vestaipc::IpcClient>();
    ipc->fd = kSocket;
    return ipc;
  }

  wifi::WifiControlClient client_{Connected()};
};

using Calls = std::vector<std::string>;

TEST_F(ClientLock, IsHeldForTheWholeExchange) {
  EXPECT_TRUE(client_.Request("SCAN").has_value());
  EXPECT_EQ(g_calls, (Calls{"writev locked", "setsockopt locked", "read locked"}));
  EXPECT_EQ(g_watched_mutex.locks, 1);
  EXPECT_EQ(g_watched_mutex.unlocks, 1);
}

TEST_F(ClientLock, IsHeldWhileAFailedExchangeClosesTheConnection) {
  g_read_result = -1;
  EXPECT_FALSE(client_.Request("SCAN").has_value());
  EXPECT_EQ(g_calls, (Calls{"writev locked", "setsockopt locked", "read locked", "close locked"}));
  EXPECT_EQ(g_watched_mutex.unlocks, 1);
}

TEST_F(ClientLock, IsNotTakenWithoutAConnection) {
  client_.ipc->fd = -1;
  EXPECT_FALSE(client_.Request("SCAN").has_value());
  EXPECT_EQ(g_watched_mutex.locks, 0);
}

TEST_F(ClientLock, IsNotTakenToConnect) {
  client_.ipc->fd = -1;
  const wifi::WifiControlClient again(client_.ipc);
  EXPECT_EQ(g_watched_mutex.locks, 0);
}

/// Waits until another thread has come to `mutex`'s lock after `before` locks of any mutex.
bool AnotherThreadLocks(int before) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (g_all_locks == before && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  return g_all_locks != before;
}

TEST_F(ClientLock, IsFollowedByASecondLookAtTheConnection) {
  g_watched_mutex = {};
  client_.ipc->mutex.lock();
  const int before = g_all_locks;
  nwl::Expected<eastl::string> reply = eastl::string();
  std::thread waiting([&] { reply = client_.Request("SCAN"); });
  EXPECT_TRUE(AnotherThreadLocks(before));
  client_.ipc->fd = -1;
  client_.ipc->mutex.unlock();
  waiting.join();
  EXPECT_EQ(reply.error().value, EINVAL);
  EXPECT_EQ(reply.error().category, &nwl::generic_category());
  EXPECT_EQ(g_calls, Calls{});
}

using ClientLockDeathTest = ClientLock;

TEST_F(ClientLockDeathTest, AbortsWhenItCannotBeTaken) {
  g_watched_mutex.lock_result = EINVAL;
  EXPECT_EXIT(client_.Request("SCAN"), testing::KilledBySignal(SIGABRT),
              "libs/libnwl/src/mutex:25: lock: Assertion `result == 0' failed");
}

TEST_F(ClientLockDeathTest, AbortsWhenItCannotBeGivenBack) {
  g_watched_mutex.unlock_result = EPERM;
  EXPECT_EXIT(client_.Request("SCAN"), testing::KilledBySignal(SIGABRT),
              "libs/libnwl/src/mutex:51: unlock: Assertion `result == 0' failed");
}

}  // namespace
}  // namespace kestrel::test

// Plain functions in the place of the C library's: a mock would take locks of its own.
using kestrel::test::Note;

extern "C" ssize_t writev(int, const iovec* vectors, int) {
  Note("writev");
  return static_cast<ssize_t>(vectors->iov_len);
}

extern "C" int setsockopt(int, int, int, const void*, socklen_t) noexcept {
  Note("setsockopt");
  return 0;
}

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
  if (fd != kestrel::test::kSocket) {
    const iovec vector = {buffer, size};
    return readv(fd, &vector, 1);
  }
  Note("read");
  errno = EAGAIN;
  memcpy(buffer, "OK\n", 3);
  return kestrel::test::g_read_result;
}

extern "C" int socket(int, int, int) noexcept {
  errno = EMFILE;
  return -1;
}

extern "C" int close(int fd) {
  if (fd != kestrel::test::kSocket) {
    return close_range(static_cast<unsigned>(fd), static_cast<unsigned>(fd), 0);
  }
  Note("close");
  return 0;
}
