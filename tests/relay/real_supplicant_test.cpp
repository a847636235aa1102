// SPDX-License-Identifier: Apache-2.0
// The library, the relay and the distribution's own supplicant, and what the supplicant has stored
// afterwards.
#include "relay/real_supplicant.h"

#include <errno.h>
#include <signal.h>

#include "support/observed_call.h"
#include "support/outcome.h"

namespace kestrel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(RealSupplicant, NetworksAreAddedListedJoinedAndForgotten) {
  EXPECT_THAT(Stored(), IsEmpty());
  EXPECT_EQ(StoreOpen("Attic"), 0);
  EXPECT_EQ(StoreWpa2("Cellar", "under the house"), 0);
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{"Attic", WifiSecurity_Open, true},
                                    StoredNetwork{"Cellar", WifiSecurity_Wpa2Psk, true}));
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=\"Attic\"\nkey_mgmt=NONE\n",
                                           "ssid=\"Cellar\"\npsk=\"under the house\"\n"));

  EXPECT_TRUE(AwaitStatus("wpa_state=COMPLETED"));
  EXPECT_TRUE(AwaitStatus("ssid=Attic"));
  const std::vector<WifiStoredNetworkRecord> records = StoredRecords();
  ASSERT_THAT(records, SizeIs(2));
  EXPECT_EQ(records[0].connected, 1);
  EXPECT_EQ(records[1].connected, 0);

  EXPECT_EQ(z__WifiConfig_ForgetNetwork(records.data()), 0);
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{"Cellar", WifiSecurity_Wpa2Psk, true}));
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=\"Cellar\"\npsk=\"under the house\"\n"));
  EXPECT_THAT(Observe([&] { return z__WifiConfig_ForgetNetwork(records.data()); }),
              IsRefused(ENOENT));

  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
  EXPECT_THAT(Stored(), IsEmpty());
  EXPECT_THAT(SavedNetworks(), IsEmpty());
}

TEST_F(RealSupplicant, CurrentNetworkNeedsAFrequencyWhichNoWireHas) {
  WifiCurrentNetworkRecord records[4] = {};
  const auto current = [&] {
    return z__WifiConfig_GetCurrentNetwork(records, WifiConfig_StructVersion);
  };
  // The connection comes with the first call.
  EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  EXPECT_THAT(Observe(current),
              Fails(ENODATA, "[Kestrel:WifiConfig] Error parsing network property: 4\n"));
  EXPECT_EQ(StoreOpen("Attic"), 0);
  EXPECT_TRUE(AwaitStatus("wpa_state=COMPLETED"));
  EXPECT_THAT(Observe(current), IsRefused(ERANGE));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(records[0].ssid), records[0].ssidLength),
            "Attic");
  EXPECT_THAT(records[0].bssid, ElementsAre(0x01, 0x80, 0xC2, 0x00, 0x00, 0x03));
}

TEST_F(RealSupplicant, ScanningAWireFindsNothing) {
  EXPECT_EQ(WifiConfig_TriggerScanAndGetScannedNetworkCount(), 0);
}

TEST_F(RealSupplicant, NameIsStoredOnce) {
  EXPECT_EQ(StoreOpen("Attic"), 0);
  EXPECT_THAT(Observe([] { return StoreWpa2("Attic", "12345678"); }), IsRefused(EEXIST));
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=\"Attic\"\nkey_mgmt=NONE\n"));
}

struct Text {
  std::string given;
  std::string stored;  ///< in the supplicant's file
};

class RealSupplicantName : public RealSupplicant, public testing::WithParamInterface<Text> {};

