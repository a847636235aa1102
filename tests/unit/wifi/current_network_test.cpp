// SPDX-License-Identifier: Apache-2.0
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "support/fake_system.h"
#include "unit/wifi/record_bytes.h"
#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

constexpr uint8_t kBefore = 0xA5;
constexpr uint32_t kUnfinished = 0x09EF0000;

class CurrentNetwork : public WifiTest {
 protected:
  CurrentNetwork() { memset(&record_, kBefore, sizeof record_); }

  Observed Get(const std::string& reply) {
    Expect({{"STATUS", reply}});
    return Observe([&] { return z__WifiConfig_GetCurrentNetwork(&record_, 1); });
  }

  std::string Name() const {
    return {reinterpret_cast<const char*>(record_.ssid), record_.ssidLength};
  }

  WifiCurrentNetworkRecord record_;
};

TEST_F(CurrentNetwork, FillsInTheWholeRecord) {
  EXPECT_THAT(Get("bssid=aa:bb:cc:dd:ee:ff\nfreq=2412\nssid=Lab\nkey_mgmt=WPA2-PSK\n"
                  "wpa_state=COMPLETED\n"),
              Returns(0));
  WifiCurrentNetworkRecord expected;
  memset(&expected, kBefore, sizeof expected);
  expected.recordTag = 0x09EF0001;
  memcpy(expected.ssid, "Lab", 3);
  const uint8_t bssid[] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
  memcpy(expected.bssid, bssid, sizeof bssid);
  expected.ssidLength = 3;
  expected.security = WifiSecurity_Wpa2Psk;
  expected.frequencyMhz = 2412;
  expected.signalDbm = 0;
  EXPECT_EQ(BytesOf(&record_), BytesOf(&expected));
}

TEST_F(CurrentNetwork, OfARealSupplicant) {
  EXPECT_THAT(Get(Recorded("121-status-open.txt")), Returns(0));
  EXPECT_EQ(record_.recordTag, 0x09EF0001u);
  EXPECT_EQ(Name(), "open ap");
  EXPECT_EQ(record_.bssid[0], 2);
  EXPECT_EQ(record_.bssid[5], 1);
  EXPECT_EQ(record_.frequencyMhz, 2412u);
  EXPECT_EQ(record_.signalDbm, 0);
  EXPECT_EQ(record_.security, WifiSecurity_Open);
  EXPECT_THAT(Get(Recorded("088-status-completed.txt")), Returns(0));
  EXPECT_EQ(Name(), "testap");
  EXPECT_EQ(record_.security, WifiSecurity_Wpa2Psk);
  EXPECT_THAT(Get(Recorded("143-status-hidden.txt")), Returns(0));
  EXPECT_EQ(Name(), "hidden-net");
}

TEST_F(CurrentNetwork, OfARealSupplicantWithoutOneIsMissing) {
  for (const char* const name :
       {"002-status-idle.txt", "009-status-while-scanning.txt", "087-status-right-after-enable.txt",
        "100-status-after-disable.txt", "150-wrongpw-status.txt"}) {
    EXPECT_THAT(Get(Recorded(name)), Fails(ENODATA, MissingProperty())) << name;
    EXPECT_EQ(record_.recordTag, kUnfinished);
  }
}

TEST_F(CurrentNetwork, DoesNotDependOnTheState) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00:00\nfreq=2412\nssid=Lab\nwpa_state=SCANNING\n"),
              Returns(0));
}

TEST_F(CurrentNetwork, DoesNotTellTheSignal) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00:00\nfreq=2412\nssid=Lab\nsignal_level=-40\n"), Returns(0));
  EXPECT_EQ(record_.signalDbm, 0);
}

TEST_F(CurrentNetwork, MayHaveAnEqualsSignInItsName) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00:00\nfreq=2412\nssid=a=b\n"), Returns(0));
  EXPECT_EQ(Name(), "a=b");
}

TEST_F(CurrentNetwork, MayHaveAnEmptyName) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00:00\nfreq=2412\nssid=\n"), Returns(0));
  EXPECT_EQ(record_.ssidLength, 0);
  EXPECT_EQ(record_.ssid[0], kBefore);
}

TEST_F(CurrentNetwork, IsUnfinishedBeforeTheDaemonIsAsked) {
  testing::NiceMock<FakeSystem> system;
  uint32_t tag = 0;
  EXPECT_CALL(system, Writev(testing::_, testing::_, 1)).WillOnce([&](int, const iovec*, int) {
    tag = record_.recordTag;
    errno = EPIPE;
    return -1;
  });
  EXPECT_EQ(RunOn(system, [&] { return z__WifiConfig_GetCurrentNetwork(&record_, 1); }), -1);
  EXPECT_EQ(tag, kUnfinished);
  close(daemon_.client_end());
}

struct Secured {
  const char* key_management;
  int security;
};

class CurrentSecurities : public CurrentNetwork, public testing::WithParamInterface<Secured> {};

