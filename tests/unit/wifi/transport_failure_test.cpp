// SPDX-License-Identifier: Apache-2.0
// What callers see when the connection fails in the middle of a function.
#include <cerrno>
#include <cstring>
#include <ostream>
#include <string>
#include <utility>

#include "support/broken_standard_error.h"
#include "support/fake_system.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

using testing::_;
using testing::Return;

constexpr int kSocket = 700;
const uint8_t kSsid[] = {'H', 'o', 'm', 'e'};

int GetCurrent() {
  WifiCurrentNetworkRecord record;
  return z__WifiConfig_GetCurrentNetwork(&record, 1);
}

int Forget() {
  WifiStoredNetworkRecord record{};
  record.recordTag = WifiStoredNetworkRecord_Complete;
  return z__WifiConfig_ForgetNetwork(&record);
}

/// What a failure with `value` prints, around `translation`, which is that of ErrorToErrno().
using Text = std::string (*)(const std::string& translation, int value);

std::string Alone(const std::string& translation, int) { return translation; }
std::string AfterScan(const std::string& translation, int value) {
  return ScanFailure(value) + translation;
}
std::string BeforeStatus(const std::string& translation, int value) {
  return translation + StatusFailure(value);
}

struct Function {
  const char* name;
  int (*call)();
  Text text;
};

void PrintTo(const Function& function, std::ostream* stream) { *stream << function.name; }

constexpr Function kFunctions[] = {
    {"Scan", WifiConfig_TriggerScanAndGetScannedNetworkCount, AfterScan},
    {"CountStored", WifiConfig_GetStoredNetworkCount, Alone},
    {"GetCurrent", GetCurrent, BeforeStatus},
    {"Forget", Forget, Alone},
    {"ForgetAll", WifiConfig_ForgetAllNetworks, Alone},
};

class TransportFailures : public testing::TestWithParam<Function> {
 protected:
  TransportFailures() {
    FreshContext().client->ipc->fd = kSocket;
    ON_CALL(system_, Writev(kSocket, _, 1)).WillByDefault(Return(1));
    ON_CALL(system_, Close(kSocket)).WillByDefault(Return(0));
  }
  ~TransportFailures() override {
    wifi::GetWifiContext().client->ipc->fd = -1;
    FreshContext();
  }

  Observed Call() { return ObserveOn(system_, GetParam().call); }

  static std::string TextOf(int value, bool is_translation_printed = true) {
    return GetParam().text(is_translation_printed ? OperationError(value) : "", value);
  }

  testing::NiceMock<FakeSystem> system_;
};

INSTANTIATE_TEST_SUITE_P(Of, TransportFailures, testing::ValuesIn(kFunctions),
                         [](const auto& test) { return test.param.name; });

TEST_P(TransportFailures, ByASilentDaemonLastForTheRestOfTheProcess) {
  EXPECT_CALL(system_, Read(kSocket, _, _)).WillOnce(FailWith(EAGAIN));
  EXPECT_THAT(Call(), Fails(EIO, TextOf(11)));
  EXPECT_THAT(Call(), Fails(EIO, TextOf(22)));
  EXPECT_THAT(Call(), Fails(EIO, TextOf(22)));
}

TEST_P(TransportFailures, ByADepartedDaemonLastForTheRestOfTheProcess) {
  EXPECT_CALL(system_, Writev(kSocket, _, _)).WillOnce(FailWith(EPIPE));
  EXPECT_THAT(Call(), Fails(EIO, TextOf(32)));
  EXPECT_THAT(Call(), Fails(EIO, TextOf(22)));
}

TEST_P(TransportFailures, KeepTheirErrnoWithoutStandardError) {
  EXPECT_CALL(system_, Read(kSocket, _, _)).WillOnce(FailWith(EAGAIN));
  EXPECT_THAT(Observe([this] {
                const ClosedStandardError closed;
                return RunOn(system_, GetParam().call);
              }),
              Fails(EIO, ""));
}

