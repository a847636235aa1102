// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "unit/wifi/wifi_fixture.h"
#include "wifi/removing.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;

constexpr char kHeader[] = "network id / ssid / bssid / flags\n";

struct Stored {
  std::string id;
  std::string name;
  std::string key_management = "NONE";
};

class Forgetting : public WifiTest {
 protected:
  void ExpectListing(const std::vector<Stored>& networks) {
    std::string list = kHeader;
    for (const Stored& network : networks) {
      list += network.id + "\tx\tany\t\n";
    }
    Expect({{"LIST_NETWORKS", list}});
    for (const Stored& network : networks) {
      Expect({{"GET_NETWORK " + network.id + " ssid", '"' + network.name + '"'},
              {"GET_NETWORK " + network.id + " key_mgmt", network.key_management}});
    }
    Expect({{"STATUS", Recorded("002-status-idle.txt")}});
  }

  void ExpectRemoval(const std::string& id) {
    Expect({{"DISABLE_NETWORK " + id, Recorded("098-disable.txt")},
            {"REMOVE_NETWORK " + id, Recorded("151-remove-wrongpw.txt")},
            {"SAVE_CONFIG", Recorded("097-save-config.txt")}});
  }
};

WifiStoredNetworkRecord RecordOf(const std::string& name, uint8_t security = 1) {
  WifiStoredNetworkRecord record;
  memset(&record, 0xA5, sizeof record);
  record.recordTag = 0xB22E0001;
  memcpy(record.ssid, name.data(), name.size());
  record.ssidLength = static_cast<uint8_t>(name.size());
  record.security = security;
  return record;
}

Observed Forget(const WifiStoredNetworkRecord& record) {
  return Observe([&] { return z__WifiConfig_ForgetNetwork(&record); });
}

TEST_F(Forgetting, DisablesRemovesAndSaves) {
  ExpectListing({{"2", "Lab"}, {"5", "Home"}});
  ExpectRemoval("5");
  EXPECT_THAT(Forget(RecordOf("Home")), Returns(0));
}

TEST_F(Forgetting, RemovesTheFirstOfTheSameNameAndSecurityAlone) {
  ExpectListing({{"2", "Home", "WPA-PSK"}, {"3", "Home"}, {"4", "Home"}});
  ExpectRemoval("3");
  EXPECT_THAT(Forget(RecordOf("Home")), Returns(0));
}

TEST_F(Forgetting, OfARecordThatTheLibraryFilledIn) {
  ExpectListing({{"2", "Home", "WPA-PSK"}});
  ASSERT_EQ(WifiConfig_GetStoredNetworkCount(), 1);
  WifiStoredNetworkRecord record;
  ASSERT_EQ(z__WifiConfig_GetStoredNetworks(&record, 1, 1), 1);
  ExpectListing({{"2", "Home", "WPA-PSK"}});
  ExpectRemoval("2");
  EXPECT_THAT(Forget(record), Returns(0));
  EXPECT_EQ(z__WifiConfig_GetStoredNetworks(&record, 1, 1), 1) << "the kept list is as it was";
}

TEST_F(Forgetting, LooksAtTheNameAsLongAsTheRecordSays) {
  ExpectListing({{"2", "Ho"}, {"3", "Home"}});
  ExpectRemoval("2");
  WifiStoredNetworkRecord record = RecordOf("Home");
  record.ssidLength = 2;
  EXPECT_THAT(Forget(record), Returns(0));
}

TEST_F(Forgetting, ReadsOnBehindTheNameOfARecordThatSaysSo) {
  // 4 bytes of the record behind its name, and as many bytes behind the record as it takes.
  struct {
    WifiStoredNetworkRecord record;
    char behind[219];
  } memory;
  memset(&memory, 'm', sizeof memory);
  memory.record.recordTag = 0xB22E0001;
  memory.record.ssidLength = 255;
  memory.record.security = 1;
  std::string name(reinterpret_cast<const char*>(&memory) + 4, 255);
  ExpectListing({{"2", name}});
  ExpectRemoval("2");
  EXPECT_THAT(Forget(memory.record), Returns(0));
}

