// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "unit/wifi/wifi_fixture.h"
#include "wifi/stored_listing.h"

namespace kestrel::test {
namespace {

using wifi::Network;

constexpr char kHeader[] = "network id / ssid / bssid / flags\n";
constexpr char kNoNetwork[] = "wpa_state=DISCONNECTED\naddress=02:00:00:00:01:00\n";

std::string Property(const Network& network, const char* key) {
  const eastl::string* const value = network.FindProperty(key);
  return value == nullptr ? "(missing)" : Plain(*value);
}

int Count() { return WifiConfig_GetStoredNetworkCount(); }

class StoredNetworks : public WifiTest {
 protected:
  /// Expects the listing of networks 0, 1 and so on, which have these names, and are open.
  void ExpectListing(const std::vector<std::string>& names,
                     const std::string& status = kNoNetwork) {
    std::string list = kHeader;
    for (size_t i = 0; i < names.size(); ++i) {
      list += std::to_string(i) + "\tx\tany\t\n";
    }
    Expect({{"LIST_NETWORKS", list}});
    for (size_t i = 0; i < names.size(); ++i) {
      const std::string get = "GET_NETWORK " + std::to_string(i);
      Expect({{get + " ssid", names[i]}, {get + " key_mgmt", "NONE"}});
    }
    Expect({{"STATUS", status}});
  }

