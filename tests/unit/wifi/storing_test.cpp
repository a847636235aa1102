// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdint>
#include <string>

#include "unit/wifi/wifi_fixture.h"

namespace kestrel::test {
namespace {

const uint8_t* Bytes(const std::string& text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

class Storing : public WifiTest {
 protected:
  static Observed StoreOpen(const std::string& ssid) {
    return Observe([&] { return WifiConfig_StoreOpenNetwork(Bytes(ssid), ssid.size()); });
  }

  static Observed StoreWpa2(const std::string& ssid, const char* psk, size_t length) {
    return Observe(
        [&] { return WifiConfig_StoreWpa2Network(Bytes(ssid), ssid.size(), psk, length); });
  }

  static Observed StoreWpa2(const std::string& ssid, const std::string& psk) {
    return StoreWpa2(ssid, psk.c_str(), psk.size());
  }

  void ExpectEmptyListing() {
    Expect({{"LIST_NETWORKS", Recorded("004-list-empty.txt")},
            {"STATUS", Recorded("002-status-idle.txt")}});
  }

  void ExpectAdding(const std::string& ssid, const std::string& security) {
    ExpectEmptyListing();
    Expect({{"ADD_NETWORK", "3\n"},
            {"SET_NETWORK 3 ssid \"" + ssid + "\"", "OK\n"},
            {"SET_NETWORK 3 " + security, "OK\n"},
            {"ENABLE_NETWORK 3", "OK\n"},
            {"SAVE_CONFIG", "OK\n"}});
  }
};

TEST_F(Storing, OfAnOpenNetworkEnablesAndSavesIt) {
  ExpectAdding("Home", "key_mgmt NONE");
  EXPECT_THAT(StoreOpen("Home"), Returns(0));
}

TEST_F(Storing, OfAWpa2NetworkEnablesAndSavesIt) {
  ExpectAdding("Home", "psk \"correct horse\"");
  EXPECT_THAT(StoreWpa2("Home", "correct horse"), Returns(0));
}

TEST_F(Storing, TakesNamesOf1To32Bytes) {
  for (const size_t length : {size_t{1}, size_t{31}, size_t{32}}) {
    const std::string ssid(length, 's');
    ExpectAdding(ssid, "key_mgmt NONE");
    EXPECT_THAT(StoreOpen(ssid), Returns(0));
  }
}

TEST_F(Storing, TakesAsManyBytesOfTheNameAsItsLengthSays) {
  ExpectAdding("Ho", "key_mgmt NONE");
  EXPECT_THAT(Observe([] { return WifiConfig_StoreOpenNetwork(Bytes("Home"), 2); }), Returns(0));
}

TEST_F(Storing, SendsQuotesAndBackslashesOfTheName) {
  ExpectAdding(R"(\x22a\b)", "key_mgmt NONE");
  EXPECT_THAT(StoreOpen("\"a\\b"), Returns(0));
}

TEST_F(Storing, NeedsAName) {
  EXPECT_THAT(Observe([] { return WifiConfig_StoreOpenNetwork(nullptr, 0); }), IsRefused(EFAULT));
  EXPECT_THAT(Observe([] { return WifiConfig_StoreOpenNetwork(nullptr, 4); }), IsRefused(EFAULT));
  EXPECT_THAT(Observe([] { return WifiConfig_StoreWpa2Network(nullptr, 0, nullptr, 0); }),
              IsRefused(EFAULT));
}

TEST_F(Storing, NeedsALengthOf1To32BeforeAPassphrase) {
  const std::string ssid(40, 's');
  for (const size_t length : {size_t{0}, size_t{33}, SIZE_MAX}) {
    EXPECT_THAT(Observe([&] { return WifiConfig_StoreOpenNetwork(Bytes(ssid), length); }),
                IsRefused(ERANGE));
    EXPECT_THAT(
        Observe([&] { return WifiConfig_StoreWpa2Network(Bytes(ssid), length, nullptr, 0); }),
        IsRefused(ERANGE));
  }
}

TEST_F(Storing, NeedsAPassphrase) {
  EXPECT_THAT(StoreWpa2("Home", nullptr, 0), IsRefused(EFAULT));
  EXPECT_THAT(StoreWpa2("Home", nullptr, 8), IsRefused(EFAULT));
}

TEST_F(Storing, NeedsALengthOfThePassphraseOf1To64) {
  for (const size_t length : {size_t{0}, size_t{65}, SIZE_MAX}) {
    EXPECT_THAT(StoreWpa2("Home", "correct horse", length), IsRefused(ERANGE));
  }
}

TEST_F(Storing, TakesThePassphraseUpToItsNulWhateverItsLength) {
  for (const size_t length : {size_t{1}, size_t{8}, size_t{64}}) {
    ExpectAdding("Home", "psk \"12345678901234567890\"");
    EXPECT_THAT(StoreWpa2("Home", "12345678901234567890", length), Returns(0));
  }
}

TEST_F(Storing, TakesPassphrasesOf8To63Bytes) {
  for (const size_t length : {size_t{8}, size_t{63}}) {
    const std::string psk(length, 'p');
    ExpectAdding("Home", "psk \"" + psk + '"');
    EXPECT_THAT(StoreWpa2("Home", psk), Returns(0));
  }
}

TEST_F(Storing, RefusesOtherPassphrasesWithoutACommand) {
  for (const std::string& psk : {std::string("12345"), std::string("1234567"), std::string(64, 'a'),
                                 std::string("1234567\t"), std::string("1234567\x80")}) {
    EXPECT_THAT(StoreWpa2("Home", psk), IsRefused(EINVAL)) << psk;
  }
}

TEST_F(Storing, RefusesOtherNamesWithoutACommand) {
  for (const std::string& ssid :
       {std::string("a\x80"), std::string("a\tb"), std::string("a\nb"), std::string("a\0b", 3),
        std::string("\x7F"), std::string("\x1F")}) {
    EXPECT_THAT(StoreOpen(ssid), IsRefused(EINVAL));
    EXPECT_THAT(StoreWpa2(ssid, "correct horse"), IsRefused(EINVAL));
  }
}

TEST_F(Storing, OfAStoredNameIsRefusedAfterTheListing) {
  Expect({{"LIST_NETWORKS", Recorded("089-list-current.txt")},
          {"GET_NETWORK 0 ssid", Recorded("039-get-ssid-quoted.txt")},
          {"GET_NETWORK 0 key_mgmt", Recorded("073-get-keymgmt-wpapsk.txt")},
          {"STATUS", Recorded("088-status-completed.txt")}});
  EXPECT_THAT(StoreOpen("testap"), IsRefused(EEXIST));
}

TEST_F(Storing, DropsTheDuplicateCheckWhenTheListingFails) {
  Expect({{"LIST_NETWORKS", "FAIL\n"}, {"ADD_NETWORK", "FAIL\n"}});
  EXPECT_THAT(StoreOpen("testap"), IsRefused(EINVAL));
}

struct Refusal {
  const char* reply;
  int error;
  int printed;
};

class AddRefusals : public Storing, public testing::WithParamInterface<Refusal> {};

INSTANTIATE_TEST_SUITE_P(Each, AddRefusals,
                         testing::Values(Refusal{"FAIL\n", EINVAL, 0}, Refusal{"abc", EIO, 2},
                                         Refusal{"", EIO, 2}, Refusal{"101\n", EIO, 7}));

TEST_P(AddRefusals, OfTheDaemonReachTheCaller) {
  const auto [reply, error, printed] = GetParam();
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", reply}});
  EXPECT_THAT(StoreOpen("Home"), Fails(error, printed == 0 ? "" : OperationError(printed)));
}

TEST_F(Storing, GoesOnAfterARefusedPassphrase) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 psk \"correct horse\"", "FAIL\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_THAT(StoreWpa2("Home", "correct horse"), Returns(0));
}

TEST_F(Storing, FailsWhenTheConfigurationCannotBeSaved) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "FAIL\n"}});
  EXPECT_THAT(StoreOpen("Home"), IsRefused(EINVAL));
}

TEST_F(Storing, FailsWithoutAConnection) {
  Client().ipc->Close();
  EXPECT_THAT(StoreOpen("Home"), Fails(EIO, OperationError(22)));
  EXPECT_THAT(StoreWpa2("Home", "correct horse"), Fails(EIO, OperationError(22)));
}

TEST_F(Storing, LeavesTheKeptListsAlone) {
  const auto stored = context_.storedNetworks;
  const auto scanned = context_.scannedNetworks;
  ExpectAdding("Home", "key_mgmt NONE");
  EXPECT_THAT(StoreOpen("Home"), Returns(0));
  EXPECT_EQ(context_.storedNetworks, stored);
  EXPECT_EQ(context_.scannedNetworks, scanned);
  EXPECT_TRUE(stored->empty());
}

TEST_F(Storing, DoesNotDependOnUnavailable) {
  Client().unavailable = true;
  ExpectAdding("Home", "key_mgmt NONE");
  EXPECT_THAT(StoreOpen("Home"), Returns(0));
}

}  // namespace
}  // namespace kestrel::test