TEST_F(Forgetting, OfANameThatIsNotStoredFailsAfterTheListing) {
  for (const char* const name : {"home", "Hom", "Homes", ""}) {
    ExpectListing({{"2", "Home"}});
    EXPECT_THAT(Forget(RecordOf(name)), IsRefused(ENOENT)) << name;
  }
}

TEST_F(Forgetting, OfAnotherSecurityFailsAfterTheListing) {
  ExpectListing({{"2", "Home", "WPA-PSK"}});
  EXPECT_THAT(Forget(RecordOf("Home", 1)), IsRefused(ENOENT));
}

TEST_F(Forgetting, WithoutStoredNetworksFails) {
  ExpectListing({});
  EXPECT_THAT(Forget(RecordOf("Home")), IsRefused(ENOENT));
}

TEST_F(Forgetting, SkipsANetworkWithoutAName) {
  Expect({{"LIST_NETWORKS", std::string(kHeader) + "2\tx\tany\t\n"},
          {"GET_NETWORK 2 ssid", "\n"},
          {"GET_NETWORK 2 key_mgmt", "NONE"},
          {"STATUS", "mode=x\nfreq=1\n"}});
  EXPECT_THAT(Forget(RecordOf("")), IsRefused(ENOENT));
}

TEST_F(Forgetting, DoesNotLookAtEnabledAndConnected) {
  for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{255}}) {
    WifiStoredNetworkRecord record = RecordOf("Home");
    record.enabled = value;
    record.connected = value;
    ExpectListing({{"2", "Home"}});
    ExpectRemoval("2");
    EXPECT_THAT(Forget(record), Returns(0));
  }
}

TEST_F(Forgetting, NeedsARecord) {
  EXPECT_THAT(Observe([] { return z__WifiConfig_ForgetNetwork(nullptr); }), IsRefused(EFAULT));
}

TEST_F(Forgetting, NeedsACompleteRecord) {
  for (const uint32_t tag : {0U, 0xB22E0000U, 0xB22E0002U, 0xB22E0101U, 0xB22F0001U, 0x322E0001U,
                             0x7EB10001U, 0x09EF0001U, 1U, 0xFFFFFFFFU}) {
    WifiStoredNetworkRecord record = RecordOf("Home");
    record.recordTag = tag;
    EXPECT_THAT(Forget(record), IsRefused(EINVAL)) << tag;
  }
}

TEST_F(Forgetting, FailsWithTheListing) {
  Expect({{"LIST_NETWORKS", "FAIL\n"}});
  EXPECT_THAT(Forget(RecordOf("Home")), IsRefused(EINVAL));
  Client().ipc->Close();
  EXPECT_THAT(Forget(RecordOf("Home")), Fails(EIO, OperationError(22)));
}

TEST_F(Forgetting, StopsWhenTheNetworkCannotBeDisabled) {
  ExpectListing({{"2", "Home"}});
  Expect({{"DISABLE_NETWORK 2", "FAIL\n"}});
  EXPECT_THAT(Forget(RecordOf("Home")), IsRefused(EINVAL));
}

TEST_F(Forgetting, StopsWhenTheNetworkCannotBeRemoved) {
  ExpectListing({{"2", "Home"}});
  Expect({{"DISABLE_NETWORK 2", "OK\n"}, {"REMOVE_NETWORK 2", Recorded("152-remove-badid.txt")}});
  EXPECT_THAT(Forget(RecordOf("Home")), IsRefused(EINVAL));
}

