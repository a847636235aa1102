// SPDX-License-Identifier: Apache-2.0
// Who gets a place at the relay, and who is turned away.
#include <signal.h>
#include <unistd.h>

#include <deque>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using testing::HasSubstr;

class RelayPlaces : public WithSupplicant {
 protected:
  /// Programs that have a place, which the answer to a command proves.
  void Fill(size_t count) {
    while (programs_.size() < count) {
      programs_.emplace_back(socket_path_);
      ExpectExchange(programs_.back(), "STATUS", "OK\n");
    }
  }

  std::deque<Program> programs_;
};

TEST_F(RelayPlaces, NewcomerGetsThePlaceOfOneWhoHasJustLeft) {
  Start({"--clients", "8", "--clients-per-user", "8"});
  for (int round = 0; round < 5; ++round) {
    Fill(8);
    // So that it learns of all that happens here at once.
    Signal(SIGSTOP);
    programs_.clear();
    programs_.emplace_back(socket_path_);
    Signal(SIGCONT);
    ExpectExchange(programs_.front(), "STATUS", "OK\n");
  }
}

TEST_F(RelayPlaces, NewcomerGetsThePlaceThatAProgramOfItsUserHasJustLeft) {
  Start({"--clients", "8", "--clients-per-user", "2"});
  Fill(2);
  Signal(SIGSTOP);
  programs_.clear();
  programs_.emplace_back(socket_path_);
  Signal(SIGCONT);
  ExpectExchange(programs_.front(), "STATUS", "OK\n");
}

TEST_F(RelayPlaces, OneWhoWaitsForAReplyKeepsItsPlaceAlthoughItSendsNoMore) {
  Start({"--clients", "1"});
  const Program program(socket_path_);
  program.Send("STATUS");
  const std::optional<Command> command = supplicant_->Receive();
  ASSERT_TRUE(command.has_value());
  shutdown(program.descriptor(), SHUT_WR);
  EXPECT_TRUE(Program(socket_path_).SeesTheEnd());
  supplicant_->Send(command->sender, "OK\n");
  EXPECT_EQ(program.Receive(), "OK\n");
}

TEST_F(RelayPlaces, UserHasNoMoreThanAreGiven) {
  Start({"--clients", "8", "--clients-per-user", "2"});
  Fill(2);
  for (int count = 0; count < 3; ++count) {
    EXPECT_TRUE(Program(socket_path_).SeesTheEnd());
  }
  programs_.pop_back();
  Fill(2);
  EXPECT_TRUE(Program(socket_path_).SeesTheEnd());
  // Once each time that there is no room any more.
  const std::string full = "kestrel-wifi-relay: turning programs of user " +
                           std::to_string(getuid()) + " away: 2 of them are connected\n";
  EXPECT_THAT(Stop().standard_error, HasSubstr(full + full + "kestrel-wifi-relay: stopping\n"));
}

TEST_F(RelayPlaces, UserLeavesAQuarterToOthersUnlessSaidOtherwise) {
  Start({"--clients", "4"});
  Fill(3);
  EXPECT_TRUE(Program(socket_path_).SeesTheEnd());
}

}  // namespace
}  // namespace kestrel::test
