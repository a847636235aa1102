// SPDX-License-Identifier: Apache-2.0
// A program of its own: it looks into memory that is given back.
#include <pthread.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "unit/wifi/watched_memory.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

/// Runs a function on a thread whose stack stays when the thread has ended.
class WatchedThread {
 public:
  WatchedThread()
      : stack_(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    if (stack_ == MAP_FAILED) {
      abort();
    }
  }
  ~WatchedThread() { munmap(stack_, kSize); }
  WatchedThread(const WatchedThread&) = delete;
  WatchedThread& operator=(const WatchedThread&) = delete;

  int Run(int (*function)(const char*), const char* psk) {
    Call call{function, psk, 0, 0};
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack_, kSize);
    const MemoryWatch watch;
    if (pthread_create(&thread, &attributes, Start, &call) != 0) {
      abort();
    }
    pthread_join(thread, nullptr);
    copies_given_back_ = watch.CopiesGivenBack();
    pthread_attr_destroy(&attributes);
    errno = call.error;
    return call.result;
  }

  int CopiesGivenBack() const { return copies_given_back_; }
  int CopiesOnTheStack() const { return CopiesIn(stack_, kSize); }

 private:
  static constexpr size_t kSize = size_t{1} << 20;

  struct Call {
    int (*function)(const char*);
    const char* psk;
    int result;
    int error;
  };

  static void* Start(void* argument) {
    auto* const call = static_cast<Call*>(argument);
    call->result = call->function(call->psk);
    call->error = errno;
    return nullptr;
  }

  void* stack_;
  int copies_given_back_ = 0;
};

int Store(const char* psk) {
  const uint8_t ssid[] = {'H', 'o', 'm', 'e'};
  return WifiConfig_StoreWpa2Network(ssid, sizeof ssid, psk, 8);
}

class Passphrase : public WifiTest {
 protected:
  /// Stores a network with the passphrase while all memory is watched.
  Observed StoreWatched(const std::string& psk) {
    return Observe([&] { return thread_.Run(Store, psk.c_str()); });
  }

  void ExpectNoCopies() {
    EXPECT_EQ(thread_.CopiesOnTheStack(), 0);
    EXPECT_EQ(thread_.CopiesGivenBack(), 0);
  }

  void ExpectUpToThePassphrase(const std::string& escaped, const std::string& reply) {
    Expect({{"LIST_NETWORKS", Recorded("004-list-empty.txt")},
            {"STATUS", Recorded("002-status-idle.txt")},
            {"ADD_NETWORK", "3\n"},
            {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
            {"SET_NETWORK 3 psk \"" + escaped + '"', reply}});
  }

  void ExpectAdding(const std::string& escaped, const std::string& reply = "OK\n") {
    ExpectUpToThePassphrase(escaped, reply);
    Expect({{"ENABLE_NETWORK 3", "OK\n"}, {"SAVE_CONFIG", "OK\n"}});
  }

  WatchedThread thread_;
};

class StoredPassphrases : public Passphrase, public testing::WithParamInterface<size_t> {};

INSTANTIATE_TEST_SUITE_P(Lengths, StoredPassphrases,
                         testing::Values(8, 9, 15, 16, 22, 23, 24, 31, 32, 63));

TEST_P(StoredPassphrases, StayNowhereInMemory) {
  const std::string psk = kSecret + std::string(GetParam() - kSecretLength, 'x');
  ExpectAdding(psk);
  EXPECT_THAT(StoreWatched(psk), Returns(0));
  ExpectNoCopies();
}

TEST_F(Passphrase, WithQuotesStaysNowhereInMemory) {
  ExpectAdding(std::string(kSecret) + R"(\x22\x22)");
  EXPECT_THAT(StoreWatched(std::string(kSecret) + "\"\""), Returns(0));
  ExpectNoCopies();
}

TEST_F(Passphrase, ThatTheDaemonRefusesStaysNowhereInMemory) {
  ExpectAdding(kSecret, "FAIL\n");
  EXPECT_THAT(StoreWatched(kSecret), Returns(0));
  ExpectNoCopies();
}

TEST_F(Passphrase, OfAnUnusualLengthStaysNowhereInMemory) {
  EXPECT_THAT(StoreWatched(std::string(kSecret) + '\t'), IsRefused(EINVAL));
  ExpectNoCopies();
  EXPECT_THAT(StoreWatched(kSecret + std::string(200, 'x')), IsRefused(EINVAL));
  ExpectNoCopies();
}

TEST_F(Passphrase, OfAFailedCallStaysNowhereInMemoryAndIsNotPrinted) {
  Client().ipc->Close();
  EXPECT_THAT(StoreWatched(kSecret), Fails(EIO, OperationError(22)));
  ExpectNoCopies();
}

int LeaveBehind(const char* psk) {
  // Its beginning is far enough down that what ends the thread does not overwrite it.
  char on_stack[8192];
  memcpy(on_stack, psk, strlen(psk) + 1);
  // The compiler has to believe that the copies are read.
  asm volatile("" : : "r"(on_stack) : "memory");
  auto* const on_heap = new std::string(100, ' ');
  on_heap->replace(0, strlen(psk), psk);
  delete on_heap;
  return 0;
}

TEST_F(Passphrase, WouldBeFoundByTheseTests) {
  EXPECT_EQ(thread_.Run(LeaveBehind, kSecret), 0);
  EXPECT_GE(thread_.CopiesOnTheStack(), 1);
  EXPECT_GE(thread_.CopiesGivenBack(), 1);
}

}  // namespace
}  // namespace kestrel::test
