// SPDX-License-Identifier: Apache-2.0
// The supplicant is not there, goes, comes back, or says nothing.
#include <chrono>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using Clock = std::chrono::steady_clock;
using testing::HasSubstr;

/// More than a test may take; only a relay that notices by itself is faster.
const std::vector<std::string> kNoTimeout = {"--timeout", "3600"};

class RelaySupplicant : public WithSupplicant {
 protected:
  void Replace() {
    supplicant_.reset();
    supplicant_ = std::make_unique<FakeSupplicant>(supplicant_path_);
  }
};

TEST_F(RelaySupplicant, WithoutOneCommandsFailAndLaterTheyDoNot) {
  supplicant_.reset();
  Start(kNoTimeout);
  const Program program(socket_path_);
  for (int count = 0; count < 3; ++count) {
    program.Send("STATUS");
    EXPECT_EQ(program.Receive(), "FAIL\n");
  }
  supplicant_ = std::make_unique<FakeSupplicant>(supplicant_path_);
  ExpectExchange(program, "STATUS", "OK\n");
  const std::string supplicant = "kestrel-wifi-relay: the supplicant at " + supplicant_path_;
  EXPECT_EQ(Stop().standard_error,
            "kestrel-wifi-relay: listening at " + socket_path_ + " for the supplicant at " +
                supplicant_path_ + "\n" + supplicant +
                " cannot be reached: No such file or directory\n" + supplicant +
                " answers again\nkestrel-wifi-relay: stopping\n");
}

TEST_F(RelaySupplicant, IsNotBlamedForTheFolderThatIsMissing) {
  Start(kNoTimeout);
  std::filesystem::remove(client_folder_);
  const Program program(socket_path_);
  program.Send("STATUS");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  EXPECT_THAT(Stop().standard_error,
              HasSubstr(" cannot be reached: the folder " + client_folder_ + " is missing\n"));
}

TEST_F(RelaySupplicant, OneThatWasKilledLeavesASocketAtWhichCommandsFail) {
  supplicant_->Vanish();
  Start(kNoTimeout);
  const Program program(socket_path_);
  program.Send("STATUS");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  Replace();
  ExpectExchange(program, "STATUS", "OK\n");
}

TEST_F(RelaySupplicant, NextCommandGoesToItsSuccessor) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  ExpectExchange(program, "STATUS", "1");
  Replace();
  ExpectExchange(program, "STATUS", "2");
  supplicant_->Vanish();
  Replace();
  ExpectExchange(program, "STATUS", "3");
}

TEST_F(RelaySupplicant, OneThatIsKilledOverACommandFailsItSoon) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  program.Send("SCAN");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  supplicant_->Vanish();
  EXPECT_EQ(program.Receive(), "FAIL\n");
  Replace();
  ExpectExchange(program, "STATUS", "OK\n");
}

TEST_F(RelaySupplicant, OneThatEndsOverACommandFailsItSoon) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  program.Send("SCAN");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  supplicant_.reset();
  EXPECT_EQ(program.Receive(), "FAIL\n");
}

TEST_F(RelaySupplicant, SuccessorOwesNoAnswerToWhatItNeverGot) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  program.Send("SCAN");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  Replace();
  EXPECT_EQ(program.Receive(), "FAIL\n");
  // The command may have had its effect, and is not repeated.
  ExpectExchange(program, "STATUS", "OK\n");
}

TEST_F(RelaySupplicant, LastWordsOfOneThatEndsAreHeard) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  for (int round = 0; round < 20; ++round) {
    program.Send("SAVE_CONFIG");
    supplicant_->Expect("SAVE_CONFIG", "OK\n");
    Replace();
    EXPECT_EQ(program.Receive(), "OK\n");
  }
}

TEST_F(RelaySupplicant, SilentOneFailsTheCommandInTimeAndNobodyElse) {
  Start({"--timeout", "1"});
  const Program program(socket_path_);
  const Program other(socket_path_);
  const auto begin = Clock::now();
  program.Send("SCAN");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  ExpectExchange(other, "STATUS", "OK\n");
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_EQ(program.Receive(), "FAIL\n");
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(10));
  EXPECT_THAT(Stop().standard_error, HasSubstr(" cannot be reached: it does not answer\n"));
}

TEST_F(RelaySupplicant, ReplyEndsTheWait) {
  Start({"--timeout", "1"});
  const Program program(socket_path_);
  const Program other(socket_path_);
  ExpectExchange(program, "STATUS", "1");
  // Its time is up later than that of the command before.
  other.Send("SCAN");
  ASSERT_TRUE(supplicant_->Receive().has_value());
  EXPECT_EQ(other.Receive(), "FAIL\n");
  ExpectExchange(program, "STATUS", "2");
}

TEST_F(RelaySupplicant, LateReplyFindsNobody) {
  Start({"--timeout", "0.1"});
  const Program program(socket_path_);
  program.Send("SCAN");
  const std::optional<Command> scan = supplicant_->Receive();
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(program.Receive(), "FAIL\n");
  EXPECT_FALSE(supplicant_->Send(scan->sender, "late reply"));
  ExpectExchange(program, "STATUS", "OK\n");
}

TEST_F(RelaySupplicant, EventsDoNotProlongTheWait) {
  Start({"--timeout", "0.1"});
  const Program program(socket_path_);
  program.Send("SCAN");
  const std::optional<Command> scan = supplicant_->Receive();
  ASSERT_TRUE(scan.has_value());
  const auto deadline = Clock::now() + kPatience;
  while (supplicant_->Send(scan->sender, "<3>CTRL-EVENT-BSS-ADDED ") && Clock::now() < deadline) {
  }
  EXPECT_LT(Clock::now(), deadline);
  EXPECT_EQ(program.Receive(), "FAIL\n");
}

TEST_F(RelaySupplicant, CommandWaitsUntilThereIsRoomForIt) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  const Program other(socket_path_);
  const int others = supplicant_->Fill();
  program.Send("STATUS");
  AwaitRelay(other);
  for (int count = 0; count < others; ++count) {
    EXPECT_EQ(supplicant_->Receive()->text, "x");
  }
  supplicant_->Expect("STATUS", "OK\n");
  EXPECT_EQ(program.Receive(), "OK\n");
}

TEST_F(RelaySupplicant, OneThatReadsNothingFailsTheCommandInTime) {
  Start({"--timeout", "0.2"});
  const Program program(socket_path_);
  const int others = supplicant_->Fill();
  program.Send("STATUS");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  for (int count = 0; count < others; ++count) {
    EXPECT_EQ(supplicant_->Receive()->text, "x");
  }
  ExpectExchange(program, "LIST_NETWORKS", "OK\n");
}

TEST_F(RelaySupplicant, WhatWaitsForRoomGoesToTheSuccessor) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  const Program other(socket_path_);
  supplicant_->Fill();
  program.Send("STATUS");
  AwaitRelay(other);
  const std::unique_ptr<FakeSupplicant> predecessor = std::move(supplicant_);
  supplicant_ = std::make_unique<FakeSupplicant>(supplicant_path_);
  predecessor->Vanish();
  supplicant_->Expect("STATUS", "OK\n");
  EXPECT_EQ(program.Receive(), "OK\n");
}

TEST_F(RelaySupplicant, FolderOfLinksThatIsGoneFailsTheCommand) {
  Start(kNoTimeout);
  const Program program(socket_path_);
  std::filesystem::remove_all(client_folder_);
  program.Send("STATUS");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  std::filesystem::create_directory(client_folder_);
  ExpectExchange(program, "STATUS", "OK\n");
}

}  // namespace
}  // namespace kestrel::test
