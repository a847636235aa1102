// SPDX-License-Identifier: Apache-2.0
// How little programs can make the relay say, whatever they do.
#include <algorithm>
#include <chrono>
#include <regex>
#include <thread>

#include "relay/relay_fixture.h"

namespace kestrel::test {
namespace {

using testing::HasSubstr;

class RelayFlood : public WithSupplicant {
 protected:
  static constexpr int kTimes = 2000;

  static size_t CountLines(const std::string& log, const std::string& pattern) {
    const std::regex line(pattern + "\n");
    return static_cast<size_t>(
        std::distance(std::sregex_iterator(log.begin(), log.end(), line), std::sregex_iterator()));
  }

  /// How many lines the log says that it has left out.
  static size_t LeftOut(const std::string& log, const std::string& topic) {
    const std::regex line(": " + topic + ": (\\d+) more of these were left out\n");
    size_t count = 0;
    for (std::sregex_iterator match(log.begin(), log.end(), line); match != std::sregex_iterator();
         ++match) {
      count += std::stoul((*match)[1]);
    }
    return count;
  }

  static size_t CountAllLines(const std::string& log) {
    return static_cast<size_t>(std::count(log.begin(), log.end(), '\n'));
  }
};

TEST_F(RelayFlood, OfCommandsThatAreTooLongIsOneLineAndACount) {
  Start();
  {
    const Program program(socket_path_);
    for (int count = 0; count < kTimes; ++count) {
      program.Send(std::string(5000, 'x'));
      ASSERT_EQ(program.Receive(), "FAIL\n");
    }
  }
  const std::string log = Stop().standard_error;
  EXPECT_EQ(CountLines(log, " has sent a command of more than 4096 bytes"), 1U);
  EXPECT_THAT(log, HasSubstr(" has sent more commands that were refused: 1999\n"));
  EXPECT_LE(CountAllLines(log), 4U);
}

TEST_F(RelayFlood, OfProgramsThatSendTheSameIsLimited) {
  Start();
  for (int count = 0; count < kTimes / 10; ++count) {
    const Program program(socket_path_);
    program.Send("TERMINATE");
    ASSERT_EQ(program.Receive(), "FAIL\n");
  }
  const std::string log = Stop().standard_error;
  const size_t told = CountLines(log, " has sent TERMINATE, .*");
  EXPECT_EQ(told + LeftOut(log, "refused commands"), size_t{kTimes} / 10);
  EXPECT_LE(told, 100U) << "ten in ten seconds";
}

TEST_F(RelayFlood, OfProgramsThatComeAndGoIsLimited) {
  Start({"--verbose"});
  for (int count = 0; count < kTimes; ++count) {
    const Program program(socket_path_);
  }
  const Program last(socket_path_);
  ExpectExchange(last, "STATUS", "OK\n");
  const std::string log = Stop().standard_error;
  const size_t told = CountLines(log, " has (connected|left)");
  EXPECT_EQ(told + LeftOut(log, "programs that come and go"), 2 * size_t{kTimes} + 2);
  EXPECT_LT(told, size_t{kTimes}) << "500 in ten seconds";
}

TEST_F(RelayFlood, OfCommandsIsLimitedApartFromThoseThatFail) {
  constexpr int kCommands = 510;
  Start({"--verbose"});
  const Program program(socket_path_);
  for (int count = 0; count < kCommands; ++count) {
    ExpectExchange(program, "STATUS", "OK\n");
  }
  supplicant_.reset();
  program.Send("STATUS");
  EXPECT_EQ(program.Receive(), "FAIL\n");
  const std::string log = Stop().standard_error;
  EXPECT_EQ(CountLines(log, " process [0-9]+: STATUS") + LeftOut(log, "commands"), kCommands + 1U);
  EXPECT_GT(LeftOut(log, "commands"), 0U);
  EXPECT_EQ(CountLines(log, ": STATUS has failed: .*"), 1U);
}

TEST_F(RelayFlood, OfRefusedCommandsIsTheSameAfterASecond) {
  Start();
  const auto refuse_ten = [this] {
    for (int count = 0; count < 10; ++count) {
      const Program program(socket_path_);
      program.Send("TERMINATE");
      ASSERT_EQ(program.Receive(), "FAIL\n");
    }
  };
  refuse_ten();
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));
  refuse_ten();
  const std::string log = Stop().standard_error;
  EXPECT_EQ(CountLines(log, " has sent TERMINATE, .*"), 10U);
  EXPECT_EQ(LeftOut(log, "refused commands"), 10U);
}

TEST_F(RelayFlood, OfProgramsThatAreTurnedAwayIsLimited) {
  Start({"--clients", "1"});
  for (int count = 0; count < kTimes / 10; ++count) {
    const Program program(socket_path_);
    ExpectExchange(program, "STATUS", "OK\n");
    EXPECT_TRUE(Program(socket_path_).SeesTheEnd());
  }
  const std::string log = Stop().standard_error;
  const size_t told = CountLines(log, " turning programs away: 1 are connected");
  EXPECT_EQ(told + LeftOut(log, "programs that find no room"), size_t{kTimes} / 10);
  EXPECT_LE(told, 100U) << "ten in ten seconds";
}

TEST_F(RelayFlood, OfSupplicantsIsLimited) {
  supplicant_.reset();
  Start();
  const Program program(socket_path_);
  constexpr int kRounds = 30;
  for (int count = 0; count < kRounds; ++count) {
    program.Send("STATUS");
    ASSERT_EQ(program.Receive(), "FAIL\n");
    supplicant_ = std::make_unique<FakeSupplicant>(supplicant_path_);
    ExpectExchange(program, "STATUS", "OK\n");
    supplicant_.reset();
  }
  const std::string log = Stop().standard_error;
  const size_t told =
      CountLines(log, " the supplicant at .* (cannot be reached: .*|answers again)");
  EXPECT_EQ(told + LeftOut(log, "a supplicant that comes and goes"), 2U * kRounds);
  EXPECT_LT(told, 2U * kRounds);
}

}  // namespace
}  // namespace kestrel::test
