// SPDX-License-Identifier: Apache-2.0
#include "wifi/adding.h"

#include <cerrno>
#include <string>

#include "unit/wifi/wifi_fixture.h"
#include "wifi/network_commands.h"
#include "wifi/wifi_category.h"

namespace kestrel::test {
namespace {

using wifi::Network;

const uint8_t kHome[] = {'H', 'o', 'm', 'e'};

std::string Property(const Network& network, const char* key) {
  const eastl::string* const value = network.FindProperty(key);
  return value == nullptr ? "(missing)" : Plain(*value);
}

class PreparedNetwork : public testing::Test {
 protected:
  Observed Prepare(const char* psk, size_t length) {
    return Observe(
        [=] { return wifi::PrepareNetwork(network_, kHome, sizeof kHome, psk, length); });
  }

  Network network_;
};

TEST_F(PreparedNetwork, WithoutAPassphraseIsOpen) {
  EXPECT_THAT(Prepare(nullptr, 0), Returns(0));
  EXPECT_EQ(Property(network_, "ssid"), "Home");
  EXPECT_EQ(Property(network_, "psk"), "(missing)");
  EXPECT_EQ(network_.security, 1);
  EXPECT_EQ(network_.enabledState, 1);
  EXPECT_EQ(network_.connectionState, 0);
  EXPECT_FALSE(network_.idValid);
  EXPECT_EQ(network_.networkId, 0);
}

TEST_F(PreparedNetwork, WithAPassphraseHasIt) {
  EXPECT_THAT(Prepare("correct horse", 13), Returns(0));
  EXPECT_EQ(Property(network_, "ssid"), "Home");
  EXPECT_EQ(Property(network_, "psk"), "correct horse");
  EXPECT_EQ(network_.security, 2);
  EXPECT_EQ(network_.enabledState, 1);
}

TEST_F(PreparedNetwork, TakesThePassphraseUpToItsNulWhateverItsLength) {
  EXPECT_THAT(Prepare("12345678901234567890", 8), Returns(0));
  EXPECT_EQ(Property(network_, "psk"), "12345678901234567890");
  EXPECT_THAT(Prepare("short", 64), Returns(0));
  EXPECT_EQ(Property(network_, "psk"), "short");
}

TEST_F(PreparedNetwork, KeepsNulBytesOfTheName) {
  const uint8_t name[] = {'a', 0, 'b'};
  EXPECT_EQ(wifi::PrepareNetwork(network_, name, sizeof name, nullptr, 0), 0);
  EXPECT_EQ(Property(network_, "ssid"), std::string("a\0b", 3));
}

TEST_F(PreparedNetwork, NeedsAPassphraseForALength) {
  const Observed observed = Prepare(nullptr, 8);
  EXPECT_THAT(observed, Returns(EINVAL));
  EXPECT_EQ(observed.error, EFAULT);
  EXPECT_EQ(network_.security, 0);
}

TEST_F(PreparedNetwork, NeedsALengthOf1To64) {
  for (const size_t length : {size_t{0}, size_t{65}, SIZE_MAX}) {
    const Observed observed = Prepare("correct horse", length);
    EXPECT_THAT(observed, Returns(EINVAL));
    EXPECT_EQ(observed.error, ERANGE);
    EXPECT_EQ(Property(network_, "psk"), "(missing)");
  }
  EXPECT_THAT(Prepare("correct horse", 1), Returns(0));
  EXPECT_THAT(Prepare("correct horse", 64), Returns(0));
}

class Adding : public WifiTest {
 protected:
  Adding() {
    network_.SetProperty("ssid", "Home");
    network_.enabledState = 1;
    network_.security = 1;
  }

  void ExpectEmptyListing() {
    Expect({{"LIST_NETWORKS", Recorded("004-list-empty.txt")},
            {"STATUS", Recorded("002-status-idle.txt")}});
  }

  void ExpectListingOf(const std::string& name) {
    Expect({{"LIST_NETWORKS", "network id / ssid / bssid / flags\n7\tx\tany\t\n"},
            {"GET_NETWORK 7 ssid", '"' + name + '"'},
            {"GET_NETWORK 7 key_mgmt", "WPA-PSK"},
            {"STATUS", Recorded("002-status-idle.txt")}});
  }

  void UsePassphrase(const std::string& psk) {
    network_.SetProperty("psk", Text(psk));
    network_.security = 2;
  }

  /// Adds the network and returns the error's value. Errors have to be of the Wi-Fi category.
  int Add() {
    const nwl::error_code error = wifi::AddNetwork(Client(), network_);
    EXPECT_TRUE(!error || error.category == &wifi::wifi_category());
    return error.value;
  }