  /// Lists one network, of which the line is given, and returns it.
  Network ListOne(const std::string& line, int id = 0, const std::string& ssid = "\"Home\"",
                  const std::string& key_management = "NONE",
                  const std::string& status = kNoNetwork) {
    const std::string get = "GET_NETWORK " + std::to_string(id);
    Expect({{"LIST_NETWORKS", kHeader + line},
            {get + " ssid", ssid},
            {get + " key_mgmt", key_management},
            {"STATUS", status}});
    const auto networks = wifi::ListStoredNetworks(Client());
    EXPECT_TRUE(networks.has_value());
    EXPECT_EQ(networks.value()->size(), 1u);
    return networks.value()->front();
  }
};

TEST_F(StoredNetworks, OfARealSupplicant) {
  Expect({{"LIST_NETWORKS", Recorded("120-list-two-selected.txt")},
          {"GET_NETWORK 0 ssid", Recorded("039-get-ssid-quoted.txt")},
          {"GET_NETWORK 0 key_mgmt", Recorded("073-get-keymgmt-wpapsk.txt")},
          {"GET_NETWORK 1 ssid", "\"open ap\""},
          {"GET_NETWORK 1 key_mgmt", Recorded("071-get-keymgmt-none.txt")},
          {"STATUS", Recorded("121-status-open.txt")}});
  EXPECT_THAT(Observe(Count), Returns(2));
  const Network& first = (*context_.storedNetworks)[0];
  EXPECT_EQ(first.networkId, 0);
  EXPECT_TRUE(first.idValid);
  EXPECT_EQ(first.enabledState, 2);
  EXPECT_EQ(first.connectionState, 1);
  EXPECT_EQ(first.security, 2);
  EXPECT_EQ(Property(first, "ssid"), "testap");
  EXPECT_EQ(Property(first, "flags"), "[DISABLED]");
  const Network& second = (*context_.storedNetworks)[1];
  EXPECT_EQ(second.networkId, 1);
  EXPECT_EQ(second.enabledState, 1);
  EXPECT_EQ(second.connectionState, 2);
  EXPECT_EQ(second.security, 1);
  EXPECT_EQ(Property(second, "ssid"), "open ap");
  EXPECT_EQ(Property(second, "flags"), "[CURRENT]");
}

TEST_F(StoredNetworks, OfARealSupplicantWithoutAny) {
  for (const char* const name : {"004-list-empty.txt", "166-list-after-remove-all.txt"}) {
    Expect({{"LIST_NETWORKS", Recorded(name)}, {"STATUS", Recorded("002-status-idle.txt")}});
    EXPECT_THAT(Observe(Count), Returns(0)) << name;
  }
}

TEST_F(StoredNetworks, OfARealSupplicantAfterARemoval) {
  Expect({{"LIST_NETWORKS", Recorded("157-list-after-readd.txt")}});
  for (const char* const id : {"1", "2", "3", "4", "5"}) {
    Expect({{std::string("GET_NETWORK ") + id + " ssid", Recorded("127-get3-ssid.txt")},
            {std::string("GET_NETWORK ") + id + " key_mgmt",
             Recorded("022-get-key_mgmt-default.txt")}});
  }
  Expect({{"STATUS", Recorded("100-status-after-disable.txt")}});
  EXPECT_THAT(Observe(Count), Returns(5));
  const Network& last = context_.storedNetworks->back();
  EXPECT_EQ(last.networkId, 5);
  EXPECT_EQ(last.enabledState, 2);
  EXPECT_EQ(last.security, 2);
  EXPECT_EQ(Property(last, "ssid"), "36166c3a920e29c9");
}

TEST_F(StoredNetworks, OfARealSupplicantWithManyOfThem) {
  Expect({{"LIST_NETWORKS", Recorded("195-list-many.txt")}});
  for (int id = 0; id < 12; ++id) {
    const std::string get = "GET_NETWORK " + std::to_string(id);
    Expect({{get + " ssid", Recorded("020-get-ssid-unset.txt")},
            {get + " key_mgmt", Recorded("022-get-key_mgmt-default.txt")}});
  }
  Expect({{"STATUS", Recorded("002-status-idle.txt")}});
  EXPECT_THAT(Observe(Count), Returns(12));
  EXPECT_EQ(context_.storedNetworks->back().networkId, 11);
}

TEST_F(StoredNetworks, AreNoneInAReplyWithoutLinesButTheStatusIsAsked) {
  for (const char* const reply : {"", "\n\n", kHeader, "0\tHome\tany\t[CURRENT]\n"}) {
    Expect({{"LIST_NETWORKS", reply}, {"STATUS", kNoNetwork}});
    EXPECT_THAT(Observe(Count), Returns(0)) << reply;
  }
}

struct Flags {
  const char* line;
  const char* text;
  int enabled;
};

class ListedFlags : public StoredNetworks, public testing::WithParamInterface<Flags> {};

INSTANTIATE_TEST_SUITE_P(
    Each, ListedFlags,
    testing::Values(Flags{"0\tHome\tany\t[CURRENT]", "[CURRENT]", 1},
                    Flags{"0\tHome\tany\t[DISABLED]", "[DISABLED]", 2},
                    Flags{"0\tHome\tany\t[TEMP-DISABLED]", "[TEMP-DISABLED]", 3},
                    Flags{"0\tHome\tany\t[P2P-PERSISTENT]", "[P2P-PERSISTENT]", 0},
                    Flags{"0\tHome\tany\t[CURRENT][TEMP-DISABLED]", "[TEMP-DISABLED]", 3},
                    Flags{"0\tHome\tany\t[current]", "[current]", 0},
                    Flags{"0\tHome\tany\t", "", 1}, Flags{"0\tHome\tany", "", 1},
                    Flags{"0\tHome\tany\t[CURRENT", "", 1}, Flags{"0\tHome\tany\tCURRENT]", "", 1},
                    Flags{"0\tHome\tany\t[CURRENT] ", "", 1},
                    Flags{"0\t[x\tany\t]", "[x\tany\t]", 0}, Flags{"0\t[]", "[]", 0},
                    Flags{"0 [CURRENT]", "[CURRENT]", 1},
                    Flags{"0\tHome\tany\t[CURRENT]\r", "", 1}));

TEST_P(ListedFlags, TellWhetherTheNetworkIsEnabled) {
  const auto [line, text, enabled] = GetParam();
  const Network network = ListOne(line);
  EXPECT_EQ(Property(network, "flags"), text);
  EXPECT_EQ(network.enabledState, enabled);
}

struct Id {
  const char* line;
  int id;
};

class ListedIds : public StoredNetworks, public testing::WithParamInterface<Id> {};

INSTANTIATE_TEST_SUITE_P(Each, ListedIds,
                         testing::Values(Id{"7\tHome\tany\t", 7}, Id{"07\tx", 7}, Id{"010\tx", 10},
                                         Id{"0x10\tx", 0}, Id{"12 x", 12}, Id{"3x\tHome", 3},
                                         Id{"+4\tHome", 4}, Id{"-1\tHome", -1},
                                         Id{"2147483648\tHome", -2147483647 - 1}));

TEST_P(ListedIds, AreReadAsUnsignedNumbers) {
  const Network network = ListOne(GetParam().line, GetParam().id);
  EXPECT_EQ(network.networkId, GetParam().id);
  EXPECT_TRUE(network.idValid);
}

TEST_F(StoredNetworks, LeaveOutLinesWithoutAnId) {
  const Network network =
      ListOne("x\tHome\tany\t\n\tHome\n 4\tHome\nnetwork\n5\nx5 \n6\tHome\tany\t\n", 6);
  EXPECT_EQ(network.networkId, 6);
}

struct Name {
  const char* reply;
  const char* ssid;
};

class ListedNames : public StoredNetworks, public testing::WithParamInterface<Name> {};

INSTANTIATE_TEST_SUITE_P(Each, ListedNames,
                         testing::Values(Name{"\"Home\"", "Home"}, Name{"\"a\"b\"", "a\"b"},
                                         Name{"\"\"", ""}, Name{"xHomey", "Home"},
                                         Name{"\"Home\"\n", "Home\""}, Name{"ab", ""},
                                         Name{"610162", "1016"}, Name{"\"", "(missing)"},
                                         Name{"\n", "(missing)"}, Name{"", "(missing)"}));

TEST_P(ListedNames, LoseTheirFirstAndLastByte) {
  EXPECT_EQ(Property(ListOne("0\tx\tany\t", 0, GetParam().reply), "ssid"), GetParam().ssid);
}

TEST_F(StoredNetworks, OfARealSupplicantHaveTheirNames) {
  const std::vector<Name> names = {
      {"039-get-ssid-quoted.txt", "testap"},    {"043-get-ssid-after-empty.txt", ""},
      {"049-get-ssid-inner-quote.txt", "a\"b"}, {"053-get-ssid-quoted-utf8.txt", "36166c3a"},
      {"056-get-ssid-quoted-ctl.txt", "1016"},  {"020-get-ssid-unset.txt", "NONE"}};
  for (const auto& [file, ssid] : names) {
    EXPECT_EQ(Property(ListOne("0\tx\tany\t", 0, Recorded(file)), "ssid"), ssid) << file;
  }
}

TEST_F(StoredNetworks, AreCalledNONEWhenTheirNameIsRefused) {
  EXPECT_EQ(Property(ListOne("0\tHome\tany\t", 0, "FAIL\n"), "ssid"), "NONE");
}

TEST_F(StoredNetworks, KeepNulBytesInTheirNames) {
  EXPECT_EQ(Property(ListOne("0\tx\tany\t", 0, std::string("\"a\0b\"", 5)), "ssid"),
            std::string("a\0b", 3));
}

struct KeyManagement {
  const char* reply;
  int security;
};

class ListedSecurities : public StoredNetworks,
                         public testing::WithParamInterface<KeyManagement> {};

INSTANTIATE_TEST_SUITE_P(Each, ListedSecurities,
                         testing::Values(KeyManagement{"WPA-PSK", 2},
                                         KeyManagement{"WPA-PSK WPA-EAP", 2},
                                         KeyManagement{"PSK", 2}, KeyManagement{"NONE", 1},
                                         KeyManagement{"NONE\n", 0}, KeyManagement{"NONE PSK", 2},
                                         KeyManagement{"WPA-EAP", 0}, KeyManagement{"SAE", 0},
                                         KeyManagement{"PS", 0}, KeyManagement{"", 0}));

TEST_P(ListedSecurities, FollowTheKeyManagement) {
  EXPECT_EQ(ListOne("0\tHome\tany\t", 0, "\"Home\"", GetParam().reply).security,
            GetParam().security);
}

struct Current {
  const char* ssid_reply;
  const char* status;
  int connection;
};

class ListedConnections : public StoredNetworks, public testing::WithParamInterface<Current> {};

INSTANTIATE_TEST_SUITE_P(
    Each, ListedConnections,
    testing::Values(Current{"\"Home\"", "ssid=Home\nwpa_state=COMPLETED\n", 2},
                    Current{"\"Home\"", "ssid=Home\nwpa_state=SCANNING\n", 2},
                    Current{"\"Home\"", "ssid=Home2\nmode=x\n", 1},
                    Current{"\"Home\"", "ssid=Hom\nmode=x\n", 1},
                    Current{"\"Home\"", "ssid=home\nmode=x\n", 1},
                    Current{"\"Home\"", "bssid=x\nmode=x\n", 1}, Current{"\"Home\"", "", 1},
                    Current{"\"Home\"", "ssid=Home\n", 1}, Current{"\"\"", "ssid=\nmode=x\n", 2},
                    Current{"\"\"", "mode=x\nfreq=1\n", 1}, Current{"", "ssid=\nmode=x\n", 1},
                    Current{"", "mode=x\nfreq=1\n", 1}, Current{"FAIL\n", "ssid=NONE\nmode=x\n", 2},
                    Current{"FAIL\n", "ssid=Home\nmode=x\n", 1}));

TEST_P(ListedConnections, FollowTheNameInTheStatus) {
  const auto [ssid_reply, status, connection] = GetParam();
  EXPECT_EQ(ListOne("0\tHome\tany\t", 0, ssid_reply, "NONE", status).connectionState, connection);
}

TEST_F(StoredNetworks, OfTheSameNameAreAllConnected) {
  ExpectListing({"\"Home\"", "\"Lab\"", "\"Home\""}, "ssid=Home\nwpa_state=COMPLETED\n");
  ASSERT_THAT(Observe(Count), Returns(3));
  EXPECT_EQ((*context_.storedNetworks)[0].connectionState, 2);
  EXPECT_EQ((*context_.storedNetworks)[1].connectionState, 1);
  EXPECT_EQ((*context_.storedNetworks)[2].connectionState, 2);
}

TEST_F(StoredNetworks, AreKeptUntilTheNextSuccess) {
  ExpectListing({"\"Home\""});
  ASSERT_THAT(Observe(Count), Returns(1));
  const eastl::shared_ptr<wifi::NetworkList> kept = context_.storedNetworks;
  Expect({{"LIST_NETWORKS", "FAIL\n"}});
  EXPECT_THAT(Observe(Count), Fails(EINVAL, ""));
  EXPECT_EQ(context_.storedNetworks, kept);
  ExpectListing({"\"Home\""});
  ASSERT_THAT(Observe(Count), Returns(1));
  EXPECT_NE(context_.storedNetworks, kept);
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(StoredNetworks, FailWithARefusedKeyManagement) {
  Expect({{"LIST_NETWORKS", std::string(kHeader) + "0\tx\tany\t\n1\ty\tany\t\n"},
          {"GET_NETWORK 0 ssid", "\"x\""},
          {"GET_NETWORK 0 key_mgmt", "FAIL\n"}});
  EXPECT_THAT(Observe(Count), Fails(EINVAL, ""));
  EXPECT_EQ(context_.storedNetworks->size(), 0u);
}

TEST_F(StoredNetworks, FailWithARefusedStatus) {
  ExpectListing({"\"Home\""}, "FAIL\n");
  EXPECT_THAT(Observe(Count), Fails(EINVAL, ""));
  EXPECT_EQ(context_.storedNetworks->size(), 0u);
}

TEST_F(StoredNetworks, FailWithoutAConnection) {
  Client().ipc->Close();
  EXPECT_THAT(Observe(Count), Fails(EIO, OperationError(22)));
}

TEST_F(StoredNetworks, DoNotDependOnUnavailable) {
  Client().unavailable = true;
  ExpectListing({});
  EXPECT_THAT(Observe(Count), Returns(0));
}

// Reading the kept list.

using Records = std::vector<WifiStoredNetworkRecord>;

constexpr uint8_t kBefore = 0xA5;

Records Blank(size_t count) {
  Records records(count);
  memset(records.data(), kBefore, count * sizeof records[0]);
  return records;
}

std::string NameOf(const WifiStoredNetworkRecord& record) {
  return {reinterpret_cast<const char*>(record.ssid), record.ssidLength};
}

bool Same(const Records& left, const Records& right) {
  return left.size() == right.size() &&
         memcmp(left.data(), right.data(), left.size() * sizeof left[0]) == 0;
}

class StoredRecords : public StoredNetworks {
 protected:
  static Observed Read(Records& records, uint32_t version = 1) {
    return Observe(
        [&] { return z__WifiConfig_GetStoredNetworks(records.data(), records.size(), version); });
  }

  void Keep(const std::vector<std::string>& names) {
    auto networks = eastl::make_shared<wifi::NetworkList>();
    for (const std::string& name : names) {
      Network network;
      network.SetProperty("ssid", Text(name));
      networks->push_back(network);
    }
    context_.storedNetworks = networks;
  }
};

TEST_F(StoredRecords, HoldAllOfANetwork) {
  Keep({"Home"});
  Network& network = context_.storedNetworks->front();
  network.enabledState = 1;
  network.connectionState = 2;
  network.security = 2;
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(1));
  Records expected = Blank(1);
  expected[0].recordTag = 0xB22E0001;
  memcpy(expected[0].ssid, "Home", 4);
  expected[0].ssidLength = 4;
  expected[0].enabled = 1;
  expected[0].connected = 1;
  expected[0].security = WifiSecurity_Wpa2Psk;
  EXPECT_TRUE(Same(records, expected));
}

TEST_F(StoredRecords, AreEnabledInOneStateAlone) {
  for (const int state : {-1, 0, 1, 2, 3, 257}) {
    Keep({"Home"});
    context_.storedNetworks->front().enabledState = state;
    Records records = Blank(1);
    EXPECT_THAT(Read(records), Returns(1));
    EXPECT_EQ(records[0].enabled, state == 1 ? 1 : 0) << state;
  }
}

TEST_F(StoredRecords, AreConnectedInOneStateAlone) {
  for (const int state : {-1, 0, 1, 2, 3, 258}) {
    Keep({"Home"});
    context_.storedNetworks->front().connectionState = state;
    Records records = Blank(1);
    EXPECT_THAT(Read(records), Returns(1));
    EXPECT_EQ(records[0].connected, state == 2 ? 1 : 0) << state;
  }
}

TEST_F(StoredRecords, HaveTwoKindsOfSecurityOrNone) {
  for (const int security : {-1, 0, 1, 2, 3, 257, 258}) {
    Keep({"Home"});
    context_.storedNetworks->front().security = security;
    Records records = Blank(1);
    EXPECT_THAT(Read(records), Returns(1));
    EXPECT_EQ(records[0].security, security == 1 || security == 2 ? security : 0) << security;
  }
}

TEST_F(StoredRecords, FillTheFirstSlotsAndTagTheOthers) {
  Keep({"a", "b", "c"});
  Records records = Blank(5);
  EXPECT_THAT(Read(records), Returns(3));
  EXPECT_EQ(NameOf(records[0]), "a");
  EXPECT_EQ(NameOf(records[1]), "b");
  EXPECT_EQ(NameOf(records[2]), "c");
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(records[i].recordTag, 0xB22E0001u);
  }
  WifiStoredNetworkRecord empty = Blank(1)[0];
  empty.recordTag = 0;
  EXPECT_EQ(memcmp(&records[3], &empty, sizeof empty), 0);
  EXPECT_EQ(memcmp(&records[4], &empty, sizeof empty), 0);
}

TEST_F(StoredRecords, EndWithTheArray) {
  Keep({"a", "b", "c", "d", "e"});
  Records records = Blank(2);
  EXPECT_THAT(Read(records), Returns(2));
  EXPECT_EQ(NameOf(records[1]), "b");
}

TEST_F(StoredRecords, CanBeReadAgain) {
  Keep({"a"});
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(1));
  EXPECT_THAT(Read(records), Returns(1));
  EXPECT_EQ(context_.storedNetworks.use_count(), 1);
}

