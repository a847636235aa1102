// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include "on_board.h"

namespace kestrel::test {
namespace {

/// Runs a shell line on a board, in which "$0" is kestrelctl.
ProgramResult RunShellLine(const std::string& line) {
  return RunOnBoard({"bash", "-c", line, KESTRELCTL});
}

TEST(KestrelctlOutput, FailsOnAClosedStandardOutput) {
  EXPECT_THAT(RunShellLine("\"$0\" gpio get 3 >&-"),
              Ends(1, "", "kestrelctl: standard output: EBADF: Bad file descriptor\n"));
}

TEST(KestrelctlOutput, FailsOnAFullStandardOutput) {
  const std::string answer = "kestrelctl: standard output: ENOSPC: No space left on device\n";
  for (const std::string command : {"gpio get 3", "gpio set 3=1", "gpio watch 3", "--help"}) {
    EXPECT_THAT(RunShellLine("\"$0\" " + command + " >/dev/full"), Ends(1, "", answer)) << command;
  }
}

TEST(KestrelctlOutput, FailsOnAPipeWithoutReader) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_THAT(
      RunProgram({"bash", "-c", "\"$0\" --version >&" + std::to_string(ends[1]), KESTRELCTL}),
      Ends(1, "", "kestrelctl: standard output: EPIPE: Broken pipe\n"));
  close(ends[1]);
}

TEST(KestrelctlOutput, EndsAWatchThatNobodyReadsAnyMore) {
  EXPECT_THAT(RunShellLine("timeout 20 \"$0\" gpio watch 3 | read -r; exit ${PIPESTATUS[0]}"),
              Ends(1, "", "kestrelctl: standard output: EPIPE: Broken pipe\n"));
}

TEST(KestrelctlOutput, IsNoFailureWhenASignalEndsItsReaderAsWell) {
  const std::string both_at_once =
      "coproc watch { exec \"$0\" gpio watch 3 --interval 20000; }; pid=$watch_PID;"
      "read -ru ${watch[0]}; kill -STOP $pid; exec {watch[0]}<&-;"
      "kill -INT $pid; kill -CONT $pid; wait $pid";
  EXPECT_THAT(RunShellLine(both_at_once), Ends(0, "", ""));
}

TEST(KestrelctlOutput, FeedsOtherPrograms) {
  EXPECT_THAT(RunShellLine("\"$0\" gpio set $(\"$0\" gpio get 3 4) | sort -r"),
              Ends(0, "4=low\n3=low\n", ""));
}

TEST(KestrelctlOutput, WorksWithAllStandardStreamsClosed) {
  EXPECT_THAT(RunShellLine("\"$0\" gpio get 3 <&- >&- 2>&-"), Ends(1, "", ""));
}

}  // namespace
}  // namespace kestrel::test
