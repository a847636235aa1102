// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "on_board.h"
#include "support/descriptors.h"

namespace kestrel::test {
namespace {

using nlohmann::json;
using Clock = std::chrono::steady_clock;

const std::string kReading = "ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL";

/// What was printed, with each time stamp as TIME.
std::string WithoutTimes(const std::string& text) {
  static const std::regex stamp(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)");
  return std::regex_replace(text, stamp, "TIME");
}

class KestrelctlWatch : public testing::Test {
 protected:
  BackgroundProgram Start(const Words& options) {
    Words command = {KESTRELCTL, "gpio", "watch"};
    command.insert(command.end(), options.begin(), options.end());
    return BackgroundProgram(board_.Exec(command));
  }

  SharedBoard board_;
};

TEST_F(KestrelctlWatch, PrintsTheLevelAndEachChange) {
  BackgroundProgram watch = Start({"3"});
  ASSERT_TRUE(watch.WaitForOutput("3=low\n"));
  board_.Drive(3, "high");
  ASSERT_TRUE(watch.WaitForOutput("3=high\n"));
  watch.Signal(SIGINT);
  const ProgramResult result = watch.Wait();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(WithoutTimes(result.standard_output), "TIME 3=low\nTIME 3=high\n");
  EXPECT_EQ(result.standard_error, "");
}

TEST_F(KestrelctlWatch, IsSilentWhileNothingChanges) {
  for (const std::string level : {"low", "high"}) {
    board_.Drive(3, level);
    BackgroundProgram watch = Start({"3"});
    ASSERT_TRUE(watch.WaitForOutput("3=" + level + "\n"));
    board_.Count(kReading);
    board_.WaitForCalls(12);
    watch.Signal(SIGINT);
    EXPECT_EQ(WithoutTimes(watch.Wait().standard_output), "TIME 3=" + level + "\n");
    board_.Board({"fault", "--clear"});
  }
}

TEST_F(KestrelctlWatch, ReadsOnceAnInterval) {
  board_.Count(kReading);
  const auto start = Clock::now();
  const BackgroundProgram watch = Start({"3", "--interval", "300"});
  board_.WaitForCalls(4);
  EXPECT_GE(Clock::now() - start, 3 * std::chrono::milliseconds(300));
}

TEST_F(KestrelctlWatch, FollowsSeveralLines) {
  board_.Drive(4, "high");
  BackgroundProgram watch = Start({"3", "4", "--interval", "1"});
  ASSERT_TRUE(watch.WaitForOutput("3=low\n"));
  ASSERT_TRUE(watch.WaitForOutput("4=high\n"));
  board_.Drive(4, "low");
  ASSERT_TRUE(watch.WaitForOutput("4=low\n"));
  board_.Drive(3, "high");
  ASSERT_TRUE(watch.WaitForOutput("3=high\n"));
  watch.Signal(SIGTERM);
  const ProgramResult result = watch.Wait();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(WithoutTimes(result.standard_output),
            "TIME 3=low\nTIME 4=high\nTIME 4=low\nTIME 3=high\n");
}

TEST_F(KestrelctlWatch, PrintsAJsonObjectALine) {
  BackgroundProgram watch = Start({"3", "--json"});
  ASSERT_TRUE(watch.WaitForOutput("\"low\"}\n"));
  board_.Drive(3, "high");
  ASSERT_TRUE(watch.WaitForOutput("\"high\"}\n"));
  watch.Signal(SIGINT);
  std::istringstream lines(watch.Wait().standard_output);
  for (const std::string level : {"low", "high"}) {
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const json change = json::parse(line);
    EXPECT_EQ(change.at("line"), 3);
    EXPECT_EQ(change.at("level"), level);
    EXPECT_EQ(WithoutTimes(change.at("time")), "TIME");
  }
}

TEST_F(KestrelctlWatch, EndsAtOnceDuringALongInterval) {
  BackgroundProgram watch = Start({"3", "--interval", "60000"});
  ASSERT_TRUE(watch.WaitForOutput("3=low\n"));
  watch.Signal(SIGINT);
  EXPECT_EQ(watch.Wait(std::chrono::seconds(20)).status, 0);
}

TEST_F(KestrelctlWatch, HoldsNoMoreDescriptorsAfterManyReadings) {
  BackgroundProgram watch = Start({"3", "--interval", "5"});
  ASSERT_TRUE(watch.WaitForOutput("3=low\n"));
  const size_t before = DescriptorsBetweenCallsOf(watch.pid());
  board_.Count(kReading);
  board_.WaitForCalls(20);
  EXPECT_EQ(DescriptorsBetweenCallsOf(watch.pid()), before);
}

TEST_F(KestrelctlWatch, RefusesABusyLine) {
  BackgroundProgram watch = Start({"3"});
  ASSERT_TRUE(watch.WaitForOutput("3=low\n"));
  EXPECT_THAT(board_.Kestrelctl({"gpio", "watch", "3"}),
              Ends(1, "", "kestrelctl: line 3: EBUSY: Device or resource busy\n"));
}

TEST(KestrelctlWatchFaults, EndItAfterTheLevelsSoFar) {
  const ProgramResult result = Kestrelctl({"gpio", "watch", "3"}, {kReading + "=EIO@3"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(WithoutTimes(result.standard_output), "TIME 3=low\n");
  EXPECT_EQ(result.standard_error, "kestrelctl: line 3: EIO: Input/output error\n");
}

}  // namespace
}  // namespace kestrel::test
