// SPDX-License-Identifier: Apache-2.0
// One command out, one reply in, whatever else happens.
#include <poll.h>
#include <sys/socket.h>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

class RelayExchange : public WithSupplicant {};

TEST_F(RelayExchange, PassesCommandsWithoutTheirNulAndRepliesAsTheyAre) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "LIST_NETWORKS", "network id / ssid / bssid / flags\n");
  ExpectExchange(program, R"(SET_NETWORK 0 ssid "two words\")", "OK\n");
  ExpectExchange(program, "GET_NETWORK 0 ssid", std::string("\"a\0b\"", 5));
  ExpectExchange(program, "SAVE_CONFIG", "FAIL\n");
}

TEST_F(RelayExchange, PassesAnEmptyReply) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "SCAN_RESULTS", "");
  ExpectExchange(program, "STATUS", "wpa_state=SCANNING\n");
}

TEST_F(RelayExchange, CommandEndsAtItsFirstNulOrWithoutAny) {
  Start();
  const Program program(socket_path_);
  program.SendBytes(std::string("STATUS\0junk", 11));
  supplicant_->Expect("STATUS", "1");
  EXPECT_EQ(program.Receive(), "1");
  program.SendBytes("SCAN");
  supplicant_->Expect("SCAN", "2");
  EXPECT_EQ(program.Receive(), "2");
  // Read as the end of a connection is.
  program.SendBytes("");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  ExpectExchange(program, "STATUS", "4");
}

TEST_F(RelayExchange, PassesLongRepliesWhole) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "SCAN_RESULTS", std::string(2048, 'a'));
  ExpectExchange(program, "SCAN_RESULTS", std::string(8192, 'b'));
}

TEST_F(RelayExchange, CutsRepliesThatNoSupplicantSends) {
  Start();
  const Program program(socket_path_);
  program.Send("SCAN_RESULTS");
  supplicant_->Expect("SCAN_RESULTS", std::string(8193, 'c'));
  EXPECT_EQ(program.Receive(), std::string(8192, 'c'));
}

TEST_F(RelayExchange, PassesTheLongestCommandAndRefusesLongerOnes) {
  Start({"--allow-all"});
  const Program program(socket_path_);
  ExpectExchange(program, std::string(4096, 'A'), "OK\n");
  program.Send(std::string(4097, 'B'));
  EXPECT_EQ(program.Receive(), "FAIL\n");
  program.SendBytes(std::string(4097, 'C'));
  EXPECT_EQ(program.Receive(), "FAIL\n");
  program.Send(std::string(100000, 'D'));
  EXPECT_EQ(program.Receive(), "FAIL\n");
  // The next that the supplicant gets is the next that was short enough.
  ExpectExchange(program, "STATUS", "OK\n");
  EXPECT_THAT(Stop().standard_error, HasSubstr(" has sent a command of more than 4096 bytes\n"));
}

TEST_F(RelayExchange, NextCommandWaitsForTheReply) {
  Start();
  const Program program(socket_path_);
  const Program other(socket_path_);
  program.Send("SCAN");
  program.Send("SCAN_RESULTS");
  const std::optional<Command> first = supplicant_->Receive();
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->text, "SCAN");
  // Were the second on its way, it would come before these.
  ExpectExchange(other, "LIST_NETWORKS", "1");
  ExpectExchange(other, "LIST_NETWORKS", "2");
  supplicant_->Send(first->sender, "reply to first");
  EXPECT_EQ(program.Receive(), "reply to first");
  supplicant_->Expect("SCAN_RESULTS", "reply to second");
  EXPECT_EQ(program.Receive(), "reply to second");
}

TEST_F(RelayExchange, ClientsAreKeptApart) {
  Start();
  const Program one(socket_path_);
  const Program two(socket_path_);
  one.Send("STATUS");
  const std::optional<Command> first = supplicant_->Receive();
  two.Send("SCAN");
  const std::optional<Command> second = supplicant_->Receive();
  ASSERT_TRUE(first.has_value() && second.has_value());
  EXPECT_NE(first->sender, second->sender);
  supplicant_->Send(second->sender, "reply to two");
  EXPECT_EQ(two.Receive(), "reply to two");
  supplicant_->Send(first->sender, "reply to one");
  EXPECT_EQ(one.Receive(), "reply to one");
}

TEST_F(RelayExchange, EventsAreNoReplies) {
  Start({"--allow-all"});
  const Program program(socket_path_);
  program.Send("ATTACH");
  const std::optional<Command> attach = supplicant_->Receive();
  ASSERT_TRUE(attach.has_value());
  for (const char* const text : {"<3>CTRL-EVENT-SCAN-STARTED ", "IFNAME=wlan0 <2>what", "OK\n"}) {
    supplicant_->Send(attach->sender, text);
  }
  EXPECT_EQ(program.Receive(), "OK\n");
  supplicant_->Send(attach->sender, "<3>CTRL-EVENT-SCAN-RESULTS ");
  ExpectExchange(program, "STATUS", "wpa_state=COMPLETED\n");
}