TEST_P(TransportFailures, WithABadDescriptorLookLikeAnExistingNetwork) {
  EXPECT_CALL(system_, Read(kSocket, _, _)).WillOnce(FailWith(EBADF));
  EXPECT_THAT(Call(), Fails(EEXIST, TextOf(9, false)));
}

TEST_P(TransportFailures, WithoutPermissionLookLikeAMissingDevice) {
  EXPECT_CALL(system_, Writev(kSocket, _, _)).WillOnce(FailWith(EPERM));
  EXPECT_THAT(Call(), Fails(ENODEV, TextOf(1)));
}

TEST_P(TransportFailures, OfInputAndOutputLookLikeARefusal) {
  EXPECT_CALL(system_, Read(kSocket, _, _)).WillOnce(FailWith(EIO));
  EXPECT_THAT(Call(), Fails(EINVAL, TextOf(5, false)));
}

int StoreOpen() { return WifiConfig_StoreOpenNetwork(kSsid, sizeof kSsid); }
int StoreWpa2() { return WifiConfig_StoreWpa2Network(kSsid, sizeof kSsid, "correct horse", 13); }

constexpr Function kStoringFunctions[] = {{"StoreOpen", StoreOpen, Alone},
                                          {"StoreWpa2", StoreWpa2, Alone}};

using StoringFailures = TransportFailures;

INSTANTIATE_TEST_SUITE_P(Of, StoringFailures, testing::ValuesIn(kStoringFunctions),
                         [](const auto& test) { return test.param.name; });

TEST_P(StoringFailures, OfTheListingAreDroppedAndTheNextCommandFails) {
  EXPECT_CALL(system_, Read(kSocket, _, _)).WillOnce(FailWith(EAGAIN));
  EXPECT_THAT(Call(), Fails(EIO, OperationError(22)));
}

/// Answers commands as a daemon without networks does, until `last` has come: then reading fails.
class FailingDaemon {
 public:
  explicit FailingDaemon(std::string last) : last_(std::move(last)) {}

  ssize_t Take(const iovec* vector) {
    command_ = static_cast<const char*>(vector->iov_base);
    return static_cast<ssize_t>(vector->iov_len);
  }

  ssize_t Give(void* buffer) {
    if (command_ == last_) {
      errno = EAGAIN;
      return -1;
    }
    const std::string reply = command_ == "ADD_NETWORK" ? "3\n" : "OK\n";
    memcpy(buffer, reply.data(), reply.size());
    return static_cast<ssize_t>(reply.size());
  }

 private:
  std::string last_;
  std::string command_;
};

class AddingFailures : public TransportFailures {
 protected:
  Observed CallUntil(const char* last) {
    FailingDaemon daemon(last);
    wifi::GetWifiContext().client->ipc->fd = kSocket;
    ON_CALL(system_, Writev(kSocket, _, 1)).WillByDefault([&](int, const iovec* vector, int) {
      return daemon.Take(vector);
    });
    ON_CALL(system_, Read(kSocket, _, _)).WillByDefault([&](int, void* buffer, size_t) {
      return daemon.Give(buffer);
    });
    return Call();
  }
};

INSTANTIATE_TEST_SUITE_P(Of, AddingFailures, testing::ValuesIn(kStoringFunctions),
                         [](const auto& test) { return test.param.name; });

TEST_P(AddingFailures, EndTheCallWithTheirErrno) {
  for (const char* const last :
       {"ADD_NETWORK", "SET_NETWORK 3 ssid \"Home\"", "ENABLE_NETWORK 3", "SAVE_CONFIG"}) {
    EXPECT_THAT(CallUntil(last), Fails(EIO, OperationError(11))) << last;
  }
}

TEST_P(AddingFailures, OfTheSecurityAreDroppedAndTheNextCommandFails) {
  const bool is_open = GetParam().call == StoreOpen;
  EXPECT_THAT(
      CallUntil(is_open ? "SET_NETWORK 3 key_mgmt NONE" : "SET_NETWORK 3 psk \"correct horse\""),
      Fails(EIO, OperationError(22)));
}

}  // namespace
}  // namespace kestrel::test