  Network network_;
};

TEST_F(Adding, OfAnOpenNetworkSendsItsCommandsInOrder) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
  EXPECT_EQ(network_.networkId, 3);
  EXPECT_TRUE(network_.idValid);
}

TEST_F(Adding, OfAWpa2NetworkSendsItsPassphrase) {
  UsePassphrase("correct horse");
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", Recorded("114-add-second.txt")},
          {"SET_NETWORK 1 ssid \"Home\"", Recorded("115-set2-ssid.txt")},
          {"SET_NETWORK 1 psk \"correct horse\"", Recorded("116-set2-open.txt")},
          {"ENABLE_NETWORK 1", Recorded("117-enable2.txt")},
          {"SAVE_CONFIG", Recorded("097-save-config.txt")}});
  EXPECT_EQ(Add(), 0);
}

TEST_F(Adding, SendsQuotesEscaped) {
  network_.SetProperty("ssid", "a\"b\\c");
  UsePassphrase(R"("quoted"\)");
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "0\n"},
          {R"(SET_NETWORK 0 ssid "a\x22b\c")", "OK\n"},
          {R"(SET_NETWORK 0 psk "\x22quoted\x22\")", "OK\n"},
          {"ENABLE_NETWORK 0", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

TEST_F(Adding, SendsTheLongestNameAndPassphrase) {
  const std::string ssid(32, '"');
  const std::string psk(63, '"');
  network_.SetProperty("ssid", Text(ssid));
  UsePassphrase(psk);
  const auto escaped = [](size_t quotes) {
    std::string text;
    for (size_t i = 0; i < quotes; ++i) {
      text += R"(\x22)";
    }
    return '"' + text + '"';
  };
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "100\n"},
          {"SET_NETWORK 100 ssid " + escaped(32), "OK\n"},
          {"SET_NETWORK 100 psk " + escaped(63), "OK\n"},
          {"ENABLE_NETWORK 100", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

TEST_F(Adding, WithoutANameIsRefused) {
  network_.properties.clear();
  EXPECT_EQ(Add(), 5);
}

TEST_F(Adding, OfANameThatCannotBeSentIsRefused) {
  for (const std::string& ssid : {std::string(), std::string(33, 'a'), std::string("a\tb"),
                                  std::string("\x80"), std::string("a\0b", 3)}) {
    network_.SetProperty("ssid", Text(ssid));
    EXPECT_EQ(Add(), 5);
  }
}

TEST_F(Adding, WithoutSecurityIsRefused) {
  network_.security = 0;
  EXPECT_EQ(Add(), 5);
}

TEST_F(Adding, WithoutThePassphraseThatItsSecurityNeedsIsRefused) {
  network_.security = 2;
  EXPECT_EQ(Add(), 5);
}

TEST_F(Adding, WithAPassphraseOfOtherThan8To63PrintableBytesIsRefused) {
  for (const std::string& psk :
       {std::string(), std::string("12345"), std::string("1234567"), std::string(64, 'a'),
        std::string("1234567\t"), std::string("1234567\x7F"), std::string("1234567\x80")}) {
    UsePassphrase(psk);
    EXPECT_EQ(Add(), 5) << psk;
  }
}

TEST_F(Adding, OfAStoredNameIsRefusedWhateverItsSecurity) {
  ExpectListingOf("Home");
  EXPECT_EQ(Add(), 9);
  EXPECT_FALSE(network_.idValid);
}

TEST_F(Adding, OfAnotherNameThanTheStoredGoesOn) {
  ExpectListingOf("home");
  Expect({{"ADD_NETWORK", "FAIL\n"}});
  EXPECT_EQ(Add(), 6);
}

TEST_F(Adding, DropsTheDuplicateCheckWhenTheListingFails) {
  Expect({{"LIST_NETWORKS", "FAIL\n"},
          {"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

struct IdReply {
  const char* reply;
  int error;
  int id;
};

class AddedIds : public Adding, public testing::WithParamInterface<IdReply> {};

INSTANTIATE_TEST_SUITE_P(Taken, AddedIds,
                         testing::Values(IdReply{"0\n", 0, 0}, IdReply{"100\n", 0, 100},
                                         IdReply{"7", 0, 7}, IdReply{" \t\n 7\n", 0, 7},
                                         IdReply{"12abc", 0, 12}, IdReply{"+5\n", 0, 5},
                                         IdReply{"010\n", 0, 10}, IdReply{"0x10\n", 0, 0}));

INSTANTIATE_TEST_SUITE_P(NoNumbers, AddedIds,
                         testing::Values(IdReply{"abc\n", 2, 0}, IdReply{"", 2, 0},
                                         IdReply{"\n", 2, 0}, IdReply{"x1", 2, 0},
                                         IdReply{"UNKNOWN COMMAND\n", 2, 0}));

INSTANTIATE_TEST_SUITE_P(TooHigh, AddedIds,
                         testing::Values(IdReply{"101\n", 7, 0}, IdReply{"-1\n", 7, 0},
                                         IdReply{"4294967295\n", 7, 0}));

TEST_P(AddedIds, AreUnsignedNumbersUpTo100) {
  const auto [reply, error, id] = GetParam();
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", reply}});
  if (error == 0) {
    const std::string number = std::to_string(id);
    Expect({{"SET_NETWORK " + number + " ssid \"Home\"", "OK\n"},
            {"SET_NETWORK " + number + " key_mgmt NONE", "OK\n"},
            {"ENABLE_NETWORK " + number, "OK\n"},
            {"SAVE_CONFIG", "OK\n"}});
  }
  EXPECT_EQ(Add(), error);
  EXPECT_EQ(network_.idValid, error == 0);
  EXPECT_EQ(network_.networkId, id);
}

TEST_F(Adding, StopsAtARefusedName) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"}, {"SET_NETWORK 3 ssid \"Home\"", "FAIL\n"}});
  EXPECT_EQ(Add(), 6);
}

TEST_F(Adding, GoesOnAfterARefusedPassphrase) {
  UsePassphrase("correct horse");
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 psk \"correct horse\"", Recorded("061-set-psk-short.txt")},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

TEST_F(Adding, GoesOnAfterARefusedKeyManagement) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "FAIL\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

TEST_F(Adding, StopsWhenTheNetworkCannotBeEnabled) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 3", "FAIL\n"}});
  EXPECT_EQ(Add(), 6);
}

TEST_F(Adding, FailsWhenTheConfigurationCannotBeSaved) {
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", Recorded("902-ro-save.txt")}});
  EXPECT_EQ(Add(), 6);
}

TEST_F(Adding, SendsNoSecurityOfAnotherKind) {
  network_.security = 3;
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"ENABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
}

class AddingDisabled : public Adding, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(States, AddingDisabled, testing::Values(0, 2));

TEST_P(AddingDisabled, DisablesTheNetwork) {
  network_.enabledState = GetParam();
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"DISABLE_NETWORK 3", "OK\n"},
          {"SAVE_CONFIG", "OK\n"}});
  EXPECT_EQ(Add(), 0);
  EXPECT_EQ(network_.enabledState, 2);
}