TEST_F(StoredRecords, AreNoneBeforeTheFirstCount) {
  Records records = Blank(2);
  EXPECT_THAT(Read(records), Returns(0));
  EXPECT_EQ(records[0].recordTag, 0u);
  EXPECT_EQ(records[1].recordTag, 0u);
}

TEST_F(StoredRecords, OfANetworkWithoutANameHaveTheirSlotUsedAgain) {
  Keep({"a", "", "c"});
  (*context_.storedNetworks)[1].properties.clear();
  Records records = Blank(3);
  const Observed observed = Read(records);
  EXPECT_THAT(observed, Returns(2, MissingProperty()));
  EXPECT_EQ(observed.error, ENODATA);
  EXPECT_EQ(NameOf(records[1]), "c");
  EXPECT_EQ(records[2].recordTag, 0u);
  EXPECT_EQ(records[2].ssid[0], kBefore);
}

TEST_F(StoredRecords, OfANetworkWithoutANameAtTheEndOfTheArrayAreEmpty) {
  Keep({"", "b"});
  (*context_.storedNetworks)[0].properties.clear();
  Records records = Blank(1);
  EXPECT_THAT(Read(records), Returns(0, MissingProperty()));
  EXPECT_EQ(records[0].recordTag, 0u);
}

/// A standard error that looks at the tag of a record whenever something is written there.
class WatchingStandardError {
 public:
  explicit WatchingStandardError(const WifiStoredNetworkRecord& record)
      : record_(record), saved_(stderr) {
    stderr = fopencookie(this, "w", {nullptr, Look, nullptr, nullptr});
    if (stderr == nullptr || setvbuf(stderr, nullptr, _IONBF, 0) != 0) {
      abort();
    }
  }
  ~WatchingStandardError() {
    fclose(stderr);
    stderr = saved_;
  }
  WatchingStandardError(const WatchingStandardError&) = delete;
  WatchingStandardError& operator=(const WatchingStandardError&) = delete;

