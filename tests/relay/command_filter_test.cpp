// SPDX-License-Identifier: Apache-2.0
#include "command_filter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrel::relay {
namespace {

std::string Repeated(const std::string& text, int times) {
  std::string result;
  while (times-- > 0) {
    result += text;
  }
  return result;
}

std::string Ssid(const std::string& text) { return "SET_NETWORK 0 ssid \"" + text + '"'; }
std::string Psk(const std::string& text) { return "SET_NETWORK 0 psk \"" + text + '"'; }

void ExpectEach(Verdict verdict, const std::vector<std::string>& commands) {
  for (const std::string& command : commands) {
    EXPECT_EQ(Judge(command), verdict) << '[' << command << ']';
  }
}

TEST(CommandFilter, AllowsWhatTheLibrarySends) {
  ExpectEach(Verdict::kAllowed,
             {"SCAN", "SCAN_RESULTS", "LIST_NETWORKS", "STATUS", "ADD_NETWORK", "SAVE_CONFIG",
              "GET_NETWORK 0 ssid", "GET_NETWORK 7 key_mgmt", "SET_NETWORK 3 ssid \"Home\"",
              "SET_NETWORK 3 psk \"12345678\"", "SET_NETWORK 3 key_mgmt NONE", "ENABLE_NETWORK 3",
              "DISABLE_NETWORK 3", "REMOVE_NETWORK 3"});
}

TEST(CommandFilter, AllowsEveryIdThatTheLibraryCanPrint) {
  // It reads those of a listing with %u and prints them with %i.
  for (const char* const id : {"0", "9", "101", "2147483647", "-1", "-2147483648"}) {
    const std::string number = id;
    ExpectEach(Verdict::kAllowed,
               {"GET_NETWORK " + number + " ssid", "GET_NETWORK " + number + " key_mgmt",
                "DISABLE_NETWORK " + number, "REMOVE_NETWORK " + number});
  }
  ExpectEach(Verdict::kAllowed, {"SET_NETWORK 100 key_mgmt NONE", "ENABLE_NETWORK 100"});
}

TEST(CommandFilter, RefusesIdsThatTheLibraryNeverPrints) {
  for (const char* const id : {"", " 1", "01", "+1", "-0", "-", "--1", "1x", "0x1", "all", "any",
                               "2147483648", "-2147483649", "99999999999999999999", "1.0", "\t1"}) {
    const std::string number = id;
    ExpectEach(
        Verdict::kOtherForm,
        {"GET_NETWORK " + number + " ssid", "SET_NETWORK " + number + " key_mgmt NONE",
         "ENABLE_NETWORK " + number, "DISABLE_NETWORK " + number, "REMOVE_NETWORK " + number});
  }
  // It gives up an added network with a higher id.
  ExpectEach(Verdict::kOtherForm,
             {"SET_NETWORK 101 ssid \"Home\"", "SET_NETWORK -1 psk \"12345678\"",
              "SET_NETWORK 101 key_mgmt NONE", "ENABLE_NETWORK 101", "ENABLE_NETWORK -1"});
}

TEST(CommandFilter, RefusesOtherCommands) {
  ExpectEach(Verdict::kUnknownCommand, {"",
                                        " ",
                                        "PING",
                                        "TERMINATE",
                                        "ATTACH",
                                        "RECONFIGURE",
                                        "FLUSH",
                                        "scan",
                                        "SCANS",
                                        "SCAN_RESULT",
                                        "SET opensc_engine_path /tmp/evil.so",
                                        "SET ctrl_interface x",
                                        "SET_NETWORKS 0 ssid \"x\"",
                                        " SCAN",
                                        "SCAN\n",
                                        "SCAN\t",
                                        "\"",
                                        "IFNAME=wlan0 SCAN",
                                        std::string("SCAN\0", 5),
                                        std::string(4096, 'A')});
}

TEST(CommandFilter, RefusesOtherArguments) {
  ExpectEach(Verdict::kOtherForm, {"SCAN ",
                                   "SCAN freq=2412",
                                   "SCAN TYPE=ONLY",
                                   "STATUS ",
                                   "STATUS 0",
                                   "LIST_NETWORKS LAST_ID=3",
                                   "ADD_NETWORK 1",
                                   "SAVE_CONFIG ",
                                   "GET_NETWORK",
                                   "GET_NETWORK 0",
                                   "GET_NETWORK 0 ",
                                   "GET_NETWORK 0 psk",
                                   "GET_NETWORK 0 ssid ",
                                   "GET_NETWORK 0  ssid",
                                   "GET_NETWORK 0 ssid key_mgmt",
                                   "GET_NETWORK 0 SSID",
                                   "SET_NETWORK",
                                   "SET_NETWORK 0",
                                   "SET_NETWORK 0 ",
                                   "SET_NETWORK 0 ca_cert \"/etc/shadow\"",
                                   "SET_NETWORK 0 key_mgmt",
                                   "SET_NETWORK 0 key_mgmt WPA-PSK",
                                   "SET_NETWORK 0 key_mgmt NONE ",
                                   "SET_NETWORK 0 key_mgmt  NONE",
                                   "SET_NETWORK  0 key_mgmt NONE",
                                   "SET_NETWORK 0 ssid",
                                   "SET_NETWORK 0 ssid 486f6d65",
                                   "SET_NETWORK 0 ssid P\"Home\"",
                                   "ENABLE_NETWORK",
                                   "ENABLE_NETWORK 0 no-connect",
                                   "ENABLE_NETWORK all",
                                   "DISABLE_NETWORK all",
                                   "REMOVE_NETWORK all",
                                   "REMOVE_NETWORK 0 ",
                                   "REMOVE_NETWORK"});
}

TEST(CommandFilter, AllowsQuotedTextAsTheLibraryWritesIt) {
  ExpectEach(Verdict::kAllowed,
             {Ssid("x"), Ssid(" "), Ssid(" ~!#$%&'()"), Ssid("\\"), Ssid("the \\x22attic\\x22"),
              Ssid(std::string(32, 'x')), Psk("12345678"), Psk(std::string(63, ' ')),
              // Each of the quotes of the longest ones was one byte.
              Ssid(Repeated("\\x22", 32)), Psk(Repeated("\\x22", 63)),
              // Two quotes, or eight bytes that were typed as they are.
              Psk("\\x22\\x22")});
}

TEST(CommandFilter, RefusesTextThatCouldEndOrLeaveItsQuotes) {
  for (const char* const text :
       {"a\"b", "\"", "two\nlines1", "carriage\rreturn", "tabs\tare not it", "escape\x1b",
        "delete it\x7f", "Caf\xc3\xa9 1234", "bssid\" \"12345"}) {
    ExpectEach(Verdict::kOtherForm, {Ssid(text), Psk(text)});
  }
  ExpectEach(
      Verdict::kOtherForm,
      {"SET_NETWORK 0 psk \"", "SET_NETWORK 0 psk 12345678", "SET_NETWORK 0 psk \"12345678",
       "SET_NETWORK 0 psk \"123456789", "SET_NETWORK 0 ssid \"Home", "SET_NETWORK 0 ssid Home\"",
       "SET_NETWORK 0 ssid \"Home\n", "SET_NETWORK 0 psk 12345678\"",
       "SET_NETWORK 0 psk \"12345678\" ", "SET_NETWORK 0 psk  \"12345678\"", "SET_NETWORK 0 psk ",
       "SET_NETWORK 0 ssid \"", Ssid(std::string("a\0b", 3))});
}

TEST(CommandFilter, RefusesTextThatTheLibraryWouldNotTake) {
  ExpectEach(Verdict::kOtherForm, {Ssid(""), Ssid(std::string(33, 'x')),
                                   Ssid(Repeated("\\x22", 33)), Ssid(Repeated("\\x22", 32) + "x"),
                                   Ssid(std::string(29, 'x') + "\\x2"
                                                               "3"),
                                   Psk(""), Psk("1234567"),
                                   Psk("\\x22"
                                       "123"),
                                   Psk(std::string(64, 'a')), Psk(Repeated("\\x22", 63) + "x"),
                                   "SET_NETWORK 0 psk " + std::string(64, 'a')});
}

}  // namespace
}  // namespace kestrel::relay