INSTANTIATE_TEST_SUITE_P(Each, CurrentSecurities,
                         testing::Values(Secured{"NONE", 1}, Secured{"WPA2-PSK", 2},
                                         Secured{"WPA-EAP", 0}));

TEST_P(CurrentSecurities, FollowTheKeyManagement) {
  EXPECT_THAT(Get(std::string("bssid=02:00:00:00:00:00\nfreq=2412\nssid=Lab\nkey_mgmt=") +
                  GetParam().key_management + "\n"),
              Returns(0));
  EXPECT_EQ(record_.security, GetParam().security);
}

TEST_F(CurrentNetwork, NeedsARecord) {
  EXPECT_THAT(Observe([] { return z__WifiConfig_GetCurrentNetwork(nullptr, 2); }),
              IsRefused(EFAULT));
}

TEST_F(CurrentNetwork, NeedsVersionOne) {
  WifiCurrentNetworkRecord untouched;
  memset(&untouched, kBefore, sizeof untouched);
  for (const uint32_t version : {0U, 2U, 0x10001U, 0xFFFFFFFFU}) {
    EXPECT_THAT(Observe([&] { return z__WifiConfig_GetCurrentNetwork(&record_, version); }),
                IsRefused(EINVAL));
    EXPECT_EQ(BytesOf(&record_), BytesOf(&untouched));
  }
}

TEST_F(CurrentNetwork, FailsWhenTheDaemonRefuses) {
  EXPECT_THAT(Get("FAIL\n"), Fails(EINVAL, StatusFailure(6)));
  EXPECT_EQ(record_.recordTag, kUnfinished);
  EXPECT_EQ(record_.ssid[0], kBefore);
}

TEST_F(CurrentNetwork, FailsWithTheTranslationsLineFirst) {
  for (const char* const reply : {"", "\n", "ssid=Lab", "UNKNOWN COMMAND\n"}) {
    EXPECT_THAT(Get(reply), Fails(EIO, OperationError(2) + StatusFailure(2))) << reply;
    EXPECT_EQ(record_.recordTag, kUnfinished);
  }
}

TEST_F(CurrentNetwork, FailsWithoutAConnection) {
  Client().ipc->Close();
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetCurrentNetwork(&record_, 1); }),
              Fails(EIO, OperationError(22) + StatusFailure(22)));
  EXPECT_EQ(record_.recordTag, kUnfinished);
}

TEST_F(CurrentNetwork, DoesNotLookAtUnavailable) {
  Client().unavailable = true;
  EXPECT_THAT(Get(Recorded("088-status-completed.txt")), Returns(0));
}

TEST_F(CurrentNetwork, WithoutAnAddressKeepsItsName) {
  EXPECT_THAT(Get("freq=2412\nssid=Lab\n"), Fails(ENODATA, MissingProperty()));
  EXPECT_EQ(record_.recordTag, kUnfinished);
  EXPECT_EQ(Name(), "Lab");
  EXPECT_EQ(record_.bssid[0], kBefore);
}

TEST_F(CurrentNetwork, WithAMalformedAddressFails) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00\nfreq=2412\nssid=Lab\n"), IsRefused(EINVAL));
  EXPECT_EQ(record_.recordTag, kUnfinished);
}

TEST_F(CurrentNetwork, WithoutAFrequencyKeepsItsAddress) {
  EXPECT_THAT(Get("bssid=02:00:00:00:00:07\nssid=Lab\n"), Fails(ENODATA, MissingProperty()));
  EXPECT_EQ(record_.recordTag, kUnfinished);
  EXPECT_EQ(record_.bssid[5], 7);
  EXPECT_EQ(static_cast<uint8_t>(record_.signalDbm), kBefore);
}

struct Frequency {
  const char* text;
  int error;
  uint32_t mhz;
};

class CurrentFrequencies : public CurrentNetwork, public testing::WithParamInterface<Frequency> {};

INSTANTIATE_TEST_SUITE_P(Each, CurrentFrequencies,
                         testing::Values(Frequency{"0x96C", 0, 2412}, Frequency{"02412", 0, 1290},
                                         Frequency{"5180 MHz", 0, 5180},
                                         Frequency{"abc", ERANGE, 0}, Frequency{"0", ERANGE, 0},
                                         Frequency{"", ERANGE, 0}, Frequency{"-1", ERANGE, 0}));

TEST_P(CurrentFrequencies, AreReadInBase0OrRefused) {
  const auto [text, error, mhz] = GetParam();
  const Observed observed =
      Get(std::string("bssid=02:00:00:00:00:00\nssid=Lab\nfreq=") + text + "\n");
  if (error != 0) {
    EXPECT_THAT(observed, IsRefused(error));
    EXPECT_EQ(record_.recordTag, kUnfinished);
  } else {
    EXPECT_THAT(observed, Returns(0));
    EXPECT_EQ(record_.frequencyMhz, mhz);
  }
}

}  // namespace
}  // namespace kestrel::test