  uint32_t tag() const { return tag_; }

 private:
  static ssize_t Look(void* self, const char* /*text*/, size_t size) {
    auto* const watching = static_cast<WatchingStandardError*>(self);
    watching->tag_ = watching->record_.recordTag;
    return static_cast<ssize_t>(size);
  }

  const WifiStoredNetworkRecord& record_;
  FILE* saved_;
  uint32_t tag_ = 0;
};

TEST_F(StoredRecords, AreUnfinishedWhileTheyAreFilled) {
  Keep({""});
  context_.storedNetworks->front().properties.clear();
  Records records = Blank(1);
  const WatchingStandardError watching(records[0]);
  EXPECT_EQ(z__WifiConfig_GetStoredNetworks(records.data(), 1, 1), 0);
  EXPECT_EQ(watching.tag(), 0xB22E0000U);
}

TEST_F(StoredRecords, NeedAnArray) {
  EXPECT_THAT(Observe([] { return z__WifiConfig_GetStoredNetworks(nullptr, 0, 2); }),
              IsRefused(EFAULT));
}

TEST_F(StoredRecords, NeedACount) {
  Records records = Blank(1);
  EXPECT_THAT(Observe([&] { return z__WifiConfig_GetStoredNetworks(records.data(), 0, 2); }),
              IsRefused(ERANGE));
  EXPECT_TRUE(Same(records, Blank(1)));
}

TEST_F(StoredRecords, NeedVersionOneAndStayKept) {
  Keep({"a"});
  for (const uint32_t version : {0U, 2U, 0x10001U, 0xFFFFFFFFU}) {
    Records records = Blank(4);
    EXPECT_THAT(Read(records, version), IsRefused(EINVAL));
    EXPECT_TRUE(Same(records, Blank(4)));
  }
  EXPECT_EQ(context_.storedNetworks->size(), 1u);
}

}  // namespace
}  // namespace kestrel::test