TEST_P(AddingDisabled, StopsWhenItCannotBeDisabled) {
  network_.enabledState = GetParam();
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"},
          {"DISABLE_NETWORK 3", "FAIL\n"}});
  EXPECT_EQ(Add(), 6);
}

class AddingInOtherStates : public Adding, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(States, AddingInOtherStates, testing::Values(-1, 3, 4));

TEST_P(AddingInOtherStates, FailsAtTheEnd) {
  network_.enabledState = GetParam();
  ExpectEmptyListing();
  Expect({{"ADD_NETWORK", "3\n"},
          {"SET_NETWORK 3 ssid \"Home\"", "OK\n"},
          {"SET_NETWORK 3 key_mgmt NONE", "OK\n"}});
  EXPECT_EQ(Add(), 10);
}

TEST_F(Adding, FailsWithTheErrorOfTheConnection) {
  Client().ipc->Close();
  const nwl::error_code error = wifi::AddNetwork(Client(), network_);
  EXPECT_EQ(error.value, EINVAL);
  EXPECT_EQ(error.category, &nwl::generic_category());
}

using NetworkCommands = WifiTest;

TEST_F(NetworkCommands, NeedAnId) {
  Network network;
  network.enabledState = 1;
  EXPECT_EQ(wifi::SetSsid(Client(), network, "Home").value, 5);
  EXPECT_EQ(wifi::ApplyEnabledState(Client(), network).value, 5);
}

TEST_F(NetworkCommands, WriteIdsAsSignedNumbers) {
  Expect({{"DISABLE_NETWORK -1", "OK\n"}, {"REMOVE_NETWORK -2147483648", "OK\n"}});
  EXPECT_EQ(wifi::DisableNetwork(Client(), -1).value, 0);
  EXPECT_EQ(wifi::TakeOutNetwork(Client(), -2147483647 - 1).value, 0);
}

TEST_F(NetworkCommands, SendNoPassphraseThatIsNotThere) {
  Network network;
  network.security = 2;
  wifi::SetSecurity(Client(), network);
}

}  // namespace
}  // namespace kestrel::test