TEST_F(RelayExchange, WhatComesBetweenCommandsIsNoReplyToTheNext) {
  Start();
  const Program program(socket_path_);
  program.Send("SCAN");
  const std::optional<Command> first = supplicant_->Receive();
  ASSERT_TRUE(first.has_value());
  supplicant_->Send(first->sender, "reply to first");
  supplicant_->Send(first->sender, "more of it");
  EXPECT_EQ(program.Receive(), "reply to first");
  ExpectExchange(program, "SCAN_RESULTS", "reply to second");
}

TEST_F(RelayExchange, LinkIsKeptFromOneCommandToTheNext) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "1");
  const Words links = Links();
  EXPECT_THAT(links, SizeIs(1));
  ExpectExchange(program, "SCAN", "2");
  EXPECT_EQ(Links(), links);
}

TEST_F(RelayExchange, ProgramThatLeavesTakesItsLinkAlong) {
  Start();
  const Program stays(socket_path_);
  ExpectExchange(stays, "STATUS", "OK\n");
  const size_t before = CountDescriptors();
  for (int round = 0; round < 20; ++round) {
    Program idle(socket_path_);
    ExpectExchange(idle, "STATUS", "OK\n");
    Program waiting(socket_path_);
    waiting.Send("SCAN");
    const std::optional<Command> command = supplicant_->Receive();
    ASSERT_TRUE(command.has_value());
    idle.Leave();
    waiting.Leave();
    ExpectExchange(stays, "STATUS", "OK\n");
    ExpectExchange(stays, "STATUS", "OK\n");
    EXPECT_THAT(Links(), SizeIs(1));
    EXPECT_FALSE(supplicant_->Send(command->sender, "late reply"));
  }
  EXPECT_EQ(CountDescriptors(), before);
}

TEST_F(RelayExchange, ProgramThatSendsNoMoreStillGetsItsReply) {
  Start();
  const Program program(socket_path_);
  program.Send("STATUS");
  shutdown(program.descriptor(), SHUT_WR);
  supplicant_->Expect("STATUS", "OK\n");
  EXPECT_EQ(program.Receive(), "OK\n");
  EXPECT_TRUE(program.SeesTheEnd());
}

TEST_F(RelayExchange, WaitingTakesNoProcessor) {
  Start();
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  EXPECT_TRUE(IsIdle(relay_->pid())) << "between commands";
  program.Send("STATUS");
  EXPECT_TRUE(IsIdle(relay_->pid())) << "before the reply";
  supplicant_->Expect("STATUS", "OK\n");
  EXPECT_EQ(program.Receive(), "OK\n");
}

TEST_F(RelayExchange, ProgramThatWantsNoRepliesAnyMoreLosesItsPlace) {
  Start({"--clients", "2"});
  const Program program(socket_path_);
  const Program other(socket_path_);
  program.Send("STATUS");
  shutdown(program.descriptor(), SHUT_RD);
  supplicant_->Expect("STATUS", "OK\n");
  AwaitRelay(other);
  const Program next(socket_path_);
  ExpectExchange(next, "STATUS", "OK\n");
}

TEST_F(RelayExchange, ProgramThatDoesNotReadItsRepliesIsSentAway) {
  Start({"--timeout", "0.2"});
  // What is told of these leaves what is told of it alone.
  for (int count = 0; count < 20; ++count) {
    const Program refused(socket_path_);
    refused.Send("TERMINATE");
    EXPECT_EQ(refused.Receive(), "FAIL\n");
  }
  const Program program(socket_path_);
  constexpr int kCommands = 150;
  for (int count = 0; count < kCommands; ++count) {
    program.Send("SCAN_RESULTS");
  }
  int answered = 0;
  pollfd ends[] = {{supplicant_->descriptor(), POLLIN, 0}, {program.descriptor(), 0, 0}};
  while (answered < kCommands && poll(ends, 2, 20000) > 0 && ends[1].revents == 0) {
    supplicant_->Expect("SCAN_RESULTS", std::string(8192, 'x'));
    ++answered;
  }
  EXPECT_LT(answered, kCommands);
  const Program other(socket_path_);
  ExpectExchange(other, "STATUS", "OK\n");
  EXPECT_THAT(Stop().standard_error, HasSubstr(" does not read its replies\n"));
}

}  // namespace
}  // namespace kestrel::test