TEST_F(Forgetting, FailsWhenTheConfigurationCannotBeSaved) {
  ExpectListing({{"2", "Home"}});
  Expect({{"DISABLE_NETWORK 2", "OK\n"},
          {"REMOVE_NETWORK 2", "OK\n"},
          {"SAVE_CONFIG", Recorded("902-ro-save.txt")}});
  EXPECT_THAT(Forget(RecordOf("Home")), IsRefused(EINVAL));
}

int ForgetAll() { return WifiConfig_ForgetAllNetworks(); }

TEST_F(Forgetting, OfAllGoesThroughTheListInOrder) {
  ExpectListing({{"2", "Lab"}, {"9", "Home"}, {"5", "Home"}});
  ExpectRemoval("2");
  ExpectRemoval("9");
  ExpectRemoval("5");
  EXPECT_THAT(Observe(ForgetAll), Returns(0));
}

TEST_F(Forgetting, OfAllWithoutAnyEndsWithTheListing) {
  ExpectListing({});
  EXPECT_THAT(Observe(ForgetAll), Returns(0));
}

TEST_F(Forgetting, OfAllStopsAtTheFirstFailure) {
  ExpectListing({{"1", "a"}, {"2", "b"}, {"3", "c"}});
  ExpectRemoval("1");
  Expect({{"DISABLE_NETWORK 2", "OK\n"}, {"REMOVE_NETWORK 2", "FAIL\n"}});
  EXPECT_THAT(Observe(ForgetAll), IsRefused(EINVAL));
}

TEST_F(Forgetting, OfAllFailsWithTheListing) {
  Expect({{"LIST_NETWORKS", "FAIL\n"}});
  EXPECT_THAT(Observe(ForgetAll), IsRefused(EINVAL));
  Client().ipc->Close();
  EXPECT_THAT(Observe(ForgetAll), Fails(EIO, OperationError(22)));
}

TEST_F(Forgetting, OfAllLeavesTheKeptList) {
  ExpectListing({{"2", "Home"}});
  ASSERT_EQ(WifiConfig_GetStoredNetworkCount(), 1);
  ExpectListing({{"2", "Home"}});
  ExpectRemoval("2");
  EXPECT_THAT(Observe(ForgetAll), Returns(0));
  EXPECT_EQ(context_.storedNetworks->size(), 1u);
}

TEST_F(Forgetting, DoesNotDependOnUnavailable) {
  Client().unavailable = true;
  ExpectListing({{"2", "Home"}});
  ExpectRemoval("2");
  EXPECT_THAT(Forget(RecordOf("Home")), Returns(0));
}

class Removing : public Forgetting {
 protected:
  int Remove() { return wifi::RemoveNetwork(Client(), network_).value; }

  Network network_;
};

TEST_F(Removing, TakesTheIdWithoutAListing) {
  network_.networkId = 7;
  network_.idValid = true;
  ExpectRemoval("7");
  EXPECT_EQ(Remove(), 0);
}

TEST_F(Removing, FindsTheIdByTheName) {
  network_.SetProperty("ssid", "Home");
  network_.networkId = 7;
  ExpectListing({{"2", "Lab"}, {"5", "Home"}});
  ExpectRemoval("5");
  EXPECT_EQ(Remove(), 0);
}

TEST_F(Removing, NeedsANameOrAnId) { EXPECT_EQ(Remove(), 5); }

TEST_F(Removing, FailsWithTheListing) {
  network_.SetProperty("ssid", "Home");
  Expect({{"LIST_NETWORKS", "FAIL\n"}});
  EXPECT_EQ(Remove(), 6);
}

TEST_F(Removing, FailsForANameThatIsNotStored) {
  network_.SetProperty("ssid", "Home");
  ExpectListing({{"2", "Lab"}});
  EXPECT_EQ(Remove(), 8);
}

TEST_F(Removing, FailsForANameThatCannotBeStored) {
  network_.SetProperty("ssid", "a\tb");
  ExpectListing({{"2", "Lab"}});
  EXPECT_EQ(Remove(), 5);
}

}  // namespace
}  // namespace kestrel::test