TEST_P(RealSupplicantName, IsStoredAndToldAndForgotten) {
  const std::string name = GetParam().given;
  EXPECT_EQ(StoreOpen(name), 0);
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=" + GetParam().stored + "\nkey_mgmt=NONE\n"));
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{name, WifiSecurity_Open, true}));
  // After a restart from the file as well.
  EndSupplicant(SIGTERM);
  StartSupplicant();
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{name, WifiSecurity_Open, true}));
  EXPECT_THAT(Observe([&] { return StoreOpen(name); }), IsRefused(EEXIST));
  const std::vector<WifiStoredNetworkRecord> records = StoredRecords();
  ASSERT_THAT(records, SizeIs(1));
  EXPECT_EQ(z__WifiConfig_ForgetNetwork(records.data()), 0);
  EXPECT_THAT(SavedNetworks(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Each, RealSupplicantName,
                         testing::Values(Text{"x", R"("x")"}, Text{"two words", R"("two words")"},
                                         Text{" blanks around ", R"(" blanks around ")"},
                                         Text{"0123456789abcdefghijklmnopqrstuv",
                                              R"("0123456789abcdefghijklmnopqrstuv")"},
                                         Text{R"(back\slash)", R"("back\slash")"},
                                         Text{R"(\)", R"("\")"}, Text{R"(\\two)", R"("\\two")"},
                                         Text{R"(tab\t, \x41 and \n)", R"("tab\t, \x41 and \n")"},
                                         Text{"it's #1; $(x) `y` {z}=%s",
                                              R"("it's #1; $(x) `y` {z}=%s")"},
                                         Text{"6162", R"("6162")"}));

class RealSupplicantPassphrase : public RealSupplicant, public testing::WithParamInterface<Text> {};

TEST_P(RealSupplicantPassphrase, IsStoredAsItIs) {
  EXPECT_EQ(StoreWpa2("Attic", GetParam().given), 0);
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=\"Attic\"\npsk=" + GetParam().stored + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Each, RealSupplicantPassphrase,
    testing::Values(Text{"12345678", R"("12345678")"},
                    Text{"0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcde",
                         R"("0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcde")"},
                    Text{"  blanks  ", R"("  blanks  ")"},
                    Text{R"(back\slash\\es\)", R"("back\slash\\es\")"},
                    Text{R"(tab\t, \x41 and \n)", R"("tab\t, \x41 and \n")"},
                    Text{"it's #1; $(x) `y` {z}=%s", R"("it's #1; $(x) `y` {z}=%s")"}));

// What <kestrel/wificonfig.h> says of quotes.
TEST_F(RealSupplicant, QuotesAreStoredAsTheirEscapes) {
  EXPECT_EQ(StoreWpa2(R"(the "attic")", R"(say "please")"), 0);
  EXPECT_THAT(SavedNetworks(), ElementsAre("ssid=\"the \\x22attic\\x22\"\n"
                                           "psk=\"say \\x22please\\x22\"\n"));
  EXPECT_THAT(Stored(),
              ElementsAre(StoredNetwork{R"(the \x22attic\x22)", WifiSecurity_Wpa2Psk, true}));
}

TEST_F(RealSupplicant, NameThatGrowsBeyond32CharactersIsRefused) {
  EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  EXPECT_THAT(Observe([] { return StoreOpen(std::string(29, 'x') + '"'); }), IsRefused(EINVAL));
  EXPECT_THAT(SavedNetworks(), IsEmpty());
}

TEST_F(RealSupplicant, OtherBytesThanPrintableAsciiNeverReachIt) {
  EXPECT_EQ(WifiConfig_GetStoredNetworkCount(), 0);
  EXPECT_THAT(Observe([] { return StoreOpen("Caf\xc3\xa9"); }), IsRefused(EINVAL));
  EXPECT_THAT(Observe([] { return StoreWpa2("Attic", "pass\xc3\xa9word"); }), IsRefused(EINVAL));
  EXPECT_THAT(Observe([] { return StoreOpen("two\nlines"); }), IsRefused(EINVAL));
  EXPECT_THAT(Stored(), IsEmpty());
}

TEST_F(RealSupplicant, NamesThatOthersHaveStoredAreTold) {
  EndSupplicant(SIGTERM);
  WriteConfiguration(
      "network={\n\tssid=436166c3a9\n\tkey_mgmt=NONE\n}\n"
      "network={\n\tssid=\"a \"quoted\" name\"\n\tpsk=\"12345678\"\n\tdisabled=1\n}\n"
      "network={\n\tssid=c3a9c3a9c3a9c3a9c3a9c3a9c3a9c3a9\n"
      "\tkey_mgmt=NONE\n}\n");
  StartSupplicant();
  // The supplicant tells what is not printable as digits; the library drops the first and the last
  // character of each name, which are quotes as a rule.
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{"36166c3a", WifiSecurity_Open, true},
                                    StoredNetwork{"a \"quoted\" name", WifiSecurity_Wpa2Psk, false},
                                    StoredNetwork{"3a9c3a9c3a9c3a9c3a9c3a9c3a9c3a",
                                                  WifiSecurity_Open, true}));
  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
  EXPECT_THAT(SavedNetworks(), IsEmpty());
}

TEST_F(RealSupplicant, MayBeKilledAndComeBack) {
  EXPECT_EQ(StoreWpa2("Attic", "12345678"), 0);
  EndSupplicant(SIGKILL);
  EXPECT_THAT(Observe(WifiConfig_GetStoredNetworkCount), IsRefused(EINVAL));
  EXPECT_THAT(Observe(WifiConfig_ForgetAllNetworks), IsRefused(EINVAL));
  StartSupplicant();
  EXPECT_THAT(Stored(), ElementsAre(StoredNetwork{"Attic", WifiSecurity_Wpa2Psk, true}));
  EXPECT_EQ(WifiConfig_ForgetAllNetworks(), 0);
  EXPECT_THAT(SavedNetworks(), IsEmpty());
}

TEST_F(RealSupplicant, ProgramCannotEndItOrChangeItsSettings) {
  const Program program("/var/volatile/tmp/wlan0_request_socket");
  for (const char* const command : {"SET opensc_engine_path /tmp/engine.so", "TERMINATE"}) {
    program.Send(command);
    EXPECT_EQ(program.Receive(), "FAIL\n");
  }
  EXPECT_EQ(StoreOpen("Attic"), 0);
}

TEST_F(RealSupplicant, ThatIsToldToEndMayComeBack) {
  EXPECT_EQ(StoreOpen("Attic"), 0);
  EXPECT_EQ(StoreOpen("Cellar"), 0);
  EndSupplicant(SIGTERM);
  StartSupplicant();
  EXPECT_THAT(Stored(), SizeIs(2));
}

}  // namespace
}  // namespace kestrel::test
