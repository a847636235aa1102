// SPDX-License-Identifier: Apache-2.0
// What the relay keeps from the supplicant, and what it says of that.
#include <unistd.h>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class RelayRefusal : public WithSupplicant {
 protected:
  /// Has the relay answer the command by itself.
  static void ExpectRefused(const Program& program, const std::string& command) {
    program.Send(command);
    EXPECT_EQ(program.Receive(), "FAIL\n") << command;
  }

  static std::string Line(const std::string& text) {
    return "kestrel-wifi-relay: process " + std::to_string(getpid()) + " has sent " + text + "\n";
  }
};

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(RelayRefusal, SupplicantNeverSeesWhatTheLibraryNeverSends) {
  Start();
  const Program program(socket_path_);
  for (const char* const command :
       {"SET opensc_engine_path /tmp/engine.so", "SET_NETWORK 0 ca_cert \"/etc/shadow\"",
        "SET_NETWORK 0 ssid \"two\nlines\"", "TERMINATE", "PING", "",
        R"(SET_NETWORK 0 psk "12345678" "")"}) {
    ExpectRefused(program, command);
  }
  // The first that the supplicant gets.
  ExpectExchange(program, "SAVE_CONFIG", "OK\n");
}

TEST_F(RelayRefusal, IsToldOnceForEachProgramAndCommand) {
  Start();
  const Program program(socket_path_);
  for (int round = 0; round < 3; ++round) {
    ExpectRefused(program, "TERMINATE");
    ExpectRefused(program, "SET_NETWORK 0 ca_cert \"/etc/shadow\"");
  }
  const Program other(socket_path_);
  ExpectRefused(other, "TERMINATE");
  const std::string log = Stop().standard_error;
  EXPECT_EQ(CountOf(log, Line("TERMINATE, which libkestrel never sends: refused")), 2U);
  EXPECT_EQ(CountOf(log, Line("SET_NETWORK in a form that libkestrel never sends: refused")), 1U);
}

TEST_F(RelayRefusal, IsToldWithoutWhatTheCommandSays) {
  Start();
  const Program program(socket_path_);
  for (const char* const command :
       {"SET_NETWORK 0 psk hunter2hunter2", "SET_NETWORK 0 psk \"hunter2\"", "hunter2hunter2",
        "\nhunter2hunter2", "PASSPHRASE hunter2hunter2"}) {
    ExpectRefused(program, command);
  }
  const std::string log = Stop().standard_error;
  EXPECT_THAT(log, HasSubstr(Line("a command, which libkestrel never sends: refused")));
  EXPECT_THAT(log, Not(HasSubstr("hunter2")));
}

TEST_F(RelayRefusal, NamesOfCommandsThatAProgramMakesUpDoNotFillTheLog) {
  Start();
  const Program program(socket_path_);
  for (int number = 0; number < 100; ++number) {
    ExpectRefused(program, "MADE_UP_" + std::to_string(number));
  }
  EXPECT_LE(CountOf(Stop().standard_error, " has sent MADE_UP_"), 16U);
}

TEST_F(RelayRefusal, AnythingPassesWhereThatIsAskedFor) {
  Start({"--allow-all"});
  const Program program(socket_path_);
  ExpectExchange(program, "SET opensc_engine_path /tmp/engine.so", "OK\n");
  ExpectExchange(program, "", "UNKNOWN COMMAND\n");
  // An empty command and the end of a connection are both read as nothing.
  program.SendBytes("");
  supplicant_->Expect("", "UNKNOWN COMMAND\n");
  EXPECT_EQ(program.Receive(), "UNKNOWN COMMAND\n");
  EXPECT_THAT(Stop().standard_error,
              HasSubstr("every program that may connect may do all that the supplicant can "
                        "(--allow-all)\n"));
}

}  // namespace
}  // namespace kestrel::test
