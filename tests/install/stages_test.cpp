// SPDX-License-Identifier: Apache-2.0
// What runs the stages of a check, with stages of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "support/run_program.h"
#include "support/temporary_directory.h"

namespace {

using kestrel::test::ProgramResult;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class Stages : public testing::Test {
 protected:
  /// Runs the given stages; `script` is what each does, with its name in $2. The shell does
  /// `before` in front of the command.
  ProgramResult Check(const std::string& stages, const std::string& script,
                      const std::string& before = "") const {
    const std::filesystem::path program = directory_.Write("dev", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    return kestrel::test::RunProgram({"sh", "-c",
                                      "cd '" + directory_.path() + "' && " + before +
                                          KESTREL_SOURCE_DIR "/scripts/check " + stages});
  }

  kestrel::test::TemporaryDirectory directory_;
};

TEST_F(Stages, ThatPassEndInATableOfTheirTimes) {
  const ProgramResult result = Check("format test", "echo $2 has been here");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.standard_output,
              AllOf(HasSubstr("\nformat has been here\n"), HasSubstr("\ntest has been here\n"),
                    ContainsRegex("\nstage +result +wall s +CPU s\nformat +passed +[0-9]+ +[0-9]+\n"
                                  "test +passed +[0-9]+ +[0-9]+\nall of them +[0-9]+ +[0-9]+\n"),
                    HasSubstr("\nstages: 2 passed, 0 failed\n")));
  EXPECT_EQ(result.standard_error, "");
}

TEST_F(Stages, ThatFailAreShownWholeAndFailTheCheckAfterTheOthers) {
  const ProgramResult result =
      Check("format test size", "[ $2 = format ] || exit 0; seq 100; echo lost >&2; exit 3");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_output,
              AllOf(HasSubstr("1\n2\n3\n"), HasSubstr("100\nlost\n"),
                    ContainsRegex("== Stage format FAILED after [0-9]+ s, with [0-9]+ s of a "
                                  "processor; all that it said: "
                                  "build/check/format.log\n"),
                    ContainsRegex("\nformat +FAILED "), ContainsRegex("\nsize +passed "),
                    HasSubstr("\nstages: 2 passed, 1 failed\n")));
}

TEST_F(Stages, LeaveOutWhatToolsSayOfTheirProgress) {
  const ProgramResult result = Check(
      "format", "echo '[1/2] Building'; echo ' 1/2 Test #1: A.B ... Passed 0.1 sec'; echo end");
  EXPECT_THAT(result.standard_output,
              AllOf(Not(HasSubstr("Building")), Not(HasSubstr("A.B")), HasSubstr("\nend\n")));
}

TEST_F(Stages, WaitForThoseThatBuildWhatTheyUse) {
  const ProgramResult result =
      Check("size machine arm", "[ $2 = arm ] && sleep 0.3; date +%s%N >$2; echo done");
  EXPECT_EQ(result.status, 0) << result.standard_output;
  const auto time_of = [this](const char* stage) {
    uint64_t time = 0;
    std::ifstream(directory_.path() + "/" + stage) >> time;
    return time;
  };
  EXPECT_GT(time_of("size"), time_of("arm"));
  EXPECT_GT(time_of("machine"), time_of("arm"));
}

TEST_F(Stages, ThatAreKilledHaveFailed) {
  const ProgramResult result = Check("format test", "[ $2 = test ] || kill -KILL $PPID");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_output,
              AllOf(ContainsRegex("\nformat +FAILED +0 "), ContainsRegex("\ntest +passed ")));
}

TEST_F(Stages, WhoseProgramIsKilledHaveFailed) {
  const ProgramResult result = Check("format test", "[ $2 = test ] || kill -KILL $$");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_output,
              AllOf(ContainsRegex("\nformat +FAILED +0 "), ContainsRegex("\ntest +passed "),
                    HasSubstr("\nstages: 1 passed, 1 failed\n")));
}

TEST_F(Stages, AreNamedOnce) {
  const ProgramResult result = Check("format test format", "exit 0");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.standard_error, "check: a stage is named twice\n");
}

TEST_F(Stages, EndWithTheCheck) {
  const ProgramResult result =
      Check("format", "echo $$ >process; kill -TERM $(cat check); exec sleep 60",
            "echo $$ >check; exec ");
  EXPECT_EQ(result.status, 143);
  pid_t stage = 0;
  std::ifstream(directory_.path() + "/process") >> stage;
  ASSERT_GT(stage, 0);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (kill(stage, 0) == 0 && std::chrono::steady_clock::now() < deadline) {
    usleep(1000);
  }
  EXPECT_EQ(kill(stage, 0), -1);
}

TEST_F(Stages, RunOnceAtATimeInACheckout) {
  const ProgramResult result =
      Check("format", KESTREL_SOURCE_DIR "/scripts/check test && exit 0; echo refused; exit 1");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.standard_output,
              HasSubstr("check: another check is at work in this checkout\nrefused\n"));
}

}  // namespace
