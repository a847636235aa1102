// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "on_board.h"

namespace kestrel::test {
namespace {

using nlohmann::json;

TEST(KestrelctlGet, PrintsTheLevelsInTheOrderAsked) {
  const SharedBoard board;
  board.Drive(3, "high");
  EXPECT_THAT(board.Kestrelctl({"gpio", "get", "4", "3"}), Ends(0, "4=low\n3=high\n", ""));
}

TEST(KestrelctlGet, PrintsJson) {
  const ProgramResult result = Kestrelctl({"gpio", "get", "31", "0", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      json::parse(result.standard_output),
      json::parse(R"({"lines": [{"line": 31, "level": "low"}, {"line": 0, "level": "low"}]})"));
}

TEST(KestrelctlGet, NamesTheLineThatFails) {
  EXPECT_THAT(Kestrelctl({"gpio", "get", "3", "32"}),
              Ends(1, "", "kestrelctl: line 32: ENODEV: No such device\n"));
}

TEST(KestrelctlSet, LeavesTheLevelOnTheLine) {
  const SharedBoard board;
  EXPECT_THAT(board.Kestrelctl({"gpio", "set", "4=high", "5=low"}), Ends(0, "4=high\n5=low\n", ""));
  EXPECT_EQ(board.LevelOf(4), "high\n");
  EXPECT_THAT(board.Kestrelctl({"gpio", "set", "4=0", "5=1"}), Ends(0, "4=low\n5=high\n", ""));
  EXPECT_EQ(board.LevelOf(4), "low\n");
  EXPECT_EQ(board.LevelOf(5), "high\n");
}

TEST(KestrelctlSet, PrintsJson) {
  const ProgramResult result = Kestrelctl({"gpio", "set", "4=1", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(json::parse(result.standard_output),
            json::parse(R"({"lines": [{"line": 4, "level": "high"}]})"));
}

TEST(KestrelctlSet, HoldsEveryLineForAWhile) {
  const SharedBoard board;
  BackgroundProgram holder(
      board.Exec({KESTRELCTL, "gpio", "set", "4=high", "5=low", "--hold", "600"}));
  ASSERT_TRUE(holder.WaitForOutput("4=high\n5=low\n"));
  EXPECT_THAT(board.Kestrelctl({"gpio", "get", "4"}),
              Ends(1, "", "kestrelctl: line 4: EBUSY: Device or resource busy\n"));
  EXPECT_THAT(board.Kestrelctl({"gpio", "set", "6=1", "5=1"}),
              Ends(1, "", "kestrelctl: line 5: EBUSY: Device or resource busy\n"));
  holder.Signal(SIGTERM);
  EXPECT_THAT(holder.Wait(), Ends(0, "4=high\n5=low\n", ""));
  EXPECT_EQ(board.Kestrelctl({"gpio", "get", "4", "5"}).status, 0);
}

TEST(KestrelctlSet, ReleasesTheLinesWhenTheTimeIsOver) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(Kestrelctl({"gpio", "set", "4=1", "--hold", "0.5"}), Ends(0, "4=high\n", ""));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST(KestrelctlSet, LeavesALevelToOthersThatItDoesNotDrive) {
  for (const auto& [level, drive] : {std::pair("high", "open-drain"), {"low", "open-source"}}) {
    const SharedBoard board;
    BackgroundProgram holder(board.Exec(
        {KESTRELCTL, "gpio", "set", std::string("4=") + level, "--drive", drive, "--hold", "600"}));
    ASSERT_TRUE(holder.WaitForOutput(std::string("4=") + level + "\n")) << drive;
    board.Drive(4, "low");
    EXPECT_EQ(board.LevelOf(4), "low\n") << drive;
    board.Drive(4, "high");
    EXPECT_EQ(board.LevelOf(4), "high\n") << drive;
  }
}

TEST(KestrelctlSet, DrivesBothLevelsWhenAskedToPushAndPull) {
  const SharedBoard board;
  EXPECT_THAT(board.Kestrelctl({"gpio", "set", "4=high", "--drive", "push-pull"}),
              Ends(0, "4=high\n", ""));
  EXPECT_EQ(board.LevelOf(4), "high\n");
}

struct Fault {
  std::string fault;
  Words arguments;
  std::string answer;
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.fault; }

class KestrelctlFaults : public testing::TestWithParam<Fault> {};

INSTANTIATE_TEST_SUITE_P(Every, KestrelctlFaults,
                         testing::Values(Fault{"open:/dev/gpiochip0=EACCES",
                                               {"gpio", "get", "3"},
                                               "EACCES: Permission denied"},
                                         Fault{"open:/dev/gpiochip0=ENOENT",
                                               {"gpio", "watch", "3"},
                                               "ENOENT: No such file or directory"},
                                         Fault{"ioctl:GPIO_GET_CHIPINFO_IOCTL=ENODEV@1",
                                               {"gpio", "set", "3=1"},
                                               "ENODEV: No such device"},
                                         Fault{"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EBUSY",
                                               {"gpio", "get", "3"},
                                               "EBUSY: Device or resource busy"},
                                         Fault{"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EINVAL@2",
                                               {"gpio", "set", "4=0", "3=1"},
                                               "EIO: Input/output error"},
                                         Fault{"ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL=EPERM@2",
                                               {"gpio", "get", "4", "3"},
                                               "EPERM: Operation not permitted"},
                                         Fault{"ioctl:GPIOHANDLE_GET_LINE_VALUES_IOCTL=ENODEV",
                                               {"gpio", "watch", "3"},
                                               "ENODEV: No such device"}));

TEST_P(KestrelctlFaults, AreAnsweredInOneLine) {
  EXPECT_THAT(Kestrelctl(GetParam().arguments, {GetParam().fault}),
              Ends(1, "", "kestrelctl: line 3: " + GetParam().answer + "\n"));
}

TEST(KestrelctlVerbose, ShowsWhatTheLibrarySays) {
  EXPECT_THAT(
      Kestrelctl({"gpio", "get", "3", "--verbose"}, {"ioctl:GPIO_GET_LINEHANDLE_IOCTL=EINVAL"}),
      Ends(1, "",
           "[Kestrel:GPIO] Problem opening GPIO: Invalid argument (22)\n"
           "kestrelctl: line 3: EIO: Input/output error\n"));
}

}  // namespace
}  // namespace kestrel::test
